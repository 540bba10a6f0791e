#pragma once

namespace tnhost {

/// An OpenGL context without any display or window, current for as long as it lives. One at a time.
class OffscreenContext {
public:
    OffscreenContext();
    ~OffscreenContext();
    OffscreenContext(const OffscreenContext &) = delete;
    OffscreenContext &operator=(const OffscreenContext &) = delete;

    /// False where there is no such thing.
    bool isValid() const { return m_context != nullptr; }

private:
    bool open(void *display);

    // EGL's types, whose header brings those of X along.
    void *m_display = nullptr;
    void *m_context = nullptr;
};

} // namespace tnhost
