#include "shading/GlslUserShader.h"

#include "base/ExitCode.h"
#include "draw/GL.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace orloview {

namespace {

std::string logOf(GLhandleARB object) {
    GLint length = 0;
    gl().glGetObjectParameterivARB(object, GL_OBJECT_INFO_LOG_LENGTH_ARB, &length);
    std::string log(static_cast<size_t>(std::max(length, 1)), '\0');
    GLsizei written = 0;
    gl().glGetInfoLogARB(object, length, &written, log.data());
    log.resize(static_cast<size_t>(written));
    return log;
}

/// GL's words, each line with the file's name and the number of its line where GL says it: as "0:12(3): ..."
/// or "0(12) : ...".
std::string withLines(const std::string& file, const std::string& log) {
    static const std::regex kPlace(R"(^\s*(?:ERROR:\s*)?\d+[:(](\d+)(?:\(\d+\))?\)?\s*:\s*(.*)$)");
    std::istringstream lines(log);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (line.empty())
            continue;
        text.append(text.empty() ? "" : "\n  ").append(file).append(":");
        if (std::regex_match(line, match, kPlace))
            text.append(match[1]).append(": ").append(match[2]);
        else
            text.append(" ").append(line);
    }
    return text.empty() ? file + ": OpenGL refuses it without a word" : text;
}

void compile(GL2Shader& shader, const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string source{std::istreambuf_iterator<char>(stream), {}};
    if (!stream || !shader.assignShaderSource(source))
        throw Failure(kExitUsage, "--shader: " + file + (stream ? " is empty" : " can't be read") +
                                      "; give the name that a .vert and a .frag file share");
    if (!shader.compileShaderSource(false))
        throw Failure(kExitUsage,
                      "--shader: it doesn't compile:\n  " + withLines(file, logOf(shader.fShaderObject)));
}

} // namespace

GlslUserShader::GlslUserShader(const std::string& name, const SceneLights& lights) {
    compile(fVertex, name + GL2Shader::vertexShaderExtension);
    compile(fFragment, name + GL2Shader::fragmentShaderExtension);
    fProgram.createObject();
    fProgram.attachVertexShader(&fVertex);
    fProgram.attachFragmentShader(&fFragment);
    if (!fProgram.linkShaders())
        throw Failure(kExitUsage,
                      "--shader: it doesn't link:\n  " + withLines(name, logOf(fProgram.fProgramObject)));
    const auto location = [this](const char* uniform) {
        return gl().glGetUniformLocationARB(fProgram.fProgramObject, uniform);
    };
    fHasBaseLocation = location("hasBaseColorMap");
    fHasNormalLocation = location("hasNormalMap");
    fProgram.bind();
    gl().glUniform1iARB(location("baseColorMap"), 0);
    gl().glUniform1iARB(location("normalMap"), 2);
    gl().glUniform1iARB(location("lightCount"), static_cast<GLint>(lights.specs().size()));
    fProgram.unbind();
}

void GlslUserShader::bind() {
    fProgram.bind();
}

void GlslUserShader::setTextures(const TextureLayer* base, const TextureLayer* normal) {
    gl().glUniform1iARB(fHasBaseLocation, base ? 1 : 0);
    if (fHasNormalLocation >= 0)
        gl().glUniform1iARB(fHasNormalLocation, normal ? 1 : 0);
}

} // namespace orloview
