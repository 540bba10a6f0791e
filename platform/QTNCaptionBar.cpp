#include "platform/QTNCaptionBar.h"

#include <QtGui/QAccessible>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QStyleOption>
#include <QtWidgets/QStylePainter>

namespace {

// How much of the text colour tints the bar. The tint keeps the bar apart from the window in light
// and in dark palettes alike.
constexpr qreal tintAtRest = 0.09;
constexpr qreal tintUnderMouse = 0.16;
constexpr qreal tintPressed = 0.24;
constexpr qreal cornerRadius = 3.0;
constexpr qreal focusLine = 1.5;

} // namespace

QTNCaptionBar::QTNCaptionBar(QWidget *parent)
    : QAbstractButton(parent)
{
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    QFont bold = font();
    bold.setBold(true);
    setFont(bold);
    connect(this, &QAbstractButton::clicked, this,
            [this] { emit collapseRequested(!m_collapsed); });
}

void QTNCaptionBar::setCaption(const QString &caption)
{
    m_caption = caption;
    setAccessibleName(caption);
    updateGeometry();
    update();
}

void QTNCaptionBar::setCollapsed(bool collapsed)
{
    if (m_collapsed == collapsed)
        return;
    m_collapsed = collapsed;
    update();
    if (QAccessible::isActive()) {
        QAccessible::State changed;
        changed.expanded = true;
        changed.collapsed = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
}

int QTNCaptionBar::padding() const
{
    return fontMetrics().height() / 4;
}

int QTNCaptionBar::arrowSize() const
{
    return fontMetrics().height();
}

QSize QTNCaptionBar::sizeHint() const
{
    return minimumSizeHint() + QSize(fontMetrics().horizontalAdvance(m_caption), 0);
}

QSize QTNCaptionBar::minimumSizeHint() const
{
    // A long caption is cut rather than widening the panel that it stands in.
    return QSize(3 * padding() + arrowSize(), fontMetrics().height() + 2 * padding());
}

void QTNCaptionBar::keyPressEvent(QKeyEvent *event)
{
    const bool rightToLeft = isRightToLeft();
    switch (event->key()) {
    case Qt::Key_Enter:
    case Qt::Key_Return:
        // Taken here, or else the dialog's default button would have it.
        if (!event->isAutoRepeat())
            click();
        break;
    case Qt::Key_Left:
    case Qt::Key_Right:
        // As in a tree: towards the arrow's side folds, away from it unfolds.
        emit collapseRequested((event->key() == Qt::Key_Left) != rightToLeft);
        break;
    default:
        QAbstractButton::keyPressEvent(event);
    }
}

void QTNCaptionBar::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOption option;
    option.initFrom(this);

    const bool hovered = option.state.testFlag(QStyle::State_MouseOver);
    QColor background = palette().color(QPalette::WindowText);
    background.setAlphaF(isDown() ? tintPressed : hovered ? tintUnderMouse : tintAtRest);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
    if (option.state & QStyle::State_HasFocus && option.state & QStyle::State_KeyboardFocusChange) {
        // Drawn here, since the frame that styles offer is hard to see on a tinted bar.
        constexpr qreal inset = focusLine / 2;
        painter.setPen(QPen(palette().color(QPalette::Highlight), focusLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius,
                                cornerRadius);
    }
    painter.restore();

    QStyleOption arrow = option;
    arrow.rect = QStyle::visualRect(
        layoutDirection(), rect(),
        QRect(padding(), (height() - arrowSize()) / 2, arrowSize(), arrowSize()));
    painter.drawPrimitive(!m_collapsed          ? QStyle::PE_IndicatorArrowDown
                              : isRightToLeft() ? QStyle::PE_IndicatorArrowLeft
                                                : QStyle::PE_IndicatorArrowRight,
                          arrow);

    const QRect textRect = QStyle::visualRect(
        layoutDirection(), rect(), rect().adjusted(2 * padding() + arrowSize(), 0, -padding(), 0));
    painter.drawItemText(
        textRect, QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter),
        palette(), isEnabled(),
        fontMetrics().elidedText(m_caption, Qt::ElideRight, textRect.width()),
        QPalette::WindowText);
}
