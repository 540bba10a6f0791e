#pragma once

#include <QtWidgets/QListWidget>

namespace tnhost {

class Scene;

/// The materials that the scene uses, by name and colour. The scene must outlive it.
class AssetManager : public QListWidget {
    Q_OBJECT

public:
    explicit AssetManager(const Scene &scene, QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void refresh();

    const Scene &m_scene;
};

} // namespace tnhost
