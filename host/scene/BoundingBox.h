#pragma once

#include <QtGui/QVector3D>

#include <algorithm>
#include <limits>

namespace tnhost {

/// Axis-aligned box in mm. Empty until the first point has been added.
struct BoundingBox {
    QVector3D min = QVector3D(highest, highest, highest);
    QVector3D max = QVector3D(-highest, -highest, -highest);

    bool isEmpty() const { return min.x() > max.x(); }
    QVector3D center() const { return isEmpty() ? QVector3D() : (min + max) / 2.0F; }

    void add(const QVector3D &point)
    {
        min = QVector3D(std::min(min.x(), point.x()), std::min(min.y(), point.y()),
                        std::min(min.z(), point.z()));
        max = QVector3D(std::max(max.x(), point.x()), std::max(max.y(), point.y()),
                        std::max(max.z(), point.z()));
    }

    void add(const BoundingBox &other)
    {
        if (other.isEmpty())
            return;
        add(other.min);
        add(other.max);
    }

private:
    static constexpr float highest = std::numeric_limits<float>::max();
};

} // namespace tnhost
