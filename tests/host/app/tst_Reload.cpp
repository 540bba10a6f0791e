#include "host/app/MainWindow.h"
#include "host/app/PluginLoader.h"
#include "host/headless/DialogDriver.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

#include <functional>

using namespace tnhost;

/// The window, the real plug-in and the real converter: whose place a file takes that is imported
/// again.
class tst_Reload : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void replacesUntilAnotherListBegins();

private:
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

void tst_Reload::replacesUntilAnotherListBegins()
{
    const auto nothing = [] {};
    const auto cancelChooser = [this] {
        QTimer::singleShot(
            0, this, [] { qobject_cast<QDialog *>(QApplication::activeModalWidget())->reject(); });
        m_window->findChild<QAction *>("import")->trigger();
    };
    const auto dropUnsupported = [this] { m_window->importFiles({"/no such file.txt"}); };
    const auto reset = [this] { m_window->findChild<QPushButton *>("_pbDefaults")->click(); };
    const auto close = [this] {
        m_dialog.pressClose();
        m_window->importFiles({m_file});
        QTRY_VERIFY(m_dialog.isVisible()); // once the files are looked through
    };
    const struct {
        const char *meanwhile;
        int added;
        std::function<void()> act;
    } rows[] = {
        {"nothing", 0, nothing},
        {"a chooser is cancelled", 0, cancelChooser},
        {"an unsupported file is dropped", 0, dropUnsupported},
        {"reset is pressed", 0, reset},
        {"the dialog is closed, the file imported", 1, close},
    };
    Scene &scene = m_services->scene();
    for (const auto &row : rows) {
        const int before = import(
            [this] { m_services->fileService().loadFiles({m_file}, {}, {}, true, true, true); });
        QVERIFY2(before > 0, row.meanwhile);
        const tndNode node(scene.find(scene.root())->children().back()->id());
        scene.setSelection({node});
        m_window->findChild<QAction *>("reload")->trigger();
        row.act();
        QString problem;
        QVERIFY2(m_dialog.find(&problem) && m_dialog.canImport(), qPrintable(problem));
        QVERIFY2(import([this] { m_dialog.pressImport(); }) == before + row.added, row.meanwhile);
        QVERIFY2(scene.contains(node) == (row.added == 1), row.meanwhile);
    }
}

QTEST_MAIN(tst_Reload)
#include "tst_Reload.moc"
