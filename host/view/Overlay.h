#pragma once

#include <QtCore/QSize>
#include <QtCore/QString>

class QColor;
class QPainter;

namespace tnhost {

class Camera;
struct BoundingBox;

/// What is written over the picture, in the given colour: the axes of the world, and the size of
/// what is shown.
class Overlay {
public:
    Overlay() = delete;

    static void paint(QPainter &painter, const QSize &size, const Camera &camera,
                      const BoundingBox &shown, const QColor &text);
    /// "10 × 20 × 30 mm", empty for an empty box.
    static QString sizeText(const BoundingBox &box);
    /// A length in mm, with as many digits as say something, in the user's own notation.
    static QString length(float millimetres);
};

} // namespace tnhost
