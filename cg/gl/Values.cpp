#include "Loaded.h"
#include "Matrix.h"

#include <Cg/cgGL.h>

#include <algorithm>
#include <array>

// Values of parameters: numbers, matrices, arrays of either, vertex arrays and textures.

namespace orlocg {

namespace {

// Numbers.

/// A uniform or varying parameter of numbers without parts; else null and an error.
ParameterObject* findNumbers(CGparameter handle) {
    ParameterObject* parameter = orlocg_findParameter(handle);
    if (parameter && parameter->type->isNumeric())
        return parameter;
    if (parameter)
        orlocg_raise(CG_INVALID_VALUE_TYPE_ERROR);
    return nullptr;
}

/// GL's current attribute of a varying parameter.
void setAttribute(const ParameterObject& p, const float (&v)[4]) {
    const GL* gl = usableGL();
    const int resource = p.resource;
    if (!gl || p.isOutput || p.program->options.stage != Stage::Vertex)
        return;
    if (resource >= CG_TEXCOORD0 && resource < CG_TEXCOORD0 + 8)
        gl->multiTexCoord4f(GL_TEXTURE0 + static_cast<GLenum>(resource - CG_TEXCOORD0), v[0], v[1], v[2],
                            v[3]);
    else if (resource == CG_COLOR0)
        gl->color4f(v[0], v[1], v[2], v[3]);
    else if (resource == CG_COLOR0 + 1)
        gl->secondaryColor3f(v[0], v[1], v[2]);
    else if (resource == CG_NORMAL0)
        gl->normal3f(v[0], v[1], v[2]);
    else if (resource == CG_FOGCOORD)
        gl->fogCoordf(v[0]);
    else if (resource >= CG_ATTR0 && resource < CG_ATTR0 + 16)
        gl->vertexAttrib4f(static_cast<GLuint>(resource - CG_ATTR0), v[0], v[1], v[2], v[3]);
    else
        orlocg_raise(CG_INVALID_PARAMETER_ERROR);
}

/// Takes values over, a varying parameter's at once. True: the program has to be told.
template <typename Number>
bool takeNumbers(ParameterObject& p, const Number* v, size_t count) {
    if (p.type->isMatrix()) {
        orlocg_raise(CG_INVALID_VALUE_TYPE_ERROR);
        return false;
    }
    if (!p.isUniform) {
        float attribute[4] = {0.0F, 0.0F, 0.0F, 1.0F};
        for (size_t i = 0; i < count; ++i)
            attribute[i] = static_cast<float>(v[i]);
        setAttribute(p, attribute);
        return false;
    }
    LeafState& state = stateOf(p);
    for (size_t i = 0; i < state.values.size(); ++i)
        state.values[i] = static_cast<float>(v[std::min(i, count - 1)]);
    return true;
}

template <typename Number>
void getNumbers(ParameterObject& p, Number* v, size_t count) {
    const LeafState& state = stateOf(p);
    for (size_t i = 0; i < count && !state.values.empty(); ++i)
        v[i] = static_cast<Number>(state.values[std::min(i, state.values.size() - 1)]);
}

template <typename Number>
void set(CGparameter handle, const Number* v, size_t count) {
    guarded([&] {
        ParameterObject* p = findNumbers(handle);
        if (p && takeNumbers(*p, v, count))
            upload(*p);
    });
}

template <typename Number>
void get(CGparameter handle, Number* v, size_t count) {
    guarded([&] {
        if (ParameterObject* p = findNumbers(handle))
            getNumbers(*p, v, count);
    });
}

/// Elements of an array.
struct Elements {
    ParameterObject* array = nullptr;
    size_t first = 0;
    size_t count = 0;

    ParameterObject& operator[](size_t i) const { return *array->parts[first + i]; }
};

/// Those that are asked for; none, and an error: there are no such.
Elements elementsOf(CGparameter handle, long offset, long count) {
    ParameterObject* array = orlocg_findParameter(handle);
    if (!array)
        return {};
    const auto length = static_cast<long>(array->parts.size());
    if (!array->type->isArray() || !array->type->element->isNumeric())
        orlocg_raise(CG_ARRAY_PARAM_ERROR);
    else if (offset < 0 || count < 0 || offset > length || count > length - offset)
        orlocg_raise(CG_OUT_OF_ARRAY_BOUNDS_ERROR);
    else
        return {array, static_cast<size_t>(offset),
                static_cast<size_t>(count == 0 ? length - offset : count)};
    return {};
}

/// Sets elements by `take`, which is given one and its number and tells whether the program has to know.
template <typename Take>
void setElements(CGparameter handle, long offset, long count, Take&& take) {
    guarded([&] {
        const Elements elements = elementsOf(handle, offset, count);
        bool isNew = elements.count > 0;
        for (size_t i = 0; i < elements.count; ++i)
            isNew = take(elements[i], i) && isNew;
        if (isNew)
            uploadElements(*elements.array, elements.first, elements.count);
    });
}

template <typename Number>
void setArray(CGparameter handle, long offset, long count, const Number* v, size_t size) {
    setElements(handle, offset, count,
                [&](ParameterObject& p, size_t i) { return takeNumbers(p, v + i * size, size); });
}

template <typename Number>
void getArray(CGparameter handle, long offset, long count, Number* v, size_t size) {
    guarded([&] {
        const Elements elements = elementsOf(handle, offset, count);
        for (size_t i = 0; i < elements.count; ++i)
            getNumbers(elements[i], v + i * size, size);
    });
}

// Matrices.

enum class Order : uint8_t { Rows, Columns };

/// Where an element stands in a list of that order.
size_t placeOf(const Type* type, size_t row, size_t column, Order order) {
    return order == Order::Rows ? row * type->columns + column : column * type->rows + row;
}

/// True: it is a matrix, and has the values.
template <typename Number>
bool takeMatrix(ParameterObject& p, const Number* m, Order order) {
    if (!p.type->isMatrix()) {
        orlocg_raise(CG_NOT_MATRIX_PARAM_ERROR);
        return false;
    }
    LeafState& state = stateOf(p);
    for (size_t row = 0; row < p.type->rows; ++row)
        for (size_t column = 0; column < p.type->columns; ++column)
            state.values[row * p.type->columns + column] =
                static_cast<float>(m[placeOf(p.type, row, column, order)]);
    return true;
}

template <typename Number>
void getMatrix(ParameterObject& p, Number* m, Order order) {
    if (!p.type->isMatrix())
        return orlocg_raise(CG_NOT_MATRIX_PARAM_ERROR);
    const LeafState& state = stateOf(p);
    for (size_t row = 0; row < p.type->rows; ++row)
        for (size_t column = 0; column < p.type->columns; ++column)
            m[placeOf(p.type, row, column, order)] =
                static_cast<Number>(state.values[row * p.type->columns + column]);
}

template <typename Number>
void setMatrix(CGparameter handle, const Number* m, Order order) {
    guarded([&] {
        ParameterObject* p = orlocg_findParameter(handle);
        if (p && takeMatrix(*p, m, order))
            upload(*p);
    });
}

template <typename Number>
void getMatrix(CGparameter handle, Number* m, Order order) {
    guarded([&] {
        if (ParameterObject* p = orlocg_findParameter(handle))
            getMatrix(*p, m, order);
    });
}

template <typename Number>
void setMatrices(CGparameter handle, long offset, long count, const Number* m, Order order) {
    setElements(handle, offset, count,
                [&](ParameterObject& p, size_t i) { return takeMatrix(p, m + i * p.type->size(), order); });
}

template <typename Number>
void getMatrices(CGparameter handle, long offset, long count, Number* m, Order order) {
    guarded([&] {
        const Elements elements = elementsOf(handle, offset, count);
        for (size_t i = 0; i < elements.count; ++i)
            getMatrix(elements[i], m + i * elements[i].type->size(), order);
    });
}

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
    if (p.program->options.stage == Stage::Vertex && !p.isOutput && !p.isUniform) {
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
        if (resource >= CG_TEXCOORD0 && resource < CG_TEXCOORD0 + 8)
            return GL_TEXTURE_COORD_ARRAY;
        if (resource >= CG_ATTR0 && resource < CG_ATTR0 + 16)
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

ParameterObject* findSampler(CGparameter handle) {
    ParameterObject* parameter = orlocg_findParameter(handle);
    if (parameter && parameter->type->isSampler())
        return parameter;
    if (parameter)
        orlocg_raise(CG_INVALID_PARAMETER_ERROR);
    return nullptr;
}

void bindTexture(CGparameter handle, bool on) {
    ParameterObject* p = findSampler(handle);
    const GL* gl = p ? usableGL() : nullptr;
    if (!gl)
        return;
    const LeafState& state = stateOf(*p);
    if (state.location < 0)
        return; // the program doesn't use it
    constexpr std::array<GLenum, 8> kTargets = {
        GL_TEXTURE_2D,        GL_TEXTURE_1D,       GL_TEXTURE_2D,       GL_TEXTURE_3D,
        GL_TEXTURE_RECTANGLE, GL_TEXTURE_CUBE_MAP, GL_TEXTURE_1D_ARRAY, GL_TEXTURE_2D_ARRAY};
    gl->activeTexture(GL_TEXTURE0 + static_cast<GLenum>(p->unit));
    gl->bindTexture(kTargets[static_cast<size_t>(p->type->sampler)], on ? state.texture : 0);
    gl->activeTexture(GL_TEXTURE0);
}

} // namespace

} // namespace orlocg

using namespace orlocg;

// The families of values, spelled out by their numbers and types.

#define CG_NUMBERS(N, suffix, Number)                                                                        \
    void cgGLSetParameter##N##suffix##v(CGparameter parameter, const Number* v) {                            \
        set(parameter, v, N);                                                                                \
    }                                                                                                        \
    void cgGLGetParameter##N##suffix(CGparameter parameter, Number* v) {                                     \
        get(parameter, v, N);                                                                                \
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
        set(parameter, &x, 1);                                                                               \
    }                                                                                                        \
    void cgGLSetParameter2##suffix(CGparameter parameter, Number x, Number y) {                              \
        const Number v[] = {x, y};                                                                           \
        set(parameter, v, 2);                                                                                \
    }                                                                                                        \
    void cgGLSetParameter3##suffix(CGparameter parameter, Number x, Number y, Number z) {                    \
        const Number v[] = {x, y, z};                                                                        \
        set(parameter, v, 3);                                                                                \
    }                                                                                                        \
    void cgGLSetParameter4##suffix(CGparameter parameter, Number x, Number y, Number z, Number w) {          \
        const Number v[] = {x, y, z, w};                                                                     \
        set(parameter, v, 4);                                                                                \
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
        if (ParameterObject* p = findSampler(parameter))
            stateOf(*p).texture = texture;
    });
}

GLuint cgGLGetTextureParameter(CGparameter parameter) {
    GLuint texture = 0;
    guarded([&] {
        if (ParameterObject* p = findSampler(parameter))
            texture = stateOf(*p).texture;
    });
    return texture;
}

void cgGLEnableTextureParameter(CGparameter parameter) {
    guarded([&] { bindTexture(parameter, true); });
}

void cgGLDisableTextureParameter(CGparameter parameter) {
    guarded([&] { bindTexture(parameter, false); });
}

GLenum cgGLGetTextureEnum(CGparameter parameter) {
    ParameterObject* p = findSampler(parameter);
    return p && p->unit >= 0 ? GL_TEXTURE0 + static_cast<GLenum>(p->unit) : 0;
}
