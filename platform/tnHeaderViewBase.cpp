#include "platform/tnHeaderViewBase.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QSignalBlocker>
#include <QtGui/QContextMenuEvent>
#include <QtWidgets/QMenu>
#include <QtWidgets/QStyleOptionFocusRect>
#include <QtWidgets/QStylePainter>

tnHeaderViewBase::tnHeaderViewBase(QAbstractItemModel *model, QWidget *parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    setSectionsClickable(true);
    setSectionsMovable(true);
    setHighlightSections(false);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setTextElideMode(Qt::ElideRight);
    // Rows stand in the model's order until the user sorts; no arrow may claim otherwise.
    setSortIndicator(-1, Qt::DescendingOrder);
    // Reachable without a mouse, for the sake of the menu key.
    setFocusPolicy(Qt::TabFocus);
    if (model)
        setModel(model);
}

void tnHeaderViewBase::contextMenuEvent(QContextMenuEvent *event)
{
    const QAbstractItemModel *const columns = viewModel();
    const int count = columns ? columns->columnCount() : 0;
    if (count == 0) {
        event->ignore();
        return;
    }

    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const bool lastOne = visibleColumns() < 2;
    for (int column = 0; column < count; ++column) {
        QString text = columns->headerData(column, Qt::Horizontal).toString();
        if (text.isEmpty())
            text = tr("Column %1").arg(column + 1);
        text.replace(QLatin1Char('&'), QStringLiteral("&&"));
        QAction *const action = menu->addAction(text);
        const bool visible = isSectionVisible(column);
        action->setCheckable(true);
        action->setChecked(visible);
        action->setEnabled(!visible || !lastOne);
        connect(action, &QAction::triggered, this,
                [this, column](bool checked) { toggleColumn(column, checked); });
    }
    QPoint position = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        // Below the first column; what comes with the event is the middle of the header.
        position = isRightToLeft() ? rect().bottomRight() - QPoint(menu->sizeHint().width(), 0)
                                   : rect().bottomLeft();
        position = mapToGlobal(position);
    }
    menu->popup(position);
    event->accept();
}

void tnHeaderViewBase::toggleColumn(int column, bool visible)
{
    // Columns may have gone while the menu was open, and without any column there would be no
    // header left to bring them back.
    if (visible || visibleColumns() > 1)
        setSectionVisible(column, visible);
}

int tnHeaderViewBase::visibleColumns()
{
    const QAbstractItemModel *const columns = viewModel();
    int visible = 0;
    for (int column = 0; columns && column < columns->columnCount(); ++column)
        visible += isSectionVisible(column) ? 1 : 0;
    return visible;
}

void tnHeaderViewBase::focusInEvent(QFocusEvent *event)
{
    QHeaderView::focusInEvent(event);
    viewport()->update();
}

void tnHeaderViewBase::focusOutEvent(QFocusEvent *event)
{
    QHeaderView::focusOutEvent(event);
    viewport()->update();
}

void tnHeaderViewBase::mousePressEvent(QMouseEvent *event)
{
    m_sortSectionBeforePress = sortIndicatorSection();
    m_sortOrderBeforePress = sortIndicatorOrder();
    QHeaderView::mousePressEvent(event);
}

void tnHeaderViewBase::mouseDoubleClickEvent(QMouseEvent *event)
{
    // The first click of the two has sorted already. Who handles double clicks by changing the
    // order means the order from before, or both changes would cancel each other out.
    if (isSignalConnected(QMetaMethod::fromSignal(&QHeaderView::sectionDoubleClicked))) {
        const QSignalBlocker quiet(this);
        setSortIndicator(m_sortSectionBeforePress, m_sortOrderBeforePress);
    }
    QHeaderView::mouseDoubleClickEvent(event);
}

void tnHeaderViewBase::paintEvent(QPaintEvent *event)
{
    QHeaderView::paintEvent(event);
    if (!hasFocus())
        return;
    QStylePainter painter(viewport());
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = viewport()->rect();
    focus.backgroundColor = palette().color(QPalette::Button);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
}

void tnHeaderViewBase::setSectionVisible(int column, bool visible)
{
    setSectionHidden(column, !visible);
}

bool tnHeaderViewBase::isSectionVisible(int column)
{
    return !isSectionHidden(column);
}

QAbstractItemModel *tnHeaderViewBase::viewModel()
{
    return model();
}
