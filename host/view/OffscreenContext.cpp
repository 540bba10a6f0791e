#include "host/view/OffscreenContext.h"

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

namespace tnhost {

OffscreenContext::OffscreenContext()
{
    const auto platformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    // Other drivers than Mesa's know no such platform, but the default one may do.
    if (!platformDisplay
        || !open(platformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr)))
        open(eglGetDisplay(EGL_DEFAULT_DISPLAY));
}

OffscreenContext::~OffscreenContext()
{
    if (!m_context)
        return;
    eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    // The display stays: it is the same one each time, and to load its driver anew takes long.
    eglDestroyContext(m_display, m_context);
}

bool OffscreenContext::open(void *display)
{
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr))
        return false;
    const EGLint wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint found = 0;
    EGLContext context = EGL_NO_CONTEXT;
    if (eglBindAPI(EGL_OPENGL_API) && eglChooseConfig(display, wanted, &config, 1, &found)
        && found > 0)
        context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
    if (context == EGL_NO_CONTEXT) {
        eglTerminate(display);
        return false;
    }
    if (!eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) {
        eglDestroyContext(display, context);
        eglTerminate(display);
        return false;
    }
    m_display = display;
    m_context = context;
    return true;
}

} // namespace tnhost
