#include "host/view/Camera.h"

#include <QtCore/QtMath>

#include <algorithm>
#include <cmath>

namespace tnhost {

namespace {

constexpr float angle = 30;
constexpr float room = 1.1F;
constexpr float leastDistance = 0.01F;
constexpr float mostDistance = 1e8F;

float halfTangent()
{
    return std::tan(qDegreesToRadians(angle / 2));
}

} // namespace

void Camera::look(Direction direction)
{
    const struct {
        float yaw;
        float pitch;
    } angles[] = {{0, 0}, {180, 0}, {-90, 0}, {90, 0}, {0, 90}, {0, -90}, {45, 35.264F}};
    m_yaw = angles[static_cast<int>(direction)].yaw;
    m_pitch = angles[static_cast<int>(direction)].pitch;
}

void Camera::orbit(float yaw, float pitch, const QVector3D &pivot)
{
    const QQuaternion before = orientation();
    m_yaw = std::remainder(m_yaw - yaw, 360.0F);
    m_pitch = std::clamp(m_pitch + pitch, -90.0F, 90.0F);
    m_focus = pivot + (orientation() * before.conjugated()).rotatedVector(m_focus - pivot);
}

void Camera::pan(const QPointF &from, const QPointF &to, const QSizeF &size, const QVector3D &point)
{
    m_focus += unproject(from, size, point) - unproject(to, size, point);
}

void Camera::zoom(float factor, const QVector3D &fixed)
{
    const float distance = std::clamp(m_distance / factor, leastDistance, mostDistance);
    m_focus = fixed + (m_focus - fixed) * (distance / m_distance);
    m_distance = distance;
}

void Camera::fit(const BoundingBox &box, const QSizeF &size)
{
    if (box.isEmpty() || size.isEmpty())
        return;
    const float aspect = static_cast<float>(size.width() / size.height());
    const QQuaternion toView = orientation().conjugated();
    float distance = leastDistance;
    for (int corner = 0; corner < 8; ++corner) {
        const QVector3D point(corner & 1 ? box.max.x() : box.min.x(),
                              corner & 2 ? box.max.y() : box.min.y(),
                              corner & 4 ? box.max.z() : box.min.z());
        const QVector3D seen = toView.rotatedVector(point - box.center());
        const float half = std::max(std::abs(seen.x()) / aspect, std::abs(seen.y()));
        const float nearer = m_isOrthographic ? 0 : seen.z();
        distance = std::max(distance, room * half / halfTangent() + nearer);
    }
    m_focus = box.center();
    m_distance = std::min(distance, mostDistance);
}

QQuaternion Camera::orientation() const
{
    // Unturned, a camera looks along -z with y upwards; the front view looks along y.
    return QQuaternion::fromAxisAndAngle(0, 0, 1, m_yaw)
        * QQuaternion::fromAxisAndAngle(1, 0, 0, 90 - m_pitch);
}

QVector3D Camera::position() const
{
    return m_focus - forward() * m_distance;
}

QVector3D Camera::forward() const
{
    return orientation().rotatedVector(QVector3D(0, 0, -1));
}

float Camera::height() const
{
    return 2 * m_distance * halfTangent();
}

float Camera::verticalAngle()
{
    return angle;
}

float Camera::depthOf(const QVector3D &point) const
{
    return QVector3D::dotProduct(point - position(), forward());
}

float Camera::heightAt(const QVector3D &point) const
{
    return m_isOrthographic ? height()
                            : 2 * std::max(depthOf(point), leastDistance) * halfTangent();
}

QPointF Camera::project(const QVector3D &point, const QSizeF &size) const
{
    const QVector3D seen = orientation().conjugated().rotatedVector(point - position());
    const double scale = size.height() / static_cast<double>(heightAt(point));
    return {size.width() / 2 + static_cast<double>(seen.x()) * scale,
            size.height() / 2 - static_cast<double>(seen.y()) * scale};
}

QVector3D Camera::unproject(const QPointF &place, const QSizeF &size, const QVector3D &deep) const
{
    const double scale = static_cast<double>(heightAt(deep)) / size.height();
    const QVector3D seen(static_cast<float>((place.x() - size.width() / 2) * scale),
                         static_cast<float>((size.height() / 2 - place.y()) * scale),
                         -depthOf(deep));
    return position() + orientation().rotatedVector(seen);
}

void Camera::setFocusDepth(const QVector3D &point)
{
    const float depth = depthOf(point);
    if (depth < leastDistance || m_isOrthographic)
        return;
    m_focus = position() + forward() * depth;
    m_distance = depth;
}

} // namespace tnhost
