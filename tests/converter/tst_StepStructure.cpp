#include "ConverterFixture.h"
#include "readers/kernel/Kernel.h"
#include "readers/step/StepStructure.h"

#include <QtTest>
#include <STEPControl_Reader.hxx>

#include <sstream>

using tnconvert::StepEntities;
using tnconvert::StepStructure;

namespace {

/// A Step file of products named P0, P1, ... and the occurrences that are added.
class Assembly {
public:
    explicit Assembly(int products)
    {
        for (int i = 0; i < products; ++i) {
            const int product = 10 * (i + 1);
            line(product, QString("PRODUCT('P%1','P%1','',())").arg(i));
            line(product + 1, QString("PRODUCT_DEFINITION_FORMATION('','',#%1)").arg(product));
            line(product + 2, QString("PRODUCT_DEFINITION('','',#%1,$)").arg(product + 1));
        }
    }
    Assembly() = default;
    Assembly &add(int whole, int part)
    {
        line(++m_last,
             QString("NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#%1,#%2,$)")
                 .arg(10 * whole + 12)
                 .arg(10 * part + 12));
        return *this;
    }
    /// Each product @p times below the next one.
    static Assembly nested(int products, int times)
    {
        Assembly result(products);
        for (int i = 0; i + 1 < products; ++i) {
            for (int k = 0; k < times; ++k)
                result.add(i + 1, i);
        }
        return result;
    }
    QByteArray file() const
    {
        return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
               "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"
               "ENDSEC;\nDATA;\n"
            + m_lines + "ENDSEC;\nEND-ISO-10303-21;\n";
    }

private:
    void line(int id, const QString &text)
    {
        m_lines += QString("#%1=%2;\n").arg(QString::number(id), text).toUtf8();
    }

    QByteArray m_lines;
    int m_last = 1'000'000;
};

} // namespace

Q_DECLARE_METATYPE(Assembly)

/// What a Step file consists of, before any shape is made.
class tst_StepStructure : public QObject {
    Q_OBJECT

private slots:
    void counts_data()
    {
        QTest::addColumn<Assembly>("assembly");
        QTest::addColumn<quint64>("count");
        QTest::newRow("no product") << Assembly(0) << quint64(0);
        QTest::newRow("three parts") << Assembly(3) << quint64(3);
        QTest::newRow("shared below two")
            << Assembly(4).add(0, 1).add(0, 2).add(1, 3).add(2, 3) << quint64(5);
        QTest::newRow("part without product")
            << Assembly(2).add(0, 1).add(0, 7).add(7, 1) << quint64(2);
        QTest::newRow("131,071 in twos") << Assembly::nested(17, 2) << quint64(131'071);
        QTest::newRow("400 levels") << Assembly::nested(400, 1) << quint64(400);
        QTest::newRow("no end of it")
            << Assembly::nested(200, 9) << quint64(1'000'000'000'000'000'000);
    }

    void counts()
    {
        QFETCH(const Assembly, assembly);
        tnconvert::prepareKernel();
        STEPControl_Reader reader;
        std::istringstream stream(assembly.file().toStdString());
        QCOMPARE(reader.ReadStream("x.step", stream), IFSelect_RetDone);
        QTEST(quint64(StepStructure(StepEntities(reader.WS())).nodeCount()), "count");
    }

    void refusals_data()
    {
        QTest::addColumn<Assembly>("assembly");
        QTest::addColumn<QString>("message");
        QTest::newRow("too many nodes")
            << Assembly::nested(41, 2)
            << "x.step repeats its parts too often: at least 2199023255551 nodes would arise, and "
               "at most 1000000 can be converted.";
        QTest::newRow("part of itself")
            << Assembly(2).add(0, 1).add(1, 1) << "The product \"P1\" contains itself.";
        QTest::newRow("circle") << Assembly(3).add(0, 1).add(1, 2).add(2, 0)
                                << "The product \"P0\" contains itself.";
        QTest::newRow("401 levels")
            << Assembly::nested(401, 1)
            << "The assembly is nested too deeply, in more than 400 levels.";
    }

    void refusals()
    {
        QFETCH(const Assembly, assembly);
        ConverterFixture fixture;
        const auto outcome = fixture.convert(fixture.write("x.step", assembly.file()));
        QCOMPARE(outcome.state, tnconvert::State::Failure);
        QTEST(QString::fromStdString(outcome.message), "message");
    }
};

QTEST_GUILESS_MAIN(tst_StepStructure)
#include "tst_StepStructure.moc"
