#include "host/import/WorkDirectory.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QDir>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnhost {

namespace {

const QString prefix = QStringLiteral(".tnhost-import-");
constexpr int attempts = 5;

QString ownerFile(const QString &directory)
{
    return directory + QStringLiteral("/owner");
}

/// The locked file's descriptor; -1 when it cannot be opened, or is another process's. Where there
/// are no locks the file counts as locked for who makes it, and as another's for all else.
int lock(const QString &path, int flags)
{
    const int file =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
    if (file < 0)
        return -1;
    if (::flock(file, LOCK_EX | LOCK_NB) == 0 || ((flags & O_CREAT) && errno != EWOULDBLOCK))
        return file;
    ::close(file);
    return -1;
}

/// Whether the file still has a name: another process may have taken it for an orphan's.
bool isOnDisk(int file)
{
    struct stat facts { };
    return ::fstat(file, &facts) == 0 && facts.st_nlink > 0;
}

void removeOrphans(const QString &place)
{
    const QStringList names =
        QDir(place).entryList({prefix + QStringLiteral("*")}, QDir::Dirs | QDir::Hidden);
    for (const QString &name : names) {
        const QString path = QDir(place).filePath(name);
        const int file = lock(ownerFile(path), 0);
        if (file < 0)
            continue;
        QDir(path).removeRecursively();
        ::close(file);
    }
}

} // namespace

WorkDirectory::WorkDirectory(const QString &place)
{
    removeOrphans(place);
    for (int i = 0; i < attempts && !m_directory; ++i) {
        if (!makeOwn(QDir(place).filePath(prefix + QStringLiteral("XXXXXX"))))
            m_directory.reset();
    }
    if (m_directory)
        m_path = m_directory->path();
}

WorkDirectory::~WorkDirectory()
{
    m_directory.reset();
    if (m_lock >= 0)
        ::close(m_lock);
}

/// Fails as well when another process looks for orphans just now.
bool WorkDirectory::makeOwn(const QString &pattern)
{
    m_directory = std::make_unique<QTemporaryDir>(pattern);
    if (!m_directory->isValid())
        return false;
    m_lock = lock(ownerFile(m_directory->path()), O_CREAT | O_EXCL);
    if (m_lock < 0)
        return false;
    const QByteArray owner = QStringLiteral("process %1, %2\n")
                                 .arg(QString::number(QCoreApplication::applicationPid()),
                                      QDateTime::currentDateTime().toString(Qt::ISODate))
                                 .toUtf8();
    if (isOnDisk(m_lock)) {
        // For who wonders about the directory; nothing is lost without it.
        [[maybe_unused]] const ssize_t written =
            ::write(m_lock, owner.constData(), static_cast<std::size_t>(owner.size()));
        return true;
    }
    ::close(m_lock);
    m_lock = -1;
    return false;
}

} // namespace tnhost
