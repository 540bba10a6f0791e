#include "platform/QTNSeparator.h"

#include <QtGui/QPainter>

QTNSeparator::QTNSeparator(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize QTNSeparator::sizeHint() const
{
    return QSize(0, 3);
}

void QTNSeparator::paintEvent(QPaintEvent *)
{
    QColor faint = palette().color(QPalette::WindowText);
    faint.setAlphaF(0.25);
    QPainter(this).fillRect(0, height() / 2, width(), 1, faint);
}
