#include "host/app/SceneModel.h"
#include "host/app/SceneView.h"
#include "host/scene/Scene.h"

#include <QtTest/QtTest>

using namespace tnhost;

namespace {

tndNode add(Scene &scene, const tndNode &parent = {}, const tndNode &replaced = {})
{
    auto mesh = std::make_shared<SceneMesh>();
    mesh->triangles = 1;
    auto fragment = std::make_shared<SceneFragment>();
    fragment->meshes.push_back(mesh);
    fragment->nodes.resize(2);
    fragment->nodes[0].children = {1};
    fragment->nodes[1].mesh = 0;
    fragment->roots = {0};
    return replaced == tndNode() ? scene.addFragment(fragment, parent, "/cad/a.stl", {})
                                 : scene.replaceNode(replaced, fragment, "/cad/b.stl", {});
}

} // namespace

class tst_SceneView : public QObject {
    Q_OBJECT

private slots:
    void modelFollowsTheScene();
    void selectionIsTheScenes();
};

void tst_SceneView::modelFollowsTheScene()
{
    Scene scene;
    const tndNode first = add(scene);
    SceneModel model(scene);
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    const QModelIndex triangles = model.index(0, SceneModel::Triangles, {});
    QCOMPARE(model.indexOf(first).data().toString(), QString("a.stl"));
    QCOMPARE(model.index(0, SceneModel::SourceFile, {}).data(Qt::ToolTipRole).toString(),
             QString("/cad/a.stl"));
    QCOMPARE(triangles.data().toString(), QString("1"));

    const QModelIndex group = model.index(0, 0, model.indexOf(first));
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    const tndNode guest = add(scene, model.nodeAt(group));
    QCOMPARE(triangles.data().toString(), QString("2"));
    QCOMPARE(changes.count(), 2); // the counts of the group and of the file
    QCOMPARE(model.indexOf(guest).parent(), group);

    add(scene);
    const tndNode replaced = add(scene, {}, first);
    QCOMPARE(model.rowCount({}), 2);
    QCOMPARE(model.indexOf(replaced).row(), 0);
    QCOMPARE(model.rowCount(model.indexOf(replaced)), 2); // its own group and the guest
    QVERIFY(scene.removeNode(replaced));
    QCOMPARE(model.rowCount({}), 1);
    QVERIFY(!model.indexOf(guest).isValid());
}

void tst_SceneView::selectionIsTheScenes()
{
    Scene scene;
    const tndNode first = add(scene);
    const tndNode second = add(scene);
    SceneView view(scene);
    const auto *const model = qobject_cast<const SceneModel *>(view.model());
    QVERIFY(!view.isExpanded(model->indexOf(second)));
    add(scene, model->nodeAt(model->index(0, 0, model->indexOf(second))));
    QVERIFY(view.isExpanded(model->indexOf(second)) && !view.isExpanded(model->indexOf(first)));
    const auto select = [&view](int row) {
        view.selectionModel()->setCurrentIndex(view.model()->index(row, 0),
                                               QItemSelectionModel::ClearAndSelect
                                                   | QItemSelectionModel::Rows);
    };

    select(1);
    QCOMPARE(scene.selectedNodes(true), std::vector<tndNode>{second});
    scene.setSelection({first});
    QCOMPARE(view.selectionModel()->selectedRows(), QModelIndexList{view.model()->index(0, 0)});

    // The view must not choose a neighbour in the place of what has gone.
    select(0);
    const tndNode fresh = add(scene, {}, first);
    QCOMPARE(scene.selectedNodes(true), std::vector<tndNode>{fresh});
    QCOMPARE(view.selectionModel()->selectedRows(), QModelIndexList{view.model()->index(0, 0)});
    scene.removeNode(fresh);
    QVERIFY(scene.selectedNodes(true).empty());
    QVERIFY(!view.selectionModel()->hasSelection());
    select(0);
    QCOMPARE(scene.selectedNodes(true), std::vector<tndNode>{second});
}

QTEST_MAIN(tst_SceneView)
#include "tst_SceneView.moc"
