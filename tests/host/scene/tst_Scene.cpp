#include "host/scene/Scene.h"

#include <QtTest/QtTest>

using namespace tnhost;

namespace {

/// Two instances of a box from (0,0,0) to (10,20,30), the second one 100 further in x and turned
/// by 45 degrees about z; one material.
std::shared_ptr<SceneFragment> twoBoxes()
{
    auto mesh = std::make_shared<SceneMesh>();
    ScenePrimitive primitive;
    for (int corner = 0; corner < 8; ++corner)
        primitive.positions.emplace_back(corner & 1 ? 10 : 0, corner & 2 ? 20 : 0,
                                         corner & 4 ? 30 : 0);
    primitive.indices = {0, 1, 3, 4, 5, 7};
    primitive.material = 0;
    for (const QVector3D &position : primitive.positions)
        mesh->box.add(position);
    mesh->triangles = 2;
    mesh->primitives.push_back(primitive);

    auto fragment = std::make_shared<SceneFragment>();
    fragment->materials.push_back({QStringLiteral("steel")});
    fragment->meshes.push_back(mesh);
    fragment->nodes.resize(3);
    fragment->nodes[0].name = QStringLiteral("group");
    fragment->nodes[0].children = {1, 2};
    fragment->nodes[1].mesh = fragment->nodes[2].mesh = 0;
    fragment->nodes[2].transform.translate(100, 0, 0);
    fragment->nodes[2].transform.rotate(45, 0, 0, 1);
    fragment->roots = {0};
    return fragment;
}

bool near(const QVector3D &a, const QVector3D &b)
{
    return (a - b).length() < 0.001F;
}

const QString path = QStringLiteral("/cad/two.step");
const QString otherPath = QStringLiteral("/cad/other.step");

} // namespace

class tst_Scene : public QObject {
    Q_OBJECT

private:
    tndNode add(const tndNode &parent = {}, std::shared_ptr<SceneFragment> boxes = twoBoxes())
    {
        return m_scene->addFragment(std::move(boxes), parent, path, m_settings);
    }
    /// The group of a file's two boxes, or the given one of them.
    tndNode inside(const tndNode &file, int box = -1)
    {
        const auto &group = m_scene->find(file)->children().at(0);
        return tndNode(box < 0 ? group->id() : group->children().at(std::size_t(box))->id());
    }
    tndNode replace(const tndNode &node)
    {
        return m_scene->replaceNode(node, twoBoxes(), otherPath, m_settings);
    }

    std::unique_ptr<Scene> m_scene;
    tndSceneImportSettings m_settings;

private slots:
    void init()
    {
        m_scene = std::make_unique<Scene>();
        m_settings = {};
    }

    void addsBelowTheGivenNodeOrTheRoot()
    {
        QCOMPARE(m_scene->root().id(), 1U);
        const tndNode first = add();
        const tndNode second = add(tndNode(9999));
        const tndNode third = add(first);
        QCOMPARE(add(first, nullptr), tndNode());

        QCOMPARE(m_scene->find(first)->name(), QString("two.step"));
        QCOMPARE(m_scene->find(first)->parent()->id(), 1U);
        QCOMPARE(m_scene->find(second)->row(), 1);
        QCOMPARE(m_scene->find(third)->parent()->id(), first.id());
        QCOMPARE(m_scene->nodeCount(), std::size_t(12));
        QCOMPARE(m_scene->triangleCount(first), std::size_t(8));

        const tndNode leaf = inside(second, 1);
        QCOMPARE(m_scene->find(inside(second, 0))->mesh(), m_scene->find(leaf)->mesh());
        QCOMPARE(m_scene->sourceFile(leaf), path);
        QCOMPARE(m_scene->sourceNode(leaf), second);
        for (const tndNode &none : {m_scene->root(), tndNode(9999)})
            QCOMPARE(m_scene->sourceFile(none), QString());
    }

    void boxesFollowNestedTransforms()
    {
        const tndNode file = add();
        const BoundingBox box = m_scene->boundingBox(file);
        // The turned box reaches from -20 to 10 times sin 45 around its place, no further: the
        // corners of a box around it would.
        const float s = std::sqrt(0.5F);
        QVERIFY(near(box.min, {0, 0, 0}));
        QVERIFY(near(box.max, {100 + 10 * s, 30 * s, 30}));
        const tndNode turned = inside(file, 1);
        QVERIFY(near(m_scene->boundingBox(turned).min, {100 - 20 * s, 0, 0}));
        QVERIFY(near(m_scene->worldTransform(turned).map(QVector3D(10, 0, 0)),
                     {100 + 10 * s, 10 * s, 0}));
        QVERIFY(m_scene->boundingBox(tndNode(77)).isEmpty());

        // A quarter turn keeps boxes; below it the result must stay exact, too.
        auto quarter = twoBoxes();
        quarter->nodes[0].transform.translate(0, 0, 5);
        quarter->nodes[0].transform.rotate(90, 1, 0, 0);
        const BoundingBox up = m_scene->boundingBox(add({}, quarter));
        QVERIFY(near(up.min, {0, -30, 5}));
        QVERIFY(near(up.max, {100 + 10 * s, 0, 5 + 30 * s}));
    }

    void centresAndGroundsInTheWorld()
    {
        const float s = std::sqrt(0.5F);
        const QVector3D half(50 + 5 * s, 15 * s, 15);
        const std::tuple<bool, bool, QVector3D> rows[] = {// with the box's least corner afterwards
                                                          {false, false, {0, 0, 50 + 5}},
                                                          {true, false, -half},
                                                          {false, true, {0, 0, 0}},
                                                          {true, true, {-half.x(), -half.y(), 0}}};
        auto high = twoBoxes();
        high->nodes[0].transform.translate(0, 0, 50);
        const tndNode parent = inside(add({}, high));
        for (const auto &[center, ground, corner] : rows) {
            m_settings.setCenterInOrigin(center);
            m_settings.setPutOnGround(ground);
            auto boxes = twoBoxes();
            boxes->nodes[0].transform.translate(0, 0, 5);
            QVERIFY(near(m_scene->boundingBox(add(parent, boxes)).min, corner));
        }
    }

    void sharesEqualMaterials()
    {
        add();
        add();
        QCOMPARE(m_scene->materials().size(), std::size_t(2));
        m_settings.setMergeMaterials(true);
        add();
        QCOMPARE(m_scene->materials().size(), std::size_t(2));
        auto other = twoBoxes();
        other->materials[0].roughness = 0.1F;
        add({}, other);
        QCOMPARE(m_scene->materials().size(), std::size_t(3));
    }

    void replacesInPlace()
    {
        m_settings.setPutOnGround(true);
        auto high = twoBoxes();
        high->nodes[0].transform.translate(0, 0, 50);
        add();
        const tndNode old = add({}, high);
        add();
        const QMatrix4x4 moved = m_scene->find(old)->transform();
        QVERIFY(!moved.isIdentity());

        // A node inside of a file stands for the file.
        const tndNode inner = inside(old, 0);
        m_scene->setSelection({old});
        const tndNode kept = replace(inner);
        QVERIFY(kept.id() > inner.id());
        QVERIFY(!m_scene->contains(old) && !m_scene->contains(inner));
        QCOMPARE(m_scene->sourceFile(kept), otherPath);
        QCOMPARE(m_scene->find(kept)->row(), 1);
        QCOMPARE(m_scene->find(kept)->transform(), moved);
        QCOMPARE(m_scene->selectedNodes(true), std::vector<tndNode>{kept});
        QCOMPARE(m_scene->nodeCount(), std::size_t(12));

        m_settings.setPreserveTransformations(false);
        const tndNode fresh = replace(kept);
        QVERIFY(m_scene->find(fresh)->transform().isIdentity());

        const QSignalSpy changes(m_scene.get(), &Scene::changed);
        QCOMPARE(replace(old), tndNode());
        QCOMPARE(replace(m_scene->root()), tndNode());
        QCOMPARE(m_scene->replaceNode(fresh, nullptr, path, m_settings), tndNode());
        QVERIFY(m_scene->contains(fresh));
        QCOMPARE(changes.count(), 0);
    }

    void removesManyAtOnce()
    {
        std::vector<tndNode> files;
        for (int i = 0; i < 6; ++i)
            files.push_back(add());
        const tndNode below = inside(files[1], 1);
        m_scene->setSelection({files[4]});
        QStringList runs;
        connect(m_scene.get(), &Scene::aboutToRemoveRows, this,
                [&runs](const SceneNode *, int first, int last) {
                    runs << QStringLiteral("%1-%2").arg(first).arg(last);
                });
        const QSignalSpy each(m_scene.get(), &Scene::aboutToRemove);
        const QSignalSpy changes(m_scene.get(), &Scene::changed);
        const QSignalSpy selections(m_scene.get(), &Scene::selectionChanged);
        m_scene->removeNodes({files[0], below, files[4], m_scene->root(), files[1], tndNode(999),
                              files[5], files[0]});
        QCOMPARE(runs, (QStringList{"4-5", "0-1"}));
        QCOMPARE(each.size(), 4);
        QCOMPARE(changes.size() + selections.size(), 2);
        QVERIFY(m_scene->contains(files[2]) && m_scene->contains(files[3]));
        QVERIFY(!m_scene->contains(files[0]) && !m_scene->contains(below));
        QCOMPARE(m_scene->find(files[3])->row(), 1);
        m_scene->removeNodes({files[0], m_scene->root()});
        QCOMPARE(changes.size(), 1);
    }

    void whoHearsOfANodeMayRemoveIt()
    {
        const tndNode old = add();
        tndNode heard;
        connect(m_scene.get(), &Scene::changed, this, [this, &heard] {
            const auto &files = m_scene->find(m_scene->root())->children();
            if (files.empty())
                return;
            heard = tndNode(files.back()->id());
            m_scene->removeNode(heard);
        });
        QCOMPARE(replace(old), heard);
        QCOMPARE(add(), heard);
        QVERIFY(!m_scene->contains(heard));
    }

    void replacingKeepsWhatHangsBelow()
    {
        const tndNode host = add();
        const tndNode guest = add(inside(host, 1));
        const BoundingBox before = m_scene->boundingBox(guest);

        m_settings.setCenterInOrigin(true);
        m_settings.setPreserveTransformations(false);
        const tndNode fresh = replace(host);
        QVERIFY(m_scene->contains(guest));
        QCOMPARE(m_scene->find(guest)->parent()->id(), fresh.id());
        QVERIFY(!m_scene->find(fresh)->transform().isIdentity());
        QVERIFY(near(m_scene->boundingBox(guest).min, before.min));
        QVERIFY(near(m_scene->boundingBox(guest).max, before.max));
    }

    void removesAndForgets()
    {
        const tndNode file = add();
        const tndNode inner = inside(file);
        m_scene->setSelection({inner});
        const QSignalSpy selections(m_scene.get(), &Scene::selectionChanged);
        const QSignalSpy changes(m_scene.get(), &Scene::changed);
        QVERIFY(m_scene->removeNode(file));
        QCOMPARE(selections.count(), 1);
        QCOMPARE(changes.count(), 1);
        QVERIFY(!m_scene->contains(inner));
        QCOMPARE(m_scene->nodeCount(), std::size_t(0));
        QVERIFY(m_scene->selectedNodes(false).empty());
        QVERIFY(!m_scene->removeNode(file));
        QVERIFY(!m_scene->removeNode(m_scene->root()));
        QVERIFY(add().id() > file.id() + 3);
    }

    void hidesShowsAndIsolates()
    {
        const tndNode a = add();
        const tndNode b = add();
        const auto shown = [this](const tndNode &node) { return m_scene->find(node)->isShown(); };
        m_scene->hide({a, inside(b, 0), m_scene->root(), tndNode(999)});
        QVERIFY(!shown(a) && !shown(inside(a, 1)) && shown(b) && !shown(inside(b, 0)));
        QVERIFY(shown(m_scene->root()));
        // Of the turned box alone.
        QVERIFY(near(m_scene->shownBox().min, {100 - 20 * std::sqrt(0.5F), 0, 0}));

        m_scene->show({inside(a, 1)});
        QVERIFY(shown(a) && shown(inside(a, 1)) && shown(inside(a, 0)) && !shown(inside(b, 0)));
        m_scene->isolate({inside(b), a});
        QVERIFY(shown(inside(b)) && !shown(inside(b, 0)) && shown(a));
        m_scene->isolate({inside(b, 0)});
        QVERIFY(shown(b) && shown(inside(b, 0)) && !shown(inside(b, 1)) && !shown(a));
        m_scene->show({m_scene->root()});
        QVERIFY(shown(inside(b, 1)) && shown(inside(a, 0)));

        m_scene->hide({b});
        const tndNode again = replace(b);
        QVERIFY(!shown(again));
        m_scene->hide({a});
        QVERIFY(m_scene->shownBox().isEmpty());
    }

    void selectsInTreeOrder()
    {
        const tndNode a = add();
        const tndNode inA = inside(a);
        const tndNode inB = inside(add());
        const QSignalSpy selections(m_scene.get(), &Scene::selectionChanged);
        m_scene->setSelection({inB, inA, a, tndNode(555), tndNode()});
        m_scene->setSelection({a, inA, inB});
        QCOMPARE(selections.count(), 1);
        QCOMPARE(m_scene->selectedNodes(false), (std::vector<tndNode>{a, inA, inB}));
        QCOMPARE(m_scene->selectedNodes(true), (std::vector<tndNode>{a, inB}));
    }
};

QTEST_GUILESS_MAIN(tst_Scene)
#include "tst_Scene.moc"
