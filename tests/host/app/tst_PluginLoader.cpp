#include "host/app/PluginLoader.h"

#include <QtTest/QtTest>

using namespace tnhost;

class tst_PluginLoader : public QObject {
    Q_OBJECT

private slots:
    void init() { qunsetenv("TN_FAKE_PLUGIN"); }
    void findsPluginsByTheProgram();
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

void tst_PluginLoader::findsPluginsByTheProgram()
{
    // The build tree, and the ways to install.
    for (const char *directory : {"plugins", "lib/tnhost/plugins", "lib64/tnhost/plugins",
                                  "lib/some-linux-gnu/tnhost/plugins"}) {
        init();
        const QTemporaryDir tree;
        QVERIFY(QDir(tree.path()).mkpath("bin") && QDir(tree.path()).mkpath("lib/other"));
        QVERIFY(install("fakeGood", tree.filePath(directory)));
        PluginLoader loader(QString(), tree.filePath("bin"));
        QVERIFY2(loader.load(), qPrintable(loader.errors().join('\n')));
        QVERIFY2(isStarted(), directory);
    }
}

void tst_PluginLoader::tellsWhatIsWrong()
{
    // A fake one, or the name of a file of text; what is said of it.
    const std::pair<QString, QString> cases[] = {
        {"", "does not exist"},
        {"README", "no plug-in in the directory"},
        {"libgarbage.so", "cannot be loaded"},
        {"fakeOld", "version 14.9 of the host, this is 15.3"},
        {"fakeNoVersion", "does not export getPluginVersion"},
        {"fakeNoInit", "does not export initPlugin"},
    };
    for (const auto &[plugin, error] : cases) {
        const QTemporaryDir tree;
        const QString directory = tree.filePath("plugins");
        if (plugin.startsWith("fake")) {
            QVERIFY(install(plugin, directory));
        } else if (!plugin.isEmpty()) {
            QVERIFY(QDir().mkpath(directory));
            QVERIFY(QFile(directory + '/' + plugin).open(QIODevice::WriteOnly));
        }
        PluginLoader loader(directory, QString());
        QVERIFY2(!loader.load() && loader.errors().size() == 1, qPrintable(error));
        QVERIFY2(loader.errors().at(0).contains(error), qPrintable(loader.errors().at(0)));
        QVERIFY(!isStarted());
    }
}

void tst_PluginLoader::startsTheGoodBesideTheBad()
{
    const QTemporaryDir tree;
    QVERIFY(install("fakeOld", tree.path()));
    QVERIFY(install("fakeGood", tree.path()));
    PluginLoader loader(tree.path(), QString());
    QVERIFY(!loader.load());
    QCOMPARE(loader.errors().size(), 1);
    QVERIFY(isStarted());
}

QTEST_GUILESS_MAIN(tst_PluginLoader)
#include "tst_PluginLoader.moc"
