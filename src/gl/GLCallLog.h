#pragma once

#include "gl/Export.h"

/// Tells of each OpenGL and GLX call that goes through the table, the library's and the host's:
///
///     glBindTexture(GL_TEXTURE_2D, 3)  0.4 us
///     glGenBuffersARB(1, {5})  1.1 us
///     glEnable(GL_POINT_SPRITE)  0.2 us  GL_INVALID_ENUM
///
/// It stands in the slots of the table, between begin and end. Before and after, the slots hold the driver's
/// own functions, and nothing is left to pay for.
///
/// After each call it asks GL for the error and keeps it until the host asks for one, so that the host sees
/// the first error as it does without. It doesn't ask after GLX calls, nor between glBegin and glEnd. Calls
/// that don't go through the table aren't seen: those of GLU, of the Cg runtime, and of a host to its own GL.
///
/// One log a process, for the thread that draws.
class ORLOGL_API GLCallLog {
public:
    /// Takes a line of the log, without its end. Must not throw, and its own GL calls aren't told of.
    using Writer = void (*)(void* context, const char* line);

    GLCallLog() = delete;

    /// From now on calls are told to `writer`, which gets `context` too. False without a table or a writer.
    ///
    /// A start-up context fills the slots anew and ends the telling without a word: call it again then. What
    /// was counted stays; the writer is the last one given.
    static bool begin(Writer writer, void* context);

    /// Puts a line of the host's between the calls, such as the name of a pass: "-- shadow map". Nothing
    /// while there is no log.
    static void note(const char* text);

    /// Puts the driver's functions back and tells how often each was called, how long it took and how many
    /// errors it raised, the longest first. Where another has put itself in front of the log meanwhile, the
    /// slot stays and hands the calls on. An error that is kept is lost.
    static void end();
};
