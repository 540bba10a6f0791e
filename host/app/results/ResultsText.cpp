#include "host/app/results/ResultsText.h"

#include <QtCore/QRegularExpression>

namespace tnhost {

namespace {

QStringList fields(const ResultRow &row)
{
    QStringList result;
    for (const ResultColumn &column : ResultColumns::all())
        result << column.whole(row);
    return result;
}

QString csvLine(const QStringList &fields)
{
    static const QRegularExpression special(QStringLiteral("[\",\r\n]"));
    QStringList quoted;
    for (QString field : fields) {
        if (field.contains(special)) {
            field.replace(QLatin1Char('"'), QLatin1String("\"\""));
            field = QLatin1Char('"') + field + QLatin1Char('"');
        }
        quoted << field;
    }
    return quoted.join(QLatin1Char(',')) + QLatin1String("\r\n");
}

} // namespace

QString ResultsText::csv(const ResultsModel &model)
{
    QStringList titles;
    for (const ResultColumn &column : ResultColumns::all())
        titles << ResultColumns::title(column);
    QString text = csvLine(titles);
    for (const QModelIndex &file : model.files()) {
        text += csvLine(fields(model.row(file)));
        for (int part = 0; part < model.rowCount(file); ++part)
            text += csvLine(fields(model.row(model.index(part, 0, file))));
    }
    return text;
}

QString ResultsText::tabbed(const ResultsModel &model, const QModelIndexList &rows)
{
    QString text;
    for (const QModelIndex &row : rows) {
        QStringList line = fields(model.row(row));
        for (QString &field : line)
            field = field.simplified(); // names may hold tabulators and line feeds
        text += line.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    return text;
}

} // namespace tnhost
