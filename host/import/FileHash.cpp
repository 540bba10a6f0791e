#include "host/import/FileHash.h"

#include "host/import/RegularFile.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace tnhost {

FileHash::FileHash()
    : m_context(EVP_MD_CTX_new(), &EVP_MD_CTX_free)
{
    // A hash needs nothing of the system's settings for the library, which would be read now, and
    // leave something behind for each thread that does so first.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
    if (!m_context || EVP_DigestInit_ex(m_context.get(), EVP_sha256(), nullptr) != 1)
        qBadAlloc();
}

FileHash::~FileHash() = default;

void FileHash::add(const char *bytes, qint64 size)
{
    EVP_DigestUpdate(m_context.get(), bytes, static_cast<std::size_t>(size));
}

QByteArray FileHash::result()
{
    QByteArray hash(EVP_MD_size(EVP_sha256()), '\0');
    EVP_DigestFinal_ex(m_context.get(), reinterpret_cast<unsigned char *>(hash.data()), nullptr);
    return hash;
}

QByteArray FileHash::ofFile(const QString &path, const std::atomic<bool> &isCancelled)
{
    RegularFile file(path);
    FileHash hash;
    // The size as it was at first: a file that grows all the time must come to an end as well.
    const bool isRead =
        file.isOpen() && file.read(0, file.size(), [&](const char *bytes, qint64 n) {
            hash.add(bytes, n);
            return !isCancelled;
        });
    return isRead ? hash.result() : QByteArray();
}

} // namespace tnhost
