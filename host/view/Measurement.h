#pragma once

#include <QtCore/QSizeF>
#include <QtGui/QVector3D>

#include <vector>

class QPainter;

namespace tnhost {

class Camera;
class Scene;
struct Hit;

/// The distance between two points that the user picks one after the other; a third one begins
/// anew.
class Measurement {
public:
    void add(const QVector3D &point);
    void clear() { m_points.clear(); }
    const std::vector<QVector3D> &points() const { return m_points; }

    /// The vertex of the hit part that is nearest to the hit, but the hit itself where there is
    /// none within reach, in mm: corners are meant more often than what lies beside them.
    /// O(vertices of the part).
    static QVector3D snap(const Scene &scene, const Hit &hit, float reach);
    /// The distance, in the user's own notation, and its parts along the axes; empty before there
    /// are two points.
    QString text() const;
    /// Draws points, line and text into a picture of that size.
    void paint(QPainter &painter, const QSizeF &size, const Camera &camera) const;

private:
    std::vector<QVector3D> m_points; ///< two at most
};

} // namespace tnhost
