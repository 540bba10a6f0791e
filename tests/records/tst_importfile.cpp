#include "records/tnCADImportFile.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QDateTime>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

class tst_ImportFile : public QObject {
    Q_OBJECT

private:
    ScriptedServices m_services;
    QTemporaryDir m_dir;

    /// A file of that many bytes, all of them holes.
    QString makeFile(const QString &name, qint64 size)
    {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || !file.resize(size))
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

private Q_SLOTS:
    void bornWithTheFactsOfTheFile()
    {
        const QString path = makeFile("Wheel.v2.STEP", 1500);
        const tnCADImportFile file(path);
        QVERIFY(file.matches(path) && file.path() == path);
        for (const QString &other : {path.toUpper(), path + "x", "x" + path, path.mid(1)})
            QVERIFY(!file.matches(other));
        QCOMPARE(file.fileName() + ' ' + file.suffix(), QString("Wheel.v2.STEP STEP"));
        QCOMPARE(file.size(), qint64(1500));
        QCOMPARE(file.fileType(), tnCADFileTypes::Step);
        QCOMPARE(file.state(), ImportState::Pending);

        // Where the suffix is shared the service is not asked.
        m_services.files.typeQuestions.clear();
        for (const char *name : {"a.prt", "a.PRT", "a.asm", "a.AsM"})
            QCOMPARE(tnCADImportFile(name).fileType(), tnCADFileTypes::Undefined);
        QCOMPARE(tnCADImportFile("./gone/a.IGS").fileType(), tnCADFileTypes::Iges);
        QCOMPARE(m_services.files.typeQuestions, QStringList("./gone/a.IGS"));
    }

    void statesAndProgress()
    {
        struct {
            int state;
            unsigned int percent;
            QString message, text;
            bool running, importable;
        } const rows[]{
            {0, 40, "abc", "Pending", false, true},
            {1, 37, "abc", "37% abc", true, false},
            {1, 0, "", "Importing", true, false},
            {1, 37, QString(), "37% ", true, false},
            {1, 5, "50%1 of %2 %%", "5% 50%1 of %2 %%", true, false},
            {1, 0, "%1%2", "%1%2", true, false},
            {2, 40, "abc", "Loading", true, false},
            {3, 40, "abc", "Failed", false, true},
            {4, 40, "abc", "Succeeded", false, false},
            {5, 40, "abc", "Incomplete", false, false},
            {6, 40, "abc", "Aborted", false, true},
        };
        for (const auto &row : rows) {
            tnCADImportFile file("a.step");
            file.setProgress(row.percent, row.message);
            QCOMPARE(file.stateText(), QString("Pending"));
            file.setState(static_cast<ImportState>(row.state));
            QCOMPARE(file.stateText(), row.text);
            QVERIFY(file.isRunning() == row.running && file.isImportable() == row.importable);
            // Nothing is left of the progress once the file has been in another state.
            file.setState(ImportState::Importing);
            QCOMPARE(file.stateText(), row.state == 1 ? row.text : QString("Importing"));
            QVERIFY(tnCADImportFile::isValidState(row.state));
            QVERIFY(!tnCADImportFile::isValidState(row.state + 7));
        }
        QVERIFY(!tnCADImportFile::isValidState(-1));
    }

    void changesOfStateReadTheDiskAgain()
    {
        tnCADImportFile file(makeFile("a.step", 0));
        QCOMPARE(file.sizeText(), QString("Unknown"));
        const std::pair<qint64, QString> sizes[]{
            {1023, "0.0kB"},       {2047, "1.0kB"},    {1048575, "1023.0kB"},
            {1048576, "1024.0kB"}, {1049600, "1.0MB"}, {qint64(5) << 30, "5120.0MB"}};
        for (const auto &[size, text] : sizes) {
            makeFile("a.step", size);
            file.setState(ImportState::Importing);
            QCOMPARE(file.sizeText(), text);
        }
    }

    void toolTipTakesValuesAsTheyAre()
    {
        // Place markers and markup in a name are nothing special.
        const QString path = makeFile("%1 %2 <b>&amp; %3.step", 1500);
        tnCADImportFile file(path);
        file.setFileType(static_cast<tnCADFileTypes::FileType>(33));
        const QDateTime then(QDate(2001, 2, 3), QTime(4, 5, 6));
        QFile disk(path);
        QVERIFY(disk.open(QIODevice::ReadWrite)
                && disk.setFileTime(then, QFileDevice::FileModificationTime));
        file.setState(ImportState::Loading);
        QCOMPARE(file.toolTip(),
                 "<table><tr><td><b>Path: </b></td><td>" + path
                     + "</td></tr><tr><td><b>File: </b></td><td>%1 %2 <b>&amp; %3.step</td></tr>"
                       "<tr><td><b>Type: </b></td><td>undefined</td></tr>"
                       "<tr><td><b>Size: </b></td><td>1500</td></tr>"
                       "<tr><td><b>Last Modified: </b></td><td>"
                     + then.toString(Qt::TextDate) + "</td></tr></table>");
    }

    void linksAreWeak()
    {
        auto parent = std::make_shared<tnCADImportFile>("assembly.step");
        auto child = std::make_shared<tnCADImportFile>("part.step");
        child->setParent(parent);
        parent->addChild(child);
        QVERIFY(child->hasParent() && parent->child(0).lock() == child);
        for (const int index : {-1, 1, INT_MAX, INT_MIN})
            QVERIFY(!parent->child(index).lock());
        child.reset();
        QVERIFY(parent->hasChildren() && parent->childCount() == 1 && !parent->child(0).lock());

        child = std::make_shared<tnCADImportFile>("part.step");
        child->setParent(parent);
        parent.reset();
        QVERIFY(!child->hasParent());
    }
};

QTEST_GUILESS_MAIN(tst_ImportFile)

#include "tst_importfile.moc"
