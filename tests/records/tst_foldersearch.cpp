#include "records/tnFileTyp.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <unistd.h>

class tst_FolderSearch : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ScriptedServices> m_services;
    std::unique_ptr<QTemporaryDir> m_dir;

    QString path(const QString &name) const { return m_dir->filePath(name); }
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(path(name)); }

    void make(const QStringList &names)
    {
        for (const QString &name : names) {
            QVERIFY(QDir().mkpath(QFileInfo(path(name)).absolutePath()));
            QFile file(path(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
    }

private Q_SLOTS:
    void init()
    {
        m_services = std::make_unique<ScriptedServices>();
        m_dir = std::make_unique<QTemporaryDir>();
    }

    void cleanup() { m_services.reset(); }

    void filterKeepsOrderAndAsksNothingElse()
    {
        QCOMPARE(tnFileTyp::instance().supportedFiles({"/no/b.STEP", "a.txt", "/no/a.stl", "x"}),
                 QStringList({"/no/b.STEP", "/no/a.stl"}));
    }

    void plainFilesSendOnlyTheEnd()
    {
        make({"a.step", ".hidden.step", "b.txt"});
        auto &search = tnFileTyp::instance();
        QSignalSpy start(&search, &tnFileTyp::startSearch);
        QSignalSpy enter(&search, &tnFileTyp::enterDirectory);
        QSignalSpy end(&search, &tnFileTyp::endSearch);
        const QList<QUrl> urls{url("a.step"),
                               url(".hidden.step"),
                               url("b.txt"),
                               url("gone.step"),
                               QUrl("http://example.org/c.step"),
                               url("a.step")};
        QCOMPARE(search.searchFiles(urls), QStringList({path("a.step"), path(".hidden.step")}));
        QCOMPARE(start.size(), 0);
        QCOMPARE(enter.size(), 0);
        QCOMPARE(end.size(), 1);
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

        const int a = found.indexOf(path("top/a.step"));
        QVERIFY(a >= 0 && a + 1 == found.indexOf(path("top/b.step")));
        QCOMPARE(found.last(), path("other/e.obj"));
        found.sort();
        QStringList expected{
            path("top/a.step"),         path("top/b.step"),  path("top/sub/deep/c %1 & ü.stl"),
            path("top/sub/odd.step.."), path("other/e.obj"), path("top/link/f.obj")};
        expected.sort();
        QCOMPARE(found, expected);

        QStringList entered;
        for (const auto &arguments : enter)
            entered << arguments.first().toString();
        QVERIFY(entered.contains(path("top/empty/.")));
        QVERIFY(entered.contains(path("top/b.step")));
        QVERIFY(entered.filter(QRegularExpression("\\.\\.$")).isEmpty());
    }

    void canBeStoppedAndKeepsWhatItFound()
    {
        QStringList names;
        for (int i = 0; i < 50; ++i)
            names << QString("top/%1/x.step").arg(i);
        make(names + QStringList("other/y.step"));

        auto &search = tnFileTyp::instance();
        search.stopSearch();
        QObject context;
        int entered = 0;
        QSignalSpy end(&search, &tnFileTyp::endSearch);
        connect(&search, &tnFileTyp::enterDirectory, &context, [&] {
            // As a click would: the request arrives while the walk lets events run.
            if (++entered == 10)
                QTimer::singleShot(0, &context, [&search] { search.stopSearch(); });
        });
        const QStringList found = search.searchFiles({url("top"), url("other")});
        QVERIFY2(!found.isEmpty() && found.size() < 10, qPrintable(QString::number(found.size())));
        QVERIFY(!found.contains(path("other/y.step")));
        QCOMPARE(end.size(), 1);
        QVERIFY(entered <= 11);

        entered = 100;
        QCOMPARE(search.searchFiles({url("other")}).size(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_FolderSearch)
#include "tst_foldersearch.moc"
