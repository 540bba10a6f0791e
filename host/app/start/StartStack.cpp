#include "host/app/start/StartStack.h"

#include "host/scene/Scene.h"

namespace tnhost {

StartStack::StartStack(const Scene &scene, QWidget *whenEmpty, QWidget *content)
{
    addWidget(whenEmpty);
    addWidget(content);
    const auto refresh = [this, &scene] { setCurrentIndex(scene.nodeCount() > 0 ? 1 : 0); };
    connect(&scene, &Scene::changed, this, refresh);
    refresh();
}

} // namespace tnhost
