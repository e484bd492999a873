#pragma once

/// Marks what liborlogl.so exports; everything else in the library is hidden.
#define ORLOGL_API __attribute__((visibility("default")))
