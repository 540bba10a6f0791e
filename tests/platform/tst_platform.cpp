#include "platform/tnFile.h"
#include "platform/tnFileIO.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"

#include <QtTest/QtTest>

#include <unistd.h>

class tst_Platform : public QObject {
    Q_OBJECT

private slots:
    void messageAttributes()
    {
        tnMessage message(tnMessage::NewScene);
        QCOMPARE(message.id(), 16);
        QVERIFY(message.get("files").empty());
        message.set("files", 1, false);
        message.set("files", 2, false);
        QCOMPARE(boost::any_cast<int>(message.get("files")), 1);
        message.set("files", std::string("three"), true);
        QCOMPARE(boost::any_cast<std::string>(message.get("files")), std::string("three"));
        message.set("empty", boost::any(), true);
        message.set("empty", 4, false); // an empty value is none that could stay
        QCOMPARE(boost::any_cast<int>(message.get("empty")), 4);
        message.set("answer", 5, true);
        std::string keys; // asking has left no trace, and the order is that of setting
        for (const tnMessage::Attribute &attribute : message.attributes())
            keys += attribute.first + ' ';
        QCOMPARE(keys, std::string("files empty answer "));
    }

    /// Without a sink the log goes to the standard error stream.
    void printedLog()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        const int before = dup(STDERR_FILENO);
        QVERIFY(before >= 0 && dup2(file.handle(), STDERR_FILENO) >= 0);
        tnLog::warning("%s", "a\x1b[31m\u009b\nb\u00e4");
        dup2(before, STDERR_FILENO);
        close(before);
        file.seek(0);
        QCOMPARE(file.readAll(), QByteArray("Warning: a\\u001b[31m\\u009b\nWarning: b\u00e4\n"));
    }

    void checkWrite()
    {
        const QTemporaryDir root;
        const QString base = root.path();
        QVERIFY(QDir(base).mkdir("dir"));
        QFile file(base + QStringLiteral("/dir/sch\u00f6n.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QStringList errors;
        tnLog::setSink([&errors](tnLog::Level, const QString &text) { errors << text; });
        const std::tuple<QString, bool, bool> cases[] = {
            {base + "/dir/", false, true},         {base + "/dir", true, false},
            {base + "/none", false, false},        {file.fileName(), true, true},
            {file.fileName(), false, false},       {base + "/dir/new.txt", true, true},
            {base + "/none/new.txt", true, false}, {QString(), true, false}};
        for (const auto &[path, isFile, writable] : cases) {
            for (const bool report : {false, true}) {
                QCOMPARE(tnFile::checkWrite(path.toStdString(), isFile, report), writable);
                QCOMPARE(errors.filter(path).size(), report && !writable ? 1 : 0);
            }
            errors.clear();
        }
        tnLog::setSink(nullptr);
        QCOMPARE(QDir(base + "/dir").entryList(QDir::Files).size(), 1); // only asked
    }

    void readFilter()
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
};

QTEST_GUILESS_MAIN(tst_Platform)
#include "tst_platform.moc"
