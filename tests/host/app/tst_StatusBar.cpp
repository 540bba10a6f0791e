#include "host/app/start/FileSearch.h"
#include "host/app/start/LeftOut.h"
#include "host/app/status/ImportStatus.h"
#include "host/app/status/ImportSummary.h"
#include "host/import/ImportLog.h"
#include "host/services/FileService.h"
#include "host/services/PluginDialog.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

#include <unistd.h>

using namespace tnhost;

namespace {

using State = FileResult::State;

FileResult file(State state, const QStringList &warnings = {}, const tndNode &node = tndNode(1))
{
    FileResult result;
    result.state = state;
    result.warnings = warnings;
    result.node = node;
    return result;
}

JobResultPtr job(const std::vector<FileResult> &files)
{
    auto result = std::make_shared<JobResult>();
    result->files = files;
    return result;
}

} // namespace

Q_DECLARE_METATYPE(std::vector<FileResult>)
Q_DECLARE_METATYPE(FileResult::State)

class tst_StatusBar : public QObject {
    Q_OBJECT

private slots:
    void sumsUp_data();
    void sumsUp();
    void followsAllImports();
    void showsTheDialog();
    void findsWhatCanBeConverted();
    void keepsWhatAStoppedSearchFound();
    void saysWhatIsLeftOut();
};

void tst_StatusBar::sumsUp_data()
{
    QTest::addColumn<std::vector<FileResult>>("files");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<State>("state");
    using Files = std::vector<FileResult>;
    const FileResult good = file(State::Succeeded);
    const FileResult converted = file(State::Succeeded, {}, {});
    QTest::newRow("no file") << Files{} << 1.0 << QString() << State::Succeeded;
    QTest::newRow("one") << Files{good} << 0.44 << "1 file imported in 0.4 s" << State::Succeeded;
    QTest::newRow("warnings") << Files{good, file(State::Succeeded, {"w", "x"})} << 73.4
                              << "2 files imported in 73 s, 1 with warnings" << State::Succeeded;
    QTest::newRow("converted") << Files{converted, converted} << 2.0 << "2 files converted in 2.0 s"
                               << State::Succeeded;
    QTest::newRow("all states")
        << Files{good,
                 file(State::Failed, {"w"}),
                 file(State::Incomplete, {"w"}),
                 file(State::Aborted),
                 file(State::Pending),
                 file(State::Running)}
        << 20.0 << "1 of 6 files imported in 20 s, 1 failed, 1 incomplete, 1 aborted, 2 not begun"
        << State::Failed;
    QTest::newRow("incomplete") << Files{good, file(State::Incomplete), file(State::Aborted)}
                                << 20.0 << "1 of 3 files imported in 20 s, 1 incomplete, 1 aborted"
                                << State::Incomplete;
    QTest::newRow("none begun") << Files{file(State::Pending)} << 0.0
                                << "0 of 1 files imported in 0.0 s, 1 not begun" << State::Aborted;
}

void tst_StatusBar::sumsUp()
{
    QFETCH(const std::vector<FileResult>, files);
    QFETCH(const double, seconds);
    const std::size_t middle = files.size() / 2;
    const auto at = files.begin() + static_cast<std::ptrdiff_t>(middle);
    const ImportSummary summary({job({files.begin(), at}), job({at, files.end()})}, seconds);
    QTEST(summary.sentence(), "sentence");
    QTEST(summary.state(), "state");
}

void tst_StatusBar::followsAllImports()
{
    Scene scene;
    FileService service(scene, QString());
    ImportStatus status(service);
    const auto *text = status.findChild<QToolButton *>("importText");
    const auto *bar = status.findChild<QProgressBar *>();
    auto *abort = status.findChild<QToolButton *>("abortImports");
    status.show();
    QVERIFY(!text->isVisible() && !bar->isVisible() && !abort->isVisible());
    service.loadFiles({"/no/a.stl", "/no/b.stl"}, {}, {}, true, true, true);
    service.loadFiles({"/no/c.stl", "/no/d.stl"}, {}, {}, true, true, true);
    bool isFirst = true;
    connect(&service.log(), &ImportLog::fileEnded, &status, [&] {
        if (!std::exchange(isFirst, false))
            return;
        QCOMPARE(text->text(), QString("Importing … 1 of 4 files done"));
        QCOMPARE(bar->value(), 25);
        QVERIFY(bar->isVisible() && abort->isVisible());
        QVERIFY(!status.findChild<QToolButton *>("showDialog")->isVisible()); // there is none
        abort->click();
        QVERIFY(!abort->isEnabled());
    });
    QTRY_VERIFY(!isFirst);
    QTRY_VERIFY(!bar->isVisible());
    QVERIFY(!abort->isVisible());
    QVERIFY2(QRegularExpression("^0 of 4 files imported in 0.\\d s, 1 failed, 3 not begun$")
                 .match(text->text())
                 .hasMatch(),
             qPrintable(text->text()));
    status.showSentence({}, State::Failed);
    QVERIFY(!text->text().isEmpty());
    service.loadFiles({}, {}, {}, true, true, true);
    QTRY_VERIFY(!text->isVisible());
}

void tst_StatusBar::showsTheDialog()
{
    QVERIFY(!PluginDialog::show());
    QDialog dialog;
    dialog.setObjectName(PluginDialog::name);
    for (void (QWidget::*const hide)() : {&QWidget::hide, &QWidget::showMinimized}) {
        (dialog.*hide)();
        QVERIFY(PluginDialog::show());
        QVERIFY(dialog.isVisible() && !dialog.isMinimized());
    }
}

void tst_StatusBar::findsWhatCanBeConverted()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("sub"));
    for (const char *name : {"b.stl", "a.STEP", "c.jt", "d.pdf", "e.PDF", "m.mtl", "sub/f.igs",
                             ".hidden.stl", "readme", "closed.stl"}) {
        QFile each(folder.filePath(name));
        QVERIFY(each.open(QIODevice::WriteOnly));
    }
    QFile(folder.filePath("closed.stl")).setPermissions({});
    FileSearch search;
    QSignalSpy finished(&search, &FileSearch::finished);
    QSignalSpy entered(&search, &FileSearch::entered);
    search.start({QUrl::fromLocalFile(folder.filePath("b.stl")), QUrl::fromLocalFile("/no/x.obj"),
                  QUrl("https://example.com/a.stl"), QUrl::fromLocalFile(folder.path())});
    QTRY_COMPARE(finished.size(), 1);
    QStringList files;
    for (const char *name : {"b.stl", "a.STEP", "closed.stl", "sub/f.igs"})
        files << folder.filePath(name);
    QString omissions = "6 of 9 files left out: 2 pdf, 1 without suffix, 1 jt, 1 not found";
    if (geteuid() == 0) // who reads everything
        omissions.replace("6 of", "5 of");
    else
        omissions.replace("1 not found", "1 without access, 1 not found");
    QCOMPARE(finished[0][1].toString(), omissions);
    if (geteuid() != 0)
        files.removeAt(2);
    QCOMPARE(finished[0][0].toStringList(), files);
    QCOMPARE(entered[0][0].toString(), folder.path());
}

void tst_StatusBar::keepsWhatAStoppedSearchFound()
{
    const QTemporaryDir folder;
    for (const char *name : {"a", "a/b", "a/b/c"})
        QVERIFY(QDir(folder.path()).mkpath(name));
    for (const char *name : {"x.stl", "a/b/y.stl"}) {
        QFile each(folder.filePath(name));
        QVERIFY(each.open(QIODevice::WriteOnly));
    }
    FileSearch search;
    QSignalSpy finished(&search, &FileSearch::finished);
    const QUrl file = QUrl::fromLocalFile(folder.filePath("x.stl"));
    connect(&search, &FileSearch::entered, &search, &FileSearch::stop, Qt::DirectConnection);
    search.start({file, QUrl::fromLocalFile(folder.path())});
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(finished[0][0].toStringList(), QStringList{file.toLocalFile()});
    search.disconnect(&search);
    search.start({QUrl::fromLocalFile(folder.path())}); // the next one is another
    QTRY_COMPARE(finished.size(), 2);
    QCOMPARE(finished[1][0].toStringList().size(), 2);
}

void tst_StatusBar::saysWhatIsLeftOut()
{
    LeftOut nothing;
    nothing.addKind("mtl");
    QVERIFY(nothing.sentence(3).isEmpty());
    LeftOut all;
    for (const char *suffix : {"a", "b", "c", "d", "e", "f", "g", "g"})
        all.addKind(suffix);
    FolderWalk::Omissions omissions;
    omissions.files["g"] = 2;
    omissions.unnamedFiles = 1;
    all.add(omissions);
    QCOMPARE(all.sentence(2),
             QString("11 of 13 files left out: 4 g, 1 a, 1 b, 1 c, 1 d, 2 of other kinds, 1 with a "
                     "name that is no UTF-8"));
    LeftOut folders;
    omissions = {};
    omissions.closedFolders = 2;
    folders.add(omissions);
    QCOMPARE(folders.sentence(5), QString("Left out: folders without access: 2"));
}

QTEST_MAIN(tst_StatusBar)
#include "tst_StatusBar.moc"
