#pragma once

#include <QtCore/QString>

class QImage;
class QSize;

namespace tnhost {

class Scene;

/// Pictures of scenes on disk.
class PictureFile {
public:
    PictureFile() = delete;

    /// As PNG, whole or not at all. False with a sentence for the user.
    static bool write(const QImage &image, const QString &path, QString *error);
    /// Of all that the scene shows, with no need of a display. Loads the module that draws.
    static bool write(const Scene &scene, const QSize &size, const QString &path, QString *error);
};

} // namespace tnhost
