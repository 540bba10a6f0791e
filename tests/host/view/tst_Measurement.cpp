#include "BoxScene.h"
#include "host/view/Measurement.h"
#include "host/view/Overlay.h"
#include "host/view/Renderer.h"

#include <QtTest/QtTest>

using namespace tnhost;

class tst_Measurement : public QObject {
    Q_OBJECT

private slots:
    void tellsTheDistanceOfTwoPoints()
    {
        Measurement measurement;
        measurement.add({1, 2, 3});
        QVERIFY(measurement.text().isEmpty());
        measurement.add({4, -2, 3});
        QCOMPARE(measurement.text(), QString("5 mm   (x 3, y 4, z 0)"));
        measurement.add({}); // begins anew
        QVERIFY(measurement.text().isEmpty());
        QCOMPARE(measurement.points().size(), std::size_t(1));
    }

    void snapsToCorners()
    {
        Scene scene;
        const tndNode file = scene.addFragment(cubes({{100, 0, 0}}), {}, "/cad/a.step", {});
        const unsigned int cube = scene.find(file)->children()[0]->children()[0]->id();
        QCOMPARE(Measurement::snap(scene, {cube, {109.5F, 0.3F, 10}}, 1), QVector3D(110, 0, 10));
        QCOMPARE(Measurement::snap(scene, {cube, {108, 2, 10}}, 1), QVector3D(108, 2, 10));
        QCOMPARE(Measurement::snap(scene, {999, {1, 2, 3}}, 1), QVector3D(1, 2, 3));
    }

    void writesLengthsThatSaySomething_data()
    {
        QTest::addColumn<float>("length");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0.0F << "0";
        QTest::newRow("small") << 0.0126F << "0.013";
        QTest::newRow("usual") << 12.3456F << "12.346";
        QTest::newRow("whole") << 250.0F << "250";
        QTest::newRow("rounded") << 479.98F << "479.98";
        QTest::newRow("large") << 123456.7F << "123,457";
    }
    void writesLengthsThatSaySomething()
    {
        QFETCH(float, length);
        QFETCH(QString, text);
        QLocale::setDefault(QLocale::English);
        QCOMPARE(Overlay::length(length), text);
    }

    void tellsTheSizeOfWhatIsShown()
    {
        BoundingBox box;
        QVERIFY(Overlay::sizeText(box).isEmpty());
        box.add({-1, 2, 3});
        box.add({9, 4.5F, 3});
        QCOMPARE(Overlay::sizeText(box), QString::fromUtf8("10 × 2.5 × 0 mm"));
    }
};

QTEST_APPLESS_MAIN(tst_Measurement)
#include "tst_Measurement.moc"
