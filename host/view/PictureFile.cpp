#include "host/view/PictureFile.h"

#include "host/view/ViewModule.h"

#include <QtCore/QSaveFile>
#include <QtGui/QImage>

namespace tnhost {

bool PictureFile::write(const QImage &image, const QString &path, QString *error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && image.save(&file, "PNG") && file.commit())
        return true;
    *error = QStringLiteral("The picture %1 cannot be written: %2.").arg(path, file.errorString());
    return false;
}

bool PictureFile::write(const Scene &scene, const QSize &size, const QString &path, QString *error)
{
    QString reason;
    const QImage image = ViewModule::renderPicture(scene, size, &reason);
    if (!image.isNull())
        return write(image, path, error);
    *error = QStringLiteral("The picture %1 was not made: %2").arg(path, reason);
    return false;
}

} // namespace tnhost
