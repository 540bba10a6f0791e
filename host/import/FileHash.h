#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <atomic>
#include <memory>

struct evp_md_ctx_st;

namespace tnhost {

/// SHA-256, so that nobody can make a file that passes for another one. By libcrypto, which has the
/// processor do it where that can: six times as fast as Qt's own.
class FileHash {
public:
    FileHash();
    ~FileHash();
    Q_DISABLE_COPY_MOVE(FileHash)

    void add(const QByteArray &bytes) { add(bytes.constData(), bytes.size()); }
    void add(const char *bytes, qint64 size);
    /// The 32 bytes of the hash. Once, as the last call.
    QByteArray result();

    /// Of the content of a regular file. Empty when there is none or it cannot be read, and soon
    /// after @p isCancelled has become true. Costs a second for about 1.5 GB; never waits for
    /// another program.
    static QByteArray ofFile(const QString &path, const std::atomic<bool> &isCancelled);

private:
    std::unique_ptr<evp_md_ctx_st, void (*)(evp_md_ctx_st *)> m_context;
};

} // namespace tnhost
