#pragma once

#include <QtCore/QString>

#include <map>
#include <string>
#include <utility>

/// The logbook of a batch: from a file's path, or the empty string for the batch as a whole, to
/// time and message. All text is UTF-8. The entries of a key keep the order in which they were
/// added.
using tnLogTable = std::multimap<std::string, std::pair<std::string, std::string>>;

/// Turns a logbook into the text of a file. Formatters have no state.
class tnLogFormater {
public:
    tnLogFormater() = default;
    virtual ~tnLogFormater();
    Q_DISABLE_COPY_MOVE(tnLogFormater)

    /// The whole text; a null string for an empty table.
    virtual QString format(const tnLogTable &table) const = 0;

protected:
    /// An empty text with room for the table, and for so many characters around each entry. The
    /// logbook of many files takes much memory, and finding it is most of the time.
    static QString textWithRoom(const tnLogTable &table, std::size_t aroundEntry);
};
