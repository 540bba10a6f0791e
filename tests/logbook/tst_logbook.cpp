#include "logbook/logbookPath.h"
#include "logbook/tnTextFormater.h"
#include "logbook/tnXMLFormater.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"
#include "tests/support/CapturedStream.h"

#include <QtCore/QDateTime>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextCodec>
#include <QtTest/QtTest>

namespace {

/// Entries written as "key|time|message".
tnLogbook::Table tableOf(const QStringList &entries)
{
    tnLogbook::Table table;
    for (const QString &entry : entries)
        table.emplace(entry.section('|', 0, 0).toStdString(),
                      std::make_pair(entry.section('|', 1, 1).toStdString(),
                                     entry.section('|', 2).toStdString()));
    return table;
}

QStringList entriesOf(const tnLogbook::Table &table)
{
    QStringList entries;
    for (const auto &[key, entry] : table)
        entries << QString::fromStdString(key + '|' + entry.first + '|' + entry.second);
    return entries;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "can't be opened";
}

} // namespace

class tst_Logbook : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void entriesStandByFileInOrderOfInsertion()
    {
        tnLogbook::Table table;
        const QDateTime before = QDateTime::currentDateTime();
        tnLogbook::addLogEntry(table, "/b.step", "second file");
        tnLogbook::addLogEntry(table, "/a.step.old", QString::fromUtf8("länger"));
        tnLogbook::addLogEntry(table, "/B.step", "capital");
        tnLogbook::addLogEntry(table, "/a.step", "z");
        tnLogbook::addLogEntry(table, "/a.step", "a");
        tnLogbook::addLogEntry(table, "/a.step", "z");
        tnLogbook::addLogEntry(table, QString(), "total");
        tnLogbook::addLogEntry(table, "", "a further total");

        QStringList keysAndMessages;
        for (const QString &entry : entriesOf(table)) {
            const QString key = entry.section('|', 0, 0);
            const QString time = entry.section('|', 1, 1);
            keysAndMessages << key + '|' + entry.section('|', 2);
            if (key.isEmpty()) {
                QCOMPARE(time, QString());
                continue;
            }
            // The text has no fractions of a second.
            const QDateTime logged = QDateTime::fromString(time, Qt::TextDate);
            QVERIFY2(logged >= before.addSecs(-1) && logged <= QDateTime::currentDateTime(),
                     qPrintable(time));
        }
        QCOMPARE(keysAndMessages,
                 QStringList({"|total", "|a further total", "/B.step|capital", "/a.step|z",
                              "/a.step|a", "/a.step|z", QString::fromUtf8("/a.step.old|länger"),
                              "/b.step|second file"}));
    }

    void repeatedEntries_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("empty") << QStringList() << QStringList();
        QTest::newRow("last of a run stays")
            << QStringList({"f|1|A", "f|2|A", "f|3|A", "f|4|B", "f|5|B"})
            << QStringList({"f|3|A", "f|5|B"});
        QTest::newRow("only neighbours count")
            << QStringList({"f|1|A", "f|2|B", "f|3|A"}) << QStringList({"f|1|A", "f|2|B", "f|3|A"});
        QTest::newRow("files don't mix") << QStringList({"||A", "F|1|A", "f|1|A", "g|1|A", "g|2|A"})
                                         << QStringList({"||A", "F|1|A", "f|1|A", "g|2|A"});
        QTest::newRow("whole batch")
            << QStringList({"||T", "||T", "||U"}) << QStringList({"||T", "||U"});
    }

    void repeatedEntries()
    {
        QFETCH(QStringList, entries);
        tnLogbook::Table table = tableOf(entries);
        tnLogbook::removeRepeatedEntries(table);
        QTEST(entriesOf(table), "left");
    }

    void formats_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("xml");
        QTest::newRow("nothing") << QStringList() << QString() << QString();
        QTest::newRow("totals ahead of files")
            << QStringList({"/b & <c>.step|Sun Nov 22 2026|  File \"load\" started ",
                            "||Total import duration: 1.5 seconds.",
                            "||Total conversion duration: 1e-07 seconds.",
                            QString::fromUtf8("/a/ü .step| T |Ende & Schluß")})
            << QString::fromUtf8("Total import duration: 1.5 seconds.\n"
                                 "Total conversion duration: 1e-07 seconds.\n"
                                 "\n"
                                 "file: /a/ü .step\n"
                                 " T : Ende & Schluß\n"
                                 "\n"
                                 "file: /b & <c>.step\n"
                                 "Sun Nov 22 2026:   File \"load\" started \n"
                                 "\n")
            << QString::fromUtf8("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                 "<LOGBOOK>\n"
                                 "\t<CHAPTER>\n"
                                 "\t\t<ENTRY>\n"
                                 "\t\t\t<MESSAGE>\n"
                                 "Total import duration: 1.5 seconds.\t\t\t</MESSAGE>\n"
                                 "\t\t</ENTRY>\n"
                                 "\t\t<ENTRY>\n"
                                 "\t\t\t<MESSAGE>\n"
                                 "Total conversion duration: 1e-07 seconds.\t\t\t</MESSAGE>\n"
                                 "\t\t</ENTRY>\n"
                                 "\t</CHAPTER>\n"
                                 "\t<CHAPTER>\n"
                                 "\t\t<FILE>\n"
                                 "/a/ü .step\t\t</FILE>\n"
                                 "\t\t<ENTRY>\n"
                                 "\t\t\t<TIME>\n"
                                 "T\t\t\t</TIME>\n"
                                 "\t\t\t<MESSAGE>\n"
                                 "Ende & Schluß\t\t\t</MESSAGE>\n"
                                 "\t\t</ENTRY>\n"
                                 "\t</CHAPTER>\n"
                                 "\t<CHAPTER>\n"
                                 "\t\t<FILE>\n"
                                 "/b & <c>.step\t\t</FILE>\n"
                                 "\t\t<ENTRY>\n"
                                 "\t\t\t<TIME>\n"
                                 "Sun Nov 22 2026\t\t\t</TIME>\n"
                                 "\t\t\t<MESSAGE>\n"
                                 "File \"load\" started\t\t\t</MESSAGE>\n"
                                 "\t\t</ENTRY>\n"
                                 "\t</CHAPTER>\n"
                                 "</LOGBOOK>\n\n");
        QTest::newRow("empty messages, two files by case")
            << QStringList({"a|1|", "a|2|x", "A|3|", "a|| "})
            << "file: A\n3: \n\n"
               "file: a\n1: \n2: x\n \n\n"
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LOGBOOK>\n"
               "\t<CHAPTER>\n\t\t<FILE>\nA\t\t</FILE>\n\t</CHAPTER>\n"
               "\t<CHAPTER>\n\t\t<FILE>\na\t\t</FILE>\n"
               "\t\t<ENTRY>\n\t\t\t<TIME>\n2\t\t\t</TIME>\n"
               "\t\t\t<MESSAGE>\nx\t\t\t</MESSAGE>\n\t\t</ENTRY>\n"
               "\t\t<ENTRY>\n\t\t\t<MESSAGE>\n\t\t\t</MESSAGE>\n\t\t</ENTRY>\n"
               "\t</CHAPTER>\n</LOGBOOK>\n\n";
    }

    void formats()
    {
        QFETCH(QStringList, entries);
        QFETCH(QString, text);
        const tnLogbook::Table table = tableOf(entries);
        const QString asText = tnTextFormater().format(table);
        const QString asXml = tnXMLFormater().format(table);
        QCOMPARE(asText, text);
        QTEST(asXml, "xml");
        QCOMPARE(asText.isNull(), entries.isEmpty());
        QCOMPARE(asXml.isNull(), entries.isEmpty());
    }

    void filesAreInTheCodePageOfTheSystem_data()
    {
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("UTF-8") << QByteArray("UTF-8")
                               << QByteArray("file: /\xc3\xbc.step\n: \xe2\x82\xac\n\n");
        QTest::newRow("Latin-9") << QByteArray("ISO-8859-15")
                                 << QByteArray("file: /\xfc.step\n: \xa4\n\n");
    }

    void filesAreInTheCodePageOfTheSystem()
    {
        QFETCH(QByteArray, codec);
        QTextCodec *const previous = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
        const QString path = m_dir.filePath("log.txt");
        tnLogbook::writeLogbook(tableOf({QString::fromUtf8("/ü.step||: €")}), path,
                                tnTextFormater());
        QTextCodec::setCodecForLocale(previous);
        QTEST(contentOf(path), "content");
    }

    void writingReplacesButAnEmptyTableKeeps()
    {
        const QString path = m_dir.filePath("replaced.txt");
        tnLogbook::writeLogbook(tableOf({"/long/path.step|1|long"}), path, tnTextFormater());
        tnLogbook::writeLogbook(tableOf({"||T"}), path, tnTextFormater());
        QCOMPARE(contentOf(path), QByteArray("T\n\n"));
        tnLogbook::writeLogbook({}, path, tnXMLFormater());
        QCOMPARE(contentOf(path), QByteArray("T\n\n"));

        const QString never = m_dir.filePath("never.txt");
        tnLogbook::writeLogbook({}, never, tnTextFormater());
        QVERIFY(!QFile::exists(never));
    }

    void unwritableFilesAreSkippedInSilence()
    {
        CapturedStream errors(stderr);
        for (const QString &path : {m_dir.path(), m_dir.filePath("gone/log.txt")})
            tnLogbook::writeLogbook(tableOf({"||T"}), path, tnTextFormater());
        QCOMPARE(errors.take(), QByteArray());
        QVERIFY(!QFile::exists(m_dir.filePath("gone")));
    }

    void directoryFollowsThePreference_data()
    {
        QTest::addColumn<QVariant>("preference");
        QTest::addColumn<QString>("directory");
        QTest::addColumn<bool>("complains");
        QTest::newRow("missing") << QVariant() << QDir::tempPath() << false;
        QTest::newRow("empty") << QVariant(QString("")) << QDir::tempPath() << false;
        QTest::newRow("wrong type") << QVariant(7) << QDir::tempPath() << true;
        QTest::newRow("set") << QVariant("/else where") << "/else where" << false;
        QTest::newRow("separator stays") << QVariant("/else/") << "/else/" << false;
    }

    void directoryFollowsThePreference()
    {
        QFETCH(QVariant, preference);
        QFETCH(QString, directory);
        boost::any value;
        if (preference.type() == QVariant::String)
            value = preference.toString();
        else if (preference.isValid())
            value = preference.toInt();
        tnPreferences::getData().set("FileIO tmp path", value, true);

        CapturedStream errors(stderr);
        const QString logbook = logbookPath(".xml");
        const QByteArray printed = errors.take();
        QCOMPARE(logbook, directory + "/import-logbook.xml");
        QCOMPARE(defaultOutputDirectory(), directory);
        QTEST(
            printed.startsWith("getFromMessage : Attribute 'FileIO tmp path' has wrong type (is:"),
            "complains");
    }
};

QTEST_GUILESS_MAIN(tst_Logbook)
#include "tst_logbook.moc"
