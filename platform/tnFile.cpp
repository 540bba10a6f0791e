#include "platform/tnFile.h"

#include "platform/tnLog.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

bool tnFile::createPath(const std::string &path)
{
    return !path.empty() && QDir().mkpath(QString::fromStdString(path));
}

bool tnFile::checkWrite(const std::string &path, bool isFile, bool report)
{
    bool writable = false;
    if (!path.empty()) {
        const QFileInfo info(QString::fromStdString(path));
        if (isFile && !info.exists()) {
            const QFileInfo parent(info.absolutePath());
            writable = parent.isDir() && parent.isWritable();
        } else {
            writable = info.isWritable() && (isFile ? info.isFile() : info.isDir());
        }
    }
    if (!writable && report)
        tnLog::error("'%s' is not writable", path.c_str());
    return writable;
}

QString tnFile::getTmpDir()
{
    // Empty when the environment names a directory that is not there.
    const QString path = QDir::tempPath();
    return path.isEmpty() ? QDir::rootPath() + QLatin1String("tmp") : path;
}
