#include "host/view/ViewWidget.h"

#include "host/view/Overlay.h"
#include "host/view/Picture.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <cmath>

namespace tnhost {

namespace {

/// As far from a corner it is the corner that is measured.
constexpr int snapPixels = 8;
constexpr float degreesPerPixel = 0.4F;
/// For one notch of a usual wheel, which has 120 units.
constexpr double zoomPerNotch = 1.2;

/// A plain one: Qt would choose any that the system's default names.
QSurfaceFormat usualFormat()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setDepthBufferSize(24);
    format.setStencilBufferSize(8);
    return format;
}

} // namespace

SceneDisplay *ViewWidget::create(Scene &scene, QString *error)
{
    QOpenGLContext context;
    context.setFormat(usualFormat());
    QOffscreenSurface surface;
    surface.setFormat(usualFormat());
    surface.create();
    if (!context.create() || context.isOpenGLES() || !context.makeCurrent(&surface)) {
        *error = QStringLiteral("This display offers no OpenGL.");
        return nullptr;
    }
    if (context.format().version() < qMakePair(2, 0)) {
        *error = QStringLiteral("OpenGL 2.0 is needed, this display has %1.%2.")
                     .arg(context.format().majorVersion())
                     .arg(context.format().minorVersion());
        return nullptr;
    }
    Renderer::init();
    // Without a graphics card that would cost more than it is worth.
    const QByteArray renderer(
        reinterpret_cast<const char *>(context.functions()->glGetString(GL_RENDERER)));
    const bool isSoftware = renderer.contains("llvmpipe") || renderer.contains("softpipe");
    return new ViewWidget(scene, !isSoftware);
}

ViewWidget::ViewWidget(Scene &scene, bool isSmoothed)
    : m_scene(scene)
    , m_graph(scene)
    , m_renderer(m_graph.root())
{
    QSurfaceFormat format = usualFormat();
    format.setSamples(isSmoothed ? 4 : 0);
    setFormat(format);
    setFocusPolicy(Qt::StrongFocus);
    connect(&m_graph, &SceneGraph::changed, this, &ViewWidget::onArrival);
}

ViewWidget::~ViewWidget() = default;

void ViewWidget::fitAll()
{
    m_camera.fit(shownBox(), size());
    update();
}

void ViewWidget::fitSelection()
{
    BoundingBox all;
    for (const tndNode &node : m_scene.selectedNodes(true))
        all.add(m_scene.boundingBox(node));
    m_fitsArrivals = false;
    m_camera.fit(all, size());
    update();
}

void ViewWidget::keepCamera()
{
    if (m_scene.nodeCount() == 0)
        return;
    if (m_fitsArrivals)
        fitAll();
    m_fitsArrivals = false;
}

void ViewWidget::look(Direction direction)
{
    m_camera.look(direction);
    update();
}

void ViewWidget::setOrthographic(bool isOrthographic)
{
    m_camera.setOrthographic(isOrthographic);
    update();
}

void ViewWidget::setDrawStyle(DrawStyle style)
{
    m_renderer.setWireframe(style == DrawStyle::Wireframe);
    m_graph.showEdges(style == DrawStyle::ShadedWithEdges);
}

void ViewWidget::setSection(const Section &section)
{
    m_section = section;
    m_renderer.setSection(m_section, shownBox());
    update();
}

void ViewWidget::setMeasuring(bool isMeasuring)
{
    m_isMeasuring = isMeasuring;
    m_measurement.clear();
    setCursor(isMeasuring ? Qt::CrossCursor : Qt::ArrowCursor);
    update();
}

void ViewWidget::onArrival()
{
    m_shownBox.reset();
    if (m_scene.nodeCount() == 0)
        m_fitsArrivals = true;
    update();
}

const BoundingBox &ViewWidget::shownBox()
{
    if (!m_shownBox) {
        m_shownBox = m_scene.shownBox();
        m_renderer.setSection(m_section, *m_shownBox);
    }
    return *m_shownBox;
}

void ViewWidget::paintGL()
{
    // Not as each file arrives: there may be many before the next picture.
    const BoundingBox &shown = shownBox();
    if (m_fitsArrivals)
        m_camera.fit(shown, size());
    m_renderer.render(m_camera, size() * devicePixelRatioF(), background());
    paintOverlay(*this);
}

QImage ViewWidget::picture(QString *error)
{
    makeCurrent();
    QImage image =
        Picture::render(m_renderer, m_camera, size() * devicePixelRatioF(), background(), error);
    doneCurrent();
    if (image.isNull())
        return image;
    image.setDevicePixelRatio(devicePixelRatioF());
    paintOverlay(image);
    return image;
}

QColor ViewWidget::background() const
{
    return Renderer::background(palette().window().color().lightness() < 128);
}

void ViewWidget::paintOverlay(QPaintDevice &device)
{
    QPainter painter(&device);
    Overlay::paint(painter, size(), m_camera, shownBox(), palette().color(QPalette::WindowText));
    m_measurement.paint(painter, size(), m_camera);
}

void ViewWidget::mousePressEvent(QMouseEvent *event)
{
    m_pressed = m_last = event->pos();
    m_isDragging = false;
}

void ViewWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() == Qt::NoButton)
        return;
    if (!m_isDragging) {
        if ((event->pos() - m_pressed).manhattanLength() < QApplication::startDragDistance())
            return;
        m_isDragging = true;
        m_held = pointAt(m_pressed);
    }
    const QPoint moved = event->pos() - m_last;
    if (event->buttons() & Qt::LeftButton && !(event->modifiers() & Qt::ShiftModifier))
        m_camera.orbit(degreesPerPixel * static_cast<float>(moved.x()),
                       degreesPerPixel * static_cast<float>(moved.y()), m_held);
    else
        m_camera.pan(m_last, event->pos(), size(), m_held);
    m_last = event->pos();
    m_fitsArrivals = false;
    update();
}

void ViewWidget::mouseReleaseEvent(QMouseEvent *event)
{
    const bool isClick = !m_isDragging && event->button() == Qt::LeftButton;
    if (isClick && m_isMeasuring)
        measure(event->localPos());
    else if (isClick)
        select(event->localPos(), event->modifiers() & Qt::ControlModifier);
    m_isDragging = false;
}

void ViewWidget::measure(const QPointF &place)
{
    const auto hit = pick(place);
    if (!hit)
        return;
    const QVector3D beside = m_camera.unproject(place + QPointF(snapPixels, 0), size(), hit->point);
    m_measurement.add(Measurement::snap(m_scene, *hit, (beside - hit->point).length()));
    update();
}

void ViewWidget::select(const QPointF &place, bool isAdding)
{
    const auto hit = pick(place);
    std::vector<tndNode> nodes;
    if (isAdding)
        nodes = m_scene.selectedNodes(false);
    if (hit) {
        const auto selected = std::find(nodes.begin(), nodes.end(), tndNode(hit->node));
        if (selected == nodes.end())
            nodes.emplace_back(hit->node);
        else
            nodes.erase(selected);
    }
    m_scene.setSelection(nodes);
}

void ViewWidget::wheelEvent(QWheelEvent *event)
{
    const QVector3D fixed = pointAt(event->position());
    m_camera.setFocusDepth(fixed);
    const double factor = std::pow(zoomPerNotch, event->angleDelta().y() / 120.0);
    m_camera.zoom(static_cast<float>(factor), fixed);
    m_fitsArrivals = false;
    update();
    event->accept();
}

std::optional<Hit> ViewWidget::pick(const QPointF &place)
{
    return m_renderer.pick(m_camera, place, size());
}

QVector3D ViewWidget::pointAt(const QPointF &place)
{
    const auto hit = pick(place);
    return hit ? hit->point : m_camera.unproject(place, size(), m_camera.focus());
}

} // namespace tnhost
