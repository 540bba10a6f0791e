#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnCADImportTableView.h"
#include "filelist/tnFileImportDialog.h"
#include "tests/support/ScriptedServices.h"

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

private Q_SLOTS:
    void addTakesWhatCanBeImportedAndRemembersWhere()
    {
        QCoreApplication::setOrganizationName("tests");
        const QTemporaryDir dir;
        const QString first = dir.filePath("b.step");
        const QString second = dir.filePath("a.stl");
        for (const QString &path : {first, second, dir.filePath("notes.txt")})
            QVERIFY(QFile(path).open(QIODevice::WriteOnly));
        const ScriptedServices services;
        tnCADImportFileModel model;
        QSortFilterProxyModel proxy;
        tnCADImportTableView view;
        proxy.setSourceModel(&model);
        view.setModel(&proxy);

        // What the user types into the chooser and presses, and where the chooser had opened.
        const auto add = [&](const QString &typed, QDialogButtonBox::StandardButton pressed) {
            QString opened;
            QTimer::singleShot(0, this, [&] {
                auto *chooser =
                    qobject_cast<tnFileImportDialog *>(QApplication::activeModalWidget());
                QVERIFY(chooser);
                QCOMPARE(chooser->windowTitle(), QString("Import File(s)"));
                opened = chooser->directory().path();
                chooser->findChild<QLineEdit *>("fileNameEdit")->setText(typed);
                chooser->findChild<QDialogButtonBox *>()->button(pressed)->click();
            });
            view.onAdd();
            return opened;
        };
        const QString usual = QFileDialog().directory().path();
        const QString all = '"' + first + "\" \"" + dir.filePath("notes.txt") + "\" \"" + second;
        QCOMPARE(add(all + '"', QDialogButtonBox::Cancel), usual);
        QVERIFY(model.isEmpty());
        QCOMPARE(add(all + '"', QDialogButtonBox::Open), usual);
        QCOMPARE(model.fileNames(false), QStringList({first, second}));
        tnFileImportDialog().storeLastDirectory(QString());
        QCOMPARE(QSettings().value("importDialog/lastDirectory").toString(), dir.path());
        QCOMPARE(add("a.stl", QDialogButtonBox::Open), dir.path());
        QCOMPARE(model.rowCount(), 2);
    }
};

QTEST_MAIN(tst_FileChooser)
#include "tst_filechooser.moc"
