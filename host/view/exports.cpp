#include "host/view/Picture.h"
#include "host/view/ViewWidget.h"

// The module's only exports; SceneDisplay.h says what they do.

extern "C" Q_DECL_EXPORT tnhost::SceneDisplay *tnCreateView(tnhost::Scene &scene, QString *error)
{
    return tnhost::ViewWidget::create(scene, error);
}

extern "C" Q_DECL_EXPORT void tnRenderPicture(const tnhost::Scene &scene, const QSize &size,
                                              QImage &image, QString *error)
{
    image = tnhost::Picture::render(scene, size, error);
}
