#include "dialog/PanelFitter.h"

#include <QtCore/QEvent>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScrollBar>

PanelFitter::PanelFitter(QScrollArea *panel, int otherSide)
    : QObject(panel)
    , m_panel(panel)
    , m_otherSide(otherSide)
{
    panel->widget()->installEventFilter(this);
}

bool PanelFitter::eventFilter(QObject *contents, QEvent *event)
{
    // Sent when what the contents need may have changed; out of sight they don't know it yet.
    if (event->type() == QEvent::LayoutRequest && m_panel->isVisible()) {
        const int needed = m_panel->widget()->minimumSizeHint().width()
            + m_panel->verticalScrollBar()->sizeHint().width() + 2 * m_panel->frameWidth();
        if (needed > m_panel->minimumWidth()) {
            m_panel->setMinimumWidth(needed);
            QWidget *const window = m_panel->window();
            window->resize(qMax(window->width(), needed + m_otherSide), window->height());
        }
    }
    return QObject::eventFilter(contents, event);
}
