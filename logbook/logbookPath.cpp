#include "logbook/logbookPath.h"

#include "module/getFromMessage.h"
#include "platform/tnFile.h"
#include "platform/tnPreferences.h"

QString defaultOutputDirectory()
{
    QString directory;
    getFromMessage(tnPreferences::getData(), "FileIO tmp path", directory);
    return directory.isEmpty() ? tnFile::getTmpDir() : directory;
}

QString logbookPath(const QString &extension)
{
    return defaultOutputDirectory() + QLatin1String("/import-logbook") + extension;
}
