#pragma once

// The inside of the double: what the bodies of its functions call.

#include "RecordingGL.h"

#include <map>
#include <string_view>

/// What the script says about one call.
class Outcome {
public:
    explicit Outcome(bool failed, std::optional<uint64_t> answer = {}) : fFailed(failed), fAnswer(answer) {}

    /// The scripted answer, 0 for a failed call, otherwise the usual one.
    template <typename T>
    T otherwise(T usual) const {
        return fFailed ? T{} : fAnswer ? (T)*fAnswer : usual;
    }

    /// Whether the usual behaviour, with its change of state, takes place.
    explicit operator bool() const { return !fFailed && !fAnswer; }

private:
    bool fFailed;
    std::optional<uint64_t> fAnswer;
};

/// Writes a call down and asks the script about it.
Outcome record(const char* name, const std::vector<Argument>& arguments);

/// Every function that GL's headers declare.
extern const std::map<std::string_view, void (*)()> kDeclaredFunctions;

/// Notes a look-up of glXGetProcAddressARB.
void recordLookup(const char* name);

/// Makes a new name, or takes one back.
uint64_t makeName(NameKind kind);
void deleteName(NameKind kind, uint64_t name);

/// What the functions of Behaviour.cpp keep from call to call.
struct State {
    GLenum activeTexture = GL_TEXTURE0;
    GLint viewport[4] = {};
    std::set<GLenum> enabled;
    std::map<GLenum, GLuint> boundBuffers;
    std::map<GLuint, std::vector<unsigned char>> buffers;
    GLXDrawable draw = 0;
    GLXContext context = nullptr;
};
State& state();
