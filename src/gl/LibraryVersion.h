#pragma once

#include "gl/Export.h"

#include <cstdint>

/// The version of these headers; the build reads it here. Before 1.0 a minor version may break what the one
/// before it offered, and the libraries' file names say so (liborlogl.so.0.1).
#define ORLOGL_VERSION_MAJOR 0
#define ORLOGL_VERSION_MINOR 1
#define ORLOGL_VERSION_PATCH 0

/// A version as one number that grows with it: 1.2.3 is 10203.
#define ORLOGL_VERSION_NUMBER(major, minor, patch) ((major)*10000 + (minor)*100 + (patch))

/// The version of these headers as that number, for `#if ORLOGL_VERSION >= ORLOGL_VERSION_NUMBER(0, 2, 0)`.
#define ORLOGL_VERSION ORLOGL_VERSION_NUMBER(ORLOGL_VERSION_MAJOR, ORLOGL_VERSION_MINOR, ORLOGL_VERSION_PATCH)

/// The version of the library that runs, as the same number: not less than the ORLOGL_VERSION that a program
/// was compiled with, unless its library was taken back to an older patch.
ORLOGL_API int32_t orloglVersion();
