#include "module/tnCAD.h"
#include "platform/tnController.h"
#include "platform/tnMessage.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

namespace {

struct HandOver {
    QStringList files;
    tndNode parent;
    int state;
    bool show;
};

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
    std::vector<HandOver> m_handOvers;

private Q_SLOTS:
    void init()
    {
        m_handOvers.clear();
        m_services = std::make_unique<ScriptedServices>();
        m_module = std::make_unique<tnCAD>();
        m_module->setDialogHandOver(
            [this](const QStringList &files, const tndNode &parent, int state, bool show) {
                m_handOvers.push_back({files, parent, state, show});
                return true;
            });
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
        QTest::newRow("unknown state passes") << true << true << true << 9 << false << 9;
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
        QTEST(m_handOvers.empty(), "direct");
        if (loads.size() == 1) {
            QCOMPARE(loads[0].files, QStringList("/a/b.step"));
            QCOMPARE(loads[0].target, tndNode(12));
            QVERIFY(loads[0].directory.isEmpty());
            QVERIFY(loads[0].load && loads[0].remove && loads[0].direct);
        } else {
            QCOMPARE(m_handOvers[0].files, QStringList("/a/b.step"));
            QCOMPARE(m_handOvers[0].parent, tndNode(12));
            QTEST(m_handOvers[0].state, "state");
            QVERIFY(m_handOvers[0].show);
        }
    }

    void twoFilesGoToTheDialogUnasked()
    {
        tnMessage message;
        message.set("files", std::vector<QString>{"/a/b.step", "/a/c.stl"}, true);
        message.set("loadState", -1, true);
        tnController::callCB("importCAD", message);
        QVERIFY(m_services->files.directLoadQuestions.empty());
        QCOMPARE(m_handOvers.size(), std::size_t(1));
        QCOMPARE(m_handOvers[0].state, 0);
        QVERIFY(m_handOvers[0].parent.isNull());
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
        QCOMPARE(m_handOvers.size(), std::size_t(1));
        QCOMPARE(QSet<QString>(m_handOvers[0].files.begin(), m_handOvers[0].files.end()),
                 QSet<QString>({folder.filePath("a.step"), folder.filePath("sub/b.stl")}));

        message.set("urls", QStringList{folder.path()}, true);
        CapturedStream err(stderr);
        tnController::callCB("importCAD", message);
        QVERIFY(err.take().contains("'urls' has wrong type"));
        QCOMPARE(m_handOvers.size(), std::size_t(2));
        QCOMPARE(m_handOvers[1].files, QStringList({"/other.step", "/more.step"}));
    }

    void nothingToImportEndsTheCommand()
    {
        tnMessage message;
        message.set("files", std::vector<QString>{"/a/notes.txt"}, true);
        tnController::callCB("importCAD", message);
        message.set("files", std::vector<QString>(), true);
        tnController::callCB("importCAD", message);
        message.set("urls", QList<QUrl>(), true);
        tnController::callCB("importCAD", message);
        QVERIFY(m_handOvers.empty());
        QVERIFY(m_services->files.loads.empty());
    }

    void reload_data()
    {
        QTest::addColumn<int>("gui"); // 0 shown, 1 none, 2 hidden
        QTest::addColumn<QVariant>("showDialog");
        QTest::addColumn<bool>("shown");
        QTest::newRow("default") << 0 << QVariant() << true;
        QTest::newRow("asked for") << 0 << QVariant(true) << true;
        QTest::newRow("not wanted") << 0 << QVariant(false) << false;
        QTest::newRow("no GUI") << 1 << QVariant(true) << false;
        QTest::newRow("hidden GUI") << 2 << QVariant() << false;
    }

    void reload()
    {
        QFETCH(int, gui);
        QFETCH(QVariant, showDialog);
        tnController::setNoGUI(gui == 1);
        tnController::setHideGUI(gui == 2);
        m_services->files.handledByDialog = false;

        tnMessage message;
        message.set("files", QStringList{"/a/b.step"}, true);
        message.set("parent", 4, true);
        if (showDialog.isValid())
            message.set("showDialog", showDialog.toBool(), true);
        tnController::callCB("reloadCAD", message);

        QVERIFY(m_services->files.loads.empty());
        QCOMPARE(m_handOvers.size(), std::size_t(1));
        QCOMPARE(m_handOvers[0].files, QStringList("/a/b.step"));
        QCOMPARE(m_handOvers[0].parent, tndNode(4));
        QCOMPARE(m_handOvers[0].state, 3);
        QTEST(m_handOvers[0].show, "shown");
    }

    void reloadTakesOnlyItsOwnTypes()
    {
        tnMessage message;
        message.set("files", std::vector<QString>{"/a/b.step"}, true);
        CapturedStream err(stderr);
        tnController::callCB("reloadCAD", message);
        QVERIFY(m_handOvers.empty());

        message.set("files", QStringList{"/a/b.step"}, true);
        message.set("parent", 4u, true);
        tnController::callCB("reloadCAD", message);
        const QByteArray printed = err.take();
        QVERIFY(printed.contains("'files' has wrong type"));
        QVERIFY(printed.contains("'parent' has wrong type"));
        QCOMPARE(m_handOvers.size(), std::size_t(1));
        QVERIFY(m_handOvers[0].parent.isNull());
    }
};

QTEST_GUILESS_MAIN(tst_Commands)
#include "tst_commands.moc"
