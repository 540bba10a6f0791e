#pragma once

#include "platform/tnHeaderViewBase.h"

/// The header of a view of class T, which owns it and whose columns its menu shows and hides.
template <typename T>
class tnHeaderView : public tnHeaderViewBase {
public:
    /// The model may be null, and so may the view: then there are no columns to speak of.
    tnHeaderView(QAbstractItemModel *model, QWidget *parent, T *view)
        : tnHeaderViewBase(model, parent)
        , m_view(view)
    {
    }

    void setSectionVisible(int column, bool visible) override
    {
        if (m_view)
            m_view->setColumnHidden(column, !visible);
    }

    bool isSectionVisible(int column) override { return m_view && !m_view->isColumnHidden(column); }

    QAbstractItemModel *viewModel() override { return m_view ? m_view->model() : nullptr; }

private:
    T *m_view;
};
