#pragma once

#include "host/view/SceneDisplay.h"

namespace tnhost {

/// The module that draws scenes. It is loaded on first need and stays loaded; a failure costs no
/// more than the search for a file.
class ViewModule {
public:
    ViewModule() = delete;

    /// See ViewFactory. Null with a sentence for the user also where the module is missing.
    static SceneDisplay *createView(Scene &scene, QString *error);
    /// See PictureFunction.
    static QImage renderPicture(const Scene &scene, const QSize &size, QString *error);
};

} // namespace tnhost
