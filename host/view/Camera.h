#pragma once

#include "host/scene/BoundingBox.h"
#include "host/view/SceneDisplay.h"

#include <QtCore/QPointF>
#include <QtCore/QSizeF>
#include <QtGui/QQuaternion>
#include <QtGui/QVector3D>

namespace tnhost {

/// Where one looks from, and what the hands do to it. The world's z axis always stands upright in
/// the picture. Lengths in mm, angles in degrees; points of the picture count from its upper left
/// corner in units of its size.
class Camera {
public:
    /// Turns about what is looked at.
    void look(Direction direction);
    /// Whether what is farther away is no smaller. What is looked at keeps its size.
    void setOrthographic(bool isOrthographic) { m_isOrthographic = isOrthographic; }
    bool isOrthographic() const { return m_isOrthographic; }
    /// Turns the view: to the right and to below by so much, about a point that stays in its place
    /// of the picture.
    void orbit(float yaw, float pitch, const QVector3D &pivot);
    /// Moves what lies in the depth of the point along with the pointer.
    void pan(const QPointF &from, const QPointF &to, const QSizeF &size, const QVector3D &point);
    /// Makes everything larger by the factor, about a point that stays in its place of the picture.
    /// Ends at sizes that no model has.
    void zoom(float factor, const QVector3D &fixed);
    /// Brings the box into a picture of this size, with a little room around it. The direction
    /// stays. An empty box changes nothing.
    void fit(const BoundingBox &box, const QSizeF &size);

    QQuaternion orientation() const;
    QVector3D position() const;
    QVector3D forward() const;
    /// From the camera to what is looked at.
    float distance() const { return m_distance; }
    /// Of what fits into the picture from top to bottom, at that distance.
    float height() const;
    static float verticalAngle();

    /// The distance of the point along the line of sight; negative behind the camera.
    float depthOf(const QVector3D &point) const;
    QPointF project(const QVector3D &point, const QSizeF &size) const;
    /// The point at that place of the picture, as deep as the other one.
    QVector3D unproject(const QPointF &place, const QSizeF &size, const QVector3D &deep) const;
    const QVector3D &focus() const { return m_focus; }
    /// Makes the distance that of the point, while the picture stays as it is; nothing where that
    /// cannot be.
    void setFocusDepth(const QVector3D &point);

private:
    /// Of the picture, from top to bottom, in the depth of the point.
    float heightAt(const QVector3D &point) const;

    float m_yaw = 45;
    float m_pitch = 35.264F;
    bool m_isOrthographic = false;
    float m_distance = 1000;
    QVector3D m_focus;
};

} // namespace tnhost
