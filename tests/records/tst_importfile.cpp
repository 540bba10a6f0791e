#include "records/tnCADImportFile.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QDateTime>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTranslator>
#include <QtTest/QtTest>

namespace {

/// Speaks a language in which every word of a record is the same in brackets.
class BracketTranslator : public QTranslator {
public:
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return qstrcmp(context, "tnCADImportFile") == 0 ? QString("[%1]").arg(text) : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class tst_ImportFile : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ScriptedServices> m_services;
    std::unique_ptr<QTemporaryDir> m_dir;

    /// A file of that many bytes, all of them holes.
    QString makeFile(const QString &name, qint64 size)
    {
        QFile file(m_dir->filePath(name));
        if (!file.open(QIODevice::WriteOnly) || !file.resize(size))
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    static std::shared_ptr<tnCADImportFile> record(const QString &path)
    {
        return std::make_shared<tnCADImportFile>(path);
    }

private Q_SLOTS:
    void init()
    {
        m_services = std::make_unique<ScriptedServices>();
        m_dir = std::make_unique<QTemporaryDir>();
    }
    void cleanup() { m_services.reset(); }

    void bornWithTheFactsOfTheFile()
    {
        const QString path = makeFile("Wheel.v2.STEP", 1500);
        const tnCADImportFile file(path);
        QCOMPARE(file.path(), path);
        QCOMPARE(file.fileName(), QString("Wheel.v2.STEP"));
        QCOMPARE(file.suffix(), QString("STEP"));
        QCOMPARE(file.size(), qint64(1500));
        QCOMPARE(file.fileType(), tnCADFileTypes::Step);
        QCOMPARE(file.state(), ImportState::Pending);
        QVERIFY(file.node().isNull());
        QVERIFY(file.matches(path));
        QVERIFY(!file.matches(path.toUpper()));

        const tnCADImportFile missing("gone/./x.igs");
        QCOMPARE(missing.path(), QString("gone/./x.igs"));
        QCOMPARE(missing.size(), qint64(0));
        QCOMPARE(missing.sizeText(), QString("Unknown"));
        QCOMPARE(missing.fileType(), tnCADFileTypes::Iges);
        QVERIFY(missing.toolTip().endsWith(
            "<tr><td><b>Last Modified: </b></td><td></td></tr></table>"));
    }

    void sharedSuffixesTellNoType()
    {
        for (const char *name : {"a.prt", "a.PRT", "a.asm", "a.AsM"}) {
            tnCADImportFile file(name);
            QVERIFY(file.hasSharedSuffix());
            QCOMPARE(file.fileType(), tnCADFileTypes::Undefined);
            file.setFileType(tnCADFileTypes::ProEngineer);
            QCOMPARE(file.fileType(), tnCADFileTypes::ProEngineer);
        }
        QCOMPARE(m_services->files.typeQuestions, QStringList());
        QVERIFY(!tnCADImportFile("a.sldprt").hasSharedSuffix());
        QCOMPARE(m_services->files.typeQuestions, QStringList("a.sldprt"));
    }

    void states_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<bool>("running");
        QTest::addColumn<bool>("importable");
        QTest::newRow("Pending") << 0 << false << true;
        QTest::newRow("Importing") << 1 << true << false;
        QTest::newRow("Loading") << 2 << true << false;
        QTest::newRow("Failed") << 3 << false << true;
        QTest::newRow("Succeeded") << 4 << false << false;
        QTest::newRow("Incomplete") << 5 << false << false;
        QTest::newRow("Aborted") << 6 << false << true;
    }

    void states()
    {
        QFETCH(int, value);
        const QString name = QTest::currentDataTag();
        const auto state = static_cast<ImportState>(value);
        tnCADImportFile file("a.step");
        file.setProgress(40, "abc");
        file.setState(state);
        QCOMPARE(file.state(), state);
        QTEST(file.isRunning(), "running");
        QTEST(file.isImportable(), "importable");
        QCOMPARE(file.stateText(), state == ImportState::Importing ? QString("40% abc") : name);

        // Nothing is left of the progress once the file has been in another state.
        file.setState(ImportState::Importing);
        QCOMPARE(file.stateText(),
                 state == ImportState::Importing ? QString("40% abc") : QString("Importing"));

        QVERIFY(tnCADImportFile::isValidState(static_cast<int>(state)));
        QVERIFY(!tnCADImportFile::isValidState(7));
        QVERIFY(!tnCADImportFile::isValidState(-1));
    }

    void progressText_data()
    {
        QTest::addColumn<unsigned int>("percent");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing yet") << 0U << QString() << "Importing";
        QTest::newRow("both") << 37U << "abc"
                              << "37% abc";
        QTest::newRow("no message") << 37U << QString() << "37% ";
        QTest::newRow("message alone") << 0U << "File added to load queue"
                                       << "File added to load queue";
        QTest::newRow("markers") << 5U << "50%1 of %2 %%"
                                 << "5% 50%1 of %2 %%";
        QTest::newRow("markers alone") << 0U << "%1%2"
                                       << "%1%2";
    }

    void progressText()
    {
        QFETCH(unsigned int, percent);
        QFETCH(QString, message);
        tnCADImportFile file("a.step");
        file.setProgress(percent, message);
        QCOMPARE(file.stateText(), QString("Pending"));
        file.setState(ImportState::Importing);
        QTEST(file.stateText(), "text");
    }

    void sizeText_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << qint64(0) << "Unknown";
        QTest::newRow("below a kilobyte") << qint64(1023) << "0.0kB";
        QTest::newRow("truncated") << qint64(2047) << "1.0kB";
        QTest::newRow("below a megabyte") << qint64(1048575) << "1023.0kB";
        QTest::newRow("a megabyte") << qint64(1048576) << "1024.0kB";
        QTest::newRow("next kilobyte") << qint64(1048576 + 1024) << "1.0MB";
        QTest::newRow("beyond 32 bits") << (qint64(5) << 30) << "5120.0MB";
    }

    void sizeText()
    {
        QFETCH(qint64, size);
        const tnCADImportFile file(makeFile("a.step", size));
        QCOMPARE(file.size(), size);
        QTEST(file.sizeText(), "text");
    }

    void changesOfStateReadTheDiskAgain()
    {
        const QString path = makeFile("a.step", 0);
        tnCADImportFile file(path);
        makeFile("a.step", 2048);
        const QDateTime then(QDate(2001, 2, 3), QTime(4, 5, 6));
        QFile disk(path);
        QVERIFY(disk.open(QIODevice::ReadWrite));
        QVERIFY(disk.setFileTime(then, QFileDevice::FileModificationTime));
        disk.close();
        QCOMPARE(file.sizeText(), QString("Unknown"));

        file.setState(ImportState::Importing);
        QCOMPARE(file.sizeText(), QString("2.0kB"));
        const QString date = then.toString(Qt::TextDate);
        QVERIFY2(file.toolTip().contains("<td>" + date + "</td>"), qPrintable(file.toolTip()));
    }

    void toolTipTakesValuesAsTheyAre()
    {
        // Place markers and markup in a name are nothing special.
        const QString path = makeFile("a %1 %2 <b>&amp; %3.step", 1500);
        tnCADImportFile file(path);
        const auto text = [&](const QString &type) {
            const QString date = QFileInfo(path).lastModified().toString(Qt::TextDate);
            return "<table><tr><td><b>Path: </b></td><td>" + path
                + "</td></tr><tr><td><b>File: </b></td><td>a %1 %2 <b>&amp; %3.step</td></tr>"
                  "<tr><td><b>Type: </b></td><td>"
                + type
                + "</td></tr><tr><td><b>Size: </b></td><td>1500</td></tr>"
                  "<tr><td><b>Last Modified: </b></td><td>"
                + date + "</td></tr></table>";
        };
        QCOMPARE(file.toolTip(), text("Step"));
        file.setFileType(tnCADFileTypes::Unsupported);
        QCOMPARE(file.toolTip(), text("Unsupported"));
        file.setFileType(static_cast<tnCADFileTypes::FileType>(33));
        QCOMPARE(file.toolTip(), text("undefined"));
    }

    void textsFollowTheLanguage()
    {
        tnCADImportFile file("gone.step");
        QCOMPARE(file.stateText(), QString("Pending"));
        BracketTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QCOMPARE(file.stateText(), QString("[Pending]"));
        QCOMPARE(file.sizeText(), QString("[Unknown]"));
        for (const char *label : {"Path", "File", "Type", "Size", "Last Modified"})
            QVERIFY(file.toolTip().contains(QString("<b>[%1]: </b>").arg(label)));
        QVERIFY(file.toolTip().contains("<td>Step</td>"));
    }

    void linksAreWeak()
    {
        auto parent = record("assembly.step");
        auto child = record("part.step");
        QVERIFY(!child->hasParent());
        QVERIFY(!parent->hasChildren());
        child->setParent(parent);
        parent->addChild(child);
        parent->addChild(child);
        QVERIFY(child->hasParent());
        QCOMPARE(child->parent().lock(), parent);
        QCOMPARE(parent->childCount(), 2U);
        QCOMPARE(parent->child(1).lock(), child);
        for (const int index : {-1, 2, INT_MAX, INT_MIN})
            QVERIFY(!parent->child(index).lock());

        child.reset();
        QVERIFY(parent->hasChildren());
        QCOMPARE(parent->childCount(), 2U);
        QVERIFY(!parent->child(0).lock());

        child = record("part.step");
        child->setParent(parent);
        parent.reset();
        QVERIFY(!child->hasParent());
    }
};

QTEST_GUILESS_MAIN(tst_ImportFile)

#include "tst_importfile.moc"
