#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "module/tnCAD.h"
#include "platform/tnController.h"
#include "platform/tnMessage.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>
#include <QtWidgets/QFileDialog>

namespace {

QStringList listed(const tnCADImportDialog &dialog)
{
    return dialog.tableView->fileModel()->fileNames(false);
}

/// The entry code whose look the dialog has.
int look(const tnCADImportDialog &dialog)
{
    if (dialog.windowTitle() == "Re-import File")
        return tnCADImportDialog::Reload;
    if (!dialog._progress->isHidden())
        return tnCADImportDialog::Run;
    return dialog._pbAbort->isHidden() ? tnCADImportDialog::AddFiles : tnCADImportDialog::AddFolder;
}

void writeFile(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
}

} // namespace

Q_DECLARE_METATYPE(std::vector<QString>)

class tst_Commands : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ScriptedServices> m_services;
    std::unique_ptr<tnCAD> m_module;

    tnCADImportDialog *dialog() const { return m_module->dialog(); }

private Q_SLOTS:
    void init()
    {
        m_services = std::make_unique<ScriptedServices>();
        m_module = std::make_unique<tnCAD>();
    }

    void cleanup()
    {
        m_module.reset();
        m_services.reset();
        tnController::setNoGUI(false);
        tnController::setHideGUI(false);
    }

    void commandsLiveAsLongAsTheModule()
    {
        tnMessage message;
        message.set("files", QStringList(), true);
        QVERIFY(tnController::callCB("reloadCAD", message));
        m_module.reset();
        QVERIFY(!tnController::callCB("reloadCAD", message));
        QVERIFY(!tnController::callCB("importCAD", message));
    }

    void newSceneIsPassedOn()
    {
        QSignalSpy newScene(m_module.get(), &tnCAD::onNewScene);
        tnMessage other(15);
        tnMessage scene(16);
        QCOMPARE(tnController::broadcast(other), 0);
        QCOMPARE(newScene.size(), 0);
        QCOMPARE(tnController::broadcast(scene), 0);
        QCOMPARE(newScene.size(), 1);
    }

    void directLoad_data()
    {
        QTest::addColumn<bool>("handled");
        QTest::addColumn<bool>("candidate");
        QTest::addColumn<bool>("allowed");
        QTest::addColumn<int>("loadState");
        QTest::addColumn<bool>("direct");
        QTest::addColumn<int>("state");

        QTest::newRow("not for the dialog") << false << false << false << 0 << true << 0;
        QTest::newRow("not for the dialog, any state") << false << true << true << 2 << true << 0;
        QTest::newRow("dialog's, asked for") << true << true << true << -1 << true << 0;
        QTest::newRow("dialog's, not asked for") << true << true << true << 0 << false << 0;
        QTest::newRow("state 1 still undergoes the test")
            << false << true << true << 1 << true << 0;
        QTest::newRow("other negative") << true << true << true << -2 << false << 0;
        QTest::newRow("no candidate") << true << false << true << -1 << false << 0;
        QTest::newRow("scene refuses") << true << true << false << -1 << false << 0;
        QTest::newRow("unknown state") << true << true << true << 9 << false << 0;
        QTest::newRow("run") << true << true << true << 2 << false << 2;
        QTest::newRow("a reload never") << false << true << true << 3 << false << 3;
    }

    void directLoad()
    {
        QFETCH(bool, handled);
        QFETCH(bool, candidate);
        QFETCH(bool, allowed);
        QFETCH(int, loadState);
        m_services->files.handledByDialog = handled;
        m_services->files.directLoadCandidate = candidate;
        m_services->scene.directLoadAllowed = allowed;

        tnMessage message;
        message.set("files", std::vector<QString>{"/a/b.step", "/a/notes.txt"}, true);
        message.set("loadState", loadState, true);
        message.set("parentNodeId", 12u, true);
        tnController::callCB("importCAD", message);

        const auto &loads = m_services->files.loads;
        QTEST(loads.size() == 1, "direct");
        QTEST(!dialog()->isVisible(), "direct");
        if (loads.size() == 1) {
            QCOMPARE(loads[0].files, QStringList("/a/b.step"));
            QCOMPARE(loads[0].target, tndNode(12));
            QVERIFY(loads[0].directory.isEmpty());
            QVERIFY(loads[0].load && loads[0].remove && loads[0].direct);
        } else {
            QCOMPARE(listed(*dialog()), QStringList("/a/b.step"));
            QCOMPARE(dialog()->targetNode(), tndNode(12));
            QTEST(look(*dialog()), "state");
            QVERIFY(!dialog()->isModal());
        }
    }

    void twoFilesGoToTheDialogUnasked()
    {
        tnMessage message;
        message.set("files", std::vector<QString>{"/a/b.step", "/a/c.stl"}, true);
        message.set("loadState", -1, true);
        tnController::callCB("importCAD", message);
        QVERIFY(m_services->files.directLoadQuestions.empty());
        QCOMPARE(look(*dialog()), 0);
        QVERIFY(dialog()->targetNode().isNull() && dialog()->isVisible());
    }

    void urlsComeFirstUnlessTheyAreUnreadable()
    {
        QTemporaryDir folder;
        QDir(folder.path()).mkdir("sub");
        writeFile(folder.filePath("a.step"));
        writeFile(folder.filePath("sub/b.stl"));
        writeFile(folder.filePath("sub/c.txt"));

        tnMessage message;
        message.set("urls", QList<QUrl>{QUrl::fromLocalFile(folder.path())}, true);
        message.set("files", std::vector<QString>{"/other.step", "/more.step"}, true);
        tnController::callCB("importCAD", message);
        const QStringList found = listed(*dialog());
        QCOMPARE(QSet<QString>(found.begin(), found.end()),
                 QSet<QString>({folder.filePath("a.step"), folder.filePath("sub/b.stl")}));

        message.set("urls", QStringList{folder.path()}, true);
        CapturedStream err(stderr);
        tnController::callCB("importCAD", message);
        QVERIFY(err.take().contains("'urls' has wrong type"));
        QCOMPARE(listed(*dialog()), QStringList({"/other.step", "/more.step"}));
    }

    void nothingToImportEndsTheCommand()
    {
        tnMessage message;
        message.set("wait", true, true);
        message.set("files", std::vector<QString>(), true);
        tnController::callCB("importCAD", message);
        message.set("urls", QList<QUrl>(), true);
        tnController::callCB("importCAD", message);
        QVERIFY(!dialog());
        message = tnMessage();
        message.set("wait", true, true);
        message.set("files", std::vector<QString>{"/a/notes.txt"}, true);
        tnController::callCB("importCAD", message);
        QVERIFY(dialog() && !dialog()->isVisible());
        QVERIFY(m_services->files.loads.empty() && message.get("result").empty());
    }

    void withoutFilesTheUserIsAsked()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath("a.step");
        writeFile(path);
        for (const bool accept : {false, true}) {
            QTimer::singleShot(0, this, [&] {
                auto *const chooser =
                    qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
                QVERIFY(chooser);
                chooser->selectFile(path);
                QMetaObject::invokeMethod(chooser, accept ? "accept" : "reject");
            });
            tnMessage message;
            message.set("loadState", 3, true);
            message.set("parentNodeId", 12u, true);
            message.set("wait", !accept, true);
            tnController::callCB("importCAD", message);
            QCOMPARE(dialog() != nullptr, accept);
            QVERIFY(message.get("result").empty());
        }
        QCOMPARE(listed(*dialog()), QStringList(path));
        QVERIFY(look(*dialog()) == 0 && dialog()->targetNode().isNull());
    }

    void reload_data()
    {
        QTest::addColumn<int>("gui"); // 0 shown, 1 none, 2 hidden
        QTest::addColumn<QVariant>("showDialog");
        QTest::addColumn<QVariant>("startImport");
        QTest::addColumn<bool>("shown");
        QTest::addColumn<bool>("started");
        const QVariant none;
        QTest::newRow("default") << 0 << none << none << true << false;
        QTest::newRow("start") << 0 << QVariant(true) << QVariant(true) << true << true;
        QTest::newRow("no start") << 0 << none << QVariant(false) << true << false;
        QTest::newRow("start of a wrong type") << 0 << none << QVariant(1) << true << false;
        QTest::newRow("unseen") << 0 << QVariant(false) << QVariant(false) << false << true;
        QTest::newRow("no GUI") << 1 << QVariant(true) << QVariant(false) << false << true;
        QTest::newRow("hidden GUI") << 2 << none << none << false << true;
    }

    void reload()
    {
        QFETCH(int, gui);
        QFETCH(QVariant, showDialog);
        QFETCH(QVariant, startImport);
        tnController::setNoGUI(gui == 1);
        tnController::setHideGUI(gui == 2);
        m_services->files.handledByDialog = false;

        tnMessage message;
        message.set("files", QStringList{"/a/b.step"}, true);
        message.set("parent", 4, true);
        if (showDialog.isValid())
            message.set("showDialog", showDialog.toBool(), true);
        if (startImport.type() == QVariant::Bool)
            message.set("startImport", startImport.toBool(), true);
        else if (startImport.isValid())
            message.set("startImport", startImport.toInt(), true);
        CapturedStream err(stderr);
        tnController::callCB("reloadCAD", message);
        err.take();

        const auto &loads = m_services->files.loads;
        QTEST(loads.size() == 1, "started");
        QVERIFY(loads.empty() || (!loads[0].direct && loads[0].target == tndNode(4)));
        QCOMPARE(listed(*dialog()), QStringList("/a/b.step"));
        QCOMPARE(dialog()->targetNode(), tndNode(4));
        QCOMPARE(dialog()->windowTitle(),
                 QString(loads.empty() ? "Re-import File" : "Import File(s)"));
        QTEST(dialog()->isVisible(), "shown");
        QVERIFY(message.get("result").empty());
    }

    void reloadTakesOnlyItsOwnTypes()
    {
        tnMessage message;
        message.set("files", std::vector<QString>{"/a/b.step"}, true);
        CapturedStream err(stderr);
        tnController::callCB("reloadCAD", message);
        QVERIFY(!dialog());

        message.set("files", QStringList{"/a/b.step"}, true);
        message.set("parent", 4u, true);
        tnController::callCB("reloadCAD", message);
        const QByteArray printed = err.take();
        QVERIFY(printed.contains("'files' has wrong type"));
        QVERIFY(printed.contains("'parent' has wrong type"));
        QVERIFY(dialog()->targetNode().isNull());
    }

    void waitsForTheAnswer()
    {
        tnMessage reload;
        reload.set("files", QStringList{"/a/b.step", "/a/c.stl"}, true);
        reload.set("wait", true, true);
        tnMessage import;
        import.set("files", std::vector<QString>{"/a/d.step", "/a/e.stl"}, true);
        import.set("wait", true, true);
        // The second command comes while the first one waits; the dialog's end is that of both.
        QTimer::singleShot(0, this, [&] { tnController::callCB("importCAD", import); });
        QTimer::singleShot(100, this, [&] {
            QCOMPARE(listed(*dialog()), QStringList({"/a/d.step", "/a/e.stl"}));
            dialog()->_materialAssignment->setCurrentIndex(2);
            dialog()->_importAnimations->setChecked(true);
            dialog()->_pbReloadOk->click();
        });
        tnController::callCB("reloadCAD", reload);
        QCOMPARE(boost::any_cast<int>(import.get("result")), 1);
        QCOMPARE(boost::any_cast<int>(reload.get("result")), 1);
        QCOMPARE(boost::any_cast<int>(reload.get("materialAssignmentMode")), 2);
        QVERIFY(boost::any_cast<bool>(reload.get("importAnimations")));
        QVERIFY(import.get("materialAssignmentMode").empty());
        QVERIFY(dialog() && !dialog()->isVisible());
    }

    void aWaitEndsWithTheDialogOrTheModule()
    {
        for (const bool module : {false, true}) {
            tnMessage message;
            message.set("files", QStringList{"/a/b.step"}, true);
            message.set("wait", true, true);
            QTimer::singleShot(0, this, [&] {
                if (module)
                    m_module.reset();
                else
                    delete dialog();
            });
            tnController::callCB("reloadCAD", message);
            QVERIFY(message.get("result").empty());
        }
    }
};

QTEST_MAIN(tst_Commands)
#include "tst_commands.moc"
