#pragma once

#include "platform/tnPlatformExport.h"

#include <QtWidgets/QHeaderView>

/// The horizontal header of the host's lists: sections that sort and move, and a context menu that
/// shows and hides columns. Who owns the columns can take over their visibility through the
/// virtual operations; by default they are the header's own.
class TNPLATFORM_EXPORT tnHeaderViewBase : public QHeaderView {
    Q_OBJECT

public:
    /// The model may be null; the view that takes the header brings its own then.
    tnHeaderViewBase(QAbstractItemModel *model, QWidget *parent);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void toggleColumn(int column, bool visible);
    int visibleColumns();

    int m_sortSectionBeforePress = -1;
    Qt::SortOrder m_sortOrderBeforePress = Qt::DescendingOrder;

public:
    // The last entries of the virtual table; derived classes rely on their order.
    virtual void setSectionVisible(int column, bool visible);
    virtual bool isSectionVisible(int column);
    /// The model whose header texts name the columns, or null.
    virtual QAbstractItemModel *viewModel();
};
