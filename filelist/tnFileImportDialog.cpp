#include "filelist/tnFileImportDialog.h"

#include "platform/tnFileIO.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSettings>

namespace {

QString lastDirectoryKey()
{
    return QStringLiteral("importDialog/lastDirectory");
}

} // namespace

tnFileImportDialog::tnFileImportDialog()
    : QFileDialog(nullptr, "", "", "")
{
    setModal(true);
    setWindowTitle(QCoreApplication::translate("tnFileImportPreferencesGUI", "Import File(s)"));
    setFileMode(QFileDialog::ExistingFiles);
    constexpr auto readableFiles = static_cast<tnFileTypes::FileExtensionFilterMode>(
        tnFileTypes::FilterAllReadable | tnFileTypes::FilterPerType | tnFileTypes::FilterAnyFile);
    setNameFilter(tnFileIO::getReadFileTypesFilter(readableFiles));
    // An empty directory would be the root of the file system instead of the usual place.
    const QString last = QSettings().value(lastDirectoryKey(), "").toString();
    if (!last.isEmpty())
        setDirectory(last);
}

QStringList tnFileImportDialog::selectedImportFiles() const
{
    const QStringList files = selectedFiles();
    if (!files.isEmpty())
        storeLastDirectory(QFileInfo(files.first()).absoluteDir().absolutePath());
    return files;
}

void tnFileImportDialog::storeLastDirectory(const QString &directory) const
{
    if (!directory.isEmpty())
        QSettings().setValue(lastDirectoryKey(), directory);
}
