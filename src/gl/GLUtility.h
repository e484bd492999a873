#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"

/// The words of the six GL errors, indexed by code - 0x500.
extern ORLOGL_API const char* const glErrorStrings[6];

/// Reads the GL error state on demand and puts it into words.
///
/// error, and printErrors, need the table filled by a start-up context and a current GL context.
class ORLOGL_API GLUtility {
public:
    /// "no error" for 0, the words of 0x500 to 0x505, null for any other code.
    static const char* gluErrorString(GLenum code);

    /// Takes one pending error into fsLastGLError; true when there was one.
    static bool error();

    /// The words of fsLastGLError. Oddity: null, not "no error", when that is 0, so that a host can print
    /// what it gets.
    static const char* errorString();

    /// A place for a breakpoint: does nothing.
    static void assertNoError();

    /// Prints every pending error to standard error, a line each: `label:code is words`, the label and its
    /// colon left out when null. Returns 0, the value that ended the draining.
    ///
    /// An unknown code has no words; writing the null text puts std::cerr into its failed state, and what
    /// follows on it is lost until somebody clears it.
    static GLenum printErrors(const char* label);

    /// What error read last; 0 at start.
    static GLenum fsLastGLError;
};
