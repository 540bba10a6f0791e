#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnCADImportTableView.h"
#include "filelist/tnFileImportDialog.h"
#include "platform/tnFileIO.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QDir>
#include <QtCore/QSettings>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

class tst_FileChooser : public QObject {
    Q_OBJECT

private:
    ScriptedServices m_services;
    QTemporaryDir m_dir;
    bool m_answered = false;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    /// Answers the chooser that is run next: with files, or without any by canceling.
    void answerNext(const QStringList &files)
    {
        m_answered = false;
        QTimer::singleShot(0, this, [this, files] {
            auto *chooser = qobject_cast<tnFileImportDialog *>(QApplication::activeModalWidget());
            QVERIFY(chooser);
            m_answered = true;
            if (files.isEmpty())
                return chooser->reject();
            chooser->findChild<QLineEdit *>("fileNameEdit")
                ->setText('"' + files.join("\" \"") + '"');
            chooser->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open)->click();
        });
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName("tests");
        QCoreApplication::setApplicationName("chooser");
        for (const char *name : {"one/b.step", "one/a.stl", "one/notes.txt", "two/c.step"}) {
            QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
            QFile file(path(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
    }

    void init() { QSettings().clear(); }

    void looksForSeveralReadableFiles()
    {
        tnFileIO::setReadFileTypes({{"STEP", {"step", "stp"}, false}, {"Scene", {"scn"}, true}});
        const tnFileImportDialog chooser;
        tnFileIO::setReadFileTypes({});
        QVERIFY(chooser.isModal());
        QCOMPARE(chooser.windowTitle(), QString("Import File(s)"));
        QCOMPARE(chooser.fileMode(), QFileDialog::ExistingFiles);
        QCOMPARE(chooser.nameFilters(),
                 QStringList({"All supported files (*.scn *.step *.stp)", "STEP (*.step *.stp)",
                              "Scene (*.scn)", "All files (*)"}));
    }

    void remembersTheDirectoryOfTheFirstFile()
    {
        {
            tnFileImportDialog first;
            QCOMPARE(first.directory().absolutePath(), QFileDialog().directory().absolutePath());
            answerNext({path("one/b.step"), path("two/c.step"), path("one/a.stl")});
            QCOMPARE(first.exec(), int(QDialog::Accepted));
            QVERIFY(m_answered);
            // Nothing is kept before the result is taken.
            QVERIFY(!QSettings().contains("importDialog/lastDirectory"));
            QCOMPARE(first.selectedImportFiles(),
                     QStringList({path("one/b.step"), path("two/c.step"), path("one/a.stl")}));
        }
        tnFileImportDialog second;
        QCOMPARE(second.directory().absolutePath(), path("one"));
        answerNext({"a.stl"});
        QCOMPARE(second.exec(), int(QDialog::Accepted));
        QCOMPARE(second.selectedImportFiles(), QStringList(path("one/a.stl")));
        second.storeLastDirectory(path("two"));
        second.storeLastDirectory(QString());
        QCOMPARE(QSettings().value("importDialog/lastDirectory").toString(), path("two"));
    }

    void addTakesWhatCanBeImported()
    {
        tnCADImportTableView view;
        QSortFilterProxyModel proxy;
        tnCADImportFileModel model;
        proxy.setSourceModel(&model);
        view.setModel(&proxy);
        QSignalSpy changed(&model, &tnCADImportFileModel::changed);

        answerNext({});
        view.onAdd();
        QVERIFY(m_answered);
        QVERIFY(model.isEmpty());
        QVERIFY(!QSettings().contains("importDialog/lastDirectory"));

        answerNext({path("one/b.step"), path("one/notes.txt"), path("one/a.stl")});
        view.onAdd();
        QCOMPARE(model.fileNames(false), QStringList({path("one/b.step"), path("one/a.stl")}));
        QCOMPARE(QSettings().value("importDialog/lastDirectory").toString(), path("one"));
        QCOMPARE(changed.size(), 1);

        answerNext({"a.stl"});
        view.onAdd();
        QVERIFY(m_answered);
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(changed.size(), 1);
    }
};

QTEST_MAIN(tst_FileChooser)
#include "tst_filechooser.moc"
