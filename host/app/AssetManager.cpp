#include "host/app/AssetManager.h"

#include "host/scene/Scene.h"

#include <QtGui/QPixmap>
#include <QtGui/QShowEvent>

#include <cmath>

namespace tnhost {

namespace {

constexpr int swatchSize = 16;

QColor screenColor(const SceneMaterial &material)
{
    // Screens are not linear; the usual power law is good enough for a swatch.
    const auto channel = [&material](std::size_t i) {
        return std::pow(static_cast<double>(material.baseColor[i]), 1.0 / 2.2);
    };
    return QColor::fromRgbF(channel(0), channel(1), channel(2));
}

} // namespace

AssetManager::AssetManager(const Scene &scene, QWidget *parent)
    : QListWidget(parent)
    , m_scene(scene)
{
    setIconSize(QSize(swatchSize, swatchSize));
    connect(&scene, &Scene::changed, this, [this] {
        if (isVisible())
            refresh();
    });
}

void AssetManager::showEvent(QShowEvent *event)
{
    QListWidget::showEvent(event);
    refresh();
}

void AssetManager::refresh()
{
    clear();
    for (const auto &material : m_scene.materials()) {
        QPixmap swatch(swatchSize, swatchSize);
        swatch.fill(screenColor(*material));
        addItem(new QListWidgetItem(swatch,
                                    material->name.isEmpty() ? tr("(no name)") : material->name));
    }
}

} // namespace tnhost
