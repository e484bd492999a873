#pragma once

// A libGL.so that draws nothing: it records every call and answers as it is told. A test program links it, so
// the library's dlopen("libGL.so") finds it already loaded.
//
//     script().version = "1.5";
//     script().missing = {"glGenQueriesARB"};
//     ... code under test ...
//     EXPECT_EQ(recorded(), (Calls{call("glEnable", GL_LIGHT0), call("glLightf", GL_LIGHT0, GL_SPOT_EXPONENT,
//     2)}));
//
// How an argument reads: integers and enums in decimal, whatever their type; floats as %g; pointers in hex or
// as null; strings in quotes. Pointers to what GL reads at once (glVertex3fv, glLoadMatrixd, glLightfv,
// glDeleteTextures, GLX attribute lists ...: see ArgumentRules.cpp) read as their elements, {1, 2, 3}.
// Pointers that glGet... and glGen... write to read as out. Lists of strings that Cg takes read up to their
// null. call() follows the same rules.

#include "Argument.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

/// A transcript. A failed EXPECT_EQ of two of them prints a line-by-line difference.
struct Calls : std::vector<std::string> {
    using std::vector<std::string>::vector;
};
void PrintTo(const Calls& calls, std::ostream* out);
Calls operator+(Calls a, const Calls& b);

/// The calls since the last reset or clearRecorded, oldest first.
const Calls& recorded();
/// The names asked of glXGetProcAddressARB since then, whether found or not.
const Calls& lookups();
/// Forgets the recorded calls and look-ups; script, state and ledgers stay.
void clearRecorded();
/// Everything as at program start.
void resetRecording();

std::string formatCall(const char* name, const std::vector<Argument>& arguments);

template <typename... Arguments>
std::string call(const char* name, const Arguments&... arguments) {
    return formatCall(name, std::vector<Argument>{Argument(arguments)...});
}

/// What a call answers instead of the usual, given its arguments; also the place to write through them.
using Answer = std::function<uint64_t(const std::vector<Argument>&)>;

/// How the double behaves. Set the differences from this default.
struct Script {
    /// What glGetString answers; nullopt for null.
    std::optional<std::string> version = "2.1 recording";
    std::optional<std::string> extensions = "";

    /// What glGetIntegerv and its kin answer by name; they win over the tracked state. A name that is neither
    /// here nor tracked leaves the caller's variable alone, as a failed query does.
    std::map<GLenum, std::vector<double>> values = {
        {GL_MAX_TEXTURE_UNITS, {8}},
        {GL_MAX_TEXTURE_COORDS_ARB, {8}},
        {GL_MAX_TEXTURE_IMAGE_UNITS_ARB, {16}},
        {GL_MAX_TEXTURE_SIZE, {4096}},
        {GL_MAX_VERTEX_ATTRIBS_ARB, {16}},
        {GL_MAX_ARRAY_TEXTURE_LAYERS_EXT, {64}},
        {GL_MAX_LIGHTS, {8}},
        {GL_MAX_3D_TEXTURE_SIZE, {256}},
        {GL_MAX_CUBE_MAP_TEXTURE_SIZE, {2048}},
        {GL_MAX_COLOR_ATTACHMENTS_EXT, {8}},
    };

    /// glXGetProcAddressARB answers null for these. (dlsym is another matter: see FakeLoader.h.)
    std::set<std::string> missing;
    /// glXGetProcAddressARB answers for these, and also for undeclared ones, with a function that does
    /// nothing.
    std::set<std::string> inert;
    /// {"glMapBufferARB", 2}: the second call since the last reset fails. It answers 0, null or false, makes
    /// no name and changes no state.
    std::map<std::string, int> failing;
    /// What a function answers, by its name; wins over its usual behaviour.
    std::map<std::string, Answer> answers;

    /// What glGetError hands out, first to last, then 0.
    std::deque<GLenum> errors;
    GLenum framebufferStatus = GL_FRAMEBUFFER_COMPLETE_EXT;

    /// How many configurations glXChooseFBConfig and its kin find, 3 at most, and what they say of one, by
    /// attribute.
    int configCount = 1;
    std::map<int, int> configAttributes;
    int visualDepth = 24;

    /// Print every pointer in hex, whatever the rules say.
    bool rawPointers = false;
    /// Put the look-ups among the recorded calls as well.
    bool traceLookups = false;
};
Script& script();
/// Makes the n-th call from now on fail.
void failNext(const char* name, int n = 1);

/// The kinds of names that the double gives out and takes back. Each kind counts from its own first value, so
/// that a texture's name in a buffer's place shows.
enum class NameKind {
    Texture = 1,
    Buffer = 101,
    Framebuffer = 201,
    Renderbuffer = 301,
    Query = 401,
    ShaderObject = 601,
    Context = 0xC001,
    Pbuffer = 0xB001,
    GlxWindow = 0xD001,
    XWindow = 0xE001,
};

struct Ledger {
    std::set<uint64_t> live;
    int made = 0;
    /// Deletions of names that weren't live; 0 as a name is none.
    int strayDeletions = 0;
};
const Ledger& ledger(NameKind kind);

/// The n-th name of a kind since the last reset, counted from 0.
constexpr uint64_t nthName(NameKind kind, int n = 0) {
    return static_cast<uint64_t>(kind) + n;
}
GLXContext nthContext(int n = 0);
GLXFBConfig nthConfig(int n = 0);
/// The one visual that the double offers.
XVisualInfo* onlyVisual();

/// What was uploaded into a buffer object; empty for an unknown name.
std::vector<unsigned char> bufferContents(GLuint buffer);
