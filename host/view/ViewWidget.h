#pragma once

#include "host/view/Camera.h"
#include "host/view/Measurement.h"
#include "host/view/Renderer.h"
#include "host/view/SceneDisplay.h"
#include "host/view/SceneGraph.h"

#include <QtWidgets/QOpenGLWidget>

#include <optional>

namespace tnhost {

/// The view of the window. The left button turns, about the place that was taken hold of; the
/// middle or the right one, or the left one with Shift, moves; the wheel zooms to the pointer. A
/// click selects, with Ctrl in addition to what is selected.
class ViewWidget : public QOpenGLWidget, public SceneDisplay {
    Q_OBJECT

public:
    /// See viewFactoryName.
    static SceneDisplay *create(Scene &scene, QString *error);

    /// The scene must outlive the widget, and OpenGL must be there.
    explicit ViewWidget(Scene &scene, bool isSmoothed = false);
    ~ViewWidget() override;

    QWidget *widget() override { return this; }
    void fitAll() override;
    void fitSelection() override;
    void keepCamera() override;
    void look(Direction direction) override;
    void setOrthographic(bool isOrthographic) override;
    void setDrawStyle(DrawStyle style) override;
    void setSection(const Section &section) override;
    void setMeasuring(bool isMeasuring) override;
    QImage picture(QString *error) override;

    const Camera &camera() const { return m_camera; }

protected:
    void paintGL() override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void fit(const BoundingBox &box);
    void onArrival();
    /// Of what is shown. At most O(vertices) after a change.
    const BoundingBox &shownBox();
    QColor background() const;
    void paintOverlay(QPaintDevice &device);
    void measure(const QPointF &place);
    /// Selects what is seen there; adding turns what it was.
    void select(const QPointF &place, bool isAdding);
    std::optional<Hit> pick(const QPointF &place);
    /// The point below the pointer; where there is none, one as deep as what is looked at.
    QVector3D pointAt(const QPointF &place);

    Scene &m_scene;
    SceneGraph m_graph;
    Renderer m_renderer;
    Camera m_camera;
    bool m_fitsArrivals = true;
    std::optional<BoundingBox> m_shownBox; ///< nothing when it must be measured anew
    Section m_section;
    bool m_isMeasuring = false;
    Measurement m_measurement;
    QPoint m_pressed;
    QPoint m_last;
    bool m_isDragging = false;
    QVector3D m_held; ///< what the drag has taken hold of
};

} // namespace tnhost
