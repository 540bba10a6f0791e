#include "host/app/help/HelpMenu.h"
#include "host/app/start/DropArea.h"
#include "host/app/start/ImportCommands.h"
#include "host/app/start/RecentFiles.h"
#include "host/app/start/RecentMenu.h"
#include "host/app/start/StartPage.h"
#include "host/app/start/StartStack.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/InstalledFiles.h"
#include "platform/tnController.h"
#include "platform/tnMessage.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

using namespace tnhost;

namespace {

QStringList asked; ///< the files of the last request to the plug-in

void record(tnMessage &message)
{
    const auto *files = boost::any_cast<std::vector<QString>>(&message.get("files"));
    asked = QStringList(files->begin(), files->end());
}

} // namespace

class tst_Start : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { tnController::addCB("importCAD", &record); }
    void init()
    {
        QSettings().clear();
        asked.clear();
    }
    void beginsWithAnEmptyScene();
    void remembersFiles();
    void framesWhatIsDraggedThere();
    void helps();

private:
    Scene m_scene;
    FileService m_service{m_scene, QString()};
    ImportCommands m_commands{m_service};
};

void tst_Start::beginsWithAnEmptyScene()
{
    Scene scene;
    RecentFiles recent(m_service.log());
    auto *page = new StartPage(m_commands, recent);
    auto *content = new QWidget;
    const StartStack stack(scene, page, content);
    QCOMPARE(stack.currentWidget(), page);
    page->findChild<QPushButton *>("openSample")->click();
    QTRY_COMPARE(asked, QStringList{InstalledFiles::sample()});
    const tndNode node = scene.addFragment(std::make_shared<SceneFragment>(), {}, "/a", {});
    QCOMPARE(stack.currentWidget(), content);
    scene.removeNode(node);
    QCOMPARE(stack.currentWidget(), page);
}

void tst_Start::remembersFiles()
{
    const QString sample = InstalledFiles::sample();
    RecentFiles recent(m_service.log());
    RecentMenu menu(recent, m_commands);
    const StartPage page(m_commands, recent);
    QVERIFY(!menu.menuAction()->isEnabled() && page.findChildren<QToolButton *>().isEmpty());
    QStringList files{sample, "/no/a&b.stl"};
    m_service.loadFiles(files, {}, {}, true, true, true);
    QTRY_COMPARE(recent.paths(), files);
    for (int i = 0; i < 9; ++i)
        files << QStringLiteral("/no/%1.stl").arg(i);
    files.move(1, 0);
    m_service.loadFiles(files, {}, {}, true, true, true);
    QTRY_COMPARE(recent.paths(), QStringList(files.mid(0, 10)));
    QTRY_VERIFY(m_service.runningJobs().empty());

    const QList<QAction *> entries = menu.actions();
    QCOMPARE(entries[0]->text(), QString("&1  a&&b.stl"));
    QVERIFY(!entries[0]->isEnabled() && entries[1]->isEnabled()); // as it is gone
    QCOMPARE(page.findChildren<QToolButton *>().size(), 1);
    for (const auto &click :
         {std::function<void()>([&] { entries[1]->trigger(); }),
          std::function<void()>([&] { page.findChild<QToolButton *>()->click(); })}) {
        asked.clear();
        click();
        QTRY_COMPARE(asked, QStringList{sample});
    }
    entries.last()->trigger();
    QVERIFY(recent.paths().isEmpty() && !menu.menuAction()->isEnabled());
}

void tst_Start::framesWhatIsDraggedThere()
{
    QMainWindow window;
    window.setCentralWidget(new QWidget);
    new DropArea(&window, m_commands);
    window.show();
    const auto *frame = window.findChild<QWidget *>("dropFrame");
    QMimeData data;
    const auto drag = [&](const QString &url) {
        data.setUrls({QUrl(url)});
        QDragEnterEvent enter({}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &enter);
        return frame->isVisible();
    };
    QVERIFY(!drag("https://example.com/a.stl"));
    QVERIFY(drag("file:///a.stl"));
    QCOMPARE(frame->geometry(), window.centralWidget()->geometry());
    QDragLeaveEvent leave;
    QApplication::sendEvent(&window, &leave);
    QVERIFY(!frame->isVisible());
    QVERIFY(drag("file:///a.stl"));
    QDropEvent drop({}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    QVERIFY(!frame->isVisible());
}

void tst_Start::helps()
{
    QWidget window;
    const QStringList lines = HelpMenu(QStringLiteral(TN_BIN_DIR "/tnconvert"), &window).versions();
    QCOMPARE(lines.value(1), QStringLiteral("Qt %1").arg(qVersion()));
    const QString all = lines.join('\n');
    QVERIFY2(
        QRegularExpression("\nOpen CASCADE 7\\.\\d+\\.\\d+\n.*\nzlib 1\\.").match(all).hasMatch(),
        qPrintable(all));
    const QString problem = HelpMenu("/no/converter", &window).versions().last();
    QVERIFY2(problem.endsWith("does not answer: /no/converter"), qPrintable(problem));

    HelpMenu menu({}, &window);
    QVERIFY(menu.actions().first()->isEnabled());
    menu.actions().first()->trigger();
    QVERIFY(window.findChild<QTextBrowser *>()->toPlainText().startsWith("User guide"));
}

QTEST_MAIN(tst_Start)
#include "tst_Start.moc"
