#include "platform/QTNCollapsibleFrame.h"

#include "platform/QTNCaptionBar.h"
#include "platform/tnPlatform.h"

#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QVBoxLayout>

namespace {

/// The caption bar as a button that tells whether it is expanded.
class AccessibleCaption : public QAccessibleWidget {
public:
    explicit AccessibleCaption(QTNCaptionBar *bar)
        : QAccessibleWidget(bar, QAccessible::Button)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = !bar()->isCollapsed();
        state.collapsed = bar()->isCollapsed();
        return state;
    }
    QStringList actionNames() const override
    {
        return QStringList(pressAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString &action) override
    {
        if (action == pressAction())
            bar()->click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    QTNCaptionBar *bar() const { return static_cast<QTNCaptionBar *>(widget()); }
};

QAccessibleInterface *accessibleInterface(const QString &, QObject *object)
{
    if (auto *const bar = qobject_cast<QTNCaptionBar *>(object))
        return new AccessibleCaption(bar);
    if (auto *const frame = qobject_cast<QTNCollapsibleFrame *>(object))
        return new QAccessibleWidget(frame, QAccessible::Grouping);
    return nullptr;
}

// Pages are for panels at the side of a window, where width is scarce: their text is a little
// smaller than that of the window, and what stands in a row stands closer.
constexpr double pageFontSize = 0.88;
constexpr int pageSpacing = 4;
constexpr int pageRightMargin = 2;

void condense(QWidget *page)
{
    QFont font = page->font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * pageFontSize);
    else
        font.setPixelSize(qRound(font.pixelSize() * pageFontSize));
    page->setFont(font);
    for (QGridLayout *const grid : page->findChildren<QGridLayout *>())
        grid->setHorizontalSpacing(pageSpacing);
    if (QLayout *const layout = page->layout()) {
        QMargins margins = layout->contentsMargins();
        margins.setRight(pageRightMargin);
        layout->setContentsMargins(margins);
    }
}

QVBoxLayout *makeStack(QWidget *widget)
{
    auto *const layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

bool fixGrid(QGridLayout *grid, int width)
{
    if (grid)
        grid->setColumnMinimumWidth(0, qRound(width * tnPlatform::getDpiScaleX()));
    return grid;
}

QGridLayout *gridOf(const QWidget *widget)
{
    return widget ? qobject_cast<QGridLayout *>(widget->layout()) : nullptr;
}

} // namespace

QTNCollapsibleFrame::QTNCollapsibleFrame(QWidget *parent)
    : QFrame(parent)
    , m_captionBar(new QTNCaptionBar(this))
    , m_content(new QWidget(this))
{
    static const bool accessible = [] {
        QAccessible::installFactory(&accessibleInterface);
        return true;
    }();
    Q_UNUSED(accessible)

    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    makeStack(m_content);
    QVBoxLayout *const stack = makeStack(this);
    stack->addWidget(m_captionBar);
    stack->addWidget(m_content);
    connect(m_captionBar, &QTNCaptionBar::collapseRequested, this,
            &QTNCollapsibleFrame::setCollapsed);
}

QString QTNCollapsibleFrame::caption() const
{
    return m_captionBar->caption();
}

void QTNCollapsibleFrame::setCaption(const QString &caption)
{
    m_captionBar->setCaption(caption);
    setAccessibleName(caption);
}

void QTNCollapsibleFrame::addPage(QWidget *page)
{
    if (!page)
        return;
    condense(page);
    m_content->layout()->addWidget(page);
}

bool QTNCollapsibleFrame::isCollapsed() const
{
    return m_captionBar->isCollapsed();
}

void QTNCollapsibleFrame::setCollapsed(bool collapsed)
{
    if (collapsed == isCollapsed())
        return;
    // The focus would otherwise jump to whatever comes after the page.
    if (collapsed && m_content->isAncestorOf(window()->focusWidget()))
        m_captionBar->setFocus(Qt::OtherFocusReason);
    m_captionBar->setCollapsed(collapsed);
    m_content->setVisible(!collapsed);
    updateGeometry();
    // Out of sight, layouts pass nothing on: whoever asks for a size hint before the window is
    // shown would get the old one.
    for (QWidget *w = parentWidget(); w && !isVisible(); w = w->parentWidget())
        w->updateGeometry();
    emit collapsedChanged(collapsed);
}

void QTNCollapsibleFrame::fixLayout(QWidget *widget, int width)
{
    fixGrid(gridOf(widget), width);
}

void QTNCollapsibleFrame::fixLayouts(QWidget *widget, int width,
                                     std::vector<QGridLayout *> *layouts)
{
    if (!widget)
        return;
    for (const QTNCollapsibleFrame *frame : widget->findChildren<QTNCollapsibleFrame *>()) {
        const QLayout *pages = frame->m_content->layout();
        for (int i = 0; i < pages->count(); ++i) {
            QGridLayout *const grid = gridOf(pages->itemAt(i)->widget());
            if (fixGrid(grid, width) && layouts)
                layouts->push_back(grid);
        }
    }
}

void QTNCollapsibleFrame::showEvent(QShowEvent *event)
{
    QFrame::showEvent(event);
    // A form's tab order names the fields and knows nothing of the caption, which would be left
    // behind at the end. Its place is before the first field of its pages.
    for (QWidget *w = window()->nextInFocusChain(); w != window(); w = w->nextInFocusChain()) {
        if (!m_content->isAncestorOf(w) || !(w->focusPolicy() & Qt::TabFocus))
            continue;
        if (w->previousInFocusChain() != m_captionBar)
            setTabOrder(w->previousInFocusChain(), m_captionBar);
        break;
    }
}
