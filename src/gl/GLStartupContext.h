#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"
#include "orlohost/WindowWrapper.h"
#include "orlohost/koSharedObject.h"

#include <cstdint>

/// A hidden window of 10 x 10 pixels with a GL context: what fills the entry-point table, what the contexts
/// of all frame buffers share objects with, and where framebuffer objects live.
///
/// A host makes one before anything else and stores it:
///
///     auto* startup = new GLStartupContext(WindowWrapper(widget, window, display), nullptr);
///     startup->ref();
///     GLStartupContext::fpGlobalGLStartupContext = startup;
///     if (!startup->valid) ...   // no GL on this display
///
/// Frame buffers take references on the stored one. On the heap only; it goes with its last reference, or
/// with the texture manager.
class ORLOGL_API GLStartupContext : public koSharedObject::SharedObject {
public:
    /// An empty one: makes nothing, never valid, not counted. The argument is ignored.
    explicit GLStartupContext(GLXContext ignored);

    /// Makes window and context on the host's display (sharing with `share` unless null), makes the global
    /// table if there is none yet, populates it, and puts back the context and drawable that were current.
    /// Where none was, its own stay current. On any failure `valid` stays false; without a display, a GL
    /// library or one of its first five entry points nothing is called at all.
    GLStartupContext(const WindowWrapper& host, GLXContext share);

    /// False when not valid, otherwise what glXMakeCurrent answers.
    bool makeCurrent();

    /// Destroys context and window when valid, leaving no context current, and clears the global pointer even
    /// where the host stored another one there.
    ~GLStartupContext() override;

    static GLStartupContext* fpGlobalGLStartupContext;
    static int32_t fsNumInstances_GLStartupContext;

    Window window = 0;
    Display* display = nullptr;
    WindowWrapper wrapper;
    GLXContext context = nullptr;
    bool valid = false;
};
