#include "host/app/PluginLoader.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

class TestPluginLoader : public QObject {
    Q_OBJECT

private slots:
    void init() { qunsetenv("TN_FAKE_PLUGIN"); }
    void findsPluginsByTheProgram_data();
    void findsPluginsByTheProgram();
    void tellsWhatIsWrong_data();
    void tellsWhatIsWrong();
    void startsTheGoodBesideTheBad();

private:
    static bool isStarted() { return qEnvironmentVariableIsSet("TN_FAKE_PLUGIN"); }
    /// A library of its own name each time, since none is ever unloaded.
    bool install(const QString &plugin, const QString &directory)
    {
        const QString name = QStringLiteral("lib%1.so").arg(++m_count);
        return QDir().mkpath(directory)
            && QFile::copy(QStringLiteral(TN_FAKE_PLUGINS "/lib%1.so").arg(plugin),
                           directory + QLatin1Char('/') + name);
    }

    int m_count = 0;
};

void TestPluginLoader::findsPluginsByTheProgram_data()
{
    QTest::addColumn<QString>("directory");
    QTest::newRow("build tree") << "plugins";
    QTest::newRow("installed") << "lib/tnhost/plugins";
    QTest::newRow("installed, lib64") << "lib64/tnhost/plugins";
    QTest::newRow("installed, by architecture") << "lib/some-linux-gnu/tnhost/plugins";
}

void TestPluginLoader::findsPluginsByTheProgram()
{
    QFETCH(QString, directory);
    const QTemporaryDir tree;
    QVERIFY(QDir(tree.path()).mkpath(QStringLiteral("bin")));
    QVERIFY(QDir(tree.path()).mkpath(QStringLiteral("lib/other")));
    QVERIFY(install(QStringLiteral("fakeGood"), tree.filePath(directory)));
    PluginLoader loader(QString(), tree.filePath(QStringLiteral("bin")));
    QVERIFY2(loader.load(), qPrintable(loader.errors().join(QLatin1Char('\n'))));
    QVERIFY(isStarted());
}

void TestPluginLoader::tellsWhatIsWrong_data()
{
    QTest::addColumn<QString>("plugin"); // a library, a file's content or a missing directory
    QTest::addColumn<QString>("error");
    QTest::newRow("no directory") << ""
                                  << "does not exist";
    QTest::newRow("no library") << "readme"
                                << "no plug-in in the directory";
    QTest::newRow("garbage") << "garbage"
                             << "cannot be loaded";
    QTest::newRow("another version") << "fakeOld"
                                     << "version 14.9 of the host, this is 15.3";
    QTest::newRow("no version") << "fakeNoVersion"
                                << "does not export getPluginVersion";
    QTest::newRow("no init") << "fakeNoInit"
                             << "does not export initPlugin";
}

void TestPluginLoader::tellsWhatIsWrong()
{
    QFETCH(QString, plugin);
    QFETCH(QString, error);
    const QTemporaryDir tree;
    const QString directory = tree.filePath(QStringLiteral("plugins"));
    if (plugin.startsWith(QLatin1String("fake"))) {
        QVERIFY(install(plugin, directory));
    } else if (!plugin.isEmpty()) {
        QVERIFY(QDir().mkpath(directory));
        QFile file(directory
                   + (plugin == QLatin1String("garbage") ? QStringLiteral("/libgarbage.so")
                                                         : QStringLiteral("/README")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no library") > 0);
    }
    PluginLoader loader(directory, QString());
    QVERIFY(!loader.load());
    QCOMPARE(loader.errors().size(), 1);
    QVERIFY2(loader.errors().at(0).contains(error), qPrintable(loader.errors().at(0)));
    QVERIFY(!isStarted());
}

void TestPluginLoader::startsTheGoodBesideTheBad()
{
    const QTemporaryDir tree;
    QVERIFY(install(QStringLiteral("fakeOld"), tree.path()));
    QVERIFY(install(QStringLiteral("fakeGood"), tree.path()));
    PluginLoader loader(tree.path(), QString());
    QVERIFY(!loader.load());
    QCOMPARE(loader.errors().size(), 1);
    QVERIFY(isStarted());
}

QTEST_GUILESS_MAIN(TestPluginLoader)

#include "tst_PluginLoader.moc"
