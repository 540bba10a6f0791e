#pragma once

#include <QtCore/QList>
#include <QtCore/QObject>

class QAction;
class QKeySequence;
class QMenu;

namespace tnhost {

class SceneDisplay;

/// What can be done with the view, for a menu.
class ViewActions : public QObject {
    Q_OBJECT

public:
    /// Without a display all actions are disabled. It must outlive the actions.
    ViewActions(SceneDisplay *display, QObject *parent);

    void addTo(QMenu &menu) const;

private:
    QAction *add(const char *name, const QString &text, const QKeySequence &shortcut);
    void addFitting();
    void addDirections();
    void addStyles();
    void addSeparator();

    SceneDisplay *const m_display;
    QList<QAction *> m_all; ///< separators included
};

} // namespace tnhost
