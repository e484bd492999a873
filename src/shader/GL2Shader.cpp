#include "shader/GL2Shader.h"

#include "shader/ShaderObjects.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// The length of a file in bytes; negative where it can't be opened.
off_t fileSize(const char* path) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return -1;
    const off_t size = lseek(file, 0, SEEK_END);
    close(file);
    return size;
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

} // namespace

void GL2Shader::initialize() {
    deleteProgramObject();
    deleteSource();
}

void GL2Shader::deleteSource() {
    if (fSource)
        std::fill_n(fSource.get(), fSourceLength, '\0');
    fSource.reset();
    fSourceLength = 0;
}

void GL2Shader::deleteProgramObject() {
    if (GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable)
        gl->glFinish();
    GLFunctionTable* gl = shaderObjectTable();
    if (gl && fShaderObject) {
        gl->glUseProgramObjectARB(0);
        gl->glDeleteObjectARB(fShaderObject);
    }
    fShaderObject = 0;
}

bool GL2Shader::allocateSource(int32_t length) {
    fSource.reset(new (std::nothrow) char[static_cast<size_t>(length) + 1]());
    fSourceLength = fSource ? length : 0;
    return fSource != nullptr;
}

int GL2Shader::readShaderSource(char* path) {
    if (!path)
        return 0;
    initialize();
    const off_t size = fileSize(path);
    if (size <= 0 || size > INT_MAX - 1 || !allocateSource(static_cast<int32_t>(size))) {
        std::printf("Cannot determine size of the GL2 shader %s\n", path);
        return 0;
    }
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "r"));
    if (!file) // it went, or its rights, since it was measured: a source of zeros, which compiles to nothing
        return fSourceLength;
    const size_t read = std::fread(fSource.get(), 1, static_cast<size_t>(size), file.get());
    fSource[read] = '\0';
    if (read == 0 || std::ferror(file.get())) {
        std::printf("Cannot read the file %s\n", path);
        deleteSource();
        return 0;
    }
    return fSourceLength; // as measured, even where the file has become shorter since
}

bool GL2Shader::setShaderSource(unsigned char* text, int length) {
    if (text && length != 0)
        initialize(); // and with that goes the only buffer that the text could be copied to
    return false;
}

bool GL2Shader::assignShaderSource(std::string_view text) {
    initialize();
    if (text.empty() || text.size() > INT_MAX - 1 || !allocateSource(static_cast<int32_t>(text.size())))
        return false;
    std::copy(text.begin(), text.end(), fSource.get());
    return true;
}

bool GL2Shader::compileShaderSource(bool skipSource) {
    if (!fSource)
        return false;
    deleteProgramObject();
    GLFunctionTable* gl = shaderObjectTable();
    if (!gl)
        return false;
    fShaderObject = gl->glCreateShaderObjectARB(fType);
    if (!skipSource) {
        const GLcharARB* source = fSource.get();
        const auto length = static_cast<GLint>(std::strlen(source));
        gl->glShaderSourceARB(fShaderObject, 1, &source, &length);
    }
    gl->glCompileShaderARB(fShaderObject);
    return objectHas(*gl, fShaderObject, GL_OBJECT_COMPILE_STATUS_ARB);
}
