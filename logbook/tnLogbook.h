#pragma once

#include <QtCore/QString>

#include <map>
#include <string>
#include <utility>

class tnLogFormater;

/// The log of a batch: a table that fills while the batch runs, and the files it ends in.
namespace tnLogbook {

/// From a file's path, or the empty string for the batch as a whole, to time and message. All text
/// is UTF-8. The entries of a key keep the order in which they were added.
using Table = std::multimap<std::string, std::pair<std::string, std::string>>;

/// Adds an entry behind those of the same file, with the current local time. Without a file it
/// stands for the whole batch and has no time.
void addLogEntry(Table &table, const QString &file, const QString &message);

/// Removes the entry before the last of a file where both have the same message. Called after each
/// addition, it leaves of every run of equal messages only the last. O(log n).
void removeRepeatedEntries(Table &table, const QString &file);

/// Replaces the file at path by the formatted table. An empty table leaves the file alone, and a
/// file that can't be opened is skipped in silence.
void writeLogbook(const Table &table, const QString &path, const tnLogFormater &formatter);

} // namespace tnLogbook
