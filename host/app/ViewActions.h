#pragma once

#include <QtCore/QList>
#include <QtCore/QObject>

class QAction;
class QKeySequence;
class QMenu;

namespace tnhost {

class Scene;
class SceneDisplay;

/// What can be done with the view, for a menu.
class ViewActions : public QObject {
    Q_OBJECT

public:
    /// Without a display all actions are disabled. It and the scene must outlive them.
    ViewActions(Scene &scene, SceneDisplay *display, QObject *parent);

    void addTo(QMenu &menu) const;

private:
    QAction *add(const char *name, const QString &text, const QKeySequence &shortcut);
    void addFitting();
    void addDirections();
    void addStyles();
    void addHiding();
    /// Hides what is selected; shows it if it was hidden altogether.
    void hideSelection();
    void savePicture();
    void addSeparator();

    Scene &m_scene;
    SceneDisplay *const m_display;
    QList<QAction *> m_all; ///< separators included
};

} // namespace tnhost
