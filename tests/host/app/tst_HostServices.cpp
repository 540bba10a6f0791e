#include "host/import/TmpDirectory.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"
#include "host/services/LimitPreferences.h"
#include "host/services/MachineMemory.h"
#include "host/services/UsageData.h"
#include "platform/tnFileIO.h"
#include "platform/tnIconManager.h"
#include "platform/tnInterfaceFactory.h"
#include "platform/tnKernelServiceFactory.h"
#include "platform/tnScenegraphService.h"

#include <QtTest/QtTest>

#include <unistd.h>

using namespace tnhost;

class tst_HostServices : public QObject {
    Q_OBJECT

private slots:
    void offersWhatPluginsLookFor();
    void givesATmpDirectoryOfItsOwn();
    void refusesUnusableTmpDirectories();
    void limitsAsWritten();
    void memoryOfTheMachine_data();
    void memoryOfTheMachine();
};

void tst_HostServices::offersWhatPluginsLookFor()
{
    HostServices::Options options;
    options.tmpDirectory = "/somewhere";
    options.maxProcesses = 3;
    auto services = std::make_unique<HostServices>(options);

    tnScenegraphService *scene = tnScenegraphService::the();
    QVERIFY(scene && scene->allowsDirectLoad());
    QCOMPARE(scene->rootNode(), services->scene().root());
    QCOMPARE(services->fileService().getMaxParallelProcesses(), 3);
    QCOMPARE(TmpDirectory::preferred(), options.tmpDirectory);

    const auto before = UsageData::the().activities();
    tnInterfaceFactory::the().pulse()->notifyActivity();
    QCOMPARE(UsageData::the().activities(), before + 1);

    QVERIFY(!tnIconManager::getIcon("FileOpen", {}).pixmap(24).isNull());

    // Offered is what can be converted, not everything that has a name.
    const QString filter = tnFileIO::getReadFileTypesFilter(tnFileTypes::FilterPerType);
    QVERIFY2(filter.contains("Step (*.stp *.step)"), qPrintable(filter));
    QVERIFY2(!filter.contains("*.jt"), qPrintable(filter));

    services.reset();
    QVERIFY(tnKernelServiceFactory::the().services().empty());
    QVERIFY(!tnScenegraphService::the());
}

void tst_HostServices::givesATmpDirectoryOfItsOwn()
{
    QString error;
    const QString path = TmpDirectory::prepare({}, &error);
    QVERIFY2(path.startsWith(QDir::tempPath() + "/tnhost-"), qPrintable(error));
    QCOMPARE(static_cast<int>(QFileInfo(path).permissions()) & 0x77, 0); // nobody else's
    QCOMPARE(TmpDirectory::prepare({}, nullptr), path);

    const QTemporaryDir dir;
    const QString wanted = dir.filePath("new/deep");
    QCOMPARE(TmpDirectory::prepare(wanted, &error), wanted);
    QVERIFY(QFileInfo(wanted).isDir());
}

void tst_HostServices::refusesUnusableTmpDirectories()
{
    // Somebody else was there before and has laid a link to where he would like our files.
    const QTemporaryDir system;
    const QTemporaryDir trap;
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(system.path()));
    QVERIFY(QFile::link(trap.path(), system.filePath(QString("tnhost-%1").arg(::getuid()))));
    const QString path = TmpDirectory::prepare({}, nullptr);
    qputenv("TMPDIR", before);
    QVERIFY(!path.isEmpty());
    QVERIFY(QFileInfo(path).canonicalFilePath() != QFileInfo(trap.path()).canonicalFilePath());

    QString error;
    QVERIFY(TmpDirectory::prepare("/dev/null/below", &error).isEmpty());
    QVERIFY2(error.contains("/dev/null/below"), qPrintable(error));
}

void tst_HostServices::limitsAsWritten()
{
    using Limits = LimitPreferences;
    const std::optional<qint64> none;
    const std::pair<const char *, std::optional<qint64>> sizes[] = {
        {"500M", 500LL << 20}, {"6.5g", 13LL << 29}, {"1000", 1000}, {"6X", none},
        {"-1", none},          {"6,5G", none},       {"", none},     {"1e99", none}};
    for (const auto &[text, bytes] : sizes)
        QVERIFY2(Limits::memory(text) == bytes, text);
    QCOMPARE(Limits::silence("90").value_or(-1), 90'000);
    QVERIFY(!Limits::silence("-1") && !Limits::silence("1000001") && !Limits::silence("soon"));
    QVERIFY(Limits::permission("true") == true && Limits::permission("false") == false
            && !Limits::permission("yes"));
}

void tst_HostServices::memoryOfTheMachine_data()
{
    QTest::addColumn<QStringList>("files"); // path, content, path, content, ...
    QTest::addColumn<qint64>("bytes");
    const QStringList machine{"proc/meminfo", "MemTotal:       2000 kB\nMemFree: 1 kB\n"};
    QTest::newRow("nothing known") << QStringList() << qint64(0);
    QTest::newRow("no group") << machine << qint64(2'048'000);
    QTest::newRow("limit of the group above") << machine
            + QStringList{"proc/self/cgroup",
                          "0::/a/b\n",
                          "sys/fs/cgroup/a/b/memory.max",
                          "max\n",
                          "sys/fs/cgroup/a/memory.max",
                          "1000\n"} << qint64(1000);
    QTest::newRow("older hierarchy") << machine
            + QStringList{"proc/self/cgroup", "3:cpu:/z\n4:memory,x:/a\n",
                          "sys/fs/cgroup/memory/a/memory.limit_in_bytes", "1500\n"}
                                     << qint64(1500);
    QTest::newRow("limit above all there is") << machine
            + QStringList{"proc/self/cgroup", "0::/a\n", "sys/fs/cgroup/a/memory.max",
                          "9000000000\n"} << qint64(2'048'000);
}

void tst_HostServices::memoryOfTheMachine()
{
    QFETCH(const QStringList, files);
    QTemporaryDir root;
    for (int i = 0; i < files.size(); i += 2) {
        const QFileInfo info(root.filePath(files[i]));
        QFile file(info.filePath());
        QVERIFY(QDir().mkpath(info.path()) && file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(files[i + 1].toUtf8()), qint64(files[i + 1].size()));
    }
    QTEST(MachineMemory::total(root.path()), "bytes");
}

QTEST_MAIN(tst_HostServices)
#include "tst_HostServices.moc"
