#include "host/app/LogPane.h"
#include "host/app/MainWindow.h"
#include "host/app/SceneModel.h"
#include "host/app/SceneView.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"
#include "platform/tnController.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

using namespace tnhost;

namespace {

QStringList sent; ///< each attribute's name and values

void record(tnMessage &message)
{
    for (const tnMessage::Attribute &attribute : message.attributes()) {
        sent << QString::fromStdString(attribute.first);
        if (const auto *files = boost::any_cast<QStringList>(&attribute.second))
            sent << *files;
        if (const auto *files = boost::any_cast<std::vector<QString>>(&attribute.second))
            sent << QStringList(files->begin(), files->end());
    }
}

/// A file of one triangle, below a group.
tndNode add(Scene &scene, const tndNode &parent = {}, const QString &file = "/cad/a.stl",
            const tndNode &replaced = {})
{
    auto mesh = std::make_shared<SceneMesh>();
    mesh->triangles = 1;
    auto fragment = std::make_shared<SceneFragment>();
    fragment->meshes.push_back(mesh);
    fragment->nodes.resize(2);
    fragment->nodes[0].children = {1};
    fragment->nodes[1].mesh = 0;
    fragment->roots = {0};
    return replaced.isNull() ? scene.addFragment(fragment, parent, file, {})
                             : scene.replaceNode(replaced, fragment, file, {});
}

} // namespace

class tst_MainWindow : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        QSettings().clear();
        sent.clear();
        tnController::addCB("importCAD", &record);
        tnController::addCB("reloadCAD", &record);
    }
    void reloadsAndRemovesTheSelection();
    void takesLocalFilesThatAreDropped();
    void keepsItsLooks();
    void asksBeforeItEndsAnImport();
    void logsAnyText();
    void modelFollowsTheScene();
    void selectionIsTheScenes();
    void eyesHideAndShow();

private:
    HostServices m_services{{{}, {}, -1, {}, 1 << 20}};
};

void tst_MainWindow::reloadsAndRemovesTheSelection()
{
    MainWindow window(m_services);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    Scene &scene = m_services.scene();
    const tndNode a = add(scene);
    const tndNode b = add(scene, a, "/cad/b.stl");
    const tndNode again = add(scene);
    const auto *reload = window.findChild<QAction *>("reload");
    QVERIFY(!reload->isEnabled());
    // What lies below a file is reloaded with it.
    scene.setSelection({tndNode(scene.find(again)->children().at(0)->id()), b, a});
    QVERIFY(reload->isEnabled());
    QTest::keyClick(&window, Qt::Key_F5);
    QCOMPARE(sent, (QStringList{"files", "/cad/a.stl", "/cad/b.stl", "parent"}));

    QTest::keyClick(window.findChild<SceneView *>(), Qt::Key_Delete);
    QVERIFY(!scene.contains(a) && !scene.contains(b) && scene.contains(again));
    QVERIFY(scene.find(again)->children().empty() && !reload->isEnabled());
}

void tst_MainWindow::takesLocalFilesThatAreDropped()
{
    MainWindow window(m_services);
    // Otherwise they would keep drops from the window.
    for (const QWidget *child : window.findChildren<QWidget *>())
        QVERIFY2(!child->acceptDrops(), child->metaObject()->className());

    const QString file = QStringLiteral(TN_SAMPLES_DIR "/gear.stl");
    const QList<QUrl> urls{QUrl("https://example.com/a.stl"), QUrl::fromLocalFile(file)};
    const auto drop = [&](int count, Qt::DropActions offered) {
        QMimeData data;
        data.setUrls(urls.mid(0, count));
        QDragEnterEvent enter({}, offered, &data, Qt::LeftButton, {});
        enter.ignore();
        QApplication::sendEvent(&window, &enter);
        QDropEvent event({}, offered, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &event);
        return enter.isAccepted() && event.dropAction() == Qt::CopyAction && sent.isEmpty();
    };
    QVERIFY(!drop(1, Qt::CopyAction)); // no local file
    QVERIFY(!drop(2, Qt::MoveAction)); // would be taken away from there
    QVERIFY(drop(2, Qt::CopyAction | Qt::MoveAction));
    QTRY_COMPARE(sent, (QStringList{"files", file}));
}

void tst_MainWindow::keepsItsLooks()
{
    QVariantList widths{123, 77};
    {
        MainWindow window(m_services);
        window.show();
        window.resize(640, 480);
        window.findChild<SceneView *>()->setColumnWidths(widths);
        window.close();
    }
    const MainWindow next(m_services);
    QCOMPARE(next.size(), QSize(640, 480));
    QCOMPARE(next.findChild<SceneView *>()->columnWidths(), widths);

    {
        MainWindow window(m_services);
        window.show();
        window.resize(QApplication::primaryScreen()->size() * 2); // then another screen
        window.close();
    }
    const QRect screen = QApplication::primaryScreen()->availableGeometry();
    QVERIFY(screen.contains(MainWindow(m_services).geometry()));

    QSettings().clear();
    const QSize usual = MainWindow(m_services).size();
    for (const QVariant &value : {QVariant("garbage"), QVariant(next.saveState().left(40)),
                                  QVariant(next.saveGeometry().left(20)), QVariant(widths << 5),
                                  QVariant(QVariantList{-5, 1000000})}) {
        for (const char *key : {"geometry", "state", "sceneHeader"})
            QSettings().setValue(QStringLiteral("mainWindow/") + key, value);
        const MainWindow window(m_services);
        QCOMPARE(window.size(), usual);
        QVERIFY(!window.findChild<QWidget *>("log")->isHidden());
        QVERIFY(window.findChild<SceneView *>()->columnWidths().at(1).toInt() < usual.width());
    }
}

void tst_MainWindow::asksBeforeItEndsAnImport()
{
    MainWindow window(m_services);
    window.show();
    FileService &service = m_services.fileService();
    const auto question = [&] { return window.findChild<QMessageBox *>(); };
    const auto press = [&question](QMessageBox::ButtonRole role) {
        const auto buttons = question()->buttons();
        (question()->buttonRole(buttons[0]) == role ? buttons[0] : buttons[1])->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    const quint64 job = service.loadFiles({"/no/a.stl", "/no/b.stl"}, {}, {}, true, true, true);
    QVERIFY(!window.close() && !window.close() && question());
    QCOMPARE(window.findChildren<QMessageBox *>().size(), 1);
    QVERIFY2(question()->text().contains('2'), qPrintable(question()->text()));
    QCOMPARE(question()->buttonRole(question()->defaultButton()), QMessageBox::RejectRole);
    press(QMessageBox::RejectRole);
    QVERIFY(window.isVisible() && !question());
    QCOMPARE(service.runningJobs().front()->id, job);

    QVERIFY(!window.close());
    press(QMessageBox::AcceptRole);
    QVERIFY(!window.isVisible());

    QTRY_VERIFY(service.runningJobs().empty());
    MainWindow idle(m_services);
    idle.show();
    QVERIFY(idle.close());
}

void tst_MainWindow::logsAnyText()
{
    const MainWindow window(m_services);
    const LogPane &log = *window.findChild<LogPane *>();
    emit m_services.fileService().fileLoadingFailed(1, "100%s.stl", "<b>bold</b> &\n  indented");
    tnLog::info("Fine");
    window.findChild<QAction *>("clearResults")->trigger();
    QVERIFY2(QRegularExpression("^[\\d:]{8}  Error: 100%s.stl: <b>bold</b> &\n  indented\n"
                                "[\\d:]{8}  Fine\n[\\d:]{8}  Earlier results removed: 0, 0 .*$")
                 .match(log.toPlainText())
                 .hasMatch(),
             qPrintable(log.toPlainText()));
}

void tst_MainWindow::modelFollowsTheScene()
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
    const tndNode replaced = add(scene, {}, {}, first);
    QCOMPARE(model.rowCount({}), 2);
    QCOMPARE(model.indexOf(replaced).row(), 0);
    QCOMPARE(model.rowCount(model.indexOf(replaced)), 2); // its own group and the guest
    QVERIFY(scene.removeNode(replaced));
    QCOMPARE(model.rowCount({}), 1);
    QVERIFY(!model.indexOf(guest).isValid());
    const tndNode second = add(scene);
    const tndNode third = add(scene);
    scene.removeNodes({third, second});
    QCOMPARE(model.rowCount({}), 1);
}

void tst_MainWindow::selectionIsTheScenes()
{
    Scene scene;
    const tndNode first = add(scene);
    const tndNode second = add(scene);
    SceneView view(scene);
    const auto *const model = qobject_cast<const SceneModel *>(view.model());
    QVERIFY(!view.isExpanded(model->indexOf(second)));
    add(scene, model->nodeAt(model->index(0, 0, model->indexOf(second))));
    QVERIFY(view.isExpanded(model->indexOf(second)) && !view.isExpanded(model->indexOf(first)));
    const auto select = [&view](int row) { view.setCurrentIndex(view.model()->index(row, 0)); };

    select(1);
    QCOMPARE(scene.selectedNodes(true), std::vector<tndNode>{second});
    scene.setSelection({first});
    QCOMPARE(view.selectionModel()->selectedRows(), QModelIndexList{view.model()->index(0, 0)});

    // The view must not choose a neighbour in the place of what has gone.
    select(0);
    const tndNode fresh = add(scene, {}, {}, first);
    QCOMPARE(scene.selectedNodes(true), std::vector<tndNode>{fresh});
    QCOMPARE(view.selectionModel()->selectedRows(), QModelIndexList{view.model()->index(0, 0)});
    scene.removeNode(fresh);
    QVERIFY(scene.selectedNodes(true).empty());
    QVERIFY(!view.selectionModel()->hasSelection());
    select(0);
    QCOMPARE(scene.selectedNodes(true), std::vector<tndNode>{second});
}

void tst_MainWindow::eyesHideAndShow()
{
    MainWindow window(m_services);
    window.show();
    Scene &scene = m_services.scene();
    const tndNode file = add(scene);
    auto *tree = window.findChild<SceneView *>();
    const QModelIndex eye =
        qobject_cast<SceneModel *>(tree->model())->indexOf(file).siblingAtColumn(SceneModel::Shown);
    tree->scrollTo(eye);
    const auto click = [&] {
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(eye).center());
    };
    const qint64 open = eye.data(Qt::DecorationRole).value<QIcon>().cacheKey();
    click();
    QVERIFY(!scene.find(file)->isShown());
    QVERIFY(eye.data(Qt::DecorationRole).value<QIcon>().cacheKey() != open);
    click();
    QVERIFY(scene.find(file)->isShown());
    scene.removeNode(file);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
