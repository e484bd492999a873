#pragma once

// The inside of the double: what the bodies of its functions call.

#include "RecordingGL.h"

#include <map>
#include <string_view>

/// Writes a call down. What it answers: what the script says, 0 for a failed call, else what the function
/// does by itself (kBehaviours), 0 for most.
uint64_t record(const char* name, const std::vector<Argument>& arguments);

/// What functions do besides being recorded, by their names.
extern const std::map<std::string_view, Answer> kBehaviours;

/// How many elements to print of the pointer in place `index`; nullopt to print its address.
std::optional<size_t> elementCount(const char* name, const std::vector<Argument>& arguments, size_t index);

/// Whether the call writes its results through the pointer in place `index`.
bool writesThrough(std::string_view name, const Argument& argument, size_t index);

/// Every function that GL's headers declare.
extern const std::map<std::string_view, void (*)()> kDeclaredFunctions;

/// Notes a look-up of glXGetProcAddressARB.
void recordLookup(const char* name);

/// Makes a new name, or takes one back.
uint64_t makeName(NameKind kind);
void deleteName(NameKind kind, uint64_t name);

/// What these keep from call to call.
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
