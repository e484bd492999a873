#include "Loaded.h"
#include "objects/Names.h"

#include <Cg/cgGL.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

// Each Cg program is a GL program of one stage. Those that are bound and enabled stand in a pipeline object,
// of which there is one for each context; a stage that is empty is GL's own.

namespace orlocg {

namespace {

constexpr int kVertex = 0;
constexpr int kFragment = 1;

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

    // The one asked for last: most programs draw in one context.
    void* lastContext = nullptr;
    Pipeline* last = nullptr;
};

Binding& binding() {
    static Binding theBinding;
    return theBinding;
}

Pipeline& pipelineOf(void* context) {
    Binding& all = binding();
    if (!all.last || all.lastContext != context) {
        all.last = &all.pipelines[context];
        all.lastContext = context;
    }
    return *all.last;
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

} // namespace

LoadedProgram::~LoadedProgram() {
    for (const LoadedProgram*& bound : binding().bound)
        if (bound == this)
            bound = nullptr;
    const GL* gl = openGL();
    if (gl && gl->currentContext())
        gl->deleteProgram(name);
}

const GL* usableGL() {
    void* context = nullptr;
    return usableGL(context);
}

const GL* usableGL(void*& context) {
    const GL* gl = openGL();
    context = gl ? gl->currentContext() : nullptr;
    if (context) {
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

void upload(ParameterObject& leaf) {
    const LoadedProgram* program = loaded(*leaf.program);
    const LeafState& state = stateOf(leaf);
    if (program && state.location >= 0)
        send(*program, state.location, leaf.type, 1, state.values.data());
}

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

namespace {

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
            forEachLeaf(*parameter, names, "", 0, [&](ParameterObject& leaf, const std::string& glsl) {
                if (leaf.isUniform)
                    use(leaf, glsl);
            });
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
Pipeline& makePipeline(const GL& gl, void* context) {
    Pipeline& pipeline = pipelineOf(context);
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
void apply(const GL& gl, void* context) {
    Pipeline& pipeline = makePipeline(gl, context);
    const bool isUsed = fillStages(gl, pipeline);
    if (isUsed) // a program of GL's own would go before the pipeline
        gl.useProgram(0);
    if (isUsed != pipeline.isBound)
        gl.bindProgramPipeline(isUsed ? pipeline.name : 0);
    pipeline.isBound = isUsed;
}

void setEnabled(int stage, bool on) {
    binding().isEnabled[stage] = on;
    void* context = nullptr;
    if (const GL* gl = usableGL(context))
        guarded([&] { apply(*gl, context); });
}

int stageOf(CGprofile profile) {
    return isVertexProfile(profile) ? kVertex : kFragment;
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
    void* context = nullptr;
    const GL* gl = binding().isEnabled[stage] ? usableGL(context) : nullptr;
    if (!gl)
        return;
    guarded([&] {
        // Under way in this context: only the stage changes, as from material to material.
        if (Pipeline& pipeline = pipelineOf(context); pipeline.isBound)
            fillStages(*gl, pipeline);
        else
            apply(*gl, context);
    });
}
