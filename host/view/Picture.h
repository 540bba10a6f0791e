#pragma once

#include "host/view/Camera.h"

#include <QtGui/QImage>

namespace tnhost {

class Renderer;
class Scene;

/// Pictures of scenes in memory.
class Picture {
public:
    Picture() = delete;

    /// In the context that is current, smoothed, on this background. Changes the state of OpenGL
    /// and binds the framebuffer that was bound again. Null with a sentence for the user where
    /// OpenGL makes no picture of this size.
    static QImage render(Renderer &renderer, const Camera &camera, const QSize &size,
                         const QColor &background, QString *error);
    /// Of all that is shown, as a new view would show it, with no need of a display. Null with a
    /// sentence for the user where there is nothing to see, or no OpenGL.
    static QImage render(const Scene &scene, const QSize &size, QString *error);
};

} // namespace tnhost
