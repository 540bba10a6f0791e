#include "BoxScene.h"
#include "host/view/ViewWidget.h"

#include <QtTest/QtTest>

using namespace tnhost;

/// What the hands do; nothing of it is drawn, so that no OpenGL is needed.
class tst_ViewWidget : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        Renderer::init();
        m_scene = std::make_unique<Scene>();
        m_view = std::make_unique<ViewWidget>(*m_scene);
        m_view->resize(400, 300);
        m_file = m_scene->addFragment(cubes({{0, 0, 0}, {30, 0, 0}}), {}, "/cad/a.step", {});
        QTest::qWait(20);
        m_view->keepCamera();
    }

    void fitsTheFirstImportAlone()
    {
        const QPoint corner = at({40, 0, 0});
        QVERIFY(m_view->rect().contains(corner));
        m_scene->addFragment(cubes({{500, 0, 0}}), {}, "/cad/b.step", {});
        QTest::qWait(20);
        m_view->keepCamera();
        QCOMPARE(at({40, 0, 0}), corner);
        m_view->fitAll();
        QVERIFY(m_view->rect().contains(at({510, 10, 10})));
        m_scene->setSelection({m_file});
        m_view->fitSelection();
        QCOMPARE(at({40, 0, 0}), corner);
    }

    void selectsByClicks()
    {
        click({5, 5, 10});
        QCOMPARE(m_scene->selectedNodes(false), std::vector<tndNode>{cube(0)});
        click({35, 5, 10}, Qt::ControlModifier);
        QCOMPARE(m_scene->selectedNodes(false), (std::vector<tndNode>{cube(0), cube(1)}));
        click({5, 5, 10}, Qt::ControlModifier);
        QCOMPARE(m_scene->selectedNodes(false), std::vector<tndNode>{cube(1)});
        drag({35, 5, 10}, {60, 0}); // is no click
        QCOMPARE(m_scene->selectedNodes(false), std::vector<tndNode>{cube(1)});
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, {2, 2});
        QVERIFY(m_scene->selectedNodes(false).empty());
        m_view->setMeasuring(true);
        click({5, 5, 10});
        QVERIFY(m_scene->selectedNodes(false).empty());
    }

    void turnsAndMovesWhatItHolds()
    {
        const QVector3D held(5, 5, 10);
        const QPoint before = at(held);
        const QVector3D forward = m_view->camera().forward();
        drag(held, {80, 20});
        QVERIFY((at(held) - before).manhattanLength() <= 2);
        QVERIFY((m_view->camera().forward() - forward).length() > 0.1F);
        // Who pulls to the right sees more of the left side, who pulls down more of the top.
        QVERIFY(m_view->camera().forward().z() < forward.z());

        const QPoint turned = at(held);
        drag(held, {40, -30}, Qt::MiddleButton);
        QVERIFY((at(held) - turned - QPoint(40, -30)).manhattanLength() <= 2);
    }

    void zoomsToThePointer()
    {
        const QVector3D held(35, 5, 10);
        const QPoint before = at(held);
        const int apart = at({30, 0, 10}).x() - at({40, 10, 10}).x();
        QWheelEvent wheel(before, m_view->mapToGlobal(before), {}, {0, 240}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_view.get(), &wheel);
        QVERIFY((at(held) - before).manhattanLength() <= 2);
        QVERIFY(qAbs(at({30, 0, 10}).x() - at({40, 10, 10}).x()) > qAbs(apart));
    }

private:
    tndNode cube(std::size_t index) const
    {
        return tndNode(m_scene->find(m_file)->children()[0]->children()[index]->id());
    }
    QPoint at(const QVector3D &point) const
    {
        return m_view->camera().project(point, m_view->size()).toPoint();
    }
    void click(const QVector3D &point, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(m_view.get(), Qt::LeftButton, modifiers, at(point));
    }
    void drag(const QVector3D &from, const QPoint &way, Qt::MouseButton button = Qt::LeftButton)
    {
        const QPoint start = at(from);
        const auto send = [&](QEvent::Type type, const QPoint &place, Qt::MouseButtons buttons) {
            QMouseEvent event(type, place, m_view->mapToGlobal(place),
                              type == QEvent::MouseMove ? Qt::NoButton : button, buttons, {});
            QApplication::sendEvent(m_view.get(), &event);
        };
        send(QEvent::MouseButtonPress, start, button);
        for (const int part : {2, 1})
            send(QEvent::MouseMove, start + way / part, button);
        send(QEvent::MouseButtonRelease, start + way, Qt::NoButton);
    }

    std::unique_ptr<Scene> m_scene;
    std::unique_ptr<ViewWidget> m_view;
    tndNode m_file;
};

QTEST_MAIN(tst_ViewWidget)
#include "tst_ViewWidget.moc"
