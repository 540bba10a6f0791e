#pragma once

#include <QtWidgets/QStackedWidget>

namespace tnhost {

class Scene;

/// Shows one widget while the scene is empty, and another one as soon as there is something.
class StartStack : public QStackedWidget {
    Q_OBJECT

public:
    /// Takes both widgets as children. The scene must outlive the stack.
    StartStack(const Scene &scene, QWidget *whenEmpty, QWidget *content);
};

} // namespace tnhost
