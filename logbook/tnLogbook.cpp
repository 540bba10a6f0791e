#include "logbook/tnLogbook.h"

#include "logbook/tnLogFormater.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <iterator>

namespace tnLogbook {

namespace {

/// The time is left out: the later entry tells until when the message held.
bool isRepeated(const Table::const_iterator &earlier, const Table::const_iterator &later)
{
    return earlier->first == later->first && earlier->second.second == later->second.second;
}

} // namespace

void addLogEntry(Table &table, const QString &file, const QString &message)
{
    std::string time;
    if (!file.isEmpty())
        time = QDateTime::currentDateTime().toString(Qt::TextDate).toStdString();
    table.emplace(file.toStdString(), std::make_pair(std::move(time), message.toStdString()));
}

void removeRepeatedEntries(Table &table)
{
    if (table.empty())
        return;
    auto previous = table.begin();
    for (auto entry = std::next(previous); entry != table.end(); ++entry) {
        if (isRepeated(previous, entry))
            table.erase(previous);
        previous = entry;
    }
}

void removeLastRepetition(Table &table, const QString &file)
{
    const auto [first, end] = table.equal_range(file.toStdString());
    if (first == end || std::next(first) == end)
        return;
    const auto last = std::prev(end);
    if (const auto previous = std::prev(last); isRepeated(previous, last))
        table.erase(previous);
}

void writeLogbook(const Table &table, const QString &path, const tnLogFormater &formatter)
{
    const QString text = formatter.format(table);
    if (text.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Text))
        return;
    // In the code page of the system, which other programs expect of a text file.
    QTextStream stream(&file);
    stream << text;
}

} // namespace tnLogbook
