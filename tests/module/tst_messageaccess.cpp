#include "module/getFromMessage.h"
#include "module/getService.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScriptedServices.h"

#include <QtTest/QtTest>

class tst_MessageAccess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsTheExactTypeInSilence()
    {
        tnMessage message;
        message.set("files", QStringList{"a", "b"}, true);
        QStringList files;
        CapturedStream err(stderr);
        QVERIFY(getFromMessage(message, "files", files));
        QVERIFY(err.take().isEmpty());
        QCOMPARE(files, QStringList({"a", "b"}));
    }

    void absentAttributeChangesNothingInSilence()
    {
        int value = 7;
        CapturedStream err(stderr);
        QVERIFY(!getFromMessage(tnMessage(), "loadState", value));
        QVERIFY(err.take().isEmpty());
        QCOMPARE(value, 7);
    }

    void wrongTypeIsReportedAndChangesNothing()
    {
        tnMessage message;
        message.set("parentNodeId", 5, true);
        unsigned int value = 9;
        CapturedStream err(stderr);
        QVERIFY(!getFromMessage(message, "parentNodeId", value));
        const QByteArray printed = err.take();
        QVERIFY2(printed.startsWith("getFromMessage : Attribute 'parentNodeId' has wrong type "
                                    "(is:'i' != req:'j')!\n"),
                 printed);
        QVERIFY2(printed.count('\n') > 2, "the call stack of the sender is missing");
        QCOMPARE(value, 9u);
    }

    void servicesAreFoundByClass()
    {
        ScriptedServices services;
        QCOMPARE(getService<tnFileIOService>(), &services.files);
        QCOMPARE(getService<tnControllerService>(), &services.controller);
    }

    void missingAndNullServicesAreTold()
    {
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
