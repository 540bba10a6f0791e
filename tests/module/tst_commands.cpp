#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "module/DialogHolder.h"
#include "module/tnCAD.h"
#include "platform/tnController.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScriptedServices.h"
#include "tests/support/duringSearch.h"

#include <QtTest/QtTest>
#include <QtWidgets/QFileDialog>

namespace {

using Paths = std::vector<QString>;

/// Sends the command with these attributes and gives the message with the answers.
tnMessage send(const char *command, const std::vector<tnMessage::Attribute> &attributes)
{
    tnMessage message;
    for (const auto &[key, value] : attributes)
        message.set(key, value, true);
    tnController::callCB(command, message);
    return message;
}

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

} // namespace

class tst_Commands : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ScriptedServices> m_services;
    std::unique_ptr<tnCAD> m_module;

    tnCADImportDialog *dialog() const { return m_module->dialog(); }
    /// The end of a batch, which closes the dialog when that was its only file.
    void finish(const QString &path)
    {
        dialog()->tableView->fileModel()->setFileState(path, ImportState::Succeeded);
        emit m_services->files.importFinished(1, 0);
    }

private Q_SLOTS:
    void init()
    {
        cleanup(); // only one may be registered
        m_services = std::make_unique<ScriptedServices>();
        m_module = std::make_unique<tnCAD>();
    }

    void cleanup()
    {
        m_module.reset();
        m_services.reset();
    }

    void newSceneIsPassedOn()
    {
        QSignalSpy newScene(m_module.get(), &tnCAD::onNewScene);
        for (const int id : {15, 16}) {
            tnMessage message(id);
            QCOMPARE(tnController::broadcast(message), 0);
            QCOMPARE(newScene.size(), id - 15);
        }
    }

    void directLoad()
    {
        const struct {
            bool handled, candidate, allowed;
            int loadState;
            bool direct;
            int state;
        } rows[] = {
            {false, false, false, 0, true, 0}, // not for the dialog
            {false, true, true, 2, true, 0},   {false, true, true, 1, true, 0},
            {false, true, true, 3, false, 3}, // a reload never
            {true, true, true, -1, true, 0}, // the dialog's, but asked for
            {true, true, true, 0, false, 0},   {true, true, true, -2, false, 0},
            {true, false, true, -1, false, 0}, {true, true, false, -1, false, 0},
            {true, true, true, 9, false, 0},   {true, true, true, 2, false, 2},
        };
        for (const auto &row : rows) {
            init();
            m_services->files.handledByDialog = row.handled;
            m_services->files.directLoadCandidate = row.candidate;
            m_services->scene.directLoadAllowed = row.allowed;
            send("importCAD",
                 {{"files", Paths{"/a/b.step", "/a/notes.txt"}},
                  {"loadState", row.loadState},
                  {"parentNodeId", 12u}});

            const QByteArray which = "row " + QByteArray::number(int(&row - rows));
            const auto &loads = m_services->files.loads;
            QVERIFY2(loads.size() == std::size_t(row.direct), which);
            QVERIFY2(dialog()->isVisible() != row.direct, which);
            if (row.direct) {
                QCOMPARE(loads[0].files, QStringList("/a/b.step"));
                QCOMPARE(loads[0].target, tndNode(12));
                QVERIFY(loads[0].directory.isEmpty());
                QVERIFY(loads[0].load && loads[0].remove && loads[0].direct);
            } else {
                QCOMPARE(listed(*dialog()), QStringList("/a/b.step"));
                QCOMPARE(dialog()->targetNode(), tndNode(12));
                QVERIFY2(look(*dialog()) == row.state && !dialog()->isModal(), which);
            }
        }
    }

    void urlsComeFirstUnlessTheyAreUnreadable()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir("sub"));
        for (const char *name : {"a.step", "sub/b.stl", "sub/c.txt"})
            QVERIFY(QFile(folder.filePath(name)).open(QIODevice::WriteOnly));
        const Paths others{"/other.step", "/more.step"};
        send("importCAD",
             {{"urls", QList<QUrl>{QUrl::fromLocalFile(folder.path())}}, {"files", others}});
        QStringList found = listed(*dialog());
        found.sort();
        QCOMPARE(found, QStringList({folder.filePath("a.step"), folder.filePath("sub/b.stl")}));

        CapturedStream err(stderr);
        send("importCAD", {{"urls", QStringList(folder.path())}, {"files", others}});
        const QByteArray printed = err.take();
        QVERIFY(printed.startsWith("getFromMessage : Attribute 'urls' has wrong type (is:'"));
        QVERIFY2(printed.count('\n') > 2, "the call stack of the sender is missing");
        QCOMPARE(listed(*dialog()), QStringList({"/other.step", "/more.step"}));
    }

    void anythingMayHappenDuringASearch()
    {
        const QTemporaryDir folder;
        const QTemporaryDir other;
        const QList<QUrl> otherUrl{QUrl::fromLocalFile(other.path())};
        for (const QString &path :
             {folder.filePath("a.step"), folder.filePath("b.stl"), other.filePath("other.stl")})
            QVERIFY(QFile(path).open(QIODevice::WriteOnly));
        const auto import = [](const tnMessage::Attribute &what) { send("importCAD", {what}); };
        const tnMessage::Attribute files{"files", Paths{"/a/d.step", "/a/e.stl"}};
        const tnMessage::Attribute others{"urls", otherUrl};
        const auto reload = [&] {
            QTimer::singleShot(0, dialog(), [this] { finish("/a/c.step"); });
            const tnMessage message =
                send("reloadCAD", {{"files", QStringList("/a/c.step")}, {"wait", true}});
            QCOMPARE(boost::any_cast<int>(message.get("result")), 0);
        };
        enum { Nothing, FirstFolder, Everything };
        const struct {
            const char *what;
            bool isShown; // before the search
            int opened;
            std::function<void()> happens;
        } rows[] = {
            {"a window closes", false, Everything, [] { emit qApp->lastWindowClosed(); }},
            {"a reload comes and ends", false, Everything, reload},
            {"a reload comes and ends, shown", true, Everything, reload},
            {"another import", true, Everything, [&] { import(files); }},
            {"another search", true, Everything, [&] { import(others); }},
            {"a drop is closed", true, Everything,
             [&] {
                 duringSearch([&] { dialog()->addDroppedUrls(otherUrl); },
                              [this] { dialog()->reject(); });
             }},
            {"a drop", true, Everything,
             [&] {
                 dialog()->addDroppedUrls(otherUrl);
                 QVERIFY(look(*dialog()) == tnCADImportDialog::AddFolder); // for this one
             }},
            {"abort", true, FirstFolder, [this] { dialog()->_pbAbort->click(); }},
            {"close", true, Nothing, [this] { dialog()->_pbClose->click(); }},
            {"the dialog goes", true, Everything, [this] { delete dialog(); }},
            {"the module goes", true, Nothing, [this] { m_module.reset(); }},
            {"the file service goes", false, Nothing, [this] { m_services.reset(); }},
        };
        const QList<QUrl> urls{QUrl::fromLocalFile(folder.path()), otherUrl.first()};
        for (const auto &row : rows) {
            init();
            if (row.isShown)
                import(files);
            QVERIFY2(duringSearch([&] { import({"urls", urls}); }, row.happens), row.what);
            QStringList expected;
            if (row.opened != Nothing)
                expected << folder.filePath("a.step") << folder.filePath("b.stl");
            if (row.opened == Everything)
                expected << other.filePath("other.stl");
            const bool isOpen = DialogHolder::dialog() && DialogHolder::dialog()->isVisible();
            QVERIFY2(isOpen == (row.opened != Nothing), row.what);
            if (isOpen) {
                QVERIFY2(listed(*dialog()) == expected, row.what);
                QVERIFY2(look(*dialog()) == tnCADImportDialog::AddFiles, row.what);
            }
        }
    }

    void aBatchThatEndsDuringASearchOfACommand()
    {
        for (const bool hasFinds : {false, true}) {
            init();
            QTemporaryDir folder;
            const QStringList finds{folder.filePath("a.step"), folder.filePath("b.stl")};
            for (const QString &path : hasFinds ? finds : QStringList())
                QVERIFY(QFile(path).open(QIODevice::WriteOnly));
            send("reloadCAD", {{"files", QStringList("/a/c.step")}, {"startImport", true}});
            QVERIFY(duringSearch(
                [&] {
                    send("importCAD", {{"urls", QList<QUrl>{QUrl::fromLocalFile(folder.path())}}});
                },
                [this] {
                    finish("/a/c.step");
                    QVERIFY(dialog()->isHidden()); // or who waits for it would wait for good
                }));
            QCOMPARE(dialog()->isVisible(), hasFinds);
            QVERIFY(!hasFinds || listed(*dialog()) == finds);
        }
    }

    void withoutFileServiceCommandsOnlyTell()
    {
        m_services.reset();
        const std::pair<const char *, std::vector<tnMessage::Attribute>> commands[] = {
            {"importCAD", {}}, // no chooser either
            {"importCAD", {{"files", Paths{"/a/b.step"}}, {"wait", true}}},
            {"importCAD", {{"urls", QList<QUrl>{QUrl::fromLocalFile("/")}}, {"wait", true}}},
            {"reloadCAD", {{"files", QStringList{"/a/b.step"}}, {"wait", true}}},
        };
        for (const auto &[command, attributes] : commands) {
            QStringList log;
            tnLog::setSink([&log](tnLog::Level level, const QString &text) {
                QCOMPARE(level, tnLog::Level::Error);
                log << text;
            });
            CapturedStream err(stderr);
            const tnMessage message = send(command, attributes);
            const QByteArray missing = typeid(tnFileIOService).name();
            QVERIFY(err.take().startsWith("tnKernelServiceFactory: couldn't find class '" + missing
                                          + "'!\n"));
            tnLog::setSink(nullptr);
            QCOMPARE(log, QStringList("tCAD: there is no file service to import files with!"));
            QVERIFY(!dialog() && message.get("result").empty());
        }
    }

    void nothingToImportEndsTheCommand()
    {
        send("importCAD", {{"wait", true}, {"files", Paths()}});
        send("importCAD", {{"wait", true}, {"files", Paths()}, {"urls", QList<QUrl>()}});
        QVERIFY(!dialog());
        const tnMessage message =
            send("importCAD", {{"wait", true}, {"files", Paths{"/a/notes.txt"}}});
        QVERIFY(dialog() && !dialog()->isVisible());
        QVERIFY(m_services->files.loads.empty() && message.get("result").empty());
    }

    void withoutFilesTheUserIsAsked()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("a.step");
        QVERIFY(QFile(path).open(QIODevice::WriteOnly));
        for (const bool accept : {false, true}) {
            QTimer::singleShot(0, this, [&] {
                auto *const chooser =
                    qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
                QVERIFY(chooser);
                chooser->selectFile(path);
                QMetaObject::invokeMethod(chooser, accept ? "accept" : "reject");
            });
            const tnMessage message =
                send("importCAD", {{"loadState", 3}, {"parentNodeId", 12u}, {"wait", !accept}});
            QCOMPARE(dialog() != nullptr, accept);
            QVERIFY(message.get("result").empty());
        }
        QCOMPARE(listed(*dialog()), QStringList(path));
        QVERIFY(look(*dialog()) == 0 && dialog()->targetNode().isNull());
    }

    void reload()
    {
        enum { Shown, None, Hidden };
        const struct {
            int gui;
            boost::any showDialog, startImport;
            bool isShown, isStarted;
        } rows[] = {
            {Shown, {}, {}, true, false},       {Shown, true, true, true, true},
            {Shown, {}, false, true, false},    {Shown, {}, 1, true, false}, // of a wrong type
            {Shown, false, false, false, true}, {None, true, false, false, true},
            {Hidden, {}, {}, false, true},
        };
        for (const auto &row : rows) {
            init();
            tnController::setNoGUI(row.gui == None);
            tnController::setHideGUI(row.gui == Hidden);
            m_services->files.handledByDialog = false;
            std::vector<tnMessage::Attribute> attributes{{"files", QStringList{"/a/b.step"}},
                                                         {"parent", 4}};
            if (!row.showDialog.empty())
                attributes.emplace_back("showDialog", row.showDialog);
            if (!row.startImport.empty())
                attributes.emplace_back("startImport", row.startImport);
            CapturedStream err(stderr);
            const tnMessage message = send("reloadCAD", attributes);
            err.take();
            tnController::setNoGUI(false);
            tnController::setHideGUI(false);

            const QByteArray which = "row " + QByteArray::number(int(&row - rows));
            const auto &loads = m_services->files.loads;
            QVERIFY2(loads.size() == std::size_t(row.isStarted), which);
            QVERIFY(loads.empty() || (!loads[0].direct && loads[0].target == tndNode(4)));
            QCOMPARE(listed(*dialog()), QStringList("/a/b.step"));
            QCOMPARE(dialog()->targetNode(), tndNode(4));
            QVERIFY2((look(*dialog()) == tnCADImportDialog::Reload) != row.isStarted, which);
            QVERIFY2(dialog()->isVisible() == row.isShown, which);
            QVERIFY(message.get("result").empty());
        }
    }

    void waitsForTheAnswer()
    {
        // The second command comes while the first one waits; the dialog's end is that of both.
        const std::vector<tnMessage::Attribute> two{
            {"files", Paths{"/a/d.step", "/a/e.stl"}}, {"wait", true}, {"loadState", -1}};
        tnMessage import;
        QTimer::singleShot(0, this, [&] { import = send("importCAD", two); });
        QTimer::singleShot(100, this, [&] {
            QCOMPARE(listed(*dialog()), QStringList({"/a/d.step", "/a/e.stl"}));
            QVERIFY(look(*dialog()) == 0 && dialog()->targetNode().isNull());
            dialog()->_materialAssignment->setCurrentIndex(2);
            dialog()->_importAnimations->setChecked(true);
            dialog()->_pbReloadOk->click();
        });
        const tnMessage reload =
            send("reloadCAD", {{"files", QStringList{"/a/b.step", "/a/c.stl"}}, {"wait", true}});
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
            QTimer::singleShot(0, this, [&] {
                if (module)
                    m_module.reset();
                else
                    delete dialog();
            });
            const tnMessage message =
                send("reloadCAD", {{"files", QStringList("/a/b.step")}, {"wait", true}});
            QVERIFY(message.get("result").empty());
        }
        tnMessage late;
        for (const char *command : {"importCAD", "reloadCAD"})
            QVERIFY(!tnController::callCB(command, late));
    }
};

QTEST_MAIN(tst_Commands)
#include "tst_commands.moc"
