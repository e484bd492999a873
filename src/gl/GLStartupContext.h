#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"
#include "orlohost/WindowWrapper.h"
#include "orlohost/koSharedObject.h"

#include <cstdint>
#include <utility>

/// A GL context that a host made by other means than GLX, and the two functions that do for it what GLX
/// would: by EGL, say, on a machine without an X server (docs/embedding.md has a host of a page). Display and
/// drawable mean nothing to them.
struct GLHostContext {
    /// Anything but null; it comes back to the functions as it is.
    GLXContext context = nullptr;
    /// Makes the context current, or with a null context none. False when it can't.
    Bool (*makeCurrent)(Display*, GLXDrawable, GLXContext) = nullptr;
    /// Ends it. It is not current then.
    void (*destroyContext)(Display*, GLXContext) = nullptr;
};

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
/// Frame buffers take references on the stored one, and give them back to the very one that they took them
/// on. On the heap only; it goes with its last reference, or with the texture manager. One that a frame
/// buffer had to make goes with the last buffer that holds it: a host that goes on without buffers takes a
/// reference of its own.
class ORLOGL_API GLStartupContext : public koSharedObject::SharedObject {
public:
    /// An empty one: makes nothing, never valid, not counted. The argument is ignored.
    explicit GLStartupContext(GLXContext ignored);

    /// Makes window and context on the host's display (sharing with `share` unless null), makes the global
    /// table if there is none yet, populates it, and puts back the context and drawable that were current.
    /// Where none was, its own stay current. On any failure `valid` stays false; without a display, a GL
    /// library or one of its first five entry points nothing is called at all.
    GLStartupContext(const WindowWrapper& host, GLXContext share);

    /// Takes a context of the host's for the hidden window's: makes it current, which it stays, makes the
    /// global table if there is none yet, populates it, and puts the host's functions in the slots of
    /// glXMakeCurrent and glXDestroyContext. All other slots of GLX become null and its capabilities
    /// unsupported: framebuffer objects are what can be drawn into. Until a start-up context on a display
    /// populates the table again; the two kinds don't live side by side.
    ///
    /// `valid` stays false, and the context the host's, when one of the three members is null, when it can't
    /// be made current, and without a GL that answers and has framebuffer objects. Otherwise the destructor
    /// ends it.
    explicit GLStartupContext(const GLHostContext& host);

    /// Destroys context and window when valid, leaving no context current, and clears the global pointer even
    /// where the host stored another one there.
    ~GLStartupContext() override;

    /// False when not valid, otherwise what glXMakeCurrent answers.
    bool makeCurrent();

    /// Tells it from every other of the process, also from a later one at the same address. Never 0.
    uint64_t serial() const { return fSerial; }

    /// The one of this serial; null once it is gone. For who holds a reference on one that its host may
    /// delete.
    static GLStartupContext* living(uint64_t serial);

    /// The one that frame buffers take references on; stored by the host.
    static GLStartupContext* fpGlobalGLStartupContext;

    /// How many there are that aren't empty, for leak hunts.
    static int32_t fsNumInstances_GLStartupContext;

    Window window = 0;            ///< the hidden one, 0 for a host's context
    Display* display = nullptr;   ///< the host's
    WindowWrapper wrapper;        ///< what it was made for
    GLXContext context = nullptr; ///< of the hidden window, or the host's
    bool valid = false;           ///< whether there is a GL to use

private:
    static uint64_t nextSerial();

    static GLStartupContext* fsNewest;

    const uint64_t fSerial = nextSerial();
    GLStartupContext* fNextOlder = std::exchange(fsNewest, this);
};
