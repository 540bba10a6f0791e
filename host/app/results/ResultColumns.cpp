#include "host/app/results/ResultColumns.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QLocale>

namespace tnhost {

namespace {

using State = FileResult::State;

QString words(const char *text)
{
    return QCoreApplication::translate("ResultColumns", text);
}

QString sentence(const QString &text)
{
    QString result = text.simplified();
    if (result.isEmpty())
        return result;
    result[0] = result[0].toUpper();
    return result.back().isPunct() ? result : result + QLatin1Char('.');
}

QStringRef nameOf(const QString &path)
{
    return path.midRef(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString state(const ResultRow &row)
{
    const QString word =
        QCoreApplication::translate("FileResult", FileResult::word(row.result.state));
    return row.result.state == State::Running && !row.assembly
        ? QStringLiteral("%1 %2 %").arg(word, QString::number(row.result.percent))
        : word;
}

QString warnings(const ResultRow &row, QLatin1String separator)
{
    QStringList all;
    for (const QString &warning : row.result.warnings)
        all << sentence(warning);
    return all.join(separator);
}

QString seconds(const ResultRow &row)
{
    return row.result.isOpen() && row.result.seconds == 0.0
        ? QString()
        : QString::number(row.result.seconds, 'f', 2);
}

QString triangles(const ResultRow &row)
{
    return row.result.node.isNull() ? QString() : QString::number(row.result.triangles);
}

QString shownNumber(const QString &plain, int decimals)
{
    return plain.isEmpty() ? plain : QLocale().toString(plain.toDouble(), 'f', decimals);
}

template <auto member>
bool isLess(const ResultRow &a, const ResultRow &b)
{
    return a.result.*member < b.result.*member;
}

const std::vector<ResultColumn> columns{
    {QT_TRANSLATE_NOOP("ResultColumns", "State"), 20, false, &state,
     [](const ResultRow &row) { return QString::fromLatin1(FileResult::word(row.result.state)); },
     nullptr,
     [](const ResultRow &a, const ResultRow &b) {
         return std::make_pair(a.result.state, a.result.percent)
             < std::make_pair(b.result.state, b.result.percent);
     }},
    {QT_TRANSLATE_NOOP("ResultColumns", "File"), 28, false,
     [](const ResultRow &row) { return nameOf(row.result.path).toString(); },
     [](const ResultRow &row) { return row.result.path; },
     [](const ResultRow &row) { return QDir::toNativeSeparators(row.result.path); },
     [](const ResultRow &a, const ResultRow &b) {
         return nameOf(a.result.path).compare(nameOf(b.result.path), Qt::CaseInsensitive) < 0;
     }},
    {QT_TRANSLATE_NOOP("ResultColumns", "Part of"), 0, false,
     [](const ResultRow &) { return QString(); },
     [](const ResultRow &row) { return row.assembly ? row.assembly->path : QString(); }, nullptr,
     [](const ResultRow &, const ResultRow &) { return false; }},
    {QT_TRANSLATE_NOOP("ResultColumns", "What is wrong"), 46, false, &ResultColumns::problem,
     &ResultColumns::problem, &ResultColumns::problem, &isLess<&FileResult::message>},
    {QT_TRANSLATE_NOOP("ResultColumns", "Warnings"), 24, false,
     [](const ResultRow &row) { return warnings(row, QLatin1String(" ")); },
     [](const ResultRow &row) { return warnings(row, QLatin1String(" ")); },
     [](const ResultRow &row) { return warnings(row, QLatin1String("\n")); },
     [](const ResultRow &a, const ResultRow &b) {
         return a.result.warnings.size() < b.result.warnings.size();
     }},
    {QT_TRANSLATE_NOOP("ResultColumns", "Seconds"), 10, true,
     [](const ResultRow &row) { return shownNumber(seconds(row), 2); }, &seconds, nullptr,
     &isLess<&FileResult::seconds>},
    {QT_TRANSLATE_NOOP("ResultColumns", "Triangles"), 12, true,
     [](const ResultRow &row) { return shownNumber(triangles(row), 0); }, &triangles, nullptr,
     &isLess<&FileResult::triangles>},
    {QT_TRANSLATE_NOOP("ResultColumns", "Output file"), 28, false,
     [](const ResultRow &row) { return nameOf(row.result.output).toString(); },
     [](const ResultRow &row) { return row.result.output; },
     [](const ResultRow &row) { return QDir::toNativeSeparators(row.result.output); },
     &isLess<&FileResult::output>},
};

} // namespace

const std::vector<ResultColumn> &ResultColumns::all()
{
    return columns;
}

QString ResultColumns::title(const ResultColumn &column)
{
    return words(column.title);
}

QString ResultColumns::problem(const ResultRow &row)
{
    if (!row.result.message.isEmpty())
        return sentence(row.result.message);
    if (row.result.state == State::Aborted)
        return words(QT_TRANSLATE_NOOP("ResultColumns", "The import of it was aborted."));
    if (row.isOver && row.result.isOpen())
        return words(QT_TRANSLATE_NOOP("ResultColumns", "The import ended before it was begun."));
    return {};
}

} // namespace tnhost
