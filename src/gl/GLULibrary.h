#pragma once

#include "gl/EntryMacros.h"

/// The GL utility library, opened on first need: "libGLU.so.1", then "libGLU.so".
class GLULibrary {
public:
    /// No GLU error code is negative.
    static constexpr GLint kNoLibrary = -1;

    /// gluBuild2DMipmaps of that library: 0 on success, a GLU error code otherwise, and -1 when there is no
    /// GLU. GLU scales the image to powers of two, builds all levels and loads them into the bound texture;
    /// it calls GL itself, not through the table.
    static GLint build2DMipmaps(GLenum target, GLint internalFormat, GLsizei width, GLsizei height,
                                GLenum format, GLenum type, const void* pixels);
};
