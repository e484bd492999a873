#include "objects/Values.h"
#include "Loaded.h"
#include "Matrix.h"
#include "objects/Names.h"

#include <Cg/cgGL.h>

#include <algorithm>
#include <array>

// Values of parameters as the binding's own entry points take them, vertex arrays and textures.

namespace orlocg {

namespace {

Matrix stateMatrix(const GL& gl, GLenum name) {
    GLfloat values[16] = {};
    gl.getFloatv(name, values);
    Matrix matrix{};
    std::copy(std::begin(values), std::end(values), matrix.begin());
    return matrix;
}

// Client arrays.

/// The array of a vertex program's varying parameter; 0 and an error: it has none.
GLenum arrayOf(const ParameterObject& p) {
    const int resource = p.resource;
    if (!p.isUniform && !p.isOutput && p.program->options.stage == Stage::Vertex) {
        if (resource == CG_POSITION0)
            return GL_VERTEX_ARRAY;
        if (resource == CG_NORMAL0)
            return GL_NORMAL_ARRAY;
        if (resource == CG_COLOR0)
            return GL_COLOR_ARRAY;
        if (resource == CG_COLOR0 + 1)
            return GL_SECONDARY_COLOR_ARRAY;
        if (resource == CG_FOGCOORD)
            return GL_FOG_COORD_ARRAY;
        if (isTexCoord(resource))
            return GL_TEXTURE_COORD_ARRAY;
        if (isGeneric(resource))
            return GL_VERTEX_ATTRIB_ARRAY_ENABLED;
    }
    orlocg_raise(CG_INVALID_PARAMETER_ERROR);
    return 0;
}

void setClientState(CGparameter handle, bool on) {
    const ParameterObject* p = orlocg_findParameter(handle);
    const GLenum array = p ? arrayOf(*p) : 0;
    const GL* gl = array ? usableGL() : nullptr;
    if (!gl)
        return;
    if (array == GL_VERTEX_ATTRIB_ARRAY_ENABLED) {
        const auto index = static_cast<GLuint>(p->resource - CG_ATTR0);
        return on ? gl->enableVertexAttribArray(index) : gl->disableVertexAttribArray(index);
    }
    if (array == GL_TEXTURE_COORD_ARRAY)
        gl->clientActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(p->resource - CG_TEXCOORD0));
    on ? gl->enableClientState(array) : gl->disableClientState(array);
}

// Textures.

/// A sampler, or a texture of an effect's.
ParameterObject* findSampler(CGparameter handle) {
    ParameterObject* parameter = orlocg_findParameter(handle);
    if (parameter && (parameter->type->isSampler() || parameter->objectType == CG_TEXTURE))
        return parameter;
    if (parameter)
        orlocg_raise(CG_INVALID_PARAMETER_ERROR);
    return nullptr;
}

void bindTexture(CGparameter handle, bool on) {
    const ParameterObject* p = findSampler(handle);
    if (const GL* gl = p ? usableGL() : nullptr)
        bindSampler(*gl, *p, on ? p->texture : 0);
}

} // namespace

} // namespace orlocg

using namespace orlocg;

// The families of values, spelled out by their numbers and types.

#define CG_NUMBERS(N, suffix, Number)                                                                        \
    void cgGLSetParameter##N##suffix##v(CGparameter parameter, const Number* v) {                            \
        setNumbers(parameter, v, N);                                                                         \
    }                                                                                                        \
    void cgGLGetParameter##N##suffix(CGparameter parameter, Number* v) {                                     \
        getNumbers(parameter, v, N);                                                                         \
    }                                                                                                        \
    void cgGLSetParameterArray##N##suffix(CGparameter parameter, long offset, long count, const Number* v) { \
        setArray(parameter, offset, count, v, N);                                                            \
    }                                                                                                        \
    void cgGLGetParameterArray##N##suffix(CGparameter parameter, long offset, long count, Number* v) {       \
        getArray(parameter, offset, count, v, N);                                                            \
    }

#define CG_FAMILY(suffix, Number)                                                                            \
    CG_NUMBERS(1, suffix, Number)                                                                            \
    CG_NUMBERS(2, suffix, Number)                                                                            \
    CG_NUMBERS(3, suffix, Number)                                                                            \
    CG_NUMBERS(4, suffix, Number)                                                                            \
    void cgGLSetParameter1##suffix(CGparameter parameter, Number x) {                                        \
        setNumbers(parameter, &x, 1);                                                                        \
    }                                                                                                        \
    void cgGLSetParameter2##suffix(CGparameter parameter, Number x, Number y) {                              \
        const Number v[] = {x, y};                                                                           \
        setNumbers(parameter, v, 2);                                                                         \
    }                                                                                                        \
    void cgGLSetParameter3##suffix(CGparameter parameter, Number x, Number y, Number z) {                    \
        const Number v[] = {x, y, z};                                                                        \
        setNumbers(parameter, v, 3);                                                                         \
    }                                                                                                        \
    void cgGLSetParameter4##suffix(CGparameter parameter, Number x, Number y, Number z, Number w) {          \
        const Number v[] = {x, y, z, w};                                                                     \
        setNumbers(parameter, v, 4);                                                                         \
    }

CG_FAMILY(f, float)
CG_FAMILY(d, double)

#define CG_MATRICES(suffix, Number, order)                                                                   \
    void cgGLSetMatrixParameter##suffix(CGparameter parameter, const Number* m) {                            \
        setMatrix(parameter, m, order);                                                                      \
    }                                                                                                        \
    void cgGLGetMatrixParameter##suffix(CGparameter parameter, Number* m) {                                  \
        getMatrix(parameter, m, order);                                                                      \
    }                                                                                                        \
    void cgGLSetMatrixParameterArray##suffix(CGparameter parameter, long offset, long count,                 \
                                             const Number* m) {                                              \
        setMatrices(parameter, offset, count, m, order);                                                     \
    }                                                                                                        \
    void cgGLGetMatrixParameterArray##suffix(CGparameter parameter, long offset, long count, Number* m) {    \
        getMatrices(parameter, offset, count, m, order);                                                     \
    }

CG_MATRICES(fr, float, Order::Rows)
CG_MATRICES(fc, float, Order::Columns)
CG_MATRICES(dr, double, Order::Rows)
CG_MATRICES(dc, double, Order::Columns)

void cgGLSetStateMatrixParameter(CGparameter handle, CGGLenum matrix, CGGLenum transform) {
    ParameterObject* p = orlocg_findParameter(handle);
    if (!p)
        return;
    if (p->type->rows != 4 || p->type->columns != 4)
        return orlocg_raise(p->type->isMatrix() ? CG_NOT_4x4_MATRIX_ERROR : CG_NOT_MATRIX_PARAM_ERROR);
    const GL* gl = usableGL();
    if (!gl)
        return;
    Matrix value{};
    switch (matrix) {
    case CG_GL_MODELVIEW_MATRIX:
        value = stateMatrix(*gl, GL_MODELVIEW_MATRIX);
        break;
    case CG_GL_PROJECTION_MATRIX:
        value = stateMatrix(*gl, GL_PROJECTION_MATRIX);
        break;
    case CG_GL_TEXTURE_MATRIX:
        value = stateMatrix(*gl, GL_TEXTURE_MATRIX);
        break;
    case CG_GL_MODELVIEW_PROJECTION_MATRIX:
        value = product(stateMatrix(*gl, GL_PROJECTION_MATRIX), stateMatrix(*gl, GL_MODELVIEW_MATRIX));
        break;
    default:
        return orlocg_raise(CG_INVALID_ENUMERANT_ERROR);
    }
    if (transform == CG_GL_MATRIX_INVERSE || transform == CG_GL_MATRIX_INVERSE_TRANSPOSE)
        value = inverse(value);
    if (transform == CG_GL_MATRIX_TRANSPOSE || transform == CG_GL_MATRIX_INVERSE_TRANSPOSE)
        value = transposed(value);
    if (transform > CG_GL_MATRIX_INVERSE_TRANSPOSE)
        return orlocg_raise(CG_INVALID_ENUMERANT_ERROR);
    setMatrix(handle, value.data(), Order::Columns);
}

void cgGLSetParameterPointer(CGparameter handle, GLint size, GLenum type, GLsizei stride,
                             const GLvoid* pointer) {
    const ParameterObject* p = orlocg_findParameter(handle);
    const GLenum array = p ? arrayOf(*p) : 0;
    const GL* gl = array ? usableGL() : nullptr;
    if (!gl)
        return;
    switch (array) {
    case GL_VERTEX_ARRAY:
        return gl->vertexPointer(size, type, stride, pointer);
    case GL_NORMAL_ARRAY:
        return gl->normalPointer(type, stride, pointer);
    case GL_COLOR_ARRAY:
        return gl->colorPointer(size, type, stride, pointer);
    case GL_SECONDARY_COLOR_ARRAY:
        return gl->secondaryColorPointer(size, type, stride, pointer);
    case GL_FOG_COORD_ARRAY:
        return gl->fogCoordPointer(type, stride, pointer);
    case GL_TEXTURE_COORD_ARRAY:
        gl->clientActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(p->resource - CG_TEXCOORD0));
        return gl->texCoordPointer(size, type, stride, pointer);
    default:
        gl->vertexAttribPointer(static_cast<GLuint>(p->resource - CG_ATTR0), size, type, GL_FALSE, stride,
                                pointer);
    }
}

void cgGLEnableClientState(CGparameter parameter) {
    setClientState(parameter, true);
}

void cgGLDisableClientState(CGparameter parameter) {
    setClientState(parameter, false);
}

void cgGLSetTextureParameter(CGparameter parameter, GLuint texture) {
    guarded([&] {
        if (ParameterObject* p = findSampler(parameter)) {
            p->texture = texture;
            orlocg_changed(p);
        }
    });
}

GLuint cgGLGetTextureParameter(CGparameter parameter) {
    const ParameterObject* p = findSampler(parameter);
    return p ? p->texture : 0;
}

void cgGLEnableTextureParameter(CGparameter parameter) {
    bindTexture(parameter, true);
}

void cgGLDisableTextureParameter(CGparameter parameter) {
    bindTexture(parameter, false);
}

GLenum cgGLGetTextureEnum(CGparameter parameter) {
    const ParameterObject* p = findSampler(parameter);
    return p && p->unit >= 0 ? GL_TEXTURE0 + static_cast<GLenum>(p->unit) : 0;
}
