#include "BoxScene.h"
#include "host/view/OffscreenContext.h"
#include "host/view/Picture.h"
#include "host/view/Renderer.h"
#include "host/view/SceneGraph.h"

#include <QtTest/QtTest>

using namespace tnhost;

namespace {

const QSize size(240, 160);
const QColor background(10, 20, 30);

/// Triangles seen from above: one bright square, with the normals given or none.
std::shared_ptr<SceneFragment> square(const QMatrix4x4 &transform, bool hasNormals,
                                      std::array<float, 4> color)
{
    auto mesh = std::make_shared<SceneMesh>();
    ScenePrimitive primitive;
    primitive.positions = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}};
    primitive.indices = {0, 1, 2, 0, 2, 3};
    if (hasNormals)
        primitive.normals.assign(4, {0, 0, 1});
    primitive.material = 0;
    for (const QVector3D &position : primitive.positions)
        mesh->box.add(position);
    mesh->primitives.push_back(primitive);
    auto fragment = std::make_shared<SceneFragment>();
    fragment->materials = {{"bright", color}};
    fragment->meshes = {mesh};
    fragment->nodes.resize(1);
    fragment->nodes[0].mesh = 0;
    fragment->nodes[0].transform = transform;
    fragment->roots = {0};
    return fragment;
}

} // namespace

/// Draws without a display.
class tst_Picture : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!OffscreenContext().isValid())
            QSKIP("This machine has no OpenGL that works without a display.");
    }
    void init()
    {
        m_scene = std::make_unique<Scene>();
        m_camera = Camera();
        m_image = {};
        m_section = {};
    }

    void showsAllThatIsShown()
    {
        const tndNode file = add(cubes({{0, 0, 0}, {20, 0, 0}}));
        draw();
        QVERIFY(isGreen({5, 5, 10}) && isGreen({25, 5, 10}));
        QVERIFY(isRed({5, 0, 2}));
        QCOMPARE(colorAt({15, 5, 20}), background);
        m_scene->hide({cube(file, 1)});
        m_scene->setSelection({cube(file, 0)});
        draw();
        QCOMPARE(colorAt({25, 5, 10}), background);
        const QColor selected = colorAt({5, 5, 10});
        QVERIFY(selected.red() > 200 && selected.green() < 180 && selected.green() > 90);
    }

    void lightsAllSurfaces_data()
    {
        QTest::addColumn<QMatrix4x4>("transform");
        QTest::addColumn<bool>("hasNormals");
        QMatrix4x4 mirrored;
        mirrored.translate(10, 0, 0);
        mirrored.scale(-1, 1, 1);
        QMatrix4x4 large;
        large.scale(100);
        QTest::newRow("as it is") << QMatrix4x4() << true;
        QTest::newRow("without normals") << QMatrix4x4() << false;
        QTest::newRow("mirrored") << mirrored << true;
        QTest::newRow("scaled") << large << true;
    }
    void lightsAllSurfaces()
    {
        QFETCH(QMatrix4x4, transform);
        QFETCH(bool, hasNormals);
        add(square(transform, hasNormals, {1, 1, 1, 1}));
        draw(DrawStyle::Shaded);
        QVERIFY(colorAt(transform.map(QVector3D(5, 5, 0))).value() > 180);
    }

    void drawsInTheStyle()
    {
        add(square({}, true, {1, 1, 1, 1}));
        draw(DrawStyle::ShadedWithEdges);
        const int edge = colorAt({5, 0, 0}).value();
        QVERIFY2(edge < 130, qPrintable(QString::number(edge)));
        QVERIFY(colorAt({5, 5, 0}).value() > 180); // the diagonal is none
        draw(DrawStyle::Wireframe);
        QCOMPARE(colorAt({5, 2, 0}), background);
        QVERIFY(colorAt({5, 5, 0}).value() > 60);
    }

    void looksThroughGlass()
    {
        QMatrix4x4 above;
        above.translate(0, 0, 1);
        add(square(above, true, {1, 1, 1, 0.5F})); // first of all
        add(square({}, true, {1, 0, 0, 1}));
        draw(DrawStyle::Shaded);
        const QColor seen = colorAt({5, 5, 1});
        QVERIFY(seen.red() > seen.green() + 40 && seen.green() > 60);
    }

    void seesTheSameInParallel()
    {
        add(cubes({{0, 0, 0}, {20, 0, 0}}));
        m_camera.setOrthographic(true);
        draw();
        QVERIFY(isGreen({5, 5, 10}) && isGreen({25, 5, 10}) && isRed({5, 0, 2}));
    }

    void cutsAtTheSection()
    {
        add(cubes({{0, 0, 0}, {20, 0, 0}}));
        m_section = {Section::Axis::X, 0.5F, true};
        draw();
        QVERIFY(isGreen({25, 5, 10}));
        QCOMPARE(colorAt({5, 5, 10}), background);
    }

    void batchesDrawAlone()
    {
        QString error;
        QVERIFY(Picture::render(*m_scene, size, &error).isNull() && !error.isEmpty());
        add(cubes({{0, 0, 0}}));
        const QImage image = Picture::render(*m_scene, size, &error);
        QCOMPARE(image.size(), size);
        QVERIFY(image.pixelColor(120, 50).green() > 120);
        QCOMPARE(image.pixelColor(2, 2), Renderer::background(false));
        QVERIFY(Picture::render(*m_scene, {1 << 20, 10}, &error).isNull());
    }

private:
    tndNode add(const std::shared_ptr<SceneFragment> &fragment)
    {
        return m_scene->addFragment(fragment, {}, "/cad/a.step", {});
    }
    tndNode cube(const tndNode &file, std::size_t index) const
    {
        return tndNode(m_scene->find(file)->children()[0]->children()[index]->id());
    }
    void draw(DrawStyle style = DrawStyle::Shaded)
    {
        const OffscreenContext context;
        Renderer::init();
        SceneGraph graph(*m_scene);
        Renderer renderer(graph.root());
        renderer.setSection(m_section, m_scene->shownBox());
        renderer.setWireframe(style == DrawStyle::Wireframe);
        graph.showEdges(style == DrawStyle::ShadedWithEdges);
        graph.finish();
        if (m_image.isNull())
            m_camera.fit(m_scene->shownBox(), size);
        QString error;
        m_image = Picture::render(renderer, m_camera, size, background, &error);
        QVERIFY2(!m_image.isNull(), qPrintable(error));
    }
    QColor colorAt(const QVector3D &point) const
    {
        return m_image.pixelColor(m_camera.project(point, size).toPoint());
    }
    bool isGreen(const QVector3D &point) const
    {
        const QColor color = colorAt(point);
        return color.green() > 120 && color.red() < 60;
    }
    bool isRed(const QVector3D &point) const
    {
        const QColor color = colorAt(point);
        return color.red() > 90 && color.green() < 60;
    }

    std::unique_ptr<Scene> m_scene;
    Camera m_camera;
    Section m_section;
    QImage m_image;
};

QTEST_GUILESS_MAIN(tst_Picture)
#include "tst_Picture.moc"
