#pragma once

#include "gl/Export.h"

#include <GL/gl.h>

/// What KHR_debug (in OpenGL from 4.3 on) offers to who looks into a frame: names of objects and of the parts
/// of a frame, which the debuggers of frames show, and what the driver has to say.
///
///     GLDebugOutput::begin(tell, nullptr);
///     GLDebugOutput::label(GL_TEXTURE, texture->textureName(), "bark, base color");
///     GLDebugOutput::pushGroup("shadow map");
///     ...
///     GLDebugOutput::popGroup();
///
/// Between begin and end it stands in those slots of the table that make and bind objects, and gives each
/// texture, buffer, framebuffer, shader and program that comes into being through the table, the library's
/// own too, a first label: "texture 3, GL_TEXTURE_2D". Otherwise the slots are untouched, and the other
/// operations do nothing.
///
/// One a process, for the thread that draws.
class ORLOGL_API GLDebugOutput {
public:
    /// Takes a message of the driver: what it is of (GL_DEBUG_SOURCE_API ...), its kind (GL_DEBUG_TYPE_ERROR
    /// ...), its weight (GL_DEBUG_SEVERITY_HIGH ...), and the text. Must not throw nor call GL. The call
    /// that the message is about makes it.
    using Listener = void (*)(void* context, GLenum source, GLenum type, GLenum severity,
                              const char* message);

    GLDebugOutput() = delete;

    /// Needs the table and a current context; `listener` may be null. False where KHR_debug is missing: then
    /// nothing is changed. What the driver says, it says of this context alone: call it again for another,
    /// and after each start-up context, which fills the slots anew. The host's contexts needn't be debug
    /// contexts, but drivers say more in those.
    static bool begin(Listener listener, void* context);

    /// Whether labels and groups reach the driver.
    static bool isOn();

    /// Names an object that has been bound: GL_TEXTURE, GL_BUFFER, GL_FRAMEBUFFER, GL_PROGRAM, GL_SHADER or
    /// GL_RENDERBUFFER, and its name. In the place of an earlier label. What is longer than the driver takes
    /// is cut.
    static void label(GLenum kind, GLuint name, const char* text);

    /// Begins and ends a part of a frame, which may hold others. A GLCallLog tells of it too, by itself or
    /// not.
    static void pushGroup(const char* text);

    /// Ends the part begun last.
    static void popGroup();

    /// Puts the slots back. Needs the context of begin current, to stop the messages.
    static void end();
};
