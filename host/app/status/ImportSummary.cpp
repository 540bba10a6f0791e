#include "host/app/status/ImportSummary.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>

#include <map>

namespace tnhost {

namespace {

using State = FileResult::State;

struct Counts {
    int files = 0;
    int warned = 0; ///< that succeeded
    bool isAnyInScene = false;
    std::map<State, int> states; ///< open files, which nobody will take any more, as Pending

    explicit Counts(const std::vector<JobResultPtr> &jobs)
    {
        for (const JobResultPtr &job : jobs) {
            for (const FileResult &file : job->files)
                add(file);
        }
    }

    void add(const FileResult &file)
    {
        ++files;
        ++states[file.isOpen() ? State::Pending : file.state];
        warned += file.state == State::Succeeded && !file.warnings.isEmpty() ? 1 : 0;
        isAnyInScene |= !file.node.isNull();
    }
};

struct Remark {
    State state;
    const char *words;
};

/// In the order of their weight.
constexpr Remark remarks[] = {
    {State::Failed, QT_TRANSLATE_NOOP("ImportSummary", "%1 failed")},
    {State::Incomplete, QT_TRANSLATE_NOOP("ImportSummary", "%1 incomplete")},
    {State::Aborted, QT_TRANSLATE_NOOP("ImportSummary", "%1 aborted")},
    {State::Pending, QT_TRANSLATE_NOOP("ImportSummary", "%1 not begun")},
};

QString words(const char *text)
{
    return QCoreApplication::translate("ImportSummary", text);
}

QString number(int count)
{
    return QLocale().toString(count);
}

QString whatFiles(int done, int all)
{
    if (done < all)
        return words(QT_TRANSLATE_NOOP("ImportSummary", "%1 of %2 files"))
            .arg(number(done), number(all));
    return all == 1 ? words(QT_TRANSLATE_NOOP("ImportSummary", "1 file"))
                    : words(QT_TRANSLATE_NOOP("ImportSummary", "%1 files")).arg(number(all));
}

} // namespace

ImportSummary::ImportSummary(const std::vector<JobResultPtr> &jobs, double seconds)
{
    Counts counts(jobs);
    if (counts.files == 0)
        return;
    const int done = counts.states[State::Succeeded];
    const char *what = done == 0 || counts.isAnyInScene
        ? QT_TRANSLATE_NOOP("ImportSummary", "%1 imported in %2 s")
        : QT_TRANSLATE_NOOP("ImportSummary", "%1 converted in %2 s");
    QStringList parts{words(what).arg(whatFiles(done, counts.files),
                                      QLocale().toString(seconds, 'f', seconds < 10.0 ? 1 : 0))};
    if (counts.warned > 0)
        parts << words(QT_TRANSLATE_NOOP("ImportSummary", "%1 with warnings"))
                     .arg(number(counts.warned));
    for (const Remark &remark : remarks) {
        const int count = counts.states[remark.state];
        if (count == 0)
            continue;
        parts << words(remark.words).arg(number(count));
        if (m_state == State::Succeeded)
            m_state = remark.state == State::Pending ? State::Aborted : remark.state;
    }
    m_sentence = parts.join(QLatin1String(", "));
}

} // namespace tnhost
