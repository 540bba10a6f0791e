#include "host/view/Overlay.h"

#include "host/scene/BoundingBox.h"
#include "host/view/Camera.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtGui/QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace tnhost {

namespace {

constexpr int margin = 12;
constexpr int axisLength = 32;

struct Axis {
    QString name;
    QColor color;
    QVector3D direction;
};

void paintAxes(QPainter &painter, const QPointF &origin, const Camera &camera)
{
    std::array<Axis, 3> axes{{{QStringLiteral("x"), QColor(0xd0, 0x3c, 0x3c), {1, 0, 0}},
                              {QStringLiteral("y"), QColor(0x3a, 0x9a, 0x3a), {0, 1, 0}},
                              {QStringLiteral("z"), QColor(0x3c, 0x72, 0xd8), {0, 0, 1}}}};
    for (Axis &axis : axes)
        axis.direction = camera.orientation().conjugated().rotatedVector(axis.direction);
    // Those that come towards the eye cover the others.
    std::sort(axes.begin(), axes.end(),
              [](const Axis &a, const Axis &b) { return a.direction.z() < b.direction.z(); });
    for (const Axis &axis : axes) {
        const QPointF along(static_cast<double>(axis.direction.x()),
                            static_cast<double>(-axis.direction.y()));
        painter.setPen(QPen(axis.color, 2));
        painter.drawLine(origin, origin + along * axisLength);
        QRectF letter(0, 0, 16, 16);
        letter.moveCenter(origin + along * (axisLength + 9));
        painter.drawText(letter, Qt::AlignCenter, axis.name);
    }
}

} // namespace

void Overlay::paint(QPainter &painter, const QSize &size, const Camera &camera,
                    const BoundingBox &shown, const QColor &text)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const int reach = margin + axisLength + 16;
    paintAxes(painter, QPointF(reach, size.height() - reach), camera);
    painter.setPen(text);
    painter.drawText(QRect({}, size).adjusted(margin, margin, -margin, -margin),
                     Qt::AlignRight | Qt::AlignBottom, sizeText(shown));
}

QString Overlay::sizeText(const BoundingBox &box)
{
    if (box.isEmpty())
        return {};
    const QVector3D size = box.max - box.min;
    return QCoreApplication::translate("Overlay", "%1 × %2 × %3 mm")
        .arg(length(size.x()), length(size.y()), length(size.z()));
}

QString Overlay::length(float millimetres)
{
    const int whole =
        millimetres < 1 ? 0 : static_cast<int>(std::floor(std::log10(millimetres))) + 1;
    const int decimals = std::clamp(5 - whole, 0, 3);
    QString text = QLocale().toString(static_cast<double>(millimetres), 'f', decimals);
    const QString point = QLocale().decimalPoint();
    if (text.contains(point)) {
        while (text.endsWith(QLocale().zeroDigit()))
            text.chop(1);
        if (text.endsWith(point))
            text.chop(1);
    }
    return text;
}

} // namespace tnhost
