#include "shader/CGManager.h"

#include "gl/GLFunctionTable.h"
#include "shader/CgCall.h"

#include <array>
#include <cstdio>

namespace {

using CGShader = CGManager::CGShader;

constexpr unsigned int kNone = 0xFFFFFFFF;

constexpr std::array<const char*, 16> kTexCoordSemantics = {
    "TEXCOORD0",  "TEXCOORD1",  "TEXCOORD2",  "TEXCOORD3", "TEXCOORD4",  "TEXCOORD5",
    "TEXCOORD6",  "TEXCOORD7",  "TEXCOORD8",  "TEXCOORD9", "TEXCOORD10", "TEXCOORD11",
    "TEXCOORD12", "TEXCOORD13", "TEXCOORD14", "TEXCOORD15"};

/// Asked in a statement of its own before an F_ pointer is read: asking may load the run time, which fills
/// them.
CGcontext currentContext() {
    return *CGcontextSingleton::theCgContext();
}

bool loadFile(CGprogram& program, CGprofile profile, const koString::IString& path, const char** options,
              const char* failure) {
    if (profile == CG_PROFILE_UNKNOWN)
        return false;
    if (!program) {
        const CGcontext context = currentContext();
        program = callCg(F_cgCreateProgramFromFile, context, CG_SOURCE, path.asMultibyte(), profile, nullptr,
                         options);
    }
    if (!program) {
        std::printf(failure, path.asMultibyte());
        return false;
    }
    callCg(F_cgGLLoadProgram, program);
    return true;
}

void loadString(CGprogram& program, CGprofile profile, const koString::IString& source,
                const char** options) {
    const CGcontext context = currentContext();
    program = callCg(F_cgCreateProgram, context, CG_SOURCE, source.asMultibyte(), profile, nullptr, options);
    if (program)
        callCg(F_cgGLLoadProgram, program);
}

void end(CGprogram& program) {
    if (program)
        callCg(F_cgDestroyProgram, program);
    program = nullptr;
}

CGparameter parameterOf(const CGShader& shader, CGManager::CGProgramType type,
                        const koString::CString& name) {
    const CGprogram program = shader.getProgramFromType(type);
    return program ? callCg(F_cgGetNamedParameter, program, name.asChar()) : nullptr;
}

template <typename... Parameters, typename... Values>
void set(const CGShader& shader, CGManager::CGProgramType type, const koString::CString& name,
         void (*setter)(CGparameter, Parameters...), Values... values) {
    if (const CGparameter parameter = parameterOf(shader, type, name))
        callCg(setter, parameter, values...);
}

} // namespace

// ---- Programs

CGprogram CGShader::getProgramFromType(CGProgramType type) const {
    switch (type) {
    case kVertexProgram:
        return fVertexProgram;
    case kFragmentProgram:
        return fFragmentProgram;
    }
    return nullptr;
}

bool CGShader::loadVertexProgram(const koString::IString& path, const char** options) {
    return loadFile(fVertexProgram, fVertexProfile, path, options, "Vertex program failed to compile:\n%s\n");
}

bool CGShader::loadFragmentProgram(const koString::IString& path, const char** options) {
    return loadFile(fFragmentProgram, fFragmentProfile, path, options,
                    "Fragment program failed to compile:\n%s\n");
}

void CGShader::loadVertexProgramFromString(const koString::IString& source) {
    const char* options[] = {"-posinv", nullptr};
    loadString(fVertexProgram, fVertexProfile, source, options);
}

void CGShader::loadFragmentProgramFromString(const koString::IString& source) {
    loadString(fFragmentProgram, fFragmentProfile, source, nullptr);
}

void CGShader::enable() const {
    if (fVertexProgram) {
        callCg(F_cgGLEnableProfile, fVertexProfile);
        callCg(F_cgGLBindProgram, fVertexProgram);
    }
    if (fFragmentProgram) {
        callCg(F_cgGLEnableProfile, fFragmentProfile);
        callCg(F_cgGLBindProgram, fFragmentProgram);
    }
}

void CGShader::disable() const {
    if (fVertexProgram)
        callCg(F_cgGLDisableProfile, fVertexProfile);
    if (fFragmentProgram)
        callCg(F_cgGLDisableProfile, fFragmentProfile);
}

void CGShader::destroy() {
    disable();
    end(fVertexProgram);
    end(fFragmentProgram);
}

// ---- Parameters

void CGShader::setParameter1f(CGProgramType type, const koString::CString& name, float value,
                              bool /*flag*/) const {
    set(*this, type, name, F_cgGLSetParameter1f, value);
}

void CGShader::setParameterBool(CGProgramType type, const koString::CString& name, bool value) const {
    set(*this, type, name, F_cgGLSetParameter1f, value ? 1.0F : 0.0F);
}

void CGShader::setParameter2f(CGProgramType type, const koString::CString& name, float x, float y) const {
    set(*this, type, name, F_cgGLSetParameter2f, x, y);
}

void CGShader::setParameter3f(CGProgramType type, const koString::CString& name, float x, float y,
                              float z) const {
    set(*this, type, name, F_cgGLSetParameter3f, x, y, z);
}

void CGShader::setParameter3d(CGProgramType type, const koString::CString& name, double x, double y,
                              double z) const {
    set(*this, type, name, F_cgGLSetParameter3d, x, y, z);
}

void CGShader::setParameter3fv(CGProgramType type, const koString::CString& name,
                               const koLinear::Point& point) const {
    set(*this, type, name, F_cgGLSetParameter3dv, point.data());
}

void CGShader::setParameter3fv(CGProgramType type, const koString::CString& name,
                               const koLinear::PointFlt& point) const {
    set(*this, type, name, F_cgGLSetParameter3fv, point.data());
}

void CGShader::setParameter4f(CGProgramType type, const koString::CString& name, float x, float y, float z,
                              float w) const {
    set(*this, type, name, F_cgGLSetParameter4f, x, y, z, w);
}

void CGShader::setParameter4d(CGProgramType type, const koString::CString& name, double x, double y, double z,
                              double w) const {
    set(*this, type, name, F_cgGLSetParameter4d, x, y, z, w);
}

void CGShader::setParameter4fv(CGProgramType type, const koString::CString& name,
                               const koLinear::HPoint& point) const {
    set(*this, type, name, F_cgGLSetParameter4dv, point.data());
}

void CGShader::setParameter4fv(CGProgramType type, const koString::CString& name,
                               const koLinear::Point& point) const {
    set(*this, type, name, F_cgGLSetParameter4d, point[0], point[1], point[2], 1.0);
}

void CGShader::setParameter4fv(CGProgramType type, const koString::CString& name,
                               const koLinear::PointFlt& point) const {
    set(*this, type, name, F_cgGLSetParameter4f, point[0], point[1], point[2], 1.0F);
}

void CGShader::setParameter4fv(CGProgramType type, const koString::CString& name,
                               const koLinear::Vector& vector) const {
    set(*this, type, name, F_cgGLSetParameter4d, vector[0], vector[1], vector[2], 1.0);
}

void CGShader::setParameter4fv(CGProgramType type, const koString::CString& name,
                               const koLinear::VectorFlt& vector) const {
    set(*this, type, name, F_cgGLSetParameter4f, vector[0], vector[1], vector[2], 1.0F);
}

void CGShader::setParameterMatrix(CGProgramType type, const koString::CString& name,
                                  const koLinear::ProjMatrix& matrix) const {
    set(*this, type, name, F_cgGLSetMatrixParameterdc, matrix.data());
}

void CGShader::setParameterMatrix(CGProgramType type, const koString::CString& name,
                                  const koLinear::ProjMatrixFlt& matrix) const {
    set(*this, type, name, F_cgGLSetMatrixParameterfc, matrix.data());
}

void CGShader::setParameterMatrixRowMajor(CGProgramType type, const koString::CString& name,
                                          const koLinear::ProjMatrix& matrix) const {
    set(*this, type, name, F_cgGLSetMatrixParameterdr, matrix.data());
}

void CGShader::setParameterMatrixRowMajor(CGProgramType type, const koString::CString& name,
                                          const koLinear::ProjMatrixFlt& matrix) const {
    set(*this, type, name, F_cgGLSetMatrixParameterfr, matrix.data());
}

void CGShader::setParameterTexture(CGProgramType type, const koString::CString& name,
                                   unsigned int texture) const {
    const CGparameter parameter = parameterOf(*this, type, name);
    if (!parameter)
        return;
    callCg(F_cgGLSetTextureParameter, parameter, texture);
    callCg(F_cgGLEnableTextureParameter, parameter);
    if (GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable)
        gl->glGetError(); // what a run time leaves pending would be taken for the next draw's
}

unsigned int CGShader::getParameterIndex(CGProgramType type, const koString::CString& name) const {
    const CGparameter parameter = parameterOf(*this, type, name);
    return parameter ? static_cast<unsigned int>(callCg(F_cgGetParameterResourceIndex, parameter)) : kNone;
}

unsigned int CGShader::getTextureInterpolant(CGProgramType type, const koString::CString& name,
                                             bool* found) const {
    const CGparameter parameter = parameterOf(*this, type, name);
    if (found)
        *found = parameter != nullptr;
    return parameter ? getTextureOffsetFromSemantic(callCg(F_cgGetParameterSemantic, parameter)) : 0;
}

unsigned int CGShader::getTextureOffsetFromSemantic(const koString::CString& semantic) {
    for (unsigned int i = 0; i < kTexCoordSemantics.size(); ++i) {
        if (koString::equal(semantic, kTexCoordSemantics[i]))
            return i;
    }
    return kNone;
}
