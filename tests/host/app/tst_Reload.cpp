#include "host/app/MainWindow.h"
#include "host/app/PluginLoader.h"
#include "host/headless/DialogDriver.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QPushButton>

#include <functional>

using namespace tnhost;

/// The window, the real plug-in and the real converter: whose place a file takes that is imported
/// again.
class tst_Reload : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void replacesUntilAnotherListBegins_data();
    void replacesUntilAnotherListBegins();

private:
    enum Meanwhile { Nothing, CancelledChooser, UnsupportedFile, Reset, Closed };

    void act(Meanwhile meanwhile);
    /// Gives how many times the file is in the scene afterwards; -1: the import did not end.
    int import(const std::function<void()> &start);

    const QTemporaryDir m_tmp;
    const QString m_file = QStringLiteral(TN_SAMPLES_DIR "/gear.stl");
    std::unique_ptr<HostServices> m_services;
    std::unique_ptr<MainWindow> m_window;
    DialogDriver m_dialog;
};

void tst_Reload::initTestCase()
{
    HostServices::Options options;
    options.tmpDirectory = m_tmp.path();
    options.converterProgram = QStringLiteral(TN_BIN_DIR "/tnconvert");
    m_services = std::make_unique<HostServices>(options);
    m_window = std::make_unique<MainWindow>(*m_services);
    PluginLoader loader({}, TN_BIN_DIR);
    QVERIFY2(loader.load(), qPrintable(loader.errors().join('\n')));
    m_window->show();
}

int tst_Reload::import(const std::function<void()> &start)
{
    QSignalSpy ends(&m_services->fileService(), &FileService::importFinished);
    start();
    if (!ends.wait(30000))
        return -1;
    Scene &scene = m_services->scene();
    return static_cast<int>(scene.triangleCount(scene.root()) / 192);
}

void tst_Reload::act(Meanwhile meanwhile)
{
    switch (meanwhile) {
    case Nothing:
        return;
    case CancelledChooser:
        QTimer::singleShot(
            0, this, [] { qobject_cast<QDialog *>(QApplication::activeModalWidget())->reject(); });
        m_window->findChild<QAction *>("import")->trigger();
        return;
    case UnsupportedFile:
        m_window->importFiles(
            {QStringLiteral(TN_SAMPLES_DIR) + QStringLiteral("/no such file.txt")});
        return;
    case Reset:
        m_window->findChild<QPushButton *>("_pbDefaults")->click();
        return;
    case Closed:
        m_dialog.pressClose();
        m_window->importFiles({m_file});
        return;
    }
}

void tst_Reload::replacesUntilAnotherListBegins_data()
{
    QTest::addColumn<int>("meanwhile");
    QTest::addColumn<int>("added");
    QTest::newRow("nothing") << int(Nothing) << 0;
    QTest::newRow("a chooser is cancelled") << int(CancelledChooser) << 0;
    QTest::newRow("an unsupported file is dropped") << int(UnsupportedFile) << 0;
    QTest::newRow("reset is pressed") << int(Reset) << 0;
    QTest::newRow("the dialog is closed, the file imported") << int(Closed) << 1;
}

void tst_Reload::replacesUntilAnotherListBegins()
{
    QFETCH(int, meanwhile);
    QFETCH(int, added);
    Scene &scene = m_services->scene();
    const int before =
        import([this] { m_services->fileService().loadFiles({m_file}, {}, {}, true, true, true); });
    QVERIFY(before > 0);
    const tndNode node(scene.find(scene.root())->children().back()->id());
    scene.setSelection({node});
    m_window->findChild<QAction *>("reload")->trigger();
    act(static_cast<Meanwhile>(meanwhile));
    QString problem;
    QVERIFY2(m_dialog.find(&problem) && m_dialog.canImport(), qPrintable(problem));
    QCOMPARE(import([this] { m_dialog.pressImport(); }), before + added);
    QCOMPARE(scene.contains(node), added == 1);
}

QTEST_MAIN(tst_Reload)

#include "tst_Reload.moc"
