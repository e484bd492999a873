#include "OpenGL.h"
#include "runtime/Names.h"
#include "runtime/Runtime.h"

#include <Cg/cgGL.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <new>
#include <string>
#include <vector>

// Each Cg program is a GL program of one stage. Those that are bound and enabled stand in a pipeline object,
// of which there is one for each context; a stage that is empty is GL's own.

namespace orlocg {

namespace {

constexpr int kVertex = 0;
constexpr int kFragment = 1;

/// A leaf's values, and where GL keeps them.
struct LeafState : Extension {
    std::vector<float> values;
    GLint location = -1;
    GLuint texture = 0;
};

struct LoadedProgram : Extension {
    explicit LoadedProgram(GLuint program) : name(program) {}
    ~LoadedProgram() override;

    GLuint name;
};

/// What a context has bound.
struct Pipeline {
    GLuint name = 0;
    GLuint stages[2] = {};
    bool isBound = false;
};

struct Binding {
    const LoadedProgram* bound[2] = {}; ///< null: none, or it is gone
    bool isEnabled[2] = {};
    std::map<void*, Pipeline> pipelines; ///< by context
};

Binding& binding() {
    static Binding theBinding;
    return theBinding;
}

LoadedProgram::~LoadedProgram() {
    for (const LoadedProgram*& bound : binding().bound)
        if (bound == this)
            bound = nullptr;
    const GL* gl = openGL();
    if (gl && gl->currentContext())
        gl->deleteProgram(name);
}

/// Calls `work`; a lack of memory becomes an error.
template <typename Work>
void guarded(Work&& work) {
    try {
        work();
    } catch (const std::bad_alloc&) {
        orlocg_raise(CG_MEMORY_ALLOC_ERROR);
    }
}

/// GL with separate programs, and a current context; else null and an error.
const GL* usableGL() {
    const GL* gl = openGL();
    if (gl && gl->currentContext()) {
        static const bool hasSeparatePrograms = [&] {
            const auto* extensions = reinterpret_cast<const char*>(gl->getString(GL_EXTENSIONS));
            return extensions && std::strstr(extensions, "GL_ARB_separate_shader_objects") != nullptr;
        }();
        if (hasSeparatePrograms)
            return gl;
    }
    orlocg_raise(CG_UNSUPPORTED_GL_EXTENSION_ERROR);
    return nullptr;
}

LoadedProgram* loaded(const ProgramObject& program) {
    return static_cast<LoadedProgram*>(program.extension.get());
}

LeafState& stateOf(ParameterObject& leaf) {
    if (!leaf.extension) {
        auto state = std::make_unique<LeafState>();
        if (leaf.type->isNumeric()) {
            state->values.assign(leaf.type->size(), 0.0F);
            std::transform(leaf.initial.begin(), leaf.initial.end(), state->values.begin(),
                           [](double value) { return static_cast<float>(value); });
        }
        leaf.extension = std::move(state);
    }
    return static_cast<LeafState&>(*leaf.extension);
}

/// Hands values of a type to a loaded program, `count` elements one behind the other.
void send(const LoadedProgram& program, GLint location, const Type* type, size_t count, const float* values) {
    const GL& gl = *openGL();
    const auto elements = static_cast<GLsizei>(count);
    if (type->rows >= 2 && type->columns >= 2) // its rows are GLSL's columns
        return gl.uniformMatrices[type->rows - 2][type->columns - 2](program.name, location, elements,
                                                                     GL_FALSE, values);
    const size_t size = type->size();
    if (!type->isInt() && !type->isBool())
        return gl.uniformVectors[size - 1](program.name, location, elements, values);
    static std::vector<GLint> whole;
    whole.resize(count * size);
    std::transform(values, values + whole.size(), whole.begin(),
                   [](float value) { return static_cast<GLint>(value); });
    gl.uniformInts[size - 1](program.name, location, elements, whole.data());
}

/// Hands a leaf's values to its program, if that is loaded and uses them.
void upload(ParameterObject& leaf) {
    const LoadedProgram* program = loaded(*leaf.program);
    const LeafState& state = stateOf(leaf);
    if (program && state.location >= 0)
        send(*program, state.location, leaf.type, 1, state.values.data());
}

/// The same of elements of an array, in one call.
void uploadElements(ParameterObject& array, size_t first, size_t count) {
    const LoadedProgram* program = loaded(*array.program);
    if (!program || count == 0 || stateOf(*array.parts[first]).location < 0)
        return;
    static std::vector<float> values;
    values.clear();
    for (size_t i = first; i < first + count; ++i) {
        const std::vector<float>& own = stateOf(*array.parts[i]).values;
        values.insert(values.end(), own.begin(), own.end());
    }
    send(*program, stateOf(*array.parts[first]).location, array.type->element, count, values.data());
}

// Loading and binding.

/// Calls `use` with every leaf below a parameter and its GLSL name. Arrays of arrays are one array there, in
/// which `place` counts.
template <typename Use>
void forEachLeaf(ParameterObject& parameter, const std::map<std::string, std::string>& names,
                 const std::string& whole, size_t place, Use&& use) {
    const auto found = names.find(parameter.name);
    const bool isNamed = found != names.end();
    const std::string& glsl = isNamed ? found->second : whole;
    const size_t start = isNamed ? 0 : place;
    if (parameter.isLeaf())
        return use(parameter, isNamed ? glsl : glsl + "[" + std::to_string(start) + "]");
    for (size_t i = 0; i < parameter.parts.size(); ++i)
        forEachLeaf(*parameter.parts[i], names, glsl, start * parameter.parts.size() + i, use);
}

template <typename Use>
void forEachLeaf(ProgramObject& program, Use&& use) {
    std::map<std::string, std::string> names;
    for (const Parameter& parameter : program.compiled->parameters)
        for (const Leaf& leaf : parameter.leaves)
            names[leaf.path] = leaf.glsl;
    for (auto& list : program.parameters)
        for (const std::unique_ptr<ParameterObject>& parameter : list)
            if (parameter->isUniform)
                forEachLeaf(*parameter, names, "", 0, use);
}

/// Compiles and links; 0 where GL refuses, and the context's listing says why.
GLuint makeProgram(const GL& gl, ProgramObject& program) {
    const bool isVertex = program.options.stage == Stage::Vertex;
    const GLuint shader = gl.createShader(isVertex ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER);
    const GLuint name = gl.createProgram();
    const char* text = program.compiled->glsl.c_str();
    gl.shaderSource(shader, 1, &text, nullptr);
    gl.compileShader(shader);
    gl.programParameteri(name, GL_PROGRAM_SEPARABLE, GL_TRUE);
    for (const int attribute : program.compiled->genericAttributes)
        gl.bindAttribLocation(name, static_cast<GLuint>(attribute),
                              ("cg_attribute" + std::to_string(attribute)).c_str());
    gl.attachShader(name, shader);
    gl.linkProgram(name);
    GLint isLinked = 0;
    gl.getProgramiv(name, GL_LINK_STATUS, &isLinked);
    if (!isLinked) {
        char log[4096] = "";
        gl.getShaderInfoLog(shader, sizeof log, nullptr, log);
        program.context->listing += std::string("OpenGL refuses the compiled program:\n") + log;
        gl.getProgramInfoLog(name, sizeof log, nullptr, log);
        program.context->listing += log;
        gl.deleteProgram(name);
    }
    gl.deleteShader(shader);
    return isLinked ? name : 0;
}

void load(ProgramObject& program) {
    const GL* gl = usableGL();
    if (!gl || !program.compiled)
        return;
    if (!loaded(program)) {
        const GLuint name = makeProgram(*gl, program);
        if (name == 0)
            return orlocg_raise(CG_PROGRAM_LOAD_ERROR);
        program.extension = std::make_unique<LoadedProgram>(name);
    }
    const GLuint name = loaded(program)->name;
    forEachLeaf(program, [&](ParameterObject& leaf, const std::string& glsl) {
        const GLint location = stateOf(leaf).location = gl->getUniformLocation(name, glsl.c_str());
        if (leaf.type->isNumeric())
            upload(leaf);
        else if (leaf.type->isSampler() && location >= 0)
            gl->uniformInts[0](name, location, 1, &leaf.unit);
    });
}

/// The current context's pipeline, made anew where it is none: a new context may be where an old one was.
Pipeline& makePipeline(const GL& gl) {
    Pipeline& pipeline = binding().pipelines[gl.currentContext()];
    if (gl.isProgramPipeline(pipeline.name))
        return pipeline;
    pipeline = {};
    gl.genProgramPipelines(1, &pipeline.name);
    gl.bindProgramPipeline(pipeline.name);
    pipeline.isBound = true;
    return pipeline;
}

/// Puts what is bound and enabled into the pipeline. True: that is something.
bool fillStages(const GL& gl, Pipeline& pipeline) {
    for (const int stage : {kVertex, kFragment}) {
        const LoadedProgram* program = binding().isEnabled[stage] ? binding().bound[stage] : nullptr;
        const GLuint wanted = program ? program->name : 0;
        if (pipeline.stages[stage] != wanted)
            gl.useProgramStages(pipeline.name,
                                stage == kVertex ? GL_VERTEX_SHADER_BIT : GL_FRAGMENT_SHADER_BIT, wanted);
        pipeline.stages[stage] = wanted;
    }
    return pipeline.stages[kVertex] != 0 || pipeline.stages[kFragment] != 0;
}

/// After a profile was enabled or disabled.
void apply(const GL& gl) {
    Pipeline& pipeline = makePipeline(gl);
    const bool isUsed = fillStages(gl, pipeline);
    if (isUsed) // a program of GL's own would go before the pipeline
        gl.useProgram(0);
    if (isUsed != pipeline.isBound)
        gl.bindProgramPipeline(isUsed ? pipeline.name : 0);
    pipeline.isBound = isUsed;
}

void setEnabled(int stage, bool on) {
    binding().isEnabled[stage] = on;
    if (const GL* gl = usableGL())
        guarded([&] { apply(*gl); });
}

int stageOf(CGprofile profile) {
    return isVertexProfile(profile) ? kVertex : kFragment;
}

// Values.

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

/// In GL's order: column by column.
using Matrix = std::array<double, 16>;

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix c{};
    for (size_t column = 0; column < 4; ++column)
        for (size_t row = 0; row < 4; ++row)
            for (size_t k = 0; k < 4; ++k)
                c[column * 4 + row] += a[k * 4 + row] * b[column * 4 + k];
    return c;
}

Matrix transposed(const Matrix& m) {
    Matrix t{};
    for (size_t i = 0; i < 16; ++i)
        t[i] = m[i % 4 * 4 + i / 4];
    return t;
}

/// By elimination; the identity where there is no inverse.
Matrix inverse(Matrix m) {
    const Matrix identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    Matrix result = identity;
    for (size_t k = 0; k < 4; ++k) {
        size_t pivot = k;
        for (size_t row = k + 1; row < 4; ++row)
            if (std::abs(m[k * 4 + row]) > std::abs(m[k * 4 + pivot]))
                pivot = row;
        if (m[k * 4 + pivot] == 0.0)
            return identity;
        for (size_t column = 0; column < 4; ++column) {
            std::swap(m[column * 4 + k], m[column * 4 + pivot]);
            std::swap(result[column * 4 + k], result[column * 4 + pivot]);
        }
        const double divisor = m[k * 4 + k];
        for (size_t row = 0; row < 4; ++row) {
            const double factor = row == k ? 0.0 : m[k * 4 + row] / divisor;
            for (size_t column = 0; column < 4 && row != k; ++column) {
                m[column * 4 + row] -= factor * m[column * 4 + k];
                result[column * 4 + row] -= factor * result[column * 4 + k];
            }
        }
        for (size_t column = 0; column < 4; ++column) {
            m[column * 4 + k] /= divisor;
            result[column * 4 + k] /= divisor;
        }
    }
    return result;
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
    constexpr std::array<GLenum, 6> kTargets = {GL_TEXTURE_2D, GL_TEXTURE_1D,        GL_TEXTURE_2D,
                                                GL_TEXTURE_3D, GL_TEXTURE_RECTANGLE, GL_TEXTURE_CUBE_MAP};
    gl->activeTexture(GL_TEXTURE0 + static_cast<GLenum>(p->unit));
    gl->bindTexture(kTargets[static_cast<size_t>(p->type->sampler)], on ? state.texture : 0);
    gl->activeTexture(GL_TEXTURE0);
}

} // namespace

} // namespace orlocg

using namespace orlocg;

CGbool cgGLIsProfileSupported(CGprofile profile) {
    return isKnown(profile) && usableGL() != nullptr;
}

void cgGLEnableProfile(CGprofile profile) {
    if (!isKnown(profile))
        return orlocg_raise(CG_INVALID_PROFILE_ERROR);
    setEnabled(stageOf(profile), true);
}

void cgGLDisableProfile(CGprofile profile) {
    if (!isKnown(profile))
        return orlocg_raise(CG_INVALID_PROFILE_ERROR);
    setEnabled(stageOf(profile), false);
}

CGprofile cgGLGetLatestProfile(CGGLenum profileType) {
    if (profileType != CG_GL_VERTEX && profileType != CG_GL_FRAGMENT) {
        orlocg_raise(CG_INVALID_ENUMERANT_ERROR);
        return CG_PROFILE_UNKNOWN;
    }
    const CGprofile latest = profileType == CG_GL_VERTEX ? CG_PROFILE_GLSLV : CG_PROFILE_GLSLF;
    return cgGLIsProfileSupported(latest) ? latest : CG_PROFILE_UNKNOWN;
}

void cgGLSetOptimalOptions(CGprofile profile) {
    if (!isKnown(profile))
        orlocg_raise(CG_INVALID_PROFILE_ERROR);
}

void cgGLLoadProgram(CGprogram handle) {
    if (ProgramObject* program = orlocg_findProgram(handle))
        guarded([&] { load(*program); });
}

void cgGLBindProgram(CGprogram handle) {
    const ProgramObject* program = orlocg_findProgram(handle);
    if (!program)
        return;
    if (!loaded(*program))
        return orlocg_raise(CG_PROGRAM_NOT_LOADED_ERROR);
    const int stage = stageOf(program->profile);
    binding().bound[stage] = loaded(*program);
    const GL* gl = binding().isEnabled[stage] ? usableGL() : nullptr;
    if (!gl)
        return;
    // Under way in this context: only the stage changes, as from material to material.
    const auto pipeline = binding().pipelines.find(gl->currentContext());
    if (pipeline != binding().pipelines.end() && pipeline->second.isBound)
        fillStages(*gl, pipeline->second);
    else
        guarded([&] { apply(*gl); });
}

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
