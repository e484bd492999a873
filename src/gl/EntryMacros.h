#pragma once

// The GL and X types of the entry points, and the two macros that turn the "type, name, type, name" lists of
// GLEntryPoints.inc into a parameter list and an argument list.

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>

#include <type_traits>

/// Rescans its arguments 21 times: enough for the 13 parameters of glColorFragmentOp3ATI.
#define ORLO_EXPAND(...) ORLO_EXPAND_4(ORLO_EXPAND_4(ORLO_EXPAND_4(ORLO_EXPAND_4(__VA_ARGS__))))
#define ORLO_EXPAND_4(...) ORLO_EXPAND_1(ORLO_EXPAND_1(ORLO_EXPAND_1(ORLO_EXPAND_1(__VA_ARGS__))))
#define ORLO_EXPAND_1(...) __VA_ARGS__
#define ORLO_DEFERRED ()

/// (GLenum, cap, GLint, n) becomes: GLenum cap, GLint n
#define ORLO_PARAMETERS(...) __VA_OPT__(ORLO_EXPAND(ORLO_PARAMETER(__VA_ARGS__)))
#define ORLO_PARAMETER(type, name, ...)                                                                      \
    type name __VA_OPT__(, ORLO_PARAMETER_AGAIN ORLO_DEFERRED(__VA_ARGS__))
#define ORLO_PARAMETER_AGAIN() ORLO_PARAMETER

/// (GLenum, cap, GLint, n) becomes: cap, n
#define ORLO_ARGUMENTS(...) __VA_OPT__(ORLO_EXPAND(ORLO_ARGUMENT(__VA_ARGS__)))
#define ORLO_ARGUMENT(type, name, ...) name __VA_OPT__(, ORLO_ARGUMENT_AGAIN ORLO_DEFERRED(__VA_ARGS__))
#define ORLO_ARGUMENT_AGAIN() ORLO_ARGUMENT

// The GLX members take a framebuffer configuration as void*, so that a host can hold one without the GLX
// headers; the slots keep GLX's own type.

/// The type that a member of the table takes for a type of GLX: the same but for configurations.
template <typename T>
struct OrloHostType {
    /// The same.
    using Type = T;
};

/// A framebuffer configuration, opaque.
template <>
struct OrloHostType<GLXFBConfig> {
    /// Opaque.
    using Type = void*;
};

/// A list of them.
template <>
struct OrloHostType<GLXFBConfig*> {
    /// Opaque.
    using Type = void**;
};
template <typename T>
using OrloHost = typename OrloHostType<T>::Type;

/// (GLXFBConfig, config, int, n) becomes: void* config, int n
#define ORLO_HOST_PARAMETERS(...) __VA_OPT__(ORLO_EXPAND(ORLO_HOST_PARAMETER(__VA_ARGS__)))
#define ORLO_HOST_PARAMETER(type, name, ...)                                                                 \
    OrloHost<type> name __VA_OPT__(, ORLO_HOST_PARAMETER_AGAIN ORLO_DEFERRED(__VA_ARGS__))
#define ORLO_HOST_PARAMETER_AGAIN() ORLO_HOST_PARAMETER

/// (GLXFBConfig, config, int, n) becomes: (GLXFBConfig)config, (int)n
#define ORLO_HOST_ARGUMENTS(...) __VA_OPT__(ORLO_EXPAND(ORLO_HOST_ARGUMENT(__VA_ARGS__)))
#define ORLO_HOST_ARGUMENT(type, name, ...)                                                                  \
    (std::remove_const_t<type>)name __VA_OPT__(, ORLO_HOST_ARGUMENT_AGAIN ORLO_DEFERRED(__VA_ARGS__))
#define ORLO_HOST_ARGUMENT_AGAIN() ORLO_HOST_ARGUMENT
