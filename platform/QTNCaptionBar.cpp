#include "platform/QTNCaptionBar.h"

#include <QtGui/QAccessible>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QStyleOptionFocusRect>
#include <QtWidgets/QStylePainter>

#include <algorithm>

namespace {

// How much of the text colour tints the bar, in percent. Mixing keeps the bar apart from the window
// in light and in dark palettes alike.
constexpr int tintAtRest = 9;
constexpr int tintUnderMouse = 16;
constexpr int tintPressed = 24;
constexpr qreal cornerRadius = 3.0;

QColor mixed(const QColor &base, const QColor &tint, int percent)
{
    const auto mix = [percent](int from, int to) { return from + (to - from) * percent / 100; };
    return QColor(mix(base.red(), tint.red()), mix(base.green(), tint.green()),
                  mix(base.blue(), tint.blue()));
}

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
    const int tint = isDown() ? tintPressed : hovered ? tintUnderMouse : tintAtRest;
    const QColor background =
        mixed(palette().color(QPalette::Window), palette().color(QPalette::WindowText), tint);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
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
        textRect, int(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter)),
        palette(), isEnabled(),
        fontMetrics().elidedText(m_caption, Qt::ElideRight, textRect.width()),
        QPalette::WindowText);

    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.backgroundColor = background;
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}
