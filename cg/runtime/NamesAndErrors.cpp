#include "objects/Handles.h"
#include "objects/Names.h"

#include <map>
#include <string>
#include <utility>

using namespace orlocg;

namespace {

/// Keeps the name of each value that was asked for, for C; null where there is none.
template <typename Value>
const char* kept(Value value) {
    return guarded<const char*>(nullptr, [&]() -> const char* {
        static std::map<Value, std::string> names;
        std::string name = nameOf(value);
        return name.empty() ? nullptr : names.emplace(value, std::move(name)).first->second.c_str();
    });
}

} // namespace

const char* cgGetTypeString(CGtype type) {
    return kept(type);
}

CGtype cgGetType(const char* name) {
    return name ? typeNamed(name) : CG_UNKNOWN_TYPE;
}

CGtype cgGetTypeBase(CGtype type) {
    const TypeShape shape = shapeOf(type);
    return shape.scalarName ? shape.scalar : type;
}

CGparameterclass cgGetTypeClass(CGtype type) {
    return classOf(type);
}

CGbool cgGetTypeSizes(CGtype type, int* rows, int* columns) {
    const TypeShape shape = shapeOf(type);
    if (rows)
        *rows = shape.scalarName ? std::max(shape.rows, 1) : 0;
    if (columns)
        *columns = shape.scalarName ? std::max(shape.columns, 1) : 0;
    return shape.rows > 0;
}

const char* cgGetResourceString(CGresource resource) {
    return kept(resource);
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

CGdomain cgGetProfileDomain(CGprofile profile) {
    return domainOf(profile);
}

CGbool cgGetProfileProperty(CGprofile profile, CGenum query) {
    if (query >= CG_IS_OPENGL_PROFILE && query <= CG_IS_GLSL_PROFILE)
        return hasProperty(profile, query);
    raise(CG_INVALID_ENUMERANT_ERROR);
    return CG_FALSE;
}

int cgGetNumSupportedProfiles(void) {
    int count = 0;
    while (compiledProfile(count) != CG_PROFILE_UNKNOWN)
        ++count;
    return count;
}

CGprofile cgGetSupportedProfile(int index) {
    const CGprofile profile = index < 0 ? CG_PROFILE_UNKNOWN : compiledProfile(index);
    if (profile == CG_PROFILE_UNKNOWN)
        raise(CG_INVALID_ENUMERANT_ERROR);
    return profile;
}

CGbool cgIsProfileSupported(CGprofile profile) {
    return isCompiledFor(profile);
}

const char* cgGetParameterClassString(CGparameterclass parameterClass) {
    return nameOf(parameterClass);
}

CGparameterclass cgGetParameterClassEnum(const char* name) {
    return name ? classNamed(name) : CG_PARAMETERCLASS_UNKNOWN;
}

const char* cgGetDomainString(CGdomain domain) {
    return nameOf(domain);
}

CGdomain cgGetDomain(const char* name) {
    return name ? domainNamed(name) : CG_UNKNOWN_DOMAIN;
}

const char* cgGetEnumString(CGenum value) {
    return nameOf(value);
}

CGenum cgGetEnum(const char* name) {
    return name ? enumNamed(name) : CG_UNKNOWN;
}

const char* cgGetString(CGenum name) {
    if (name == CG_VERSION)
        return "3.1.0000 OrloGL";
    raise(CG_INVALID_ENUMERANT_ERROR);
    return nullptr;
}

CGerror cgGetError(void) {
    return std::exchange(global().error, CG_NO_ERROR);
}

CGerror cgGetFirstError(void) {
    return cgGetError();
}

const char* cgGetErrorString(CGerror error) {
    return textOf(error);
}

const char* cgGetLastErrorString(CGerror* error) {
    const CGerror last = cgGetError();
    if (error)
        *error = last;
    return last == CG_NO_ERROR ? nullptr : textOf(last);
}

void cgSetErrorCallback(CGerrorCallbackFunc callback) {
    global().callback = callback;
}

CGerrorCallbackFunc cgGetErrorCallback(void) {
    return global().callback;
}

void cgSetErrorHandler(CGerrorHandlerFunc handler, void* data) {
    global().handler = handler;
    global().handlerData = data;
}

CGerrorHandlerFunc cgGetErrorHandler(void** data) {
    if (data)
        *data = global().handlerData;
    return global().handler;
}
