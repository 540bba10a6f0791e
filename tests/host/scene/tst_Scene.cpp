#include "host/scene/Scene.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QtTest>

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

class TestScene : public QObject {
    Q_OBJECT

private slots:
    void addsBelowTheGivenNodeOrTheRoot();
    void boxesFollowNestedTransforms();
    void centresAndGroundsInTheWorld_data();
    void centresAndGroundsInTheWorld();
    void sharesEqualMaterials();
    void replacesInPlace();
    void replacingKeepsWhatHangsBelow();
    void removesAndForgets();
    void selectsInTreeOrder();
    void announcesConsistently();

private:
    tndSceneImportSettings m_settings;
};

void TestScene::addsBelowTheGivenNodeOrTheRoot()
{
    Scene scene;
    QCOMPARE(scene.root().id(), 1U);
    const tndNode first = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    const tndNode second = scene.addFragment(twoBoxes(), tndNode(9999), otherPath, m_settings);
    const tndNode third = scene.addFragment(twoBoxes(), first, otherPath, m_settings);
    QCOMPARE(scene.addFragment(nullptr, first, path, m_settings), tndNode());

    QCOMPARE(scene.find(first)->name(), QStringLiteral("two.step"));
    QCOMPARE(scene.find(first)->parent()->id(), 1U);
    QCOMPARE(scene.find(second)->row(), 1);
    QCOMPARE(scene.find(third)->parent()->id(), first.id());
    QCOMPARE(scene.nodeCount(), std::size_t(12));
    QCOMPARE(scene.triangleCount(first), std::size_t(8));

    const auto &group = scene.find(second)->children().at(0);
    QCOMPARE(group->children().at(0)->mesh(), group->children().at(1)->mesh());
    const tndNode leaf(group->children().at(1)->id());
    QCOMPARE(scene.sourceFile(leaf), otherPath);
    QCOMPARE(scene.sourceNode(leaf), second);
    QCOMPARE(scene.sourceFile(scene.root()), QString());
    QCOMPARE(scene.sourceFile(tndNode(9999)), QString());
}

void TestScene::boxesFollowNestedTransforms()
{
    Scene scene;
    const tndNode file = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    const BoundingBox box = scene.boundingBox(file);
    // The turned box reaches from -20 to 10 times sin 45 around its place, no further: the corners
    // of a box around it would.
    const float s = std::sqrt(0.5F);
    QVERIFY(near(box.min, {0, 0, 0}));
    QVERIFY(near(box.max, {100 + 10 * s, 30 * s, 30}));
    const tndNode turned(scene.find(file)->children()[0]->children()[1]->id());
    QVERIFY(near(scene.boundingBox(turned).min, {100 - 20 * s, 0, 0}));
    QVERIFY(near(scene.worldTransform(turned).map(QVector3D(10, 0, 0)), {100 + 10 * s, 10 * s, 0}));
    QVERIFY(scene.boundingBox(tndNode(77)).isEmpty());
    QVERIFY(Scene().boundingBox(tndNode(1)).isEmpty());

    // A quarter turn keeps boxes; below it the result must stay exact, too.
    auto quarter = twoBoxes();
    quarter->nodes[0].transform.translate(0, 0, 5);
    quarter->nodes[0].transform.rotate(90, 1, 0, 0);
    const BoundingBox up =
        scene.boundingBox(scene.addFragment(quarter, tndNode(), otherPath, m_settings));
    QVERIFY(near(up.min, {0, -30, 5}));
    QVERIFY(near(up.max, {100 + 10 * s, 0, 5 + 30 * s}));
}

void TestScene::centresAndGroundsInTheWorld_data()
{
    QTest::addColumn<bool>("center");
    QTest::addColumn<bool>("ground");
    QTest::addColumn<QVector3D>("corner"); // the box's least corner afterwards
    const float s = std::sqrt(0.5F);
    const QVector3D half(50 + 5 * s, 15 * s, 15);
    QTest::newRow("as it is") << false << false << QVector3D(7, 8, 9 + 5);
    QTest::newRow("centre") << true << false << -half;
    QTest::newRow("ground") << false << true << QVector3D(7, 8, 0);
    QTest::newRow("both") << true << true << QVector3D(-half.x(), -half.y(), 0);
}

void TestScene::centresAndGroundsInTheWorld()
{
    QFETCH(bool, center);
    QFETCH(bool, ground);
    QFETCH(QVector3D, corner);
    Scene scene;
    auto place = std::make_shared<SceneFragment>();
    place->nodes.resize(1);
    place->nodes[0].transform.translate(7, 8, 9);
    place->roots = {0};
    const tndNode placed = scene.addFragment(place, tndNode(), path, m_settings);
    const tndNode parent(scene.find(placed)->children()[0]->id());

    m_settings = {};
    m_settings.setCenterInOrigin(center);
    m_settings.setPutOnGround(ground);
    auto boxes = twoBoxes();
    boxes->nodes[0].transform.translate(0, 0, 5);
    const tndNode file = scene.addFragment(boxes, parent, otherPath, m_settings);
    m_settings = {};
    const QVector3D min = scene.boundingBox(file).min;
    QVERIFY2(near(min, corner),
             qPrintable(QStringLiteral("%1 %2 %3").arg(min.x()).arg(min.y()).arg(min.z())));
}

void TestScene::sharesEqualMaterials()
{
    Scene scene;
    auto other = twoBoxes();
    other->materials[0].roughness = 0.1F;
    scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    QCOMPARE(scene.materials().size(), std::size_t(2));

    m_settings.setMergeMaterials(true);
    scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    QCOMPARE(scene.materials().size(), std::size_t(2));
    scene.addFragment(other, tndNode(), path, m_settings);
    QCOMPARE(scene.materials().size(), std::size_t(3));
    m_settings = {};
}

void TestScene::replacesInPlace()
{
    Scene scene;
    m_settings.setPutOnGround(true);
    auto high = twoBoxes();
    high->nodes[0].transform.translate(0, 0, 50);
    scene.addFragment(twoBoxes(), tndNode(), otherPath, m_settings);
    const tndNode old = scene.addFragment(high, tndNode(), path, m_settings);
    scene.addFragment(twoBoxes(), tndNode(), otherPath, m_settings);
    const QMatrix4x4 moved = scene.find(old)->transform();
    QVERIFY(!moved.isIdentity());

    // A node inside of a file stands for the file.
    const tndNode inner(scene.find(old)->children()[0]->children()[0]->id());
    scene.setSelection({old});
    const tndNode kept = scene.replaceNode(inner, twoBoxes(), path, m_settings);
    QVERIFY(kept.id() > inner.id());
    QVERIFY(!scene.contains(old) && !scene.contains(inner));
    QCOMPARE(scene.find(kept)->row(), 1);
    QCOMPARE(scene.find(kept)->transform(), moved);
    QCOMPARE(scene.selectedNodes(true), std::vector<tndNode>{kept});
    QCOMPARE(scene.nodeCount(), std::size_t(12));

    m_settings.setPreserveTransformations(false);
    const tndNode fresh = scene.replaceNode(kept, twoBoxes(), path, m_settings);
    QVERIFY(scene.find(fresh)->transform().isIdentity());
    m_settings = {};

    QSignalSpy changes(&scene, &Scene::changed);
    QCOMPARE(scene.replaceNode(old, twoBoxes(), path, m_settings), tndNode());
    QCOMPARE(scene.replaceNode(scene.root(), twoBoxes(), path, m_settings), tndNode());
    QCOMPARE(scene.replaceNode(fresh, nullptr, path, m_settings), tndNode());
    QVERIFY(scene.contains(fresh));
    QCOMPARE(changes.count(), 0);
}

void TestScene::replacingKeepsWhatHangsBelow()
{
    Scene scene;
    const tndNode host = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    const tndNode turned(scene.find(host)->children()[0]->children()[1]->id());
    const tndNode guest = scene.addFragment(twoBoxes(), turned, otherPath, m_settings);
    const BoundingBox before = scene.boundingBox(guest);

    m_settings.setCenterInOrigin(true);
    m_settings.setPreserveTransformations(false);
    const tndNode fresh = scene.replaceNode(host, twoBoxes(), path, m_settings);
    m_settings = {};
    QVERIFY(scene.contains(guest));
    QCOMPARE(scene.find(guest)->parent()->id(), fresh.id());
    QVERIFY(!scene.find(fresh)->transform().isIdentity());
    QVERIFY(near(scene.boundingBox(guest).min, before.min));
    QVERIFY(near(scene.boundingBox(guest).max, before.max));
}

void TestScene::removesAndForgets()
{
    Scene scene;
    const tndNode file = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    const tndNode inner(scene.find(file)->children()[0]->id());
    scene.setSelection({inner});
    QSignalSpy selections(&scene, &Scene::selectionChanged);
    QVERIFY(scene.removeNode(file));
    QCOMPARE(selections.count(), 1);
    QVERIFY(!scene.contains(inner));
    QCOMPARE(scene.nodeCount(), std::size_t(0));
    QVERIFY(scene.selectedNodes(false).empty());
    QVERIFY(!scene.removeNode(file));
    QVERIFY(!scene.removeNode(scene.root()));

    const tndNode next = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    QVERIFY(next.id() > file.id() + 3);
}

void TestScene::selectsInTreeOrder()
{
    Scene scene;
    const tndNode a = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    const tndNode b = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    const tndNode inA(scene.find(a)->children()[0]->id());
    const tndNode inB(scene.find(b)->children()[0]->id());
    QSignalSpy selections(&scene, &Scene::selectionChanged);
    scene.setSelection({inB, inA, a, tndNode(555), tndNode()});
    scene.setSelection({a, inA, inB});
    QCOMPARE(selections.count(), 1);
    QCOMPARE(scene.selectedNodes(false), (std::vector<tndNode>{a, inA, inB}));
    QCOMPARE(scene.selectedNodes(true), (std::vector<tndNode>{a, inB}));
}

void TestScene::announcesConsistently()
{
    // What an item model relies on: it hears of each row before and after.
    Scene scene;
    int rows = 0;
    int expected = 0;
    connect(&scene, &Scene::aboutToInsert, this, [&](const SceneNode *parent, int row) {
        QVERIFY(row <= int(parent->children().size()));
        expected = int(parent->children().size()) + 1;
    });
    connect(&scene, &Scene::inserted, this, [&](const SceneNode *node) {
        QCOMPARE(int(node->parent()->children().size()), expected);
        QVERIFY(scene.contains(tndNode(node->id())));
        ++rows;
    });
    connect(&scene, &Scene::aboutToRemove, this,
            [&](const SceneNode *node) { expected = int(node->parent()->children().size()) - 1; });
    connect(&scene, &Scene::removed, this, [&](const SceneNode *parent, int) {
        QCOMPARE(int(parent->children().size()), expected);
        --rows;
    });
    QSignalSpy changes(&scene, &Scene::changed);
    const tndNode a = scene.addFragment(twoBoxes(), tndNode(), path, m_settings);
    scene.addFragment(twoBoxes(), a, otherPath, m_settings);
    QCOMPARE(rows, 2);
    const tndNode b = scene.replaceNode(a, twoBoxes(), path, m_settings);
    QCOMPARE(rows, 1); // the one below travelled inside of its new parent
    scene.removeNode(b);
    QCOMPARE(rows, 0);
    QCOMPARE(changes.count(), 4);
}

QTEST_GUILESS_MAIN(TestScene)

#include "tst_Scene.moc"
