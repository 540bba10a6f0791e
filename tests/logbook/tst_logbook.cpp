#include "logbook/logbookPath.h"
#include "logbook/tnTextFormater.h"
#include "logbook/tnXMLFormater.h"
#include "modes/tnImportMode.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"
#include "tests/support/CapturedStream.h"

#include <QtTest/QtTest>

namespace {

/// Keeps what it is given and gives what a test has set.
struct OwnFormater : tnLogFormater {
    QString text = QStringLiteral("text");
    mutable tnLogTable seen;

    QString format(const tnLogTable &table) const override
    {
        seen = table;
        return text;
    }
};

} // namespace

class tst_Logbook : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void entriesKeepTheirOrderAndRunsTheirLast()
    {
        tnImportMode mode(nullptr);
        const QDateTime begin = QDateTime::currentDateTime();
        mode.addLogEntry("/b", "A");
        mode.addLogEntry("/b", "A");
        QTest::qWait(1000); // the times have whole seconds
        mode.addLogEntry("/b", "A");
        const std::pair<const char *, const char *> later[] = {
            {"/B", "A"}, {"/a.old", "ü"}, {"/a", "A"}, {"/a", "a"}, {"/a", "A"}, {"", "total"}};
        for (const auto &[file, message] : later)
            mode.addLogEntry(file, message);

        OwnFormater formater;
        const QTemporaryDir dir;
        mode.writeLogbook(dir.filePath("log"), formater);
        QStringList left;
        for (const auto &[key, entry] : formater.seen) {
            const auto time = QDateTime::fromString(entry.first.c_str(), Qt::TextDate);
            QCOMPARE(entry.first.empty(), key.empty());
            QVERIFY(key.empty() || (time > begin && time <= QDateTime::currentDateTime()));
            left << QString::fromStdString(key + ' ' + entry.second);
        }
        QCOMPARE(left.join(','), QString::fromUtf8(" total,/B A,/a A,/a a,/a A,/a.old ü,/b A"));
    }

    void formats()
    {
        const tnLogTable table{{"/b & <c>.step", {"Sun", "  File \"load\" "}},
                               {"", {"", "Total: 1.5"}},
                               {"", {"", "Next"}},
                               {"/ü.step ", {" T ", "Schluß"}},
                               {"/ü.step ", {"U", ""}}};
        QCOMPARE(tnTextFormater().format(table),
                 QString::fromUtf8("Total: 1.5\nNext\n\n"
                                   "file: /b & <c>.step\nSun:   File \"load\" \n\n"
                                   "file: /ü.step \n T : Schluß\nU: \n\n"));
        QCOMPARE(tnXMLFormater().format(table),
                 QString::fromUtf8(
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LOGBOOK>\n"
                     "\t<CHAPTER>\n"
                     "\t\t<ENTRY>\n\t\t\t<MESSAGE>\nTotal: 1.5\t\t\t</MESSAGE>\n\t\t</ENTRY>\n"
                     "\t\t<ENTRY>\n\t\t\t<MESSAGE>\nNext\t\t\t</MESSAGE>\n\t\t</ENTRY>\n"
                     "\t</CHAPTER>\n"
                     "\t<CHAPTER>\n\t\t<FILE>\n/b & <c>.step\t\t</FILE>\n"
                     "\t\t<ENTRY>\n\t\t\t<TIME>\nSun\t\t\t</TIME>\n"
                     "\t\t\t<MESSAGE>\nFile \"load\"\t\t\t</MESSAGE>\n\t\t</ENTRY>\n"
                     "\t</CHAPTER>\n"
                     "\t<CHAPTER>\n\t\t<FILE>\n/ü.step \t\t</FILE>\n"
                     "\t\t<ENTRY>\n\t\t\t<TIME>\nT\t\t\t</TIME>\n"
                     "\t\t\t<MESSAGE>\nSchluß\t\t\t</MESSAGE>\n\t\t</ENTRY>\n"
                     "\t</CHAPTER>\n</LOGBOOK>\n\n"));
        QVERIFY(tnTextFormater().format({}).isNull() && tnXMLFormater().format({}).isNull());
    }

    void filesAreReplacedKeptOrSkipped_data()
    {
        const QByteArray before("what was there before");
        const QString longText = QString(u8"Zeile ü\n").repeated(20000) + "end";
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("null text") << QString() << QByteArray("UTF-8") << before;
        QTest::newRow("empty text") << QString("") << QByteArray("UTF-8") << before;
        QTest::newRow("UTF-8") << QString(u8"€") << QByteArray("UTF-8") << QByteArray(u8"€");
        QTest::newRow("code page")
            << QString(u8"ü") << QByteArray("ISO-8859-1") << QByteArray("\xfc");
        QTest::newRow("long text") << longText << QByteArray("UTF-8") << longText.toUtf8();
    }
    void filesAreReplacedKeptOrSkipped()
    {
        QFETCH(const QString, text);
        QFETCH(const QByteArray, codec);
        const tnImportMode mode(nullptr);
        OwnFormater formater;
        formater.text = text;
        const QTemporaryDir dir;
        QFile file(dir.filePath("log"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("what was there before") > 0);
        file.close();

        QTextCodec *const usual = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
        mode.writeLogbook(file.fileName(), formater);
        QTextCodec::setCodecForLocale(usual);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QTEST(file.readAll(), "content");

        CapturedStream errors(stderr);
        mode.writeLogbook(dir.filePath("gone/log"), formater);
        QCOMPARE(errors.take(), QByteArray());
    }

    void directoryFollowsThePreference()
    {
        const QString usual = QDir::tempPath();
        const std::pair<boost::any, QString> cases[] = {{{}, usual},
                                                        {QString(""), usual},
                                                        {7, usual}, // of a wrong type
                                                        {QString("/else where/"), "/else where/"}};
        CapturedStream quiet(stderr);
        for (const auto &[preference, directory] : cases) {
            tnPreferences::getData().set("FileIO tmp path", preference, true);
            QCOMPARE(logbookPath(".xml"), directory + "/import-logbook.xml");
        }
    }
};

QTEST_GUILESS_MAIN(tst_Logbook)
#include "tst_logbook.moc"
