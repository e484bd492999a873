#include "gl/GLDebugOutput.h"

#include "gl/GLCallLog.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLLibrary.h"

#include <cstdio>
#include <cstring>
#include <iterator>
#include <set>
#include <type_traits>
#include <utility>

namespace {

/// The entry points of KHR_debug, all or none.
struct DebugFunctions {
    PFNGLOBJECTLABELPROC label = nullptr;
    PFNGLPUSHDEBUGGROUPPROC push = nullptr;
    PFNGLPOPDEBUGGROUPPROC pop = nullptr;
    PFNGLDEBUGMESSAGECALLBACKPROC callback = nullptr;
    GLint longestLabel = 0;
    GLint longestMessage = 0;
};

DebugFunctions debugFunctions;
bool isLabelling = false;
GLDebugOutput::Listener messageListener = nullptr;
void* listenerContext = nullptr;

/// Names that have been made and not been bound: there is nothing yet that could bear a label.
std::set<std::pair<GLenum, GLuint>> unbornObjects;

bool findDebugFunctions(const GLFunctionTable& table) {
    if (!hasVersionOrExtension(table, 43, "GL_KHR_debug"))
        return false;
    const auto find = [](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(findEntryPoint(name));
        return function != nullptr;
    };
    DebugFunctions found;
    if (!find(found.label, "glObjectLabel") || !find(found.push, "glPushDebugGroup") ||
        !find(found.pop, "glPopDebugGroup") || !find(found.callback, "glDebugMessageCallback"))
        return false;
    table.glGetIntegerv(GL_MAX_LABEL_LENGTH, &found.longestLabel);
    table.glGetIntegerv(GL_MAX_DEBUG_MESSAGE_LENGTH, &found.longestMessage);
    debugFunctions = found;
    return true;
}

void APIENTRY passMessage(GLenum source, GLenum type, GLuint, GLenum severity, GLsizei, const GLchar* message,
                          const void*) {
    const bool isOurs = source == GL_DEBUG_SOURCE_APPLICATION; // the groups, which come back as messages
    if (messageListener && !isOurs)
        messageListener(listenerContext, source, type, severity, message);
}

void made(GLenum kind, GLsizei count, const GLuint* names) noexcept try {
    for (GLsizei i = 0; i < count; ++i)
        unbornObjects.emplace(kind, names[i]);
} catch (...) { // without memory they go without a label
}

void bound(GLenum kind, GLuint name, const char* what, const char* target) {
    if (unbornObjects.erase({kind, name}) == 0)
        return;
    char text[64];
    std::snprintf(text, sizeof text, "%s %u%s", what, name, target);
    GLDebugOutput::label(kind, name, text);
}

const char* textureTarget(GLenum target) {
    switch (target) {
    case GL_TEXTURE_1D:
        return ", GL_TEXTURE_1D";
    case GL_TEXTURE_2D:
        return ", GL_TEXTURE_2D";
    case GL_TEXTURE_3D:
        return ", GL_TEXTURE_3D";
    case GL_TEXTURE_CUBE_MAP:
        return ", GL_TEXTURE_CUBE_MAP";
    case GL_TEXTURE_RECTANGLE_ARB:
        return ", GL_TEXTURE_RECTANGLE";
    default:
        return "";
    }
}

// What is done about a call once it is made.
void afterGenTextures(GLsizei count, const GLuint* names) {
    made(GL_TEXTURE, count, names);
}
void afterBindTexture(GLenum target, GLuint name) {
    bound(GL_TEXTURE, name, "texture", textureTarget(target));
}
void afterGenBuffers(GLsizei count, const GLuint* names) {
    made(GL_BUFFER, count, names);
}
void afterBindBuffer(GLenum target, GLuint name) {
    const bool isIndex = target == GL_ELEMENT_ARRAY_BUFFER;
    bound(GL_BUFFER, name, "buffer", isIndex ? ", GL_ELEMENT_ARRAY_BUFFER" : ", GL_ARRAY_BUFFER");
}
void afterGenFramebuffers(GLsizei count, const GLuint* names) {
    made(GL_FRAMEBUFFER, count, names);
}
void afterBindFramebuffer(GLenum, GLuint name) {
    bound(GL_FRAMEBUFFER, name, "framebuffer", "");
}
void afterGenRenderbuffers(GLsizei count, const GLuint* names) {
    made(GL_RENDERBUFFER, count, names);
}
void afterBindRenderbuffer(GLenum, GLuint name) {
    bound(GL_RENDERBUFFER, name, "renderbuffer", "");
}

/// Puts `own` into a slot in front of what it holds, or takes it out.
template <typename Function>
void exchangeSlot(Function*& slot, Function* own, Function*& next, bool install) {
    if (install && slot && slot != own)
        next = std::exchange(slot, own);
    else if (!install && slot == own)
        slot = next;
}

/// Stands in the slot kSlot: makes the call, then kAfter of the same arguments.
template <auto kSlot, auto kAfter>
struct Labelled;

template <typename... Arguments, void (*GLFunctionTable::*kSlot)(Arguments...), auto kAfter>
struct Labelled<kSlot, kAfter> {
    static inline void (*fsNext)(Arguments...) = nullptr;

    static void exchange(GLFunctionTable& table, bool install) {
        exchangeSlot(table.*kSlot, call, fsNext, install);
    }

    static void call(Arguments... arguments) {
        fsNext(arguments...);
        if (isLabelling)
            kAfter(arguments...);
    }
};

/// Programs and shaders are there as soon as they have a name.
template <auto kSlot>
struct LabelledAtOnce;

template <typename... Arguments, GLhandleARB (*GLFunctionTable::*kSlot)(Arguments...)>
struct LabelledAtOnce<kSlot> {
    static inline GLhandleARB (*fsNext)(Arguments...) = nullptr;

    static void exchange(GLFunctionTable& table, bool install) {
        exchangeSlot(table.*kSlot, call, fsNext, install);
    }

    static GLhandleARB call(Arguments... arguments) {
        const GLhandleARB name = fsNext(arguments...);
        constexpr bool kIsProgram = sizeof...(Arguments) == 0;
        made(kIsProgram ? GL_PROGRAM : GL_SHADER, isLabelling ? 1 : 0, &name);
        bound(kIsProgram ? GL_PROGRAM : GL_SHADER, name, kIsProgram ? "program" : "shader", "");
        return name;
    }
};

void exchangeSlots(GLFunctionTable& table, bool install) {
    Labelled<&GLFunctionTable::fglGenTextures, afterGenTextures>::exchange(table, install);
    Labelled<&GLFunctionTable::fglBindTexture, afterBindTexture>::exchange(table, install);
    Labelled<&GLFunctionTable::fglGenBuffersARB, afterGenBuffers>::exchange(table, install);
    Labelled<&GLFunctionTable::fglBindBufferARB, afterBindBuffer>::exchange(table, install);
    Labelled<&GLFunctionTable::fglGenFramebuffersEXT, afterGenFramebuffers>::exchange(table, install);
    Labelled<&GLFunctionTable::fglBindFramebufferEXT, afterBindFramebuffer>::exchange(table, install);
    Labelled<&GLFunctionTable::fglGenRenderbuffersEXT, afterGenRenderbuffers>::exchange(table, install);
    Labelled<&GLFunctionTable::fglBindRenderbufferEXT, afterBindRenderbuffer>::exchange(table, install);
    LabelledAtOnce<&GLFunctionTable::fglCreateProgramObjectARB>::exchange(table, install);
    LabelledAtOnce<&GLFunctionTable::fglCreateShaderObjectARB>::exchange(table, install);
}

/// As much of a text as the driver takes; its limit counts the end too.
GLsizei lengthWithin(const char* text, GLint limit) {
    return static_cast<GLsizei>(strnlen(text, limit > 1 ? static_cast<size_t>(limit - 1) : 0));
}

} // namespace

bool GLDebugOutput::begin(Listener listener, void* context) {
    GLFunctionTable* const table = GLFunctionTable::fpGlobalFunctionTable;
    if (!table || !findDebugFunctions(*table))
        return false;
    messageListener = listener;
    listenerContext = context;
    isLabelling = true;
    exchangeSlots(*table, true);
    if (listener) {
        debugFunctions.callback(passMessage, nullptr);
        table->glEnable(GL_DEBUG_OUTPUT);
        table->glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
    }
    return true;
}

bool GLDebugOutput::isOn() {
    return isLabelling;
}

void GLDebugOutput::label(GLenum kind, GLuint name, const char* text) {
    if (isLabelling && text)
        debugFunctions.label(kind, name, lengthWithin(text, debugFunctions.longestLabel), text);
}

void GLDebugOutput::pushGroup(const char* text) {
    if (!text)
        return;
    GLCallLog::note(text);
    if (isLabelling)
        debugFunctions.push(GL_DEBUG_SOURCE_APPLICATION, 0, lengthWithin(text, debugFunctions.longestMessage),
                            text);
}

void GLDebugOutput::popGroup() {
    GLCallLog::note("");
    if (isLabelling)
        debugFunctions.pop();
}

void GLDebugOutput::end() {
    GLFunctionTable* const table = GLFunctionTable::fpGlobalFunctionTable;
    if (!isLabelling || !table)
        return;
    exchangeSlots(*table, false);
    isLabelling = false;
    if (std::exchange(messageListener, nullptr)) {
        table->glDisable(GL_DEBUG_OUTPUT);
        debugFunctions.callback(nullptr, nullptr);
    }
    unbornObjects.clear();
}
