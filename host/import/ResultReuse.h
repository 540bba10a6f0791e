#pragma once

#include "host/import/Conversion.h"
#include "host/import/ConversionRecord.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <atomic>
#include <optional>

#include <ctime>

namespace tnhost {

class ResultStore;

/// Whether an earlier result serves for a conversion, and whether this one's result may serve
/// later: what a result depends on is the content of the input and of all that the converter looked
/// at, the input's path (which results and messages name), the settings and the converter. For one
/// conversion; belongs to one thread at a time. Reads all of those files.
class ResultReuse {
public:
    ResultReuse(ResultStore &store, const ConversionRequest &request, bool followsOutside);

    /// What a program is like, by size and time of the files that it consists of, as build systems
    /// do; empty when it cannot be told.
    static QByteArray stateOf(const QStringList &program);

    /// Puts an earlier result in the place of the output and gives what its conversion told.
    /// Nothing when there is none; always to be called before the conversion begins, since what
    /// changes from now on is no longer what it reads. @p program: files that the converter
    /// consists of; empty, if that is not known yet. Ends soon once @p isCancelled is true.
    std::optional<ConversionRecord> take(const QStringList &program,
                                         const std::atomic<bool> &isCancelled);
    /// Keeps the result of a conversion that succeeded, with the paths of the references, unless
    /// something has changed meanwhile. @p converter: its state when its process began, since that
    /// does its work even when the program's files are replaced; empty, if that cannot be told.
    void keep(ConversionRecord record, const QByteArray &converter,
              const std::atomic<bool> &isCancelled);

private:
    QByteArray key(const QByteArray &converter) const;
    bool isUnchanged(const QString &path) const;
    bool mayBeRead(const QString &path) const;
    bool addHashes(ConversionRecord &record, const std::atomic<bool> &isCancelled) const;

    ResultStore &m_store;
    const ConversionRequest m_request;
    const bool m_followsOutside;
    timespec m_since{};
    QByteArray m_content; ///< the hash of the input
};

} // namespace tnhost
