#pragma once

#include <QtCore/QList>
#include <QtCore/QObject>

class QAction;

namespace tnhost {

class SceneDisplay;

/// What can be done with the view, for menu and tool bar.
class ViewActions : public QObject {
    Q_OBJECT

public:
    /// Without a display all actions are disabled. It must outlive the actions.
    ViewActions(SceneDisplay *display, QObject *parent);

    const QList<QAction *> &all() const { return m_all; }

private:
    SceneDisplay *const m_display;
    QList<QAction *> m_all;
};

} // namespace tnhost
