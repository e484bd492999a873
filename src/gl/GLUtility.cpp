#include "gl/GLUtility.h"

#include "gl/GLFunctionTable.h"

#include <iostream>

const char* const glErrorStrings[6] = {
    "invalid enumerant", "invalid value",   "invalid operation",
    "stack overflow",    "stack underflow", "out of memory",
};

GLenum GLUtility::fsLastGLError = 0;

const char* GLUtility::gluErrorString(GLenum code) {
    if (code == GL_NO_ERROR)
        return "no error";
    if (code < GL_INVALID_ENUM || code > GL_OUT_OF_MEMORY)
        return nullptr;
    return glErrorStrings[code - GL_INVALID_ENUM];
}

bool GLUtility::error() {
    fsLastGLError = GLFunctionTable::fpGlobalFunctionTable->glGetError();
    return fsLastGLError != GL_NO_ERROR;
}

const char* GLUtility::errorString() {
    return fsLastGLError == GL_NO_ERROR ? nullptr : gluErrorString(fsLastGLError);
}

void GLUtility::assertNoError() {}

GLenum GLUtility::printErrors(const char* label) {
    GLenum code = GL_NO_ERROR;
    while ((code = GLFunctionTable::fpGlobalFunctionTable->glGetError()) != GL_NO_ERROR) {
        if (label)
            std::cerr << label << ":";
        std::cerr << code << " is " << gluErrorString(code) << "\n";
    }
    return code;
}
