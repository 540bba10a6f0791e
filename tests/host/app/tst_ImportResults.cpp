#include "host/app/results/ResultsPane.h"
#include "host/app/results/ResultsText.h"
#include "host/import/ImportLog.h"
#include "host/scene/Scene.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

using namespace tnhost;

namespace {

using State = FileResult::State;

FileResult file(const QString &path, State state, const QString &message = {},
                const QStringList &warnings = {})
{
    FileResult result;
    result.path = path;
    result.state = state;
    result.message = message;
    result.warnings = warnings;
    return result;
}

/// A log and the jobs that it tells of.
struct Session {
    ImportLog log;
    quint64 lastId = 0;

    std::shared_ptr<JobResult> start(const std::vector<FileResult> &files)
    {
        auto job = std::make_shared<JobResult>();
        job->id = ++lastId;
        job->files = files;
        emit log.jobStarted(job);
        return job;
    }
    void run(const std::vector<FileResult> &files) { emit log.jobEnded(start(files)); }
};

QStringList column(const QAbstractItemModel &model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.index(row, column).data().toString();
    return texts;
}

} // namespace

class tst_ImportResults : public QObject {
    Q_OBJECT

private slots:
    void followsTheJobs();
    void saysWhatIsWrong();
    void sortsByTheFacts_data();
    void sortsByTheFacts();
    void writesText();
    void importsAgainWhatFailed();
    void showsTheNode();
    void savesOrSaysWhyNot();
};

void tst_ImportResults::followsTheJobs()
{
    Session session;
    ResultsModel model(session.log);
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    emit session.log.fileEnded(std::make_shared<JobResult>(), 0); // begun before
    session.run({});
    const auto first = session.start({file("/a.step", State::Pending)});
    const auto second =
        session.start({file("/b.step", State::Pending), file("/c.step", State::Pending)});
    QCOMPARE(column(model, 1), (QStringList{"a.step", "b.step", "c.step"}));

    FileResult &assembly = second->files[1];
    assembly.state = State::Running;
    assembly.percent = 40;
    assembly.parts = {file("/p.step", State::Running), file("/q.step", State::Failed, "no")};
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    for (int i = 0; i < 100; ++i)
        emit session.log.stepTaken(second, 1, {});
    const QModelIndex row = model.index(2, 0);
    QCOMPARE(model.rowCount(row), 2);
    QCOMPARE(row.data().toString(), QString("Running 40 %"));
    QCOMPARE(model.index(1, 0, row).data().toString(), QString("Failed"));
    QTRY_COMPARE(changes.size(), 2); // its row and those of its parts, once
    QCOMPARE(changes.first().first().toModelIndex(), row);
    QCOMPARE(changes.last().first().toModelIndex(), model.index(0, 0, row));
}

void tst_ImportResults::saysWhatIsWrong()
{
    Session session;
    const ResultsModel model(session.log);
    session.run({file("/ok", State::Succeeded), file("/text", State::Failed, "the file\nis empty"),
                 file("/stopped", State::Failed, "Really?"), file("/aborted", State::Aborted),
                 file("/never", State::Pending)});
    session.start({file("/yet", State::Pending)});
    QCOMPARE(column(model, 3),
             (QStringList{"", "The file is empty.", "Really?", "The import of it was aborted.",
                          "The import ended before it was begun.", ""}));
}

void tst_ImportResults::sortsByTheFacts_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("state") << 0 << QStringList{"B", "a", "c"};
    QTest::newRow("name, whatever its folder and case") << 1 << QStringList{"a", "B", "c"};
    QTest::newRow("number of warnings") << 4 << QStringList{"c", "B", "a"};
    QTest::newRow("seconds, not their digits") << 5 << QStringList{"B", "a", "c"};
    QTest::newRow("triangles") << 6 << QStringList{"c", "a", "B"};
}

void tst_ImportResults::sortsByTheFacts()
{
    QFETCH(const int, column);
    QFETCH(const QStringList, names);
    Session session;
    const Scene scene;
    const ResultsPane pane(session.log, scene);
    std::vector<FileResult> files{file("/2/c", State::Incomplete, "x"),
                                  file("/3/a", State::Failed, "y", {"v", "w"}),
                                  file("/1/B", State::Succeeded, {}, {"z"})};
    const std::tuple<double, std::size_t> facts[] = {{100.0, 1}, {20.0, 5}, {3.0, 10}};
    for (std::size_t i = 0; i < files.size(); ++i)
        std::tie(files[i].seconds, files[i].triangles) = facts[i];
    session.run(files);
    auto *view = pane.findChild<QTreeView *>();
    QCOMPARE(::column(*view->model(), 1), (QStringList{"c", "a", "B"})); // as they came
    view->sortByColumn(column, Qt::AscendingOrder);
    QCOMPARE(::column(*view->model(), 1), names);
}

void tst_ImportResults::writesText()
{
    Session session;
    const ResultsModel model(session.log);
    FileResult assembly =
        file("/a, b.step", State::Incomplete, "\"x\" is missing", {"One.", "two"});
    assembly.seconds = 1.5;
    assembly.node = tndNode(7);
    assembly.triangles = 12000;
    assembly.output = QString::fromUtf8("/out/ä\nb.glb");
    assembly.parts = {file("/x\ty", State::Failed, "gone")};
    const auto job = session.start({assembly});
    emit session.log.stepTaken(job, 0, {});
    QCOMPARE(
        ResultsText::csv(model).toUtf8(),
        QByteArray("State,File,Part of,What is wrong,Warnings,Seconds,Triangles,Output file\r\n"
                   "Incomplete,\"/a, b.step\",,\"\"\"x\"\" is missing.\",One. Two.,1.50,12000,"
                   "\"/out/\xc3\xa4\nb.glb\"\r\n"
                   "Failed,/x\ty,\"/a, b.step\",Gone.,,0.00,,\r\n"));
    const QModelIndex part = model.index(0, 0, model.index(0, 0));
    QCOMPARE(ResultsText::tabbed(model, {part}),
             QString("Failed\t/x y\t/a, b.step\tGone.\t\t0.00\t\t\n"));
}

void tst_ImportResults::importsAgainWhatFailed()
{
    Session session;
    Scene scene;
    const ResultsPane pane(session.log, scene);
    auto *again = pane.findChild<QAction *>("importAgain");
    QStringList files;
    QMultiHash<QString, tndNode> places;
    connect(&pane, &ResultsPane::importRequested, &pane, [&](const auto &paths, const auto &nodes) {
        files = paths;
        places = nodes;
    });
    session.run({file("/mended", State::Failed, "x"), file("/good", State::Succeeded)});
    QVERIFY(again->isEnabled());
    FileResult partly = file("/partly", State::Incomplete, "x");
    partly.node = scene.addFragment(std::make_shared<SceneFragment>(), {}, "/partly", {});
    partly.parts = {file("/part", State::Failed, "x")};
    FileResult gone = partly;
    gone.path = "/gone";
    gone.node = tndNode(1000);
    emit session.log.stepTaken(session.start({file("/mended", State::Running)}), 0, {});
    const auto job = session.start({partly, gone, file("/never", State::Pending)});
    emit session.log.stepTaken(job, 0, {});
    emit session.log.jobEnded(job);

    again->trigger();
    QCOMPARE(files, (QStringList{"/partly", "/gone", "/never"}));
    QCOMPARE(places, (QMultiHash<QString, tndNode>{{"/partly", partly.node}}));

    auto *view = pane.findChild<QTreeView *>();
    view->expandAll();
    view->setCurrentIndex(view->model()->index(0, 0, view->model()->index(3, 0)));
    again->trigger();
    QCOMPARE(files, QStringList{"/partly"}); // for its part
    view->setCurrentIndex(view->model()->index(1, 0));
    again->trigger();
    QCOMPARE(files.size(), 3); // nothing is selected that failed
}

void tst_ImportResults::showsTheNode()
{
    Session session;
    Scene scene;
    const ResultsPane pane(session.log, scene);
    FileResult assembly = file("/a", State::Succeeded);
    assembly.node = scene.addFragment(std::make_shared<SceneFragment>(), {}, "/a", {});
    assembly.parts = {file("/part", State::Succeeded)};
    const auto job = session.start({assembly});
    emit session.log.stepTaken(job, 0, {});
    auto *view = pane.findChild<QTreeView *>();
    QSignalSpy wanted(&pane, &ResultsPane::nodeRequested);
    const QModelIndex row = view->model()->index(0, 0);
    for (const QModelIndex &each : {row, view->model()->index(0, 0, row)}) {
        emit view->doubleClicked(each);
        QCOMPARE(wanted.takeLast().first().value<tndNode>(), assembly.node);
    }
}

void tst_ImportResults::savesOrSaysWhyNot()
{
    Session session;
    const Scene scene;
    const ResultsPane pane(session.log, scene);
    session.run({file("/a", State::Succeeded)});
    const QTemporaryDir folder;
    QString error;
    QVERIFY(pane.save(folder.filePath("r.csv"), &error));
    QFile saved(folder.filePath("r.csv"));
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QVERIFY(saved.readAll().endsWith("\r\nSucceeded,/a,,,,0.00,,\r\n"));
    QVERIFY(!pane.save(folder.filePath("no/r.csv"), &error));
    QVERIFY2(error.contains("no/r.csv cannot be written: "), qPrintable(error));
}

QTEST_MAIN(tst_ImportResults)
#include "tst_ImportResults.moc"
