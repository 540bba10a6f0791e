#include "records/CADFileTypes.h"
#include "records/FolderSearch.h"
#include "records/tnCADImportFile.h"
#include "records/tnFileTyp.h"
#include "tests/support/ScriptedServices.h"
#include "tests/support/duringSearch.h"

#include <QtTest/QtTest>

#include <unistd.h>

using namespace tnCADFileTypes;

class tst_Records : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ScriptedServices> m_services;
    std::unique_ptr<QTemporaryDir> m_dir;

    QString path(const QString &name) const { return m_dir->filePath(name); }
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(path(name)); }

    /// A file of that many bytes, all of them holes.
    QString makeFile(const QString &name, qint64 size)
    {
        QFile file(path(name));
        if (!QDir().mkpath(QFileInfo(file).absolutePath()) || !file.open(QIODevice::WriteOnly)
            || !file.resize(size))
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }
    void make(const QStringList &names)
    {
        for (const QString &name : names)
            makeFile(name, 0);
    }
    void makeManyFolders()
    {
        for (int i = 0; i < 50; ++i)
            make({QString("top/%1/x.step").arg(i)});
        make({"other/y.step"});
    }

private Q_SLOTS:
    void init()
    {
        m_services = std::make_unique<ScriptedServices>();
        m_dir = std::make_unique<QTemporaryDir>();
    }

    void cleanup() { m_services.reset(); }

    void typesOfFiles()
    {
        QMap<QString, int> suffixes;
        for (int value = Cinema4D; value <= Undefined; ++value) {
            const auto type = static_cast<FileType>(value);
            QCOMPARE(fileTypeFacts[std::size_t(value)].type, type); // rows are found by position
            // Only these have no files.
            QCOMPARE(catalogue().count(type) == 0, type == BCAD || type == Undefined);
        }
        for (const auto &row : catalogue()) {
            for (const QString &extension : row.second.extensions)
                ++suffixes[extension.toLower()];
        }
        QCOMPARE(suffixes.keys(2), QStringList({"asm", "prt"}));
        QVERIFY(suffixes.keys(3).isEmpty() && suffixes.value("stp") && suffixes.value("igs"));
        QCOMPARE(displayName(CatiaV5), QString("Catia V5"));
        QVERIFY(displayName(static_cast<FileType>(33)).isNull());
        QCOMPARE(displayNameOrUndefined(static_cast<FileType>(-1)), QString("undefined"));
        QCOMPARE(baseCadTypes(), (std::unordered_set<FileType>{Parasolid, SketchUp}));
    }

    void bornWithTheFactsOfTheFile()
    {
        const QString path = makeFile("Wheel.v2.STEP", 1500);
        const tnCADImportFile file(path);
        QVERIFY(file.matches(path) && file.path() == path);
        for (const QString &other : {path.toUpper(), path + "x", path.mid(1)})
            QVERIFY(!file.matches(other));
        QCOMPARE(file.fileName() + ' ' + file.suffix(), QString("Wheel.v2.STEP STEP"));
        QCOMPARE(file.size(), qint64(1500));
        QCOMPARE(file.fileType(), tnCADFileTypes::Step);
        QCOMPARE(file.state(), ImportState::Pending);

        // Where the suffix is shared the service is not asked.
        m_services->files.typeQuestions.clear();
        for (const char *name : {"a.prt", "a.PRT", "a.AsM"})
            QCOMPARE(tnCADImportFile(name).fileType(), tnCADFileTypes::Undefined);
        QCOMPARE(tnCADImportFile("./gone/a.IGS").fileType(), tnCADFileTypes::Iges);
        QCOMPARE(m_services->files.typeQuestions, QStringList("./gone/a.IGS"));
    }

    void statesAndProgress()
    {
        const struct {
            int state;
            unsigned int percent;
            QString message, text;
            bool running, importable;
        } rows[]{
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
        for (const auto &[state, percent, message, text, running, importable] : rows) {
            tnCADImportFile file("a.step");
            file.setProgress(percent, message);
            QCOMPARE(file.stateText(), QString("Pending"));
            file.setState(static_cast<ImportState>(state));
            QCOMPARE(file.stateText(), text);
            QVERIFY(file.isRunning() == running && file.isImportable() == importable);
            // Nothing is left of the progress once the file has been in another state.
            file.setState(ImportState::Importing);
            QCOMPARE(file.stateText(), state == 1 ? text : QString("Importing"));
        }
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

    void plainFilesSendOnlyTheEnd()
    {
        make({"a.step", ".hidden.step", "b.txt"});
        auto &search = tnFileTyp::instance();
        QCOMPARE(search.supportedFiles({"/no/b.STEP", "a.txt", "/no/a.stl", "x"}),
                 QStringList({"/no/b.STEP", "/no/a.stl"}));
        const QSignalSpy start(&search, &tnFileTyp::startSearch);
        const QSignalSpy enter(&search, &tnFileTyp::enterDirectory);
        const QSignalSpy end(&search, &tnFileTyp::endSearch);
        const QList<QUrl> urls{url("a.step"),
                               url(".hidden.step"),
                               url("b.txt"),
                               url("gone.step"),
                               QUrl("http://example.org/c.step"),
                               url("a.step")};
        QCOMPARE(search.searchFiles(urls), QStringList({path("a.step"), path(".hidden.step")}));
        QVERIFY(start.isEmpty() && enter.isEmpty() && end.size() == 1);
    }

    void foldersGiveEachFileOnce()
    {
        // The two dots at the end of a name look like the parent folder to the walk.
        make({"top/b.step", "top/a.step", "top/sub/deep/c %1 & ü.stl", "top/.hidden.step",
              "top/.secret/d.step", "top/sub/odd.step..", "other/e.obj", "linked/f.obj",
              "linked/below/g.obj"});
        m_services->files.types[""] = tnCADFileTypes::Step;
        QVERIFY(QDir().mkpath(path("top/empty")));
        QCOMPARE(symlink(qPrintable(path("linked")), qPrintable(path("top/link"))), 0);

        auto &search = tnFileTyp::instance();
        QSignalSpy start(&search, &tnFileTyp::startSearch);
        QSignalSpy enter(&search, &tnFileTyp::enterDirectory);
        QStringList found = search.searchFiles({url("top"), url("other"), url("top/a.step")});
        QCOMPARE(start.size(), 1);

        QCOMPARE(found.last(), path("other/e.obj"));
        QCOMPARE(found.indexOf(path("top/a.step")) + 1, found.indexOf(path("top/b.step")));
        found.sort();
        found.replaceInStrings(m_dir->path() + '/', "");
        QCOMPARE(found.join('|'),
                 QString("other/e.obj|top/a.step|top/b.step|top/link/f.obj|"
                         "top/sub/deep/c %1 & ü.stl|top/sub/odd.step.."));

        QStringList entered;
        for (const auto &arguments : enter)
            entered << arguments.first().toString();
        QVERIFY(entered.contains(path("top/empty/.")));
        QVERIFY(entered.contains(path("top/b.step")));
        QVERIFY(entered.filter(QRegularExpression("\\.\\.$")).isEmpty());
    }

    void searchesThatAreNested()
    {
        makeManyFolders();
        auto &search = tnFileTyp::instance();
        const QUrl last = url("other/y.step");
        // How many were found; negative when the search has not come to the last one.
        const auto many = [&] {
            const QStringList found = search.searchFiles({url("top"), url("other"), last});
            return found.contains(last.toLocalFile()) ? found.size() : -found.size();
        };
        int outer = 0;
        int inner = 0;
        const auto nested = [&] { inner = search.searchFiles({url("other")}).size(); };
        QVERIFY(duringSearch([&] { outer = many(); }, nested));
        QVERIFY(outer == 51 && inner == 1);
        // A search that begins later takes nothing from the request, nor does it obey it.
        QVERIFY(duringSearch([&] { outer = many(); },
                             [&] {
                                 search.stopSearch();
                                 nested();
                             }));
        QVERIFY(outer <= 0 && outer > -5 && inner == 1);
        // Who sees one progress and one button means all that is running.
        QVERIFY(duringSearch(
            [&] { outer = many(); },
            [&] { duringSearch([&] { inner = many(); }, [&] { search.stopSearch(); }); }));
        QVERIFY(outer <= 0 && outer > -5 && inner <= 0 && inner > -5);
        // Nobody wants the finds of this one; the one inside is not meant.
        FolderSearch discarded;
        QStringList left{"?"};
        QVERIFY(duringSearch([&] { left = discarded.run({url("top")}); },
                             [&] {
                                 discarded.discard();
                                 nested();
                             }));
        QVERIFY(left.isEmpty() && inner == 1);
    }

    void theEndOfTheApplicationEndsASearch()
    {
        makeManyFolders();
        // In the short one the request comes after the last look but one.
        for (const char *folder : {"top", "other"}) {
            int entered = 0;
            QStringList left{"?"};
            QObject context;
            connect(&tnFileTyp::instance(), &tnFileTyp::enterDirectory, &context, [&] {
                ++entered;
                QThread::msleep(2); // or all has been visited before anybody looks
            });
            QTimer::singleShot(0, &context, [&] {
                duringSearch([&] { left = tnFileTyp::instance().searchFiles({url(folder)}); },
                             [&context] {
                                 QTimer::singleShot(0, &context, [] { QCoreApplication::exit(3); });
                             });
            });
            QCOMPARE(QCoreApplication::exec(), 3);
            QVERIFY2(left.isEmpty() && entered > 1 && entered < 100, folder);
        }
        // Where no event loop was there to end, a request to quit ends nothing.
        QCoreApplication::quit();
        QVERIFY(!tnFileTyp::instance().searchFiles({url("other")}).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_Records)
#include "tst_records.moc"
