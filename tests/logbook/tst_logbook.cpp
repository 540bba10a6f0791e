#include "logbook/logbookPath.h"
#include "logbook/tnTextFormater.h"
#include "logbook/tnXMLFormater.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"
#include "tests/support/CapturedStream.h"

#include <QtCore/QTemporaryDir>
#include <QtCore/QTextCodec>
#include <QtTest/QtTest>

class tst_Logbook : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void entriesKeepTheirOrderAndRunsTheirLast()
    {
        tnLogbook::Table table;
        const auto add = [&](const char *file, const char *message, const char *time) {
            tnLogbook::addLogEntry(table, file, message);
            const auto added = std::prev(table.upper_bound(file));
            const auto age = QDateTime::fromString(added->second.first.c_str(), Qt::TextDate)
                                 .secsTo(QDateTime::currentDateTime());
            QVERIFY(*file ? age >= 0 && age < 60 : added->second.first.empty());
            added->second.first = time;
            tnLogbook::removeRepeatedEntries(table, file);
        };
        add("/b", "A", "1");
        add("/b", "A", "2");
        add("/b", "A", "3");
        add("/B", "A", "4");
        add("/a.old", "ü", "5");
        add("/a", "A", "6");
        add("/a", "a", "7");
        add("/a", "A", "8");
        add("", "total", "");
        QStringList left;
        for (const auto &[key, entry] : table)
            left << QString::fromStdString(key + ' ' + entry.first + ' ' + entry.second);
        QCOMPARE(left.join(','),
                 QString::fromUtf8("  total,/B 4 A,/a 6 A,/a 7 a,/a 8 A,/a.old 5 ü,/b 3 A"));
    }

    void formats()
    {
        const tnLogbook::Table table{{"/b & <c>.step", {"Sun", "  File \"load\" "}},
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

    void filesAreReplacedKeptOrSkipped()
    {
        const QTemporaryDir dir;
        QFile file(dir.filePath("log"));
        QTextCodec *const usual = QTextCodec::codecForLocale();
        const auto write = [&](const tnLogbook::Table &table, const char *codec) {
            QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
            tnLogbook::writeLogbook(table, file.fileName(), tnTextFormater());
            QTextCodec::setCodecForLocale(usual);
            const bool opened = file.open(QIODevice::ReadOnly);
            const QByteArray content = opened ? file.readAll() : "none";
            file.close();
            return content;
        };
        // Nothing to write, the code page of the system, a shorter text, nothing again.
        QCOMPARE(write({}, "UTF-8"), QByteArray("none"));
        QCOMPARE(write({{"ü", {"", "€"}}}, "UTF-8"), QByteArray("file: ü\n€\n\n"));
        QCOMPARE(write({{"", {"", "ü"}}}, "ISO-8859-1"), QByteArray("\xfc\n\n"));
        QCOMPARE(write({}, "UTF-8"), QByteArray("\xfc\n\n"));

        CapturedStream errors(stderr);
        tnLogbook::writeLogbook({{"", {"", "x"}}}, dir.filePath("gone/log"), tnTextFormater());
        QCOMPARE(errors.take(), QByteArray());
    }

    void directoryFollowsThePreference()
    {
        const QByteArray wrongType("getFromMessage : Attribute 'FileIO tmp path' has wrong type");
        const struct {
            boost::any preference;
            QString directory;
            QByteArray complaint;
        } cases[] = {{{}, QDir::tempPath(), {}},
                     {QString(""), QDir::tempPath(), {}},
                     {7, QDir::tempPath(), wrongType},
                     {QString("/else where/"), "/else where/", {}}};
        for (const auto &[preference, directory, complaint] : cases) {
            tnPreferences::getData().set("FileIO tmp path", preference, true);
            CapturedStream errors(stderr);
            const QString path = logbookPath(".xml");
            QCOMPARE(errors.take().left(wrongType.size()), complaint);
            QCOMPARE(path, directory + "/import-logbook.xml");
        }
    }
};

QTEST_GUILESS_MAIN(tst_Logbook)
#include "tst_logbook.moc"
