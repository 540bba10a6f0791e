#include "host/import/ResultReuse.h"

#include "host/import/FileHash.h"
#include "host/import/ResultStore.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <tuple>

#include <sys/stat.h>
#include <unistd.h>

namespace tnhost {

namespace {

// Counts up when the entries of an older host would mislead this one.
const QByteArray layout = "1";

/// Of a list of texts, whatever they contain.
QByteArray hashOf(const QByteArrayList &texts)
{
    FileHash hash;
    for (const QByteArray &text : texts) {
        hash.add(QByteArray::number(text.size()) + ' ');
        hash.add(text);
    }
    return hash.result();
}

QByteArrayList variablesOfConverter()
{
    QByteArrayList variables;
    for (char **variable = environ; *variable; ++variable) {
        const QByteArray text(*variable);
        // What the loader of its libraries, and the CAD kernel in them, go by.
        if (text.startsWith("LD_") || text.startsWith("CSF_"))
            variables << text;
    }
    std::sort(variables.begin(), variables.end());
    return variables;
}

bool hasReference(const ConversionRecord::Reference &reference,
                  const std::atomic<bool> &isCancelled)
{
    return reference.hash.isEmpty()
        ? !QFileInfo::exists(reference.path)
        : FileHash::ofFile(reference.path, isCancelled) == reference.hash;
}

} // namespace

ResultReuse::ResultReuse(ResultStore &store, const ConversionRequest &request, bool followsOutside)
    : m_store(store)
    , m_request(request)
    , m_followsOutside(followsOutside)
{
}

QByteArray ResultReuse::stateOf(const QStringList &program)
{
    QByteArrayList facts = variablesOfConverter();
    for (const QString &path : program) {
        const QByteArray name = QFile::encodeName(path);
        struct stat file { };
        if (::stat(name.constData(), &file) != 0)
            return QByteArray();
        facts << name;
        for (const qint64 number :
             {qint64(file.st_size), qint64(file.st_mtim.tv_sec), qint64(file.st_mtim.tv_nsec)})
            facts << QByteArray::number(number);
    }
    return program.isEmpty() ? QByteArray() : hashOf(facts);
}

std::optional<ConversionRecord> ResultReuse::take(const QStringList &program,
                                                  const std::atomic<bool> &isCancelled)
{
    // The clock by which file systems note times.
    ::clock_gettime(CLOCK_REALTIME_COARSE, &m_since);
    m_content = FileHash::ofFile(m_request.input, isCancelled);
    const QByteArray converter = stateOf(program);
    if (m_content.isEmpty() || converter.isEmpty())
        return std::nullopt;
    std::optional<ConversionRecord> record;
    const auto holds = [&](const QByteArray &notes) {
        record = ConversionRecord::fromJson(notes);
        return record
            && std::all_of(record->references.begin(), record->references.end(),
                           [&](const auto &each) { return hasReference(each, isCancelled); });
    };
    return m_store.take(key(converter), m_request.output, holds) ? record : std::nullopt;
}

void ResultReuse::keep(ConversionRecord record, const QByteArray &converter,
                       const std::atomic<bool> &isCancelled)
{
    if (!converter.isEmpty() && !m_content.isEmpty() && isUnchanged(m_request.input)
        && addHashes(record, isCancelled))
        m_store.keep(key(converter), m_request.output, record.toJson());
}

QByteArray ResultReuse::key(const QByteArray &converter) const
{
    return hashOf({layout, converter, m_content, m_request.input.toUtf8(), m_request.type.toUtf8(),
                   m_request.sourceId.toUtf8(),
                   QJsonDocument(m_request.settings).toJson(QJsonDocument::Compact)});
}

/// Whether nobody has written to the file since the conversion was about to begin.
bool ResultReuse::isUnchanged(const QString &path) const
{
    struct stat file { };
    return ::stat(QFile::encodeName(path).constData(), &file) == 0
        && std::tie(file.st_ctim.tv_sec, file.st_ctim.tv_nsec)
        < std::tie(m_since.tv_sec, m_since.tv_nsec);
}

/// A converter that a file has got the better of may name anything.
bool ResultReuse::mayBeRead(const QString &path) const
{
    const QDir ownFolder(QFileInfo(m_request.input).absolutePath());
    const QString folder = ownFolder.canonicalPath() + QLatin1Char('/');
    return m_followsOutside || QFileInfo(path).canonicalFilePath().startsWith(folder);
}

bool ResultReuse::addHashes(ConversionRecord &record, const std::atomic<bool> &isCancelled) const
{
    for (ConversionRecord::Reference &reference : record.references) {
        if (!QFileInfo::exists(reference.path))
            continue;
        if (mayBeRead(reference.path))
            reference.hash = FileHash::ofFile(reference.path, isCancelled);
        if (reference.hash.isEmpty() || !isUnchanged(reference.path))
            return false;
    }
    return true;
}

} // namespace tnhost
