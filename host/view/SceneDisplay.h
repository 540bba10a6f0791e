#pragma once

#include <QtCore/QString>

class QImage;
class QSize;
class QWidget;

namespace tnhost {

class Scene;

/// Where one looks at the scene from.
enum class Direction { Front, Back, Left, Right, Top, Bottom, Isometric };

enum class DrawStyle { Shaded, ShadedWithEdges, Wireframe };

/// A plane across an axis that cuts all that is shown.
struct Section {
    enum class Axis { None, X, Y, Z };

    Axis axis = Axis::None;
    float place = 0.5F; ///< from 0 to 1, between the least and the largest coordinate of all
    bool isFlipped = false; ///< whether the larger coordinates, rather than the smaller ones, stay
};

/// A view of a scene, as the window knows it. Comes out of a module of its own, so that only who
/// looks at a scene loads what draws it. GUI thread only.
class SceneDisplay {
public:
    SceneDisplay() = default;
    SceneDisplay(const SceneDisplay &) = delete;
    SceneDisplay &operator=(const SceneDisplay &) = delete;
    virtual ~SceneDisplay() = default;

    /// The widget to show. It belongs to whoever takes it as a child, and the display to the
    /// widget: both go together.
    virtual QWidget *widget() = 0;

    /// Brings all that is shown, or what is selected, into the view. Nothing to see changes
    /// nothing.
    virtual void fitAll() = 0;
    virtual void fitSelection() = 0;
    /// The first import is over: what arrives from now on leaves the camera alone, until the scene
    /// has been empty. Before, all that arrives is brought into view, unless the user has turned to
    /// something.
    virtual void keepCamera() = 0;

    /// Turns about what is looked at.
    virtual void look(Direction direction) = 0;
    virtual void setOrthographic(bool isOrthographic) = 0;
    virtual void setDrawStyle(DrawStyle style) = 0;
    virtual void setSection(const Section &section) = 0;
    /// While measuring, clicks pick the two points of a distance rather than select.
    virtual void setMeasuring(bool isMeasuring) = 0;

    /// What is seen, in the size of the widget in pixels. Null with a sentence for the user.
    virtual QImage picture(QString *error) = 0;
};

/// What the module exports by the names below. The view is null, with a sentence for the user,
/// where no OpenGL can be had. The scene must outlive the display.
using ViewFactory = SceneDisplay *(*)(Scene &scene, QString *error);
constexpr const char *viewFactoryName = "tnCreateView";

/// A picture of all that the scene shows, with no need of a display. Null with a sentence for the
/// user.
using PictureFunction = void (*)(const Scene &scene, const QSize &size, QImage &image,
                                 QString *error);
constexpr const char *pictureFunctionName = "tnRenderPicture";

} // namespace tnhost
