#include "Loaded.h"
#include "objects/GlslNames.h"
#include "objects/Names.h"
#include "objects/Values.h"

#include <Cg/cgGL.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <utility>

// Each Cg program is a GL program of one stage. Those that are bound and enabled stand in a pipeline object,
// of which there is one for each context; a stage that is empty is GL's own.

namespace orlocg {

namespace {

constexpr int kVertex = 0;
constexpr int kFragment = 1;

/// GL's names of the programs of both stages; 0: none.
using Stages = std::array<GLuint, 2>;

/// What a context has bound.
struct Pipeline {
    GLuint name = 0;
    Stages stages{};
    bool isBound = false;
};

struct Bound {
    const LoadedProgram* bound[2] = {}; ///< null: none, or it is gone
    bool isEnabled[2] = {};
    Stages wanted{}; ///< what is bound and enabled
    bool isDebugging = false;

    // The context that was current last, and its pipeline: most programs draw in one.
    void* context = nullptr;
    Pipeline* pipeline = nullptr;

    void set(int stage, const LoadedProgram* program, bool enabled) {
        bound[stage] = program;
        isEnabled[stage] = enabled;
        wanted[stage] = program && enabled ? program->name : 0;
    }
};

Bound& binding() {
    static Bound theBinding;
    return theBinding;
}

/// Kept out of the way of those that draw in one context.
[[gnu::noinline]] void changeContext(void* context) {
    static std::map<void*, Pipeline> thePipelines;
    binding().pipeline = &thePipelines[context];
    binding().context = context;
}

inline Pipeline& pipelineOf(void* context) {
    if (binding().context != context)
        changeContext(context);
    return *binding().pipeline;
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
                   [](float value) { return numberFrom<GLint>(value); });
    gl.uniformInts[size - 1](program.name, location, elements, whole.data());
}

} // namespace

LoadedProgram::~LoadedProgram() {
    for (const int stage : {kVertex, kFragment})
        if (binding().bound[stage] == this)
            binding().set(stage, nullptr, binding().isEnabled[stage]);
    const GL* gl = openGL();
    if (gl && gl->currentContext())
        gl->deleteProgram(name);
}

const GL* usableGL() {
    void* context = nullptr;
    return usableGL(context);
}

const GL* usableGL(void*& context) {
    static const GL* const gl = openGL();
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

GLenum targetOf(const ParameterObject& sampler) {
    constexpr std::array<GLenum, 8> kTargets = {
        GL_TEXTURE_2D,        GL_TEXTURE_1D,       GL_TEXTURE_2D,       GL_TEXTURE_3D,
        GL_TEXTURE_RECTANGLE, GL_TEXTURE_CUBE_MAP, GL_TEXTURE_1D_ARRAY, GL_TEXTURE_2D_ARRAY};
    return kTargets[static_cast<size_t>(sampler.type->sampler)];
}

void bindSampler(const GL& gl, const ParameterObject& sampler, GLuint texture) {
    if (sampler.location < 0)
        return; // the program doesn't use it
    gl.activeTexture(GL_TEXTURE0 + static_cast<GLenum>(sampler.unit));
    gl.bindTexture(targetOf(sampler), texture);
    gl.activeTexture(GL_TEXTURE0);
}

namespace {

// Loading and binding.

/// Compiles and links; 0 where GL refuses, and the context's listing says why.
GLuint makeProgram(const GL& gl, ProgramObject& program) {
    const bool isVertex = program.options.stage == Stage::Vertex;
    const GLuint shader = gl.createShader(isVertex ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER);
    const GLuint name = gl.createProgram();
    const std::string glsl = program.glsl();
    const char* text = glsl.c_str();
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

/// Finds a loaded program's uniforms and gives them their values.
void fill(const GL& gl, ProgramObject& program) {
    LoadedProgram& to = *loaded(program);
    to.samplers.clear();
    forEachLeaf(program, [&](ParameterObject& leaf, const std::string& glsl) {
        leaf.location = gl.getUniformLocation(to.name, glsl.c_str());
        if (leaf.location < 0)
            return;
        if (leaf.type->isNumeric())
            return send(to, leaf.location, leaf.type, 1, valuesOf(leaf).data());
        gl.uniformInts[0](to.name, leaf.location, 1, &leaf.unit);
        to.samplers.push_back(&leaf);
    });
    for (ParameterObject* waiting : std::exchange(program.waiting, {}))
        waiting->isWaiting = false;
}

/// GL errors that a call left, in debug mode: they are an error of the runtime's then.
void checkDebug(const GL& gl, CGerror error) {
    if (!binding().isDebugging)
        return;
    bool failed = false;
    while (gl.getError() != GL_NO_ERROR)
        failed = true;
    if (failed)
        orlocg_raise(error);
}

void load(ProgramObject& program) {
    const GL* gl = usableGL();
    if (!gl || !orlocg_compileForUse(&program))
        return gl ? orlocg_raise(CG_COMPILER_ERROR) : void();
    if (!loaded(program)) {
        const GLuint name = makeProgram(*gl, program);
        if (name == 0)
            return orlocg_raise(CG_PROGRAM_LOAD_ERROR);
        program.extension = std::make_unique<LoadedProgram>(name);
    }
    fill(*gl, program);
    checkDebug(*gl, CG_PROGRAM_LOAD_ERROR);
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
inline bool fillStages(const GL& gl, Pipeline& pipeline) {
    const Stages& wanted = binding().wanted;
    if (pipeline.stages[kVertex] != wanted[kVertex])
        gl.useProgramStages(pipeline.name, GL_VERTEX_SHADER_BIT, wanted[kVertex]);
    if (pipeline.stages[kFragment] != wanted[kFragment])
        gl.useProgramStages(pipeline.name, GL_FRAGMENT_SHADER_BIT, wanted[kFragment]);
    pipeline.stages = wanted;
    return wanted != Stages{};
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
    binding().set(stage, binding().bound[stage], on);
    void* context = nullptr;
    if (const GL* gl = usableGL(context))
        guarded([&] { apply(*gl, context); });
}

int stageOf(const ProgramObject& program) {
    return program.options.stage == Stage::Vertex ? kVertex : kFragment;
}

/// The stage that programs of a profile take; -1 and an error: there are none. Materials enable the two
/// profiles that are the latest again and again.
int stageOf(CGprofile profile) {
    if (profile == CG_PROFILE_GLSLV || profile == CG_PROFILE_GLSLF)
        return profile == CG_PROFILE_GLSLV ? kVertex : kFragment;
    if (isCompiledFor(profile))
        return isVertexProfile(profile) ? kVertex : kFragment;
    orlocg_raise(CG_INVALID_PROFILE_ERROR);
    return -1;
}

/// Puts a stage's program, null for none, in its place.
void bind(int stage, const LoadedProgram* program) {
    binding().set(stage, program, binding().isEnabled[stage]);
    void* context = nullptr;
    const GL* gl = binding().isEnabled[stage] ? usableGL(context) : nullptr;
    if (!gl)
        return;
    // Under way in this context: only the stage changes, as from material to material.
    if (Pipeline& pipeline = pipelineOf(context); pipeline.isBound && program)
        fillStages(*gl, pipeline);
    else
        apply(*gl, context);
    checkDebug(*gl, CG_PROGRAM_BIND_ERROR);
}

/// Puts the textures of a program's samplers on their units. Most hosts do that themselves: kept out of their
/// way.
[[gnu::noinline]] void bindTextures(const ProgramObject& program) {
    const GL* gl = usableGL();
    for (const ParameterObject* sampler : loaded(program)->samplers)
        if (gl && sampler->texture != 0)
            bindSampler(*gl, *sampler, sampler->texture);
}

void bind(ProgramObject& program) {
    if (!loaded(program))
        return orlocg_raise(CG_PROGRAM_NOT_LOADED_ERROR);
    bind(stageOf(program), loaded(program));
    if (!program.waiting.empty() || program.readsBuffers)
        orlocg_sendWaiting(&program);
    if (program.context->managesTextures)
        bindTextures(program);
}

void unload(ProgramObject& program) {
    if (!loaded(program))
        return;
    const int stage = stageOf(program);
    if (binding().bound[stage] == loaded(program))
        bind(stage, nullptr);
    forEachLeaf(program, [](ParameterObject& leaf, const std::string&) { leaf.location = -1; });
    program.extension.reset();
}

/// Calls `use` with the programs that a program is made of, itself where it isn't combined.
template <typename Use>
void forEachStage(CGprogram handle, Use&& use) {
    ProgramObject* program = orlocg_findProgram(handle);
    if (!program)
        return;
    guarded([&] {
        if (program->domains.empty())
            return use(*program);
        for (const std::unique_ptr<ProgramObject>& stage : program->domains)
            use(*stage);
    });
}

class GLBinding : public Binding {
public:
    GLBinding() { orlocg_setBinding(this); }
    ~GLBinding() override { orlocg_setBinding(nullptr); }

    void send(const ParameterObject& leaf) override {
        if (leaf.location >= 0)
            orlocg::send(*loaded(*leaf.program), leaf.location, leaf.type, 1, leaf.values.data());
    }

    void sendElements(const ParameterObject& array, size_t first, size_t count) override {
        if (count == 0 || array.parts[first]->location < 0)
            return;
        static std::vector<float> values;
        values.clear();
        for (size_t i = first; i < first + count; ++i) {
            const std::vector<float>& own = valuesOf(*array.parts[i]);
            values.insert(values.end(), own.begin(), own.end());
        }
        orlocg::send(*loaded(*array.program), array.parts[first]->location, array.type->element, count,
                     values.data());
    }

    void setAttribute(const ParameterObject& p, const float (&v)[4]) override;
    void reload(ProgramObject& program) override;
    void store(const BufferObject& buffer) override { storeBuffer(buffer); }
    void fetch(BufferObject& buffer) override { fetchBuffer(buffer); }
};

void GLBinding::setAttribute(const ParameterObject& p, const float (&v)[4]) {
    const GL* gl = usableGL();
    const int resource = p.resource;
    if (!gl || p.isOutput || p.program->options.stage != Stage::Vertex)
        return;
    if (isTexCoord(resource))
        gl->multiTexCoord4f(GL_TEXTURE0 + static_cast<GLenum>(resource - CG_TEXCOORD0), v[0], v[1], v[2],
                            v[3]);
    else if (resource == CG_COLOR0)
        gl->color4f(v[0], v[1], v[2], v[3]);
    else if (resource == CG_COLOR1)
        gl->secondaryColor3f(v[0], v[1], v[2]);
    else if (resource == CG_NORMAL0)
        gl->normal3f(v[0], v[1], v[2]);
    else if (resource == CG_FOGCOORD)
        gl->fogCoordf(v[0]);
    else if (isGeneric(resource))
        gl->vertexAttrib4f(static_cast<GLuint>(resource - CG_ATTR0), v[0], v[1], v[2], v[3]);
    else
        orlocg_raise(CG_INVALID_PARAMETER_ERROR);
}

/// What is bound stays bound. A program that GL refuses, or that there is no context for, is not loaded any
/// more.
void GLBinding::reload(ProgramObject& program) {
    LoadedProgram& to = *loaded(program);
    const GL* gl = usableGL();
    const GLuint name = gl ? makeProgram(*gl, program) : 0;
    if (name == 0) {
        unload(program);
        return gl ? orlocg_raise(CG_PROGRAM_LOAD_ERROR) : void();
    }
    gl->deleteProgram(std::exchange(to.name, name));
    fill(*gl, program);
    const int stage = stageOf(program);
    if (binding().bound[stage] == &to)
        bind(stage, &to);
}

const GLBinding theGLBinding;

} // namespace

} // namespace orlocg

using namespace orlocg;

CGbool cgGLIsProfileSupported(CGprofile profile) {
    return isCompiledFor(profile) && usableGL() != nullptr;
}

void cgGLEnableProfile(CGprofile profile) {
    if (const int stage = stageOf(profile); stage >= 0)
        setEnabled(stage, true);
}

void cgGLDisableProfile(CGprofile profile) {
    if (const int stage = stageOf(profile); stage >= 0)
        setEnabled(stage, false);
}

void cgGLEnableProgramProfiles(CGprogram program) {
    forEachStage(program, [](const ProgramObject& stage) { cgGLEnableProfile(stage.profile); });
}

void cgGLDisableProgramProfiles(CGprogram program) {
    forEachStage(program, [](const ProgramObject& stage) { cgGLDisableProfile(stage.profile); });
}

CGprofile cgGLGetLatestProfile(CGGLenum profileType) {
    switch (profileType) {
    case CG_GL_VERTEX:
        return cgGLIsProfileSupported(CG_PROFILE_GLSLV) ? CG_PROFILE_GLSLV : CG_PROFILE_UNKNOWN;
    case CG_GL_FRAGMENT:
        return cgGLIsProfileSupported(CG_PROFILE_GLSLF) ? CG_PROFILE_GLSLF : CG_PROFILE_UNKNOWN;
    case CG_GL_GEOMETRY:
    case CG_GL_TESSELLATION_CONTROL:
    case CG_GL_TESSELLATION_EVALUATION:
        return CG_PROFILE_UNKNOWN;
    default:
        orlocg_raise(CG_INVALID_ENUMERANT_ERROR);
        return CG_PROFILE_UNKNOWN;
    }
}

void cgGLSetOptimalOptions(CGprofile profile) {
    if (!isCompiledFor(profile))
        orlocg_raise(CG_INVALID_PROFILE_ERROR);
}

void cgGLSetContextOptimalOptions(CGcontext context, CGprofile profile) {
    if (orlocg_findContext(context))
        cgGLSetOptimalOptions(profile);
}

const char** cgGLGetOptimalOptions(CGprofile profile) {
    static const char* none[] = {nullptr};
    cgGLSetOptimalOptions(profile);
    return isCompiledFor(profile) ? none : nullptr;
}

const char** cgGLGetContextOptimalOptions(CGcontext context, CGprofile profile) {
    return orlocg_findContext(context) ? cgGLGetOptimalOptions(profile) : nullptr;
}

void cgGLSetDebugMode(CGbool on) {
    binding().isDebugging = on != CG_FALSE;
}

void cgGLSetManageTextureParameters(CGcontext handle, CGbool on) {
    if (ContextObject* context = orlocg_findContext(handle))
        context->managesTextures = on != CG_FALSE;
}

CGbool cgGLGetManageTextureParameters(CGcontext handle) {
    const ContextObject* context = orlocg_findContext(handle);
    return context && context->managesTextures;
}

void cgGLLoadProgram(CGprogram program) {
    forEachStage(program, [](ProgramObject& stage) { load(stage); });
}

void cgGLUnloadProgram(CGprogram program) {
    forEachStage(program, [](ProgramObject& stage) { unload(stage); });
}

CGbool cgGLIsProgramLoaded(CGprogram program) {
    bool areAll = orlocg_findProgram(program) != nullptr;
    if (areAll)
        forEachStage(program, [&](const ProgramObject& stage) { areAll = areAll && loaded(stage); });
    return areAll;
}

GLuint cgGLGetProgramID(CGprogram handle) {
    const ProgramObject* program = orlocg_findProgram(handle);
    const LoadedProgram* found = program ? loaded(*program) : nullptr;
    if (program && !found)
        orlocg_raise(CG_PROGRAM_NOT_LOADED_ERROR);
    return found ? found->name : 0;
}

void cgGLBindProgram(CGprogram program) {
    forEachStage(program, [](ProgramObject& stage) { bind(stage); });
}

void cgGLUnbindProgram(CGprofile profile) {
    if (const int stage = stageOf(profile); stage >= 0)
        guarded([&] { bind(stage, nullptr); });
}
