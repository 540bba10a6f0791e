#include "platform/tnController.h"
#include "platform/tnMessage.h"
#include "tests/support/ScriptedServices.h"

#include <QtTest/QtTest>
#include <QtWidgets/QApplication>

namespace {

QFunctionPointer resolve(const char *symbol)
{
    return QLibrary::resolve(TN_PLUGIN_DIR "/libtnCAD.so", symbol);
}

QWidget *openDialog()
{
    tnMessage message;
    message.set("files", QStringList{"/cad/a.step", "/cad/b.igs"}, true);
    tnController::callCB("reloadCAD", message);
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "tnImportDialog")
            return window;
    }
    return nullptr;
}

bool hasWindowSettings(QSettings &settings)
{
    settings.sync();
    return settings.contains("importDialog/splitterState"); // the last one
}

/// A host that opens the dialog and then ends in the given order of words. Whatever isn't named
/// stays until static storage goes, or for good.
int endInOrder(const QByteArrayList &words, int argc, char **argv)
{
    static ScriptedServices services;
    QApplication *application = nullptr;
    if (words.contains("static")) {
        static QApplication lasting(argc, argv); // goes after the plug-in, which comes later
        application = &lasting;
    } else {
        application = new QApplication(argc, argv);
    }
    QCoreApplication::setOrganizationName("tn");
    QCoreApplication::setApplicationName("exit");
    const QPointer<QWidget> mainWindow(words.first() == "window" ? new QWidget : nullptr);
    tnController::setMainWindow(mainWindow);
    resolve("initPlugin")();
    const QPointer<QWidget> dialog = openDialog();
    if (!dialog || dialog->parent() != mainWindow)
        return 2;
    std::make_unique<QWidget>()->show(); // and gone again, which leaves its traces in Qt

    QSettings settings("tn", "exit");
    const auto isWrittenOnce = [&] {
        const bool isWritten = !dialog && hasWindowSettings(settings);
        settings.clear(); // whatever comes now would come twice
        settings.sync();
        return isWritten;
    };
    if (words.contains("closed")) {
        delete mainWindow;
        if (!isWrittenOnce())
            return 3;
    }
    if (words.last() == "application") {
        delete application;
        if (!words.contains("closed") && !isWrittenOnce())
            return 4;
        return openDialog() ? 5 : 0; // without application there is none
    }
    return 0;
}

} // namespace

/// The plug-in as a host meets it: a library with two exports.
class tst_Plugin : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void showsItsTwoExportsOnly()
    {
        QProcess nm;
        nm.start("nm", {"-D", "--defined-only", TN_PLUGIN_DIR "/libtnCAD.so"});
        QVERIFY2(nm.waitForFinished(), qPrintable(nm.errorString()));
        QStringList names;
        for (const QByteArray &line : nm.readAllStandardOutput().split('\n')) {
            const QString name = QString::fromLatin1(line.simplified().split(' ').last());
            // The sanitizers and the linker add marks of their own.
            if (!name.isEmpty() && !name.startsWith('_'))
                names << name;
        }
        names.sort();
        QCOMPARE(names, QStringList({"getPluginVersion", "initPlugin"}));
    }

    void registersItselfOnce()
    {
        const auto version = reinterpret_cast<const char *(*)()>(resolve("getPluginVersion"));
        const auto init = resolve("initPlugin");
        QVERIFY(version && init);
        QCOMPARE(version(), "15.3");

        tnMessage message;
        QVERIFY(!tnController::callCB("reloadCAD", message));
        for (int i = 0; i < 2; ++i) {
            init();
            QCOMPARE(tnController::modules().size(), std::size_t(1));
            QVERIFY(tnController::callCB("reloadCAD", message));
        }
    }

    void endsItsDialogInTime_data()
    {
        QTest::addColumn<bool>("atExit"); // the window settings come only then
        QTest::newRow("exit") << true;
        QTest::newRow("application") << false;
        QTest::newRow("exit static") << true;
        QTest::newRow("window exit") << true;
        QTest::newRow("window application") << false;
        QTest::newRow("window closed exit") << false;
        QTest::newRow("window closed application") << false;
    }

    void endsItsDialogInTime()
    {
        QSettings settings("tn", "exit");
        settings.clear();
        settings.sync();
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QCoreApplication::applicationFilePath(), {"--end", QTest::currentDataTag()});
        QVERIFY(process.waitForFinished());
        QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
                 QByteArray::number(process.exitCode()) + ": " + process.readAll());
        QFETCH(bool, atExit);
        QCOMPARE(hasWindowSettings(settings), atExit);
    }
};

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--end") == 0)
        std::exit(endInOrder(QByteArray(argv[2]).split(' '), argc, argv));
    QCoreApplication application(argc, argv);
    tst_Plugin test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_plugin.moc"
