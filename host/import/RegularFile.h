#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <functional>

#include <sys/stat.h>

namespace tnhost {

/// A file that is read in large pieces, without ever waiting: what is no regular file does not
/// open.
class RegularFile {
public:
    explicit RegularFile(const QString &path);
    ~RegularFile();
    Q_DISABLE_COPY_MOVE(RegularFile)

    bool isOpen() const { return m_file >= 0; }
    /// As it was when the file was opened.
    qint64 size() const { return m_facts.st_size; }
    /// Hands @p size bytes from @p offset on to @p take, piece by piece. False when there are fewer
    /// or take() gives false.
    bool read(qint64 offset, qint64 size,
              const std::function<bool(const char *, qint64)> &take) const;
    /// The same in one piece; null when there are fewer.
    QByteArray read(qint64 offset, qint64 size) const;

private:
    int m_file = -1;
    struct stat m_facts { };
};

} // namespace tnhost
