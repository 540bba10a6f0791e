#include "host/app/ViewActions.h"

#include "host/view/SceneDisplay.h"

#include <QtWidgets/QAction>

namespace tnhost {

ViewActions::ViewActions(SceneDisplay *display, QObject *parent)
    : QObject(parent)
    , m_display(display)
{
    const struct {
        const char *name;
        QString text;
        QKeySequence shortcut;
        void (SceneDisplay::*call)();
    } commands[] = {
        {"fitAll", tr("Fit &All"), Qt::Key_F, &SceneDisplay::fitAll},
        {"fitSelection", tr("Fit &Selection"), Qt::SHIFT + Qt::Key_F, &SceneDisplay::fitSelection},
    };
    for (const auto &command : commands) {
        auto *action = new QAction(command.text, this);
        action->setObjectName(QLatin1String(command.name));
        action->setShortcut(command.shortcut);
        action->setEnabled(m_display);
        connect(action, &QAction::triggered, this,
                [this, call = command.call] { (m_display->*call)(); });
        m_all << action;
    }
}

} // namespace tnhost
