#include "logbook/tnLogbook.h"

#include "logbook/tnLogFormater.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <iterator>

namespace tnLogbook {

void addLogEntry(Table &table, const QString &file, const QString &message)
{
    std::string time;
    if (!file.isEmpty())
        time = QDateTime::currentDateTime().toString(Qt::TextDate).toStdString();
    table.emplace(file.toStdString(), std::make_pair(std::move(time), message.toStdString()));
}

void removeRepeatedEntries(Table &table, const QString &file)
{
    const auto [first, end] = table.equal_range(file.toStdString());
    if (first == end || std::next(first) == end)
        return;
    const auto last = std::prev(end);
    const auto previous = std::prev(last);
    // The time is left out: the later entry tells until when the message held.
    if (previous->second.second == last->second.second)
        table.erase(previous);
}

void writeLogbook(const Table &table, const QString &path, const tnLogFormater &formatter)
{
    if (table.empty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Text))
        return;
    // In the code page of the system, which other programs expect of a text file.
    QTextStream stream(&file);
    formatter.write(table, stream);
}

} // namespace tnLogbook
