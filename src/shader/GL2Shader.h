#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"

#include <cstdint>
#include <memory>
#include <string_view>

/// One stage of a GLSL program: its source text, from a file or from memory, and its shader object.
///
///     GL2Shader vertex(GL2Shader::kVertexShader);
///     if (vertex.readShaderSource(path) > 0 && vertex.compileShaderSource(false))
///         program.attachVertexShader(&vertex);
///
/// Needs the table and a current context to compile and, once compiled, to end. A GL without shader objects
/// compiles nothing.
class ORLOGL_API GL2Shader {
public:
    /// Which stage it is for.
    enum ShaderType : uint32_t {
        kVertexShader = GL_VERTEX_SHADER_ARB,
        kFragmentShader = GL_FRAGMENT_SHADER_ARB,
    };

    /// How the files of the two stages end, for hosts that build their names from one base name.
    static constexpr const char* vertexShaderExtension = ".vert";

    /// What fragment shaders' files end in.
    static constexpr const char* fragmentShaderExtension = ".frag";

    GL2Shader() = default;

    /// Of that stage. No GL.
    explicit GL2Shader(ShaderType type) : fType(type) {}
    ~GL2Shader() { initialize(); }

    GL2Shader(const GL2Shader&) = delete;
    GL2Shader& operator=(const GL2Shader&) = delete;

    /// Lets go of the shader object, then of the source.
    void initialize();

    /// Overwrites the source with zeros and frees it.
    void deleteSource();

    /// Waits until GL is done, then deletes the shader object if there is one, with no program current
    /// afterwards.
    void deleteProgramObject();

    /// Takes the source from a file, in place of everything there was. The length in bytes; 0, with a line on
    /// standard output, where the file can't be had or is empty. A file that can be measured but not read
    /// gives its length and a source of zeros.
    int readShaderSource(char* path);

    /// Kept for hosts that call it: lets go of everything and takes nothing. False. Use assignShaderSource.
    bool setShaderSource(unsigned char* text, int length);

    /// Takes a copy of the text as the source, in place of everything there was. False, with everything let
    /// go, when the text is empty or there is no memory.
    bool assignShaderSource(std::string_view text);

    /// Makes a new shader object from the source; whether it compiled. Failed or not, fShaderObject is there
    /// to be asked for GL's log. Without a source false, and what there was stays. `skipSource`: hands GL no
    /// source. Whether such an empty shader compiles is the driver's affair.
    bool compileShaderSource(bool skipSource);

    ShaderType fType = kVertexShader; ///< its stage
    int32_t fSourceLength = 0;        ///< bytes
    std::unique_ptr<char[]> fSource;  ///< ends with a 0 beyond its length
    uint32_t fShaderObject = 0;       ///< GL's name, 0 before there is one
    uint32_t fStatusWord = 0;         ///< the host's; nothing here reads it

private:
    bool allocateSource(int32_t length);
};
