#include "host/app/start/LeftOut.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>

#include <algorithm>
#include <numeric>
#include <vector>

namespace tnhost {

namespace {

constexpr std::size_t mostKinds = 5;
constexpr const char *materialsSuffix = "mtl"; ///< beside Obj files

QString words(const char *text)
{
    return QCoreApplication::translate("LeftOut", text);
}

QString number(int count)
{
    return QLocale().toString(count);
}

/// "5 pdf", by their count, then by their name.
QStringList kindTexts(const std::map<QString, int> &kinds)
{
    std::vector<std::pair<QString, int>> order(kinds.begin(), kinds.end());
    std::stable_sort(order.begin(), order.end(),
                     [](const auto &a, const auto &b) { return a.second > b.second; });
    QStringList texts;
    int rest = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const auto &[suffix, count] = order[i];
        if (i >= mostKinds)
            rest += count;
        else if (suffix.isEmpty())
            texts << words(QT_TRANSLATE_NOOP("LeftOut", "%1 without suffix")).arg(number(count));
        else
            texts << QStringLiteral("%1 %2").arg(number(count), suffix);
    }
    if (rest > 0)
        texts << words(QT_TRANSLATE_NOOP("LeftOut", "%1 of other kinds")).arg(number(rest));
    return texts;
}

} // namespace

void LeftOut::addKind(const QString &suffix, int count)
{
    if (suffix != QLatin1String(materialsSuffix))
        m_kinds[suffix] += count;
}

void LeftOut::add(const FolderWalk::Omissions &omissions)
{
    for (const auto &[suffix, count] : omissions.files)
        addKind(suffix, count);
    m_unnamed += omissions.unnamedFiles;
    m_unnamedFolders += omissions.unnamedFolders;
    m_closedFolders += omissions.closedFolders;
}

QStringList LeftOut::keepReadable(const QStringList &files)
{
    QStringList kept;
    for (const QString &file : files) {
        const QFileInfo info(file);
        if (info.isReadable())
            kept << file;
        else
            ++(info.exists() ? m_closed : m_missing);
    }
    return kept;
}

QString LeftOut::sentence(int taken) const
{
    const int kinds = std::accumulate(m_kinds.begin(), m_kinds.end(), 0,
                                      [](int sum, const auto &kind) { return sum + kind.second; });
    const int files = kinds + m_closed + m_missing + m_unnamed;
    const std::pair<int, const char *> reasons[] = {
        {m_closed, QT_TRANSLATE_NOOP("LeftOut", "%1 without access")},
        {m_missing, QT_TRANSLATE_NOOP("LeftOut", "%1 not found")},
        {m_unnamed, QT_TRANSLATE_NOOP("LeftOut", "%1 with a name that is no UTF-8")},
        {m_closedFolders, QT_TRANSLATE_NOOP("LeftOut", "folders without access: %1")},
        {m_unnamedFolders,
         QT_TRANSLATE_NOOP("LeftOut", "folders with a name that is no UTF-8: %1")},
    };
    QStringList texts = kindTexts(m_kinds);
    for (const auto &[count, text] : reasons) {
        if (count > 0)
            texts << words(text).arg(number(count));
    }
    if (texts.isEmpty())
        return {};
    const QString all = texts.join(QLatin1String(", "));
    return files == 0 ? words(QT_TRANSLATE_NOOP("LeftOut", "Left out: %1")).arg(all)
                      : words(QT_TRANSLATE_NOOP("LeftOut", "%1 of %2 files left out: %3"))
                            .arg(number(files), number(files + taken), all);
}

} // namespace tnhost
