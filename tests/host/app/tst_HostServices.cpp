#include "host/import/TmpDirectory.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"
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

QTEST_MAIN(tst_HostServices)
#include "tst_HostServices.moc"
