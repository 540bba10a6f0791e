#include "HostileRun.h"

#include <QtTest>

/// Whatever is wrong with a file: the worker answers, and keeps its promises.
class tst_Hostile : public QObject {
    Q_OBJECT

private:
    static constexpr int fileCount = 55;
    const HostileFiles m_files{20261123};
    HostileRun m_run{20};

private slots:
    void damagedFiles_data()
    {
        QTest::addColumn<int>("number");
        for (int i = 0; i < fileCount; ++i) {
            const QString damage = m_files.file(i).damage;
            QTest::addRow("%d, %s", i, qPrintable(damage)) << i;
        }
    }

    void damagedFiles()
    {
        QFETCH(const int, number);
        const HostileAnswer answer = m_run.convert(m_files.file(number));
        QVERIFY2(answer.faults.isEmpty(), qPrintable(answer.faults.join(", ") + answer.message));
    }

    void soundFiles()
    {
        for (int i = 0; i < 11; ++i) {
            const HostileAnswer answer = m_run.convert(m_files.sound(i));
            QCOMPARE(answer.faults.join(", ") + answer.message, QString());
            QVERIFY(answer.area > 0 && answer.memory > 0);
            const HostileFile damaged = m_files.file(i);
            QVERIFY(damaged.files != m_files.sound(i).files);
            QCOMPARE(damaged.files, HostileFiles(20261123).file(i).files);
        }
    }

    /// Workers that would break the promises are noticed.
    void badWorkers()
    {
        QVERIFY(HostileRun(20, {"--list-formats"}).convert(m_files.sound(0)).hasDied);
        QVERIFY(HostileRun(0).convert(m_files.sound(0)).hasHung);
    }
};

QTEST_GUILESS_MAIN(tst_Hostile)
#include "tst_Hostile.moc"
