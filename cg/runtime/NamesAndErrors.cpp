#include "objects/Handles.h"
#include "objects/Names.h"

#include <string>
#include <utility>

using namespace orlocg;

namespace {

/// Keeps a name for C, until the next; null where it is empty.
const char* kept(std::string name) {
    static std::string theName;
    theName = std::move(name);
    return theName.empty() ? nullptr : theName.c_str();
}

} // namespace

const char* cgGetTypeString(CGtype type) {
    return kept(nameOf(type));
}

CGtype cgGetType(const char* name) {
    return name ? typeNamed(name) : CG_UNKNOWN_TYPE;
}

const char* cgGetResourceString(CGresource resource) {
    return kept(nameOf(resource));
}

CGresource cgGetResource(const char* name) {
    return name ? resourceNamed(name) : CG_UNDEFINED;
}

const char* cgGetProfileString(CGprofile profile) {
    return nameOf(profile);
}

CGprofile cgGetProfile(const char* name) {
    return name ? profileNamed(name) : CG_PROFILE_UNKNOWN;
}

CGerror cgGetError(void) {
    return std::exchange(global().error, CG_NO_ERROR);
}

const char* cgGetErrorString(CGerror error) {
    return textOf(error);
}

void cgSetErrorCallback(CGerrorCallbackFunc callback) {
    global().callback = callback;
}

CGerrorCallbackFunc cgGetErrorCallback(void) {
    return global().callback;
}
