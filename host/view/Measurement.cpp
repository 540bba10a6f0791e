#include "host/view/Measurement.h"

#include "host/scene/Scene.h"
#include "host/view/Camera.h"
#include "host/view/Overlay.h"
#include "host/view/Renderer.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QPainter>

#include <cmath>

namespace tnhost {

namespace {

const QColor lineColor(0xc0, 0x1c, 0x78);

void paintLabel(QPainter &painter, const QPointF &place, const QString &text)
{
    QRectF box = painter.fontMetrics().boundingRect(text);
    box.adjust(-7, -4, 7, 4);
    box.moveCenter(place);
    painter.setPen(Qt::NoPen);
    painter.setBrush(lineColor);
    painter.drawRoundedRect(box, 4, 4);
    painter.setPen(Qt::white);
    painter.drawText(box, Qt::AlignCenter, text);
}

} // namespace

void Measurement::add(const QVector3D &point)
{
    if (m_points.size() == 2)
        m_points.clear();
    m_points.push_back(point);
}

QVector3D Measurement::snap(const Scene &scene, const Hit &hit, float reach)
{
    const SceneNode *node = scene.find(tndNode(hit.node));
    if (!node || !node->mesh())
        return hit.point;
    const QMatrix4x4 world = scene.worldTransform(tndNode(hit.node));
    QVector3D nearest = hit.point;
    float distance = reach;
    for (const ScenePrimitive &primitive : node->mesh()->primitives) {
        for (const QVector3D &position : primitive.positions) {
            const QVector3D point = world.map(position);
            const float away = (point - hit.point).length();
            if (away < distance) {
                nearest = point;
                distance = away;
            }
        }
    }
    return nearest;
}

QString Measurement::text() const
{
    if (m_points.size() < 2)
        return {};
    const QVector3D way = m_points[1] - m_points[0];
    return QCoreApplication::translate("Measurement", "%1 mm   (x %2, y %3, z %4)")
        .arg(Overlay::length(way.length()), Overlay::length(std::abs(way.x())),
             Overlay::length(std::abs(way.y())), Overlay::length(std::abs(way.z())));
}

void Measurement::paint(QPainter &painter, const QSizeF &size, const Camera &camera) const
{
    QPolygonF line;
    for (const QVector3D &point : m_points) {
        if (camera.depthOf(point) <= 0 && !camera.isOrthographic())
            return; // behind the eye
        line << camera.project(point, size);
    }
    painter.setPen(QPen(lineColor, 2));
    painter.setBrush(lineColor);
    painter.drawPolyline(line);
    for (const QPointF &end : qAsConst(line))
        painter.drawEllipse(end, 3, 3);
    if (line.size() == 2)
        paintLabel(painter, (line[0] + line[1]) / 2, text());
}

} // namespace tnhost
