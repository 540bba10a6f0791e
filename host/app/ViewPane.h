#pragma once

#include <QtWidgets/QWidget>

namespace tnhost {

class Scene;
class SceneDisplay;

/// The middle of the window: the view of the scene, or in its place why there is none.
class ViewPane : public QWidget {
    Q_OBJECT

public:
    /// Loads what draws the scene, which must outlive the pane.
    explicit ViewPane(Scene &scene, QWidget *parent = nullptr);

    /// Null where nothing can be drawn. Lives as long as the pane.
    SceneDisplay *display() const { return m_display; }

private:
    SceneDisplay *m_display = nullptr;
};

} // namespace tnhost
