#include "host/headless/ResultTable.h"

#include "host/import/FileTypeProbe.h"

#include <QtCore/QDir>

#include <algorithm>
#include <array>
#include <map>

namespace tnhost {

namespace {

using Row = std::array<QString, 5>;
constexpr std::size_t secondsColumn = 3;

QString stateName(FileResult::State state)
{
    return QString::fromLatin1(FileResult::word(state));
}

QString shortPath(const QString &path, const QString &directory)
{
    return path.startsWith(directory) ? path.mid(directory.size()) : path;
}

Row rowOf(const FileResult &result, const QString &directory)
{
    return {shortPath(result.path, directory), FileTypeProbe::displayName(result.type),
            stateName(result.state), QString::number(result.seconds, 'f', 2),
            result.message.simplified()};
}

QStringList warningsOf(const FileResult &result)
{
    QStringList lines;
    for (const QString &warning : result.warnings)
        lines << QStringLiteral("  Warning: ") + warning.simplified();
    return lines;
}

} // namespace

QStringList ResultTable::lines(const std::vector<FileResult> &results)
{
    QString directory = QDir::currentPath();
    if (!directory.endsWith(QLatin1Char('/')))
        directory += QLatin1Char('/');
    std::vector<Row> rows{{QStringLiteral("File"), QStringLiteral("Type"), QStringLiteral("State"),
                           QStringLiteral("Seconds"), QStringLiteral("Message")}};
    rows.reserve(results.size() + 1);
    for (const FileResult &result : results)
        rows.push_back(rowOf(result, directory));

    std::array<int, secondsColumn + 1> widths{};
    for (const Row &row : rows) {
        for (std::size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());
    }
    QStringList lines;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Row &row = rows[i];
        QString line;
        for (std::size_t column = 0; column < widths.size(); ++column) {
            line += column == secondsColumn ? row[column].rightJustified(widths[column])
                                            : row[column].leftJustified(widths[column]);
            line += QLatin1String("  ");
        }
        line += row.back();
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        lines << line;
        if (i > 0)
            lines << warningsOf(results[i - 1]);
    }
    return lines;
}

QString ResultTable::summary(const std::vector<FileResult> &results)
{
    std::map<FileResult::State, int> counts;
    for (const FileResult &result : results)
        ++counts[result.state];
    QString text = QStringLiteral("%1 of %2 files succeeded")
                       .arg(counts[FileResult::State::Succeeded])
                       .arg(results.size());
    for (const auto &[state, count] : counts) {
        if (state != FileResult::State::Succeeded)
            text += QStringLiteral(", %1 %2").arg(count).arg(stateName(state).toLower());
    }
    return text;
}

} // namespace tnhost
