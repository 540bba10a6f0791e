#include "platform/QTNComboBox.h"

#include <QtGui/QWheelEvent>

namespace {

// Keeps a box that is filled later from starting as a mere arrow.
constexpr int shortestContents = 12;

} // namespace

QTNComboBox::QTNComboBox(QWidget *parent)
    : QComboBox(parent)
{
    // Not WheelFocus, or else the wheel itself would bring the focus that lets it in.
    setFocusPolicy(Qt::StrongFocus);
    setMinimumContentsLength(shortestContents);
}

void QTNComboBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}
