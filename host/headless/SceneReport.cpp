#include "host/headless/SceneReport.h"

#include "host/scene/Scene.h"

namespace tnhost {

namespace {

QString number(float value)
{
    const QString text = QString::number(static_cast<double>(value), 'f', 3);
    return text == QLatin1String("-0.000") ? QStringLiteral("0.000") : text;
}

void append(QStringList &lines, const Scene &scene, const SceneNode &node, int depth)
{
    const tndNode handle(node.id());
    const BoundingBox box = scene.boundingBox(handle);
    QString line(2 * depth, QLatin1Char(' '));
    line += node.name().isEmpty() ? QStringLiteral("(no name)") : node.name();
    line += QStringLiteral(": %1 triangles, ").arg(scene.triangleCount(handle));
    line += box.isEmpty()
        ? QStringLiteral("empty")
        : QStringLiteral("%1 to %2 mm").arg(SceneReport::text(box.min), SceneReport::text(box.max));
    lines << line;
    for (const auto &child : node.children())
        append(lines, scene, *child, depth + 1);
}

} // namespace

QStringList SceneReport::lines(const Scene &scene, const tndNode &top)
{
    QStringList result;
    if (const SceneNode *node = scene.find(top))
        append(result, scene, *node, 0);
    return result;
}

QString SceneReport::text(const QVector3D &point)
{
    return QStringLiteral("(%1, %2, %3)")
        .arg(number(point.x()), number(point.y()), number(point.z()));
}

} // namespace tnhost
