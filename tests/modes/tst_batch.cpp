#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "logbook/logbookPath.h"
#include "platform/tnLog.h"
#include "tests/support/ScriptedServices.h"

#include <QtTest/QtTest>

namespace {

enum State { Pending, Importing, Loading, Failed, Succeeded, Incomplete, Aborted };
enum Mode { Load, LoadAndKeep, Convert };
using States = std::vector<int>;

const QString a = QStringLiteral("/cad/0.step");
const QString b = QStringLiteral("/cad/1.step");
const QString part = QStringLiteral("/cad/part.step");
const QString idle =
    QStringLiteral("Ready to import. Drag and drop to add more files and folders.");

/// The text logbook without the times; a null string when it was not written.
QString writtenLog()
{
    QFile file(logbookPath(QStringLiteral(".txt")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression time(QStringLiteral("\\w+ \\w+ +\\d+ [\\d:]{8} \\d{4}: "));
    return QString::fromUtf8(file.readAll()).remove(time);
}

/// A dialog with the files /cad/0.step and so on in the given states, the first with a part.
struct Batch {
    ScriptedServices services;
    ScriptedFileService &files = services.files;
    tnCADImportDialog dialog{nullptr};
    tnCADImportFileModel *model = dialog.tableView->fileModel();

    explicit Batch(const States &states, int mode = Load, const tndNode &target = {})
    {
        QFile::remove(logbookPath(QStringLiteral(".txt")));
        dialog._cbMode->setCurrentIndex(mode);
        dialog.prepareImport({}, target, tnCADImportDialog::AddFiles);
        for (const int state : states) {
            const QString path = QStringLiteral("/cad/%1.step").arg(model->rowCount());
            dialog.appendFiles({path});
            model->setFileState(path, static_cast<ImportState>(state));
        }
        dialog.addPartFiles({part}, a);
        dialog._abort->setEnabled(false);
    }
    int state(const QString &path) const
    {
        return model->stateOfRow(model->fileNames(false).indexOf(path));
    }
    QString line() const { return dialog._result->text(); }
    int frames = 0; ///< how often the icon of a running row has moved

private:
    QMetaObject::Connection m_counting = QObject::connect(
        model, &QAbstractItemModel::dataChanged,
        [this](const QModelIndex &, const QModelIndex &, const QVector<int> &roles) {
            frames += roles.contains(Qt::DecorationRole);
        });
};

} // namespace

class tst_Batch : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void jobsAreToldWhereAndHow()
    {
        const auto check = [](int mode, bool load, bool remove, unsigned int target,
                              const std::vector<tndNode> &selection, unsigned int expected) {
            Batch batch({Incomplete}, mode, tndNode(target));
            batch.services.scene.selection = selection;
            batch.dialog._max_procs->setValue(3);
            emit batch.files.fileAddedToScene(1, a, tndNode(9));
            batch.dialog.onImport();
            const auto &job = batch.files.loads.at(0);
            QCOMPARE(job.directory, batch.dialog._output_dir->text());
            QVERIFY(job.load == load && job.remove == remove && !job.direct);
            QCOMPARE(job.target.id(), expected);
            QCOMPARE(batch.files.maxParallelProcesses, 3);

            emit batch.files.importProgressChanged(1, 70);
            QCOMPARE(batch.dialog._progress->value(), 70);
            batch.dialog._max_procs->setValue(5);
            batch.dialog._abort->setEnabled(false);
            batch.dialog.reimportRow(0);
            QVERIFY(batch.dialog._abort->isEnabled());
            const auto &again = batch.files.reimports.at(0);
            QVERIFY(again.node == tndNode(9) && again.remove == remove);
            QCOMPARE(batch.files.maxParallelProcesses, 3); // the settings that the service has
            QCOMPARE(batch.dialog._progress->value(), 0);
            QCOMPARE(batch.line(), QString("Convert file(s)"));
        };
        check(Load, true, true, 7, {tndNode(5), tndNode(6)}, 7);
        check(LoadAndKeep, true, false, 0, {tndNode(5), tndNode(6)}, 5);
        check(Convert, false, false, 0, {}, 1);
    }

    void endOfAConversionAndOfALoad()
    {
        const QString log = "Total import duration: 2 seconds.\n\nfile: " + a + "\n%1\n\n";
        const auto check = [&](int job, int end, const QString &text) {
            const auto jobState = static_cast<tnCADFileTypes::JobState>(job);
            for (int mode : {Load, LoadAndKeep, Convert}) {
                Batch batch({Pending}, mode);
                batch.dialog.onImport();
                emit batch.files.fileConversionStarted(1, a);
                emit batch.files.fileConversionFinished(1, a, jobState, 1.23456789);
                QCOMPARE(batch.state(a), job == 0 && mode != Convert ? int(Importing) : end);
                emit batch.files.fileLoadingFinished(1, a, jobState);
                QCOMPARE(batch.state(a), end);
                emit batch.files.importFinished(1, 2);
                QCOMPARE(writtenLog(),
                         log.arg("Conversion started\n" + text + "\nFile load ended."));
            }
        };
        check(0, Succeeded, "Conversion successfully ended in 1.23457 seconds.");
        check(1, Failed, "Conversion failed.");
        check(2, Aborted, "Conversion Aborted.");
        check(3, Incomplete, "Conversion failed.");
        for (int unknown : {7, -1})
            check(unknown, Failed, "Conversion failed.");
    }

    void lifeOfABatch()
    {
        Batch batch({Pending, Pending});
        auto &files = batch.files;
        const auto stateText = [&] { return batch.model->index(0, 3).data().toString(); };
        batch.dialog.onImport();
        emit files.fileConversionStarted(1, a);
        for (unsigned int percent : {10u, 37u})
            emit files.fileConversionProgressChanged(1, a, percent, "%1 faces");
        emit files.childrenFileConversionFinished(1, a, 0.5);
        emit files.conversionFinished(1, 2);
        QCOMPARE(stateText(), QString("37% %1 faces"));
        emit files.fileAddedToLoadQueue(1, a);
        QCOMPARE(stateText(), QString("File added to load queue"));
        emit files.fileLoadingStarted(1, a);
        emit files.fileLoadingFailed(1, a, "no mesh");
        QCOMPARE(batch.state(a), int(Loading));
        emit files.fileConversionFailed(1, b, "not a CAD file");
        emit files.fileConversionFailed(1, "/cad/unlisted", "gone");
        QCOMPARE(batch.state(b), int(Failed));

        // The end of another job is the end of the dialog's look, but not of the mode's batch.
        emit files.importFinished(99, 3);
        QVERIFY(writtenLog().isNull() && batch.line().startsWith("2 import(s)"));
        QTRY_VERIFY(batch.frames > 0);
        emit files.importFinished(1, 12.5);
        QCOMPARE(writtenLog(),
                 "Total import duration: 12.5 seconds.\nTotal conversion duration: 2.5 seconds.\n\n"
                 "file: "
                     + a
                     + "\nConversion started\n%1 faces\n"
                       "Parts conversion duration: 0.5 seconds.\nFile load started\nno mesh\n\n"
                       "file: "
                     + b + "\nnot a CAD file\n\nfile: /cad/unlisted\ngone\n\n");
        batch.frames = 0;
        QTest::qWait(300);
        QCOMPARE(batch.frames, 0);

        // The next batch starts from nothing, and so does another mode.
        batch.dialog.onImport();
        QVERIFY(!batch.dialog.hasLogbookEntries());
        emit files.importFinished(2, 6);
        QCOMPARE(writtenLog(), QString("Total import duration: 6 seconds.\n\n"));
        QVERIFY(batch.dialog.hasLogbookEntries());
        emit files.importProgressChanged(2, 50);
        batch.dialog._cbMode->setCurrentIndex(Convert);
        QVERIFY(!batch.dialog.hasLogbookEntries() && batch.dialog._progress->value() == 0);
        batch.dialog._cbMode->setCurrentIndex(Load);
        emit files.fileConversionFinished(2, a, tnCADFileTypes::Success, 1);
        QCOMPARE(batch.state(a), int(Loading)); // the mode that was left would have ended it
    }

    void aNewListEndsTheAnimationOfTheOld()
    {
        Batch batch({Pending});
        batch.dialog.onImport();
        emit batch.files.fileConversionStarted(1, a);
        QTRY_VERIFY(batch.frames > 0);
        batch.dialog.prepareImport({a}, {}, tnCADImportDialog::AddFiles);
        emit batch.files.fileConversionStarted(1, a); // the old batch goes on
        batch.frames = 0;
        QCOMPARE(batch.state(a), int(Importing));
        QTest::qWait(300);
        QCOMPARE(batch.frames, 0);
        batch.dialog.onImport();
        QTRY_VERIFY(batch.frames > 0);
    }

    void importNeedsADirectoryTakesTheOrderOfTheViewAndCanBeAborted()
    {
        Batch batch({Pending, Succeeded, Failed, Incomplete, Aborted, Importing});
        QTemporaryFile file;
        QVERIFY(file.open());
        const QString path = file.fileName() + QString::fromUtf8("/größe %1");
        batch.dialog._output_dir->setText(path);
        QStringList log;
        tnLog::setSink([&](tnLog::Level, const QString &text) { log << text; });
        batch.dialog.onImport();
        tnLog::setSink({});
        QCOMPARE(log, QStringList{"tCAD: output path '" + path + "' is not writable!"});
        QCOMPARE(batch.dialog.focusWidget(), batch.dialog._output_dir);
        QVERIFY(batch.files.loads.empty() && !batch.dialog._abort->isEnabled());
        QCOMPARE(batch.line(), idle);

        batch.dialog._output_dir->setText(QDir::tempPath());
        batch.dialog.tableView->sortByColumn(0, Qt::DescendingOrder);
        batch.files.nextJob = 17;
        batch.dialog.onImport();
        QCOMPARE(batch.files.loads.at(0).files, (QStringList{"/cad/4.step", "/cad/2.step", a}));
        QVERIFY(batch.dialog._abort->isEnabled());
        batch.dialog._abort->click();
        QCOMPARE(batch.files.aborts, std::vector<quint64>{17});
        QVERIFY(!batch.dialog._abort->isEnabled());
    }

    void statusLineCountsFilesAndParts()
    {
        Batch batch({Pending});
        emit batch.files.startingImport(1, 2);
        for (int i = 0; i < 3; ++i)
            emit batch.files.importProgressChanged(8, 0);
        QCOMPARE(batch.line(), QString("Importing 2 file(s) ... -1 left."));
        emit batch.files.childFileImportAdded(1, a, b);
        emit batch.files.childFileImportAdded(1, "/cad/unlisted", b);
        emit batch.files.childFileImportFinished(1, a, b);
        QCOMPARE(batch.line(),
                 QString("Importing 2 file(s) ... -1 left."
                         " 2 part import(s) running ... 1 left."));
        QCOMPARE(batch.model->fileNames(false), (QStringList{a, b, part}));
        emit batch.files.startingImport(2, 5);
        QCOMPARE(batch.line(), QString("Importing 5 file(s) ... 5 left."));
        emit batch.files.childFileImportAdded(2, a, b);
        QVERIFY(batch.line().endsWith(" left. 1 part import(s) running ... 1 left."));
    }

    void endOfABatch()
    {
        const auto check = [](const States &states, const QVariant &closeOnSuccess,
                              const QString &line, bool closes, bool startable) {
            QSettings().setValue(QStringLiteral("importDialog/closeOnSuccess"), closeOnSuccess);
            if (closeOnSuccess.isNull())
                QSettings().clear();
            Batch batch(states);
            batch.model->setFileState(part, ImportState::Succeeded);
            batch.dialog._pbImport->setEnabled(!startable);
            QSignalSpy rejected(&batch.dialog, &QDialog::rejected);
            emit batch.files.importFinished(0, 12.5);
            QCOMPARE(rejected.count(), int(closes));
            QVERIFY(batch.model->isEmpty() == closes && batch.dialog._abort->isEnabled() == closes);
            QCOMPARE(batch.dialog._pbImport->isEnabled(), startable);
            QCOMPARE(batch.line(), line);
            QVERIFY(writtenLog().contains("12.5")); // also when the list has gone
        };
        const QString failures = "2 import(s) unsuccessful, duration 12.5 seconds";
        check({Succeeded, Failed, Succeeded, Pending, Succeeded}, true, failures, false, true);
        check({Succeeded, Aborted, Pending}, true, failures, false, false);
        check({Succeeded}, {}, idle, true, false);
        check({Incomplete}, true, idle, true, false); // its part completes it
        check({Succeeded}, false, idle, false, false);
    }
};

QTEST_MAIN(tst_Batch)
#include "tst_batch.moc"
