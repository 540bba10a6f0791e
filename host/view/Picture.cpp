#include "host/view/Picture.h"

#include "host/view/OffscreenContext.h"
#include "host/view/Renderer.h"
#include "host/view/SceneGraph.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>

namespace tnhost {

namespace {

/// Up to this size in pixels, a picture is drawn twice as large in both directions and scaled down.
constexpr int mostSmoothed = 4096;

/// A framebuffer with a depth buffer, bound for as long as it lives.
class Target {
public:
    explicit Target(const QSize &size)
    {
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &m_before);
        glGenRenderbuffers(2, m_buffers);
        glGenFramebuffers(1, &m_framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        attach(m_buffers[0], GL_RGBA8, GL_COLOR_ATTACHMENT0, size);
        attach(m_buffers[1], GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL_ATTACHMENT, size);
    }
    ~Target()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(m_before));
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteRenderbuffers(2, m_buffers);
    }
    Q_DISABLE_COPY_MOVE(Target)

    static bool isComplete()
    {
        return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    }

private:
    static void attach(GLuint buffer, GLenum format, GLenum place, const QSize &size)
    {
        glBindRenderbuffer(GL_RENDERBUFFER, buffer);
        glRenderbufferStorage(GL_RENDERBUFFER, format, size.width(), size.height());
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, place, GL_RENDERBUFFER, buffer);
    }

    GLint m_before = 0;
    GLuint m_framebuffer = 0;
    GLuint m_buffers[2] = {0, 0};
};

} // namespace

QImage Picture::render(Renderer &renderer, const Camera &camera, const QSize &size,
                       const QColor &background, QString *error)
{
    const bool isSmoothed = std::max(size.width(), size.height()) <= mostSmoothed;
    const QSize drawn = isSmoothed ? 2 * size : size;
    GLint largest = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
    QImage image(drawn, QImage::Format_RGB32);
    const Target target(drawn.boundedTo({largest, largest}));
    if (std::max(drawn.width(), drawn.height()) > largest || !Target::isComplete()
        || image.isNull()) {
        *error = QStringLiteral("There is not the memory for a picture of %1 by %2 pixels.")
                     .arg(size.width())
                     .arg(size.height());
        return {};
    }
    renderer.render(camera, drawn, background);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, drawn.width(), drawn.height(), GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV,
                 image.bits());
    image = image.mirrored(); // OpenGL begins below
    return isSmoothed ? image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation) : image;
}

QImage Picture::render(const Scene &scene, const QSize &size, QString *error)
{
    const BoundingBox shown = scene.shownBox();
    if (shown.isEmpty()) {
        *error = QStringLiteral("There is nothing in the scene that a picture could show.");
        return {};
    }
    OffscreenContext context;
    if (!context.isValid()) {
        *error = QStringLiteral("This machine offers no OpenGL without a display.");
        return {};
    }
    Renderer::init();
    SceneGraph graph(scene);
    Renderer renderer(graph.root());
    graph.showEdges(true);
    graph.finish();
    Camera camera;
    camera.fit(shown, size);
    return render(renderer, camera, size, Renderer::background(false), error);
}

} // namespace tnhost
