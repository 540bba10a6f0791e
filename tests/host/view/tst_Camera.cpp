#include "host/view/Camera.h"

#include <QtTest/QtTest>

using namespace tnhost;

Q_DECLARE_METATYPE(tnhost::Direction)

namespace {

const QSizeF size(800, 500);
const QVector3D point(30, -20, 45);

bool near(const QPointF &a, const QPointF &b)
{
    return QLineF(a, b).length() < 0.05;
}

BoundingBox box(const QVector3D &min, const QVector3D &max)
{
    BoundingBox result;
    result.add(min);
    result.add(max);
    return result;
}

} // namespace

class tst_Camera : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_camera = Camera();
        m_camera.fit(box({-50, -50, -50}, {50, 50, 50}), size);
    }

    void handsMoveWhatTheyHold_data()
    {
        QTest::addColumn<bool>("isOrthographic");
        QTest::newRow("perspective") << false;
        QTest::newRow("orthographic") << true;
    }
    void handsMoveWhatTheyHold()
    {
        QFETCH(bool, isOrthographic);
        const QPointF middle = m_camera.project(m_camera.focus() + QVector3D(0, 0, 1), size);
        m_camera.setOrthographic(isOrthographic);
        // What is looked at keeps its size.
        QVERIFY(
            QLineF(m_camera.project(m_camera.focus() + QVector3D(0, 0, 1), size), middle).length()
            < 0.2);
        const QPointF before = m_camera.project(point, size);
        m_camera.orbit(33, 20, point);
        QVERIFY(near(m_camera.project(point, size), before));
        const QVector3D other(0, 0, 0);
        QVERIFY(!near(m_camera.project(other, size), size.width() / 2 * QPointF(1, 0)));

        const float depth = m_camera.depthOf(point);
        m_camera.zoom(2, point);
        QVERIFY(near(m_camera.project(point, size), before));
        if (!isOrthographic)
            QVERIFY(qAbs(m_camera.depthOf(point) - depth / 2) < 0.01F);

        const QPointF to = before + QPointF(70, -40);
        m_camera.pan(before, to, size, point);
        QVERIFY(near(m_camera.project(point, size), to));
    }

    void looks_data()
    {
        QTest::addColumn<Direction>("direction");
        QTest::addColumn<QVector3D>("forward");
        QTest::addColumn<QVector3D>("toTheRight");
        QTest::newRow("front") << Direction::Front << QVector3D(0, 1, 0) << QVector3D(1, 0, 0);
        QTest::newRow("back") << Direction::Back << QVector3D(0, -1, 0) << QVector3D(-1, 0, 0);
        QTest::newRow("left") << Direction::Left << QVector3D(1, 0, 0) << QVector3D(0, -1, 0);
        QTest::newRow("right") << Direction::Right << QVector3D(-1, 0, 0) << QVector3D(0, 1, 0);
        QTest::newRow("top") << Direction::Top << QVector3D(0, 0, -1) << QVector3D(1, 0, 0);
        QTest::newRow("bottom") << Direction::Bottom << QVector3D(0, 0, 1) << QVector3D(1, 0, 0);
        QTest::newRow("isometric") << Direction::Isometric << QVector3D(-1, 1, -1).normalized()
                                   << QVector3D(1, 1, 0).normalized();
    }
    void looks()
    {
        QFETCH(Direction, direction);
        QFETCH(QVector3D, forward);
        QFETCH(QVector3D, toTheRight);
        m_camera.look(direction);
        QVERIFY((m_camera.forward() - forward).length() < 0.001F);
        const QPointF middle(size.width() / 2, size.height() / 2);
        QVERIFY(near(m_camera.project(m_camera.focus(), size), middle));
        const QPointF seen = m_camera.project(m_camera.focus() + toTheRight, size);
        QVERIFY(seen.x() > middle.x() + 1 && qAbs(seen.y() - middle.y()) < 0.05);
    }

    void findsPlacesBack()
    {
        const QVector3D found = m_camera.unproject(m_camera.project(point, size), size, point);
        QVERIFY((found - point).length() < 0.01F);
        const QPointF before = m_camera.project(point, size);
        m_camera.setFocusDepth({0, 90, 0});
        QVERIFY(near(m_camera.project(point, size), before));
    }

    void endsUprightAndInReach()
    {
        m_camera.orbit(0, 1000, {});
        QVERIFY((m_camera.forward() - QVector3D(0, 0, -1)).length() < 0.001F);
        for (const float factor : {1e-30F, 1e30F}) {
            m_camera.zoom(factor, {});
            QVERIFY(std::isfinite(m_camera.position().length()) && m_camera.distance() > 0);
        }
    }

    void fits_data()
    {
        QTest::addColumn<QVector3D>("max");
        QTest::addColumn<QSizeF>("size");
        QTest::newRow("cube") << QVector3D(10, 10, 10) << size;
        QTest::newRow("flat") << QVector3D(1000, 1000, 0) << size;
        QTest::newRow("long") << QVector3D(2, 5000, 3) << size;
        QTest::newRow("upright picture") << QVector3D(10, 20, 30) << QSizeF(200, 900);
    }
    void fits()
    {
        QFETCH(QVector3D, max);
        QFETCH(QSizeF, size);
        m_camera.fit(box({}, max), size);
        double widest = 0;
        for (int corner = 0; corner < 8; ++corner) {
            const QPointF seen = m_camera.project(
                {corner & 1 ? max.x() : 0, corner & 2 ? max.y() : 0, corner & 4 ? max.z() : 0},
                size);
            widest = qMax(
                widest,
                qMax(qAbs(seen.x() / size.width() - 0.5), qAbs(seen.y() / size.height() - 0.5)));
        }
        QVERIFY2(widest < 0.5 && widest > 0.4, qPrintable(QString::number(widest)));
    }

    void fitsNothingToAnEmptyBox()
    {
        const QVector3D before = m_camera.position();
        m_camera.fit({}, size);
        QCOMPARE(m_camera.position(), before);
    }

private:
    Camera m_camera;
};

QTEST_APPLESS_MAIN(tst_Camera)
#include "tst_Camera.moc"
