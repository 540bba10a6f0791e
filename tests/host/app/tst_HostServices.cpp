#include "host/scene/Scene.h"
#include "host/services/ControllerService.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"
#include "host/services/TmpDirectory.h"
#include "host/services/UsageData.h"
#include "platform/tnFileIO.h"
#include "platform/tnIconManager.h"
#include "platform/tnInterfaceFactory.h"
#include "platform/tnKernelServiceFactory.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"
#include "platform/tnScenegraphService.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <unistd.h>

class TestHostServices : public QObject {
    Q_OBJECT

private slots:
    void offersWhatPluginsLookFor();
    void givesATmpDirectoryOfItsOwn();
    void refusesAForeignTmpDirectory();
    void refusesAnUnwritableTmpDirectory();
};

void TestHostServices::offersWhatPluginsLookFor()
{
    HostServices::Options options;
    options.tmpDirectory = QStringLiteral("/somewhere");
    options.maxProcesses = 3;
    auto services = std::make_unique<HostServices>(options);

    tnScenegraphService *scene = tnScenegraphService::the();
    QVERIFY(scene && scene->allowsDirectLoad());
    QCOMPARE(scene->rootNode(), services->scene().root());
    QCOMPARE(tnKernelServiceFactory::the().services().size(), std::size_t(3));
    QCOMPARE(services->fileService().getMaxParallelProcesses(), 3);
    QCOMPARE(boost::any_cast<QString>(tnPreferences::getData().get("FileIO tmp path")),
             options.tmpDirectory);

    const auto before = UsageData::the().activities();
    tnInterfaceFactory::the().pulse()->notifyActivity();
    QCOMPARE(UsageData::the().activities(), before + 1);

    for (const char *icon : {"FileOpen", "ModuleAssets", "Application"})
        QVERIFY2(!tnIconManager::getIcon(icon, {}).pixmap(24).isNull(), icon);
    QVERIFY(tnIconManager::getIcon("Nonsense", {}).isNull());

    // Offered is what can be converted, not everything that has a name.
    const QString filter = tnFileIO::getReadFileTypesFilter(tnFileTypes::FilterPerType);
    QVERIFY2(filter.contains("Step (*.stp *.step)"), qPrintable(filter));
    QVERIFY2(!filter.contains("*.jt"), qPrintable(filter));

    QSignalSpy requests(&services->controllerService(), &ControllerService::assetManagerRequested);
    services->controllerService().showAssetManager(true);
    services->controllerService().showAssetManager(true);
    QCOMPARE(requests.count(), 2);
    QVERIFY(services->controllerService().isAssetManagerWanted());

    services.reset();
    QVERIFY(tnKernelServiceFactory::the().services().empty());
    QVERIFY(!tnScenegraphService::the());
}

void TestHostServices::givesATmpDirectoryOfItsOwn()
{
    QString error;
    const QString path = TmpDirectory::prepare({}, &error);
    QVERIFY2(path.startsWith(QDir::tempPath() + QStringLiteral("/tnhost-")), qPrintable(error));
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QVERIFY(!(QFileInfo(path).permissions() & others));
    QCOMPARE(TmpDirectory::prepare({}, nullptr), path);

    const QTemporaryDir dir;
    const QString wanted = dir.filePath(QStringLiteral("new/deep"));
    QCOMPARE(TmpDirectory::prepare(wanted, &error), wanted);
    QVERIFY(QFileInfo(wanted).isDir());
}

void TestHostServices::refusesAForeignTmpDirectory()
{
    // Somebody else was there before and has laid a link to where he would like our files.
    const QTemporaryDir system;
    const QTemporaryDir trap;
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(system.path()));
    const QString name = system.filePath(QStringLiteral("tnhost-%1").arg(::getuid()));
    QVERIFY(QFile::link(trap.path(), name));
    const QString path = TmpDirectory::prepare({}, nullptr);
    qputenv("TMPDIR", before);
    QVERIFY(!path.isEmpty());
    QVERIFY(QFileInfo(path).canonicalFilePath() != QFileInfo(trap.path()).canonicalFilePath());
}

void TestHostServices::refusesAnUnwritableTmpDirectory()
{
    const QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QString error;
    QVERIFY(TmpDirectory::prepare(file.fileName() + QStringLiteral("/below"), &error).isEmpty());
    QVERIFY2(error.contains(file.fileName()), qPrintable(error));
}

QTEST_MAIN(TestHostServices)

#include "tst_HostServices.moc"
