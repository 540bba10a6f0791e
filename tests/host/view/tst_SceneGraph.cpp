#include "BoxScene.h"
#include "host/view/Renderer.h"
#include "host/view/SceneGraph.h"

#include <Inventor/actions/SoCallbackAction.h>
#include <Inventor/actions/SoGetBoundingBoxAction.h>
#include <Inventor/actions/SoSearchAction.h>
#include <Inventor/elements/SoLazyElement.h>

#include <QtTest/QtTest>

#include <set>

using namespace tnhost;

namespace {

const QSizeF size(400, 400);
const SbColor green(0, 1, 0);
const SbColor highlight(1.0F, 0.55F, 0.1F);

/// The different shapes of the graph.
int shapeCount(SoNode *root)
{
    SoSearchAction search;
    search.setType(MeshShape::getClassTypeId());
    search.setInterest(SoSearchAction::ALL);
    search.apply(root);
    std::set<SoNode *> shapes;
    for (int i = 0; i < search.getPaths().getLength(); ++i)
        shapes.insert(search.getPaths()[i]->getTail());
    return static_cast<int>(shapes.size());
}

} // namespace

/// What is in the graph is asked by picking, which needs no OpenGL.
class tst_SceneGraph : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Renderer::init(); }
    void init()
    {
        m_scene = std::make_unique<Scene>();
        m_file = m_scene->addFragment(cubes({{0, 0, 0}, {100, 0, 0}}), {}, "/cad/a.step", {});
        m_graph = std::make_unique<SceneGraph>(*m_scene);
        m_renderer = std::make_unique<Renderer>(m_graph->root());
        m_camera.fit(m_scene->boundingBox(m_scene->root()), size);
        m_graph->finish();
    }

    void knowsWhatIsSeen()
    {
        const auto hit = pick({105, 5, 10});
        QCOMPARE(hit->node, cube(1));
        QVERIFY((hit->point - QVector3D(105, 5, 10)).length() < 0.01F);
        QCOMPARE(pick({5, 5, 10})->node, cube(0));
        QVERIFY(!pick({50, 5, 5}));
    }

    void followsTheScene()
    {
        m_scene->addFragment(cubes({{50, 0, 0}}), m_file, "/cad/b.step", {});
        QTRY_VERIFY(pick({55, 5, 10}));
        m_scene->replaceNode(m_file, cubes({{0, 0, 0}}), "/cad/a.step", {});
        QVERIFY(!pick({105, 5, 10}));
        m_graph->finish();
        QVERIFY(pick({5, 5, 10}) && pick({55, 5, 10}));
        m_scene->removeNode(tndNode(m_scene->find(m_scene->root())->children()[0]->id()));
        m_scene->addFragment(cubes({{0, 0, 0}}), {}, "/cad/c.step", {});
        m_scene->removeNode(tndNode(m_scene->find(m_scene->root())->children()[0]->id()));
        m_graph->finish(); // gone before it was built
        QVERIFY(!pick({5, 5, 10}) && !pick({55, 5, 10}));
    }

    void sharesWhatIsTheSame()
    {
        QCOMPARE(shapeCount(m_graph->root()), 2);
        const std::weak_ptr<const SceneMesh> mesh = m_scene->find(tndNode(cube(0)))->mesh();
        m_scene->removeNode(tndNode(cube(0)));
        QTest::qWait(50);
        QVERIFY(!mesh.expired());
        m_scene->removeNode(m_file);
        QTRY_VERIFY(mesh.expired());
    }

    void showsWhatIsNotHidden()
    {
        m_scene->hide({tndNode(cube(0))});
        QVERIFY(!pick({5, 5, 10}) && pick({105, 5, 10}));
        const SbBox3f box = [this] {
            SoGetBoundingBoxAction action{SbViewportRegion()};
            action.apply(m_graph->root());
            return action.getBoundingBox();
        }();
        QCOMPARE(box.getMin()[0], 100.0F);
        m_scene->show({m_file});
        QVERIFY(pick({5, 5, 10}));
        m_scene->hide({m_file});
        m_scene->replaceNode(m_file, cubes({{0, 0, 0}}), "/cad/a.step", {});
        m_graph->finish();
        QVERIFY(!pick({5, 5, 10}));
    }

    void cutsAtTheSection()
    {
        const BoundingBox box = m_scene->shownBox();
        m_renderer->setSection({Section::Axis::X, 0.5F, true}, box);
        QVERIFY(!pick({5, 5, 10}) && pick({105, 5, 10}));
        m_renderer->setSection({Section::Axis::X, 0.5F, false}, box);
        QVERIFY(pick({5, 5, 10}) && !pick({105, 5, 10}));
        m_renderer->setSection({Section::Axis::Z, 0.4F, false}, box);
        const auto inside = pick({5, 5, 0});
        QVERIFY(inside && inside->point.z() < 4);
        m_renderer->setSection({Section::Axis::Z, 0.4F, false}, {});
        QVERIFY(pick({5, 5, 10}));
        m_renderer->setSection({}, box);
        QVERIFY(pick({5, 5, 10}) && pick({105, 5, 10}));
    }

    void showsTheSelection()
    {
        m_scene->setSelection({tndNode(cube(0))});
        QVERIFY(seenColor({5, 5, 10}).equals(highlight, 0.01F));
        QVERIFY(seenColor({105, 5, 10}).equals(green, 0.01F));
        m_scene->setSelection({m_file});
        QVERIFY(seenColor({105, 5, 10}).equals(highlight, 0.01F));
        // What comes in the place of the selection is selected.
        m_scene->replaceNode(m_file, cubes({{0, 0, 0}}), "/cad/a.step", {});
        m_graph->finish();
        QVERIFY(seenColor({5, 5, 10}).equals(highlight, 0.01F));
        m_scene->setSelection({});
        QVERIFY(seenColor({5, 5, 10}).equals(green, 0.01F));
    }

    void arrivesInSteps()
    {
        QSignalSpy changed(m_graph.get(), &SceneGraph::changed);
        m_scene->addFragment(cubes(std::vector<QVector3D>(20000)), {}, "/cad/large.step", {});
        QVERIFY(changed.isEmpty());
        QTRY_VERIFY(changed.count() > 1);
    }

private:
    unsigned int cube(std::size_t index) const
    {
        return m_scene->find(m_file)->children()[0]->children()[index]->id();
    }
    std::optional<Hit> pick(const QVector3D &point)
    {
        return m_renderer->pick(m_camera, m_camera.project(point, size), size);
    }

    /// The colour in which the shape is drawn that is seen there.
    SbColor seenColor(const QVector3D &point)
    {
        const unsigned int id = pick(point)->node;
        SoCallbackAction action;
        SbColor color;
        unsigned int inside = 0;
        const auto visit = [&](const SoNode *node) {
            if (node->isOfType(PartNode::getClassTypeId()))
                inside = static_cast<const PartNode *>(node)->id();
            else if (inside == id && node->isOfType(MeshShape::getClassTypeId()))
                color = SoLazyElement::getDiffuse(action.getState(), 0);
        };
        using Visit = decltype(visit);
        action.addPreCallback(
            SoNode::getClassTypeId(),
            [](void *data, SoCallbackAction *, const SoNode *node) {
                (*static_cast<Visit *>(data))(node);
                return SoCallbackAction::CONTINUE;
            },
            const_cast<void *>(static_cast<const void *>(&visit)));
        action.apply(m_graph->root());
        return color;
    }

    std::unique_ptr<Scene> m_scene;
    std::unique_ptr<SceneGraph> m_graph;
    std::unique_ptr<Renderer> m_renderer;
    Camera m_camera;
    tndNode m_file;
};

QTEST_GUILESS_MAIN(tst_SceneGraph)
#include "tst_SceneGraph.moc"
