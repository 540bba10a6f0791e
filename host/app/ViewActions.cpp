#include "host/app/ViewActions.h"

#include "host/scene/Scene.h"
#include "host/view/PictureFile.h"
#include "host/view/SceneDisplay.h"

#include <QtCore/QFileInfo>
#include <QtGui/QImage>
#include <QtWidgets/QAction>
#include <QtWidgets/QActionGroup>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>

#include <algorithm>

namespace tnhost {

ViewActions::ViewActions(Scene &scene, SceneDisplay *display, QObject *parent)
    : QObject(parent)
    , m_scene(scene)
    , m_display(display)
{
    addFitting();
    addDirections();
    addStyles();
    addHiding();
    QAction *measure = add("measure", tr("&Measure Distance"), Qt::Key_M);
    measure->setCheckable(true);
    connect(measure, &QAction::toggled, this,
            [this](bool isChecked) { m_display->setMeasuring(isChecked); });
    connect(add("savePicture", tr("Save &Picture…"), {}), &QAction::triggered, this,
            &ViewActions::savePicture);
    addSeparator();
}

void ViewActions::addTo(QMenu &menu) const
{
    menu.addActions(m_all);
}

QAction *ViewActions::add(const char *name, const QString &text, const QKeySequence &shortcut)
{
    auto *action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(shortcut);
    action->setEnabled(m_display);
    m_all << action;
    return action;
}

void ViewActions::addSeparator()
{
    auto *separator = new QAction(this);
    separator->setSeparator(true);
    m_all << separator;
}

void ViewActions::addFitting()
{
    connect(add("fitAll", tr("Fit &All"), Qt::Key_F), &QAction::triggered, this,
            [this] { m_display->fitAll(); });
    connect(add("fitSelection", tr("Fit &Selection"), Qt::SHIFT + Qt::Key_F), &QAction::triggered,
            this, [this] { m_display->fitSelection(); });
    addSeparator();
}

void ViewActions::addDirections()
{
    const struct {
        const char *name;
        QString text;
        Direction direction;
    } directions[] = {
        {"front", tr("&Front"), Direction::Front},
        {"back", tr("&Back"), Direction::Back},
        {"left", tr("&Left"), Direction::Left},
        {"right", tr("&Right"), Direction::Right},
        {"top", tr("&Top"), Direction::Top},
        {"bottom", tr("B&ottom"), Direction::Bottom},
        {"isometric", tr("&Isometric"), Direction::Isometric},
    };
    int key = Qt::Key_1;
    for (const auto &each : directions) {
        connect(add(each.name, each.text, Qt::ALT + key++), &QAction::triggered, this,
                [this, direction = each.direction] { m_display->look(direction); });
    }
    QAction *orthographic = add("orthographic", tr("Or&thographic"), Qt::Key_O);
    orthographic->setCheckable(true);
    connect(orthographic, &QAction::toggled, this,
            [this](bool isChecked) { m_display->setOrthographic(isChecked); });
    addSeparator();
}

void ViewActions::addStyles()
{
    const struct {
        const char *name;
        QString text;
        DrawStyle style;
    } styles[] = {
        {"shaded", tr("S&haded"), DrawStyle::Shaded},
        {"shadedWithEdges", tr("Shaded with &Edges"), DrawStyle::ShadedWithEdges},
        {"wireframe", tr("&Wireframe"), DrawStyle::Wireframe},
    };
    auto *group = new QActionGroup(this);
    for (const auto &each : styles) {
        QAction *action = add(each.name, each.text, {});
        action->setCheckable(true);
        group->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, style = each.style] { m_display->setDrawStyle(style); });
    }
    addSeparator();
    if (m_display)
        group->actions().at(1)->trigger();
}

void ViewActions::addHiding()
{
    QAction *hide = add("hide", tr("Hi&de or Show Selected"), Qt::Key_H);
    connect(hide, &QAction::triggered, this, &ViewActions::hideSelection);
    QAction *isolate = add("isolate", tr("Isolate Se&lected"), Qt::Key_I);
    connect(isolate, &QAction::triggered, this,
            [this] { m_scene.isolate(m_scene.selectedNodes(true)); });
    connect(add("showAll", tr("Sho&w All"), Qt::SHIFT + Qt::Key_H), &QAction::triggered, this,
            [this] { m_scene.show({m_scene.root()}); });
    addSeparator();
    const auto update = [this, hide, isolate] {
        const bool hasAny = m_display && !m_scene.selectedNodes(true).empty();
        hide->setEnabled(hasAny);
        isolate->setEnabled(hasAny);
    };
    connect(&m_scene, &Scene::selectionChanged, this, update);
    update();
}

void ViewActions::hideSelection()
{
    const std::vector<tndNode> selected = m_scene.selectedNodes(true);
    const bool isAnyShown =
        std::any_of(selected.begin(), selected.end(),
                    [this](const tndNode &node) { return m_scene.find(node)->isShown(); });
    if (isAnyShown)
        m_scene.hide(selected);
    else
        m_scene.show(selected);
}

void ViewActions::savePicture()
{
    QWidget *const window = m_display->widget()->window();
    QString path = QFileDialog::getSaveFileName(window, tr("Save Picture"), {}, tr("PNG (*.png)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".png");
    QString error;
    const QImage image = m_display->picture(&error);
    if (image.isNull() || !PictureFile::write(image, path, &error))
        QMessageBox::warning(window, tr("Save Picture"), error);
}

} // namespace tnhost
