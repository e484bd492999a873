#include "gl/GLFunctionTable.h"

#include <initializer_list>
#include <string_view>

// The out-of-line members, each an argument shuffle and one tail jump, and the trap hooks. With
// ORLOGL_TRAP_HOOKS every GL member reads the error state before and after its call.

GLenum GLFunctionTable::TrapBefore() {
    return fglGetError();
}

GLenum GLFunctionTable::TrapAfter() {
    return fglGetError();
}

GLenum GLFunctionTable::TrapBefore_PossiblyBeginEnd() {
    return fInBeginEnd ? GL_NO_ERROR : TrapBefore();
}

GLenum GLFunctionTable::TrapAfter_PossiblyBeginEnd() {
    return fInBeginEnd ? GL_NO_ERROR : TrapAfter();
}

void GLFunctionTable::TrapAfterLoadProgramNV() {
    if (fglGetError() != GL_INVALID_OPERATION)
        return;
    GLint position = -2;
    fglGetIntegerv(GL_PROGRAM_ERROR_POSITION_NV, &position);
}

#ifdef ORLOGL_TRAP_HOOKS

namespace {

enum class TrapKind { Plain, PossiblyBeginEnd, LoadProgram };

/// Per-vertex calls are the ones that may stand between glBegin and glEnd.
consteval TrapKind trapKindOf(std::string_view name) {
    if (name == "glLoadProgramNV")
        return TrapKind::LoadProgram;
    if (name.find("Pointer") != name.npos)
        return TrapKind::Plain;
    for (std::string_view perVertex : {"glMultiTexCoord", "glVertexAttrib", "glSecondaryColor", "glFogCoord",
                                       "glVertexWeight", "glVariant", "glPrimitiveRestartNV"}) {
        if (name.starts_with(perVertex))
            return TrapKind::PossiblyBeginEnd;
    }
    return TrapKind::Plain;
}

template <TrapKind kKind>
class Trap {
public:
    explicit Trap(GLFunctionTable& table) : fTable(table) {
        if constexpr (kKind == TrapKind::PossiblyBeginEnd)
            fTable.TrapBefore_PossiblyBeginEnd();
        else
            fTable.TrapBefore();
    }

    ~Trap() {
        if constexpr (kKind == TrapKind::PossiblyBeginEnd)
            fTable.TrapAfter_PossiblyBeginEnd();
        else if constexpr (kKind == TrapKind::LoadProgram)
            fTable.TrapAfterLoadProgramNV();
        else
            fTable.TrapAfter();
    }

    Trap(const Trap&) = delete;
    Trap& operator=(const Trap&) = delete;

private:
    GLFunctionTable& fTable;
};

} // namespace

#define ORLO_TRAP(name) const Trap<trapKindOf(#name)> trap(*this);
#else
#define ORLO_TRAP(name)
#endif

#define ENTRY_AS(ret, member, name, ...)                                                                     \
    ret GLFunctionTable::member(ORLO_PARAMETERS(__VA_ARGS__)) {                                              \
        ORLO_TRAP(member)                                                                                    \
        return f##name(ORLO_ARGUMENTS(__VA_ARGS__));                                                         \
    }
#define ENTRY_GLX(when, ret, name, ...)                                                                      \
    OrloHost<ret> GLFunctionTable::name(ORLO_HOST_PARAMETERS(__VA_ARGS__)) const {                           \
        return (OrloHost<ret>)f##name(ORLO_HOST_ARGUMENTS(__VA_ARGS__));                                     \
    }
#include "gl/GLEntryPoints.inc"
