#include "module/getFromMessage.h"
#include "module/getService.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScriptedServices.h"

#include <QtTest/QtTest>

class tst_MessageAccess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void attributesAreReadByTheirExactType()
    {
        tnMessage message;
        message.set("files", QStringList{"a", "b"}, true);
        message.set("parentNodeId", 5, true);
        QStringList files;
        int absent = 7;
        unsigned int value = 9;
        CapturedStream err(stderr);
        QVERIFY(getFromMessage(message, "files", files));
        QVERIFY(!getFromMessage(message, "loadState", absent));
        QVERIFY(!getFromMessage(message, "parentNodeId", value));
        const QByteArray printed = err.take();
        QVERIFY2(printed.startsWith("getFromMessage : Attribute 'parentNodeId' has wrong type "
                                    "(is:'i' != req:'j')!\n"),
                 printed);
        QVERIFY2(printed.count('\n') > 2, "the call stack of the sender is missing");
        QCOMPARE(files, QStringList({"a", "b"}));
        QVERIFY(absent == 7 && value == 9);
    }

    void servicesAreFoundByClassOrTold()
    {
        {
            const ScriptedServices services;
            QCOMPARE(getService<tnFileIOService>(), &services.files);
            QCOMPARE(getService<tnControllerService>(), &services.controller);
        }
        const QByteArray name = typeid(tnFileIOService).name();
        CapturedStream missing(stderr);
        QVERIFY(!getService<tnFileIOService>());
        QCOMPARE(missing.take(), "tnKernelServiceFactory: couldn't find class '" + name + "'!\n");

        tnKernelServiceFactory::the().registerService<tnFileIOService>(nullptr);
        CapturedStream null(stderr);
        QVERIFY(!getService<tnFileIOService>());
        QCOMPARE(null.take(), "tnKernelServiceFactory: service '" + name + "' is NULL!\n");
        tnKernelServiceFactory::the().unregisterService<tnFileIOService>();
    }
};

QTEST_GUILESS_MAIN(tst_MessageAccess)
#include "tst_messageaccess.moc"
