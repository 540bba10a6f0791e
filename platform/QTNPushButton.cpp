#include "platform/QTNPushButton.h"

#include <QtWidgets/QStyleOptionButton>
#include <QtWidgets/QStylePainter>

namespace {

// Around the icon, on each side.
constexpr int iconMargin = 3;

} // namespace

QTNPushButton::QTNPushButton(QWidget *parent)
    : QPushButton(parent)
{
    setAttribute(Qt::WA_Hover);
}

QSize QTNPushButton::sizeHint() const
{
    if (!text().isEmpty())
        return QPushButton::sizeHint();
    return iconSize() + 2 * QSize(iconMargin, iconMargin);
}

QSize QTNPushButton::minimumSizeHint() const
{
    return sizeHint();
}

void QTNPushButton::paintEvent(QPaintEvent *event)
{
    if (!text().isEmpty()) {
        QPushButton::paintEvent(event);
        return;
    }
    QStyleOptionButton option;
    initStyleOption(&option);
    // A default button's frame would not fit around an icon.
    option.features &= ~(QStyleOptionButton::DefaultButton | QStyleOptionButton::AutoDefaultButton);
    const bool raised =
        option.state & (QStyle::State_MouseOver | QStyle::State_Sunken | QStyle::State_On);
    option.features.setFlag(QStyleOptionButton::Flat, !raised);
    QStylePainter(this).drawControl(QStyle::CE_PushButton, option);
}
