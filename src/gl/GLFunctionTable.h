#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"
#include "gl/GLCapability.h"

#include <cstdint>

/// True when the blank-separated list `extensions` (as glGetString(GL_EXTENSIONS) returns it) holds `name`.
///
/// False for a null list, a null or empty name, and a name with a blank in it. A rejected occurrence moves
/// the start of the search behind itself, and what begins exactly there needs no blank before it: a list that
/// opens with a name written twice in a row, then a blank, counts as holding the name.
ORLOGL_API bool isExtensionSupported(const unsigned char* extensions, const char* name);

/// Makes a pbuffer through the table's SGIX entry point; 0 when that one is missing.
ORLOGL_API GLXPbuffer glXCreateGLXPbuffer(Display* display, void* config, unsigned width, unsigned height,
                                          int* attributes);

/// The process's one table of OpenGL and GLX entry points, found at run time.
///
/// The library links no GL. The first GLStartupContext makes the table and fills it; afterwards every GL call
/// is a member function of the GL function's own name:
///
///     GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
///     gl->glBindTexture(GL_TEXTURE_2D, name);
///     if (gl->usable(kCapFramebufferObject))
///         gl->glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer);
///
/// OpenGL 1.1 is always there. Every later function belongs to a capability: a member calls through its slot
/// without a test, and the slot of an absent capability is null. Some members exist only for completeness
/// (GLEntryPoints.inc, group NeverFilled, and a few of GLX): a host that wants one fills its slot.
///
/// Written by populate on the thread that owns the GL context, read without locks by all that follows.
class ORLOGL_API GLFunctionTable {
public:
    /// Everything as nullify leaves it, limits 0. Resolves nothing.
    GLFunctionTable();

    /// Leaves the GL library open: its entry points may still be in use.
    virtual ~GLFunctionTable();

    GLFunctionTable(const GLFunctionTable&) = delete;
    GLFunctionTable& operator=(const GLFunctionTable&) = delete;

    /// No capability supported, every one allowed, every slot null.
    void nullify();

    /// Opens "libGL.so", or else "libGL.so.1", and fills slots, flags and limits from it. Needs a current GL
    /// context, of GLX or of the host's own making.
    ///
    /// Without either the process's global symbols are searched, so a GL that the host opened globally serves
    /// as well. A second call renews what is there and takes back nothing, except the
    /// framebuffer-object, texture-array and NV fragment-program flags. Reports nothing: ask the flags.
    void populate();

    /// The GLX half of populate, called last by it; judges each GLX capability by its entry point alone.
    void populate_platformExtensions();

    /// Sets every GLX slot to null.
    void nullify_platform();

    /// Sees to it that the multitexture slots hold entry points that work. Needs a current GL context.
    ///
    /// A vendor-neutral GL library answers for any name, also for the EXT set that populate puts over the
    /// core set: then glActiveTexture does nothing. One that knows no EXT set loses its first entry point,
    /// glMultiTexCoord1d, to it. This operation switches the active unit and reads it back; where that fails
    /// or a slot is null, it puts the first of the core and ARB sets in place that is complete and does
    /// switch. A host calls it after each start-up context it makes, as each one populates again. Returns
    /// whether all 34 entry points can be called and the unit can be switched; false without multitexture,
    /// and with only one unit: then the slots are as they were. Leaves the active unit as it was.
    bool ensureLiveMultitexture();

    /// Whether a capability is offered and not vetoed by the host: what a caller asks before an optional
    /// call.
    bool usable(GLCapability capability) const {
        return fExtSupported[capability] && fExtEnabled[capability];
    }

    /// Read one pending GL error and return it; for builds that route wrappers through them (see the build
    /// option ORLOGL_TRAP_HOOKS) and for hosts that hunt an error.
    GLenum TrapBefore();
    GLenum TrapAfter(); ///< the same after the call

    /// The same for calls that are legal between glBegin and glEnd: 0, without a call, while fInBeginEnd is
    /// set.
    GLenum TrapBefore_PossiblyBeginEnd();
    GLenum TrapAfter_PossiblyBeginEnd(); ///< the same after the call

    /// After glLoadProgramNV: on an invalid operation also asks for the position of the error, so that it
    /// shows in a GL trace. The position is not kept.
    void TrapAfterLoadProgramNV();

    /// The process's table; null until the first start-up context.
    static GLFunctionTable* fpGlobalFunctionTable;

    /// How many tables there are, for leak hunts.
    static int32_t fsNumInstances_GLFunctionTable;

    bool fExtSupported[kCapabilityCount]; ///< by GLCapability: what populate found
    bool fExtEnabled[kCapabilityCount];   ///< by GLCapability: the host's veto; all true at first

    int32_t fMaxTextureUnits;       ///< 1 without multitexture
    int32_t fMaxTextureCoords;      ///< sets of coordinates
    int32_t fMaxTextureImageUnits;  ///< that shaders can read
    int32_t fMaxTextureSize;        ///< texels a side
    int32_t fMaxVertexAttribs;      ///< generic ones; 0 without vertex programs
    int32_t fMaxArrayTextureLayers; ///< 0 without texture arrays

    /// Set by a host between glBegin and glEnd, for the trap hooks. Nothing in the library sets it.
    bool fInBeginEnd;

    // The slots.
#define ENTRY_ANY(ret, name, ...) ret (*f##name)(ORLO_PARAMETERS(__VA_ARGS__)) = nullptr;
#include "gl/GLEntryPoints.inc"

    // The members.
#define ENTRY_CORE(ret, name, ...)                                                                           \
    ret name(ORLO_PARAMETERS(__VA_ARGS__)) const {                                                           \
        return f##name(ORLO_ARGUMENTS(__VA_ARGS__));                                                         \
    }
#define ENTRY_AS(ret, member, name, ...) ret member(ORLO_PARAMETERS(__VA_ARGS__));
#define ENTRY_GLX(when, ret, name, ...) OrloHost<ret> name(ORLO_HOST_PARAMETERS(__VA_ARGS__)) const;
#include "gl/GLEntryPoints.inc"
};
