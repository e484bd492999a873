#pragma once

// The interface of the Cg runtime's OpenGL binding, libCgGL.so. Plain C.
//
//     cgGLLoadProgram(program);
//     cgGLBindProgram(program);
//     cgGLEnableProfile(CG_PROFILE_ARBFP1);
//     cgGLSetParameter4f(cgGetNamedParameter(program, "tint"), 1, 0.5f, 0.25f, 1);
//     ... draw ...
//     cgGLDisableProfile(CG_PROFILE_ARBFP1);
//
// Everything but setting values before a program is loaded needs a current context. A vertex or a fragment
// profile by itself leaves the other side to GL's own functions. Values may be set at any time, and stay.

#include <Cg/cg.h>

#include <GL/gl.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    CG_GL_MATRIX_IDENTITY = 0,
    CG_GL_MATRIX_TRANSPOSE,
    CG_GL_MATRIX_INVERSE,
    CG_GL_MATRIX_INVERSE_TRANSPOSE,
    CG_GL_MODELVIEW_MATRIX,
    CG_GL_PROJECTION_MATRIX,
    CG_GL_TEXTURE_MATRIX,
    CG_GL_MODELVIEW_PROJECTION_MATRIX,
    CG_GL_VERTEX,
    CG_GL_FRAGMENT,
    CG_GL_GEOMETRY,
    CG_GL_TESSELLATION_CONTROL,
    CG_GL_TESSELLATION_EVALUATION
} CGGLenum;

CGbool cgGLIsProfileSupported(CGprofile profile);
void cgGLEnableProfile(CGprofile profile);
void cgGLDisableProfile(CGprofile profile);
void cgGLEnableProgramProfiles(CGprogram program); // of all stages of a combined one
void cgGLDisableProgramProfiles(CGprogram program);
// Of CG_GL_VERTEX or CG_GL_FRAGMENT; of the other stages there is none, CG_PROFILE_UNKNOWN.
CGprofile cgGLGetLatestProfile(CGGLenum profileType);
// There are none to choose among: lists of a null.
void cgGLSetOptimalOptions(CGprofile profile);
const char** cgGLGetOptimalOptions(CGprofile profile);
void cgGLSetContextOptimalOptions(CGcontext context, CGprofile profile);
const char** cgGLGetContextOptimalOptions(CGcontext context, CGprofile profile);

// On: OpenGL's errors are looked for after programs are loaded and bound, and become errors of the runtime's.
// Off at first: it takes the caller's own errors too.
void cgGLSetDebugMode(CGbool on);

void cgGLLoadProgram(CGprogram program);
void cgGLUnloadProgram(CGprogram program);
CGbool cgGLIsProgramLoaded(CGprogram program);
GLuint cgGLGetProgramID(CGprogram program); // OpenGL's name; of one stage
void cgGLBindProgram(CGprogram program);
void cgGLUnbindProgram(CGprofile profile); // its stage is OpenGL's own again

// Whether binding a program binds the textures of its samplers too. Off at first.
void cgGLSetManageTextureParameters(CGcontext context, CGbool on);
CGbool cgGLGetManageTextureParameters(CGcontext context);

// Numbers of a scalar or vector. Too many are cut; of too few the last stands for those that are missing. A
// varying parameter becomes GL's current attribute.
void cgGLSetParameter1f(CGparameter parameter, float x);
void cgGLSetParameter2f(CGparameter parameter, float x, float y);
void cgGLSetParameter3f(CGparameter parameter, float x, float y, float z);
void cgGLSetParameter4f(CGparameter parameter, float x, float y, float z, float w);
void cgGLSetParameter1fv(CGparameter parameter, const float* v);
void cgGLSetParameter2fv(CGparameter parameter, const float* v);
void cgGLSetParameter3fv(CGparameter parameter, const float* v);
void cgGLSetParameter4fv(CGparameter parameter, const float* v);
void cgGLSetParameter1d(CGparameter parameter, double x);
void cgGLSetParameter2d(CGparameter parameter, double x, double y);
void cgGLSetParameter3d(CGparameter parameter, double x, double y, double z);
void cgGLSetParameter4d(CGparameter parameter, double x, double y, double z, double w);
void cgGLSetParameter1dv(CGparameter parameter, const double* v);
void cgGLSetParameter2dv(CGparameter parameter, const double* v);
void cgGLSetParameter3dv(CGparameter parameter, const double* v);
void cgGLSetParameter4dv(CGparameter parameter, const double* v);
void cgGLGetParameter1f(CGparameter parameter, float* v);
void cgGLGetParameter2f(CGparameter parameter, float* v);
void cgGLGetParameter3f(CGparameter parameter, float* v);
void cgGLGetParameter4f(CGparameter parameter, float* v);
void cgGLGetParameter1d(CGparameter parameter, double* v);
void cgGLGetParameter2d(CGparameter parameter, double* v);
void cgGLGetParameter3d(CGparameter parameter, double* v);
void cgGLGetParameter4d(CGparameter parameter, double* v);

// `count` elements of an array from `offset` on, each of the numbers in the name; 0: all that follow.
void cgGLSetParameterArray1f(CGparameter parameter, long offset, long count, const float* v);
void cgGLSetParameterArray2f(CGparameter parameter, long offset, long count, const float* v);
void cgGLSetParameterArray3f(CGparameter parameter, long offset, long count, const float* v);
void cgGLSetParameterArray4f(CGparameter parameter, long offset, long count, const float* v);
void cgGLSetParameterArray1d(CGparameter parameter, long offset, long count, const double* v);
void cgGLSetParameterArray2d(CGparameter parameter, long offset, long count, const double* v);
void cgGLSetParameterArray3d(CGparameter parameter, long offset, long count, const double* v);
void cgGLSetParameterArray4d(CGparameter parameter, long offset, long count, const double* v);
void cgGLGetParameterArray1f(CGparameter parameter, long offset, long count, float* v);
void cgGLGetParameterArray2f(CGparameter parameter, long offset, long count, float* v);
void cgGLGetParameterArray3f(CGparameter parameter, long offset, long count, float* v);
void cgGLGetParameterArray4f(CGparameter parameter, long offset, long count, float* v);
void cgGLGetParameterArray1d(CGparameter parameter, long offset, long count, double* v);
void cgGLGetParameterArray2d(CGparameter parameter, long offset, long count, double* v);
void cgGLGetParameterArray3d(CGparameter parameter, long offset, long count, double* v);
void cgGLGetParameterArray4d(CGparameter parameter, long offset, long count, double* v);

// A varying parameter of a vertex program from an array, as gl...Pointer take it.
void cgGLSetParameterPointer(CGparameter parameter, GLint size, GLenum type, GLsizei stride,
                             const GLvoid* pointer);
void cgGLEnableClientState(CGparameter parameter);
void cgGLDisableClientState(CGparameter parameter);

// Matrices row by row (r) or column by column (c).
void cgGLSetMatrixParameterdr(CGparameter parameter, const double* matrix);
void cgGLSetMatrixParameterfr(CGparameter parameter, const float* matrix);
void cgGLSetMatrixParameterdc(CGparameter parameter, const double* matrix);
void cgGLSetMatrixParameterfc(CGparameter parameter, const float* matrix);
void cgGLGetMatrixParameterdr(CGparameter parameter, double* matrix);
void cgGLGetMatrixParameterfr(CGparameter parameter, float* matrix);
void cgGLGetMatrixParameterdc(CGparameter parameter, double* matrix);
void cgGLGetMatrixParameterfc(CGparameter parameter, float* matrix);
// A matrix of GL's, as it is now.
void cgGLSetStateMatrixParameter(CGparameter parameter, CGGLenum matrix, CGGLenum transform);
void cgGLSetMatrixParameterArrayfc(CGparameter parameter, long offset, long count, const float* matrices);
void cgGLSetMatrixParameterArrayfr(CGparameter parameter, long offset, long count, const float* matrices);
void cgGLSetMatrixParameterArraydc(CGparameter parameter, long offset, long count, const double* matrices);
void cgGLSetMatrixParameterArraydr(CGparameter parameter, long offset, long count, const double* matrices);
void cgGLGetMatrixParameterArrayfc(CGparameter parameter, long offset, long count, float* matrices);
void cgGLGetMatrixParameterArrayfr(CGparameter parameter, long offset, long count, float* matrices);
void cgGLGetMatrixParameterArraydc(CGparameter parameter, long offset, long count, double* matrices);
void cgGLGetMatrixParameterArraydr(CGparameter parameter, long offset, long count, double* matrices);

// A sampler's texture, and binding it to the sampler's unit.
void cgGLSetTextureParameter(CGparameter parameter, GLuint texture);
GLuint cgGLGetTextureParameter(CGparameter parameter);
void cgGLEnableTextureParameter(CGparameter parameter);
void cgGLDisableTextureParameter(CGparameter parameter);
GLenum cgGLGetTextureEnum(CGparameter parameter); // GL_TEXTURE0 and so on

// A buffer that OpenGL has too, as its GL_STATIC_DRAW and so on; and OpenGL's name of a buffer, which it has
// from then on. What is written to either is in both when a program is bound or the buffer is mapped.
CGbuffer cgGLCreateBuffer(CGcontext context, int size, const void* data, GLenum usage);
GLuint cgGLGetBufferObject(CGbuffer buffer);

// Makes OpenGL's states known to the effects of a context: those of passes (VertexProgram, BlendFunc,
// DepthTestEnable, CullFace, ..., and what Direct3D calls them: VertexShader, SrcBlend, ZEnable, CullMode)
// and of samplers (MinFilter, WrapS, AddressU, ...). CullMode CCW hides backs, as in Direct3D. What sets one
// back sets what OpenGL begins with. A value that isn't known, or no such number or word, makes a technique
// invalid.
void cgGLRegisterStates(CGcontext context);
// Gives a texture to an effect's sampler, and the sampler's states to the texture. A sampler whose state
// "Texture" names a parameter has the texture of that when a pass sets a program that reads it.
void cgGLSetupSampler(CGparameter sampler, GLuint texture);

#ifdef __cplusplus
}
#endif
