#include "platform/tnController.h"
#include "platform/tnMessage.h"

#include <QtCore/QLibrary>
#include <QtCore/QProcess>
#include <QtTest/QtTest>

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
        QLibrary library(TN_PLUGIN_DIR "/libtnCAD.so");
        QVERIFY2(library.load(), qPrintable(library.errorString()));
        const auto version =
            reinterpret_cast<const char *(*)()>(library.resolve("getPluginVersion"));
        const auto init = reinterpret_cast<void (*)()>(library.resolve("initPlugin"));
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
};

QTEST_GUILESS_MAIN(tst_Plugin)
#include "tst_plugin.moc"
