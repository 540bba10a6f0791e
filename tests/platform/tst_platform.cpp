#include "platform/tnController.h"
#include "platform/tnFile.h"
#include "platform/tnFileIO.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"
#include "platform/tnModuleBase.h"
#include "platform/tndProjectMergeSettings.h"
#include "platform/tndSceneImportSettings.h"
#include "platform/tndXlatSettings.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

namespace {

int callsOfFirst = 0;

void first(tnMessage &message)
{
    ++callsOfFirst;
    message.set("answer", std::string("first"), true);
    tnController::subCB("command"); // a command may withdraw itself
}

void second(tnMessage &message)
{
    message.set("answer", std::string("second"), true);
}

/// Notes which messages it gets and answers as told.
class Listener : public tnModuleBase {
public:
    Listener(const char *name, int answer, QStringList &heard)
        : tnModuleBase(name, "IGNORE", 0, nullptr)
        , m_answer(answer)
        , m_heard(heard)
    {
    }

    void *moduleQuery() override { return nullptr; }
    void moduleNotify() override { }
    int message(tnMessage &message) override
    {
        m_heard << name() + QString::number(message.id());
        return m_answer;
    }

private:
    int m_answer;
    QStringList &m_heard;
};

/// The record's fields by name, for records whose fields are all numbers, flags or enumerations.
template <typename Record>
QMap<QString, double> fields(const Record &record)
{
    QMap<QString, double> values;
    record.forEachField([&values](const char *name, auto value) {
        values.insert(QString::fromLatin1(name), static_cast<double>(value));
    });
    return values;
}

} // namespace

class tst_Platform : public QObject {
    Q_OBJECT

private slots:
    void messageAttributes();
    void commands();
    void broadcastStopsAtFirstAnswer();
    void checkWrite_data();
    void checkWrite();
    void readFilter();
    void settingsRecords();
};

void tst_Platform::messageAttributes()
{
    tnMessage message(tnMessage::NewScene);
    QCOMPARE(message.id(), 16);
    QVERIFY(message.get("files").empty());
    QVERIFY(message.attributes().empty()); // asking leaves no trace

    message.set("files", 1, false);
    message.set("files", 2, false);
    QCOMPARE(boost::any_cast<int>(message.get("files")), 1);
    message.set("files", std::string("three"), true);
    QCOMPARE(boost::any_cast<std::string>(message.get("files")), std::string("three"));

    message.set("empty", boost::any(), true);
    message.set("empty", 4, false); // an empty value is none that could stay
    QCOMPARE(boost::any_cast<int>(message.get("empty")), 4);
    QCOMPARE(message.attributes().size(), std::size_t(2));
}

void tst_Platform::commands()
{
    tnMessage message;
    QVERIFY(!tnController::callCB("command", message));
    tnController::addCB("command", second);
    tnController::addCB("command", first);
    QVERIFY(tnController::callCB("command", message));
    QCOMPARE(boost::any_cast<std::string>(message.get("answer")), std::string("first"));
    QVERIFY(!tnController::callCB("command", message));
    QCOMPARE(callsOfFirst, 1);
    tnController::subCB("unknown");
}

void tst_Platform::broadcastStopsAtFirstAnswer()
{
    QStringList heard;
    tnMessage message(tnMessage::NewScene);
    Listener a("a", 0, heard);
    {
        Listener b("b", 7, heard);
        Listener c("c", 8, heard);
        QCOMPARE(tnController::broadcast(message), 7);
        QCOMPARE(heard, QStringList({"a16", "b16"}));
    }
    QCOMPARE(tnController::broadcast(message), 0);
    QCOMPARE(heard.mid(2), QStringList{"a16"});
}

void tst_Platform::checkWrite_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isFile");
    QTest::addColumn<bool>("writable");

    QTest::newRow("directory") << "/dir" << false << true;
    QTest::newRow("directory with separator") << "/dir/" << false << true;
    QTest::newRow("directory as file") << "/dir" << true << false;
    QTest::newRow("no directory") << "/none" << false << false;
    QTest::newRow("file") << QStringLiteral("/dir/sch\u00f6n.txt") << true << true;
    QTest::newRow("file as directory") << QStringLiteral("/dir/sch\u00f6n.txt") << false << false;
    QTest::newRow("new file") << "/dir/new.txt" << true << true;
    QTest::newRow("new file in no directory") << "/none/new.txt" << true << false;
    QTest::newRow("empty file") << QString() << true << false;
    QTest::newRow("empty directory") << QString() << false << false;
}

void tst_Platform::checkWrite()
{
    QFETCH(QString, path);
    QFETCH(bool, isFile);
    QFETCH(bool, writable);

    const QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkdir(QStringLiteral("dir")));
    QFile file(root.path() + QStringLiteral("/dir/sch\u00f6n.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    QStringList errors;
    tnLog::setSink([&errors](tnLog::Level level, const QString &text) {
        if (level == tnLog::Level::Error)
            errors << text;
    });
    const QString full = path.isEmpty() ? path : root.path() + path;
    QCOMPARE(tnFile::checkWrite(full.toStdString(), isFile, false), writable);
    QVERIFY(errors.isEmpty());
    QCOMPARE(tnFile::checkWrite(full.toStdString(), isFile, true), writable);
    QCOMPARE(errors.count(), writable ? 0 : 1);
    QVERIFY(writable || errors.first().contains(full));
    QVERIFY(!QFileInfo::exists(root.path() + QStringLiteral("/dir/new.txt"))); // only asked
    tnLog::setSink(nullptr);
}

void tst_Platform::readFilter()
{
    using namespace tnFileTypes;
    const auto filter = [](unsigned int mode) {
        return tnFileIO::getReadFileTypesFilter(static_cast<FileExtensionFilterMode>(mode));
    };
    // With nothing to read there is no entry that would match nothing.
    QCOMPARE(filter(14), QStringLiteral("All files (*)"));

    tnFileIO::setReadFileTypes({{"Native", {"nat"}, true}, {"Step", {"stp", "step"}, false}});
    QCOMPARE(filter(14),
             QStringLiteral("All supported files (*.nat *.step *.stp);;Native (*.nat);;"
                            "Step (*.stp *.step);;All files (*)"));
    QCOMPARE(filter(FilterNative), QStringLiteral("Native (*.nat)"));
    QCOMPARE(filter(0), QString());
    tnFileIO::setReadFileTypes({});
}

void tst_Platform::settingsRecords()
{
    tndXlatSettings record;
    const tndXlatSettings defaults;
    QVERIFY(record == defaults);
    QMap<QString, double> expected = fields(defaults);
    QCOMPARE(expected.size(), 40);
    QCOMPARE(expected.value("ChordDeviation"), 0.1);
    QCOMPARE(expected.value("SmartReferenceBehavior"), 2.0);

    // A setter changes its own field and no other.
    record.setMaxChordLength(12.5);
    record.setUseHealStitch(false);
    record.setImporterVersion(tndImporterVersion::Legacy);
    expected["MaxChordLength"] = 12.5;
    expected["UseHealStitch"] = 0.0;
    expected["ImporterVersion"] = 1.0;
    QCOMPARE(fields(record), expected);
    QVERIFY(record != defaults);

    // Comparison takes in the last field of the table as well as the first.
    tndSceneImportSettings scene;
    scene.setImportAnimations(!scene.getImportAnimations());
    QVERIFY(scene != tndSceneImportSettings());
    QCOMPARE(fields(scene).size(), 10);
    tndProjectMergeSettings merge;
    merge.setImportTarnVariants(!merge.getImportTarnVariants());
    QVERIFY(merge != tndProjectMergeSettings());
    QCOMPARE(fields(merge).size(), 8);
}

QTEST_GUILESS_MAIN(tst_Platform)
#include "tst_platform.moc"
