#include "Loaded.h"
#include "StateTable.h"
#include "objects/Values.h"

#include <Cg/cgGL.h>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

// OpenGL's states as effects name them: what sets each, sets it back to what OpenGL begins with, and tells
// whether a value can be.

namespace orlocg {

const StateCalls& stateCalls() {
    static const StateCalls calls = [] {
        StateCalls found{};
        found.isComplete = true;
        const auto find = [&](auto& slot, const char* name) {
            slot = reinterpret_cast<std::remove_reference_t<decltype(slot)>>(findEntryPoint(name));
            found.isComplete = found.isComplete && slot;
        };
#define CG_FIND(name) find(found.name, #name);
#define CG_FIND_LATER(type, name) find(found.name, #name);
        CG_STATE_CALLS(CG_FIND)
        CG_LATER_STATE_CALLS(CG_FIND_LATER)
#undef CG_FIND
#undef CG_FIND_LATER
        return found;
    }();
    return calls;
}

namespace {

/// Whether states can be set; an error if not.
bool canSetStates() {
    if (!usableGL())
        return false;
    if (!stateCalls().isComplete)
        orlocg_raise(CG_UNSUPPORTED_GL_EXTENSION_ERROR);
    return stateCalls().isComplete;
}

bool isSame(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

// States of numbers.

/// The one of a table that an assignment is of; null: it is another's.
template <typename States>
auto stateIn(const States& all, CGstateassignment assignment) -> decltype(&*std::begin(all)) {
    const char* name = cgGetStateName(cgGetStateAssignmentState(assignment));
    const auto found = std::find_if(std::begin(all), std::end(all), [&](const auto& each) {
        return name && each.name == std::string_view(name);
    });
    return found == std::end(all) ? nullptr : &*found;
}

const NumberState* numberStateOf(CGstateassignment assignment) {
    return stateIn(numberStates(), assignment);
}

/// What is assigned; none where the state can't have it.
std::vector<double> numbersOf(CGstateassignment assignment, const NumberState* state) {
    int count = 0;
    const float* found = cgGetFloatStateAssignmentValues(assignment, &count);
    const int index = cgGetStateAssignmentIndex(assignment);
    if (!state || !found || count < state->least || count > state->most || index >= state->indices)
        return {};
    for (int i = 0; i < std::min(state->wordCount, count); ++i)
        if (std::none_of(state->words.begin(), state->words.end(),
                         [&](const StateWord& word) { return static_cast<float>(word.value) == found[i]; }))
            return {};
    return {found, found + count};
}

CGbool setNumberState(CGstateassignment assignment) {
    const NumberState* state = numberStateOf(assignment);
    const std::vector<double> numbers = numbersOf(assignment, state);
    if (numbers.empty() || !canSetStates())
        return CG_FALSE;
    state->apply(numbers, state->what, cgGetStateAssignmentIndex(assignment));
    return CG_TRUE;
}

CGbool resetNumberState(CGstateassignment assignment) {
    const NumberState* state = numberStateOf(assignment);
    const int index = cgGetStateAssignmentIndex(assignment);
    if (!state || index >= state->indices || !canSetStates())
        return CG_FALSE;
    const size_t count = std::min<size_t>(static_cast<size_t>(state->most), state->usual.size());
    state->apply({state->usual.data(), count}, state->what, index);
    return CG_TRUE;
}

CGbool validateNumberState(CGstateassignment assignment) {
    return !numbersOf(assignment, numberStateOf(assignment)).empty();
}

// Programs.

enum class ProgramStage : uint8_t { Vertex, Fragment, Other };

struct ProgramState {
    const char* name;
    CGtype type;
    ProgramStage stage;
};

constexpr ProgramState kProgramStates[] = {
    {"VertexProgram", CG_PROGRAM_TYPE, ProgramStage::Vertex},
    {"VertexShader", CG_VERTEXSHADER_TYPE, ProgramStage::Vertex},
    {"FragmentProgram", CG_PROGRAM_TYPE, ProgramStage::Fragment},
    {"PixelShader", CG_PIXELSHADER_TYPE, ProgramStage::Fragment},
    {"GeometryProgram", CG_PROGRAM_TYPE, ProgramStage::Other},
    {"GeometryShader", CG_PROGRAM_TYPE, ProgramStage::Other},
    {"TessellationControlProgram", CG_PROGRAM_TYPE, ProgramStage::Other},
    {"TessellationEvaluationProgram", CG_PROGRAM_TYPE, ProgramStage::Other}};

ProgramStage stageOf(CGstateassignment assignment) {
    const ProgramState* state = stateIn(kProgramStates, assignment);
    return state ? state->stage : ProgramStage::Other;
}

/// The sampler of an effect's that one of a program follows; null: none.
const ParameterObject* effectSamplerOf(const ParameterObject& sampler) {
    std::vector<size_t> places; // from the sampler up
    for (const ParameterObject* at = &sampler; at; at = at->parent) {
        if (const ParameterObject* from = at->source) {
            for (size_t i = places.size(); i > 0; --i)
                from = from->parts[places[i - 1]].get();
            return from;
        }
        places.push_back(at->place);
    }
    return nullptr;
}

/// A sampler's state of that name; null: it isn't written with it.
CGstateassignment samplerState(CGparameter sampler, std::string_view name) {
    CGstateassignment found = cgGetFirstSamplerStateAssignment(sampler);
    while (found && !isSame(cgGetStateName(cgGetSamplerStateAssignmentState(found)), name))
        found = cgGetNextStateAssignment(found);
    return found;
}

/// Gives an effect's sampler the texture of the parameter that its state names.
void takeNamedTexture(const ParameterObject& sampler) {
    const CGstateassignment named = samplerState(sampler.handle, "Texture");
    const CGparameter texture = named ? cgGetTextureStateAssignmentValue(named) : nullptr;
    const GLuint name = texture ? cgGLGetTextureParameter(texture) : 0;
    if (name != 0 && sampler.texture != name)
        cgGLSetupSampler(sampler.handle, name);
}

/// Does so for all that a program reads, and binds what they have.
void bindTextures(const GL& gl, const ProgramObject& program) {
    for (const ParameterObject* sampler : loaded(program)->samplers) {
        if (const ParameterObject* from = effectSamplerOf(*sampler))
            takeNamedTexture(*from);
        if (sampler->texture != 0)
            bindSampler(gl, *sampler, sampler->texture);
    }
}

CGprofile latestProfile(ProgramStage stage) {
    return stage == ProgramStage::Vertex ? CG_PROFILE_GLSLV : CG_PROFILE_GLSLF;
}

CGbool resetProgramState(CGstateassignment assignment) {
    const ProgramStage stage = stageOf(assignment);
    if (stage == ProgramStage::Other)
        return CG_TRUE;
    cgGLUnbindProgram(latestProfile(stage));
    cgGLDisableProfile(latestProfile(stage));
    return CG_TRUE;
}

bool fits(CGprogram program, ProgramStage stage) {
    const CGdomain domain = cgGetProfileDomain(cgGetProgramProfile(program));
    return domain == (stage == ProgramStage::Vertex ? CG_VERTEX_DOMAIN : CG_FRAGMENT_DOMAIN);
}

/// The program that is assigned, loaded; null: it is none of that stage's.
ProgramObject* loadedProgramOf(CGstateassignment assignment) {
    const CGprogram program = cgGetProgramStateAssignmentValue(assignment);
    if (!program || !fits(program, stageOf(assignment)) || !usableGL())
        return nullptr;
    if (!cgGLIsProgramLoaded(program))
        cgGLLoadProgram(program);
    return cgGLIsProgramLoaded(program) ? orlocg_findProgram(program) : nullptr;
}

/// "NULL", or 0.
bool isNothing(CGstateassignment assignment) {
    const char* text = cgGetStringStateAssignmentValue(assignment);
    int count = 0;
    const int* number = cgGetIntStateAssignmentValues(assignment, &count);
    return (text && isSame(text, "NULL")) || (count == 1 && *number == 0);
}

CGbool setProgramState(CGstateassignment assignment) {
    if (isNothing(assignment))
        return resetProgramState(assignment);
    const ProgramObject* program = loadedProgramOf(assignment);
    if (!program)
        return CG_FALSE;
    bindTextures(*openGL(), *program);
    cgGLBindProgram(program->handle);
    cgGLEnableProfile(program->profile);
    return CG_TRUE;
}

CGbool validateProgramState(CGstateassignment assignment) {
    return isNothing(assignment) || loadedProgramOf(assignment) != nullptr;
}

// Textures of OpenGL's own functions.

struct TextureState {
    const char* name;
    GLenum target;
};

constexpr TextureState kTextureStates[] = {{"Texture1D", GL_TEXTURE_1D},
                                           {"Texture2D", GL_TEXTURE_2D},
                                           {"Texture3D", GL_TEXTURE_3D},
                                           {"TextureCubeMap", GL_TEXTURE_CUBE_MAP},
                                           {"TextureRectangle", GL_TEXTURE_RECTANGLE},
                                           {"Texture", GL_TEXTURE_2D},
                                           {"Sampler", GL_TEXTURE_2D}};

constexpr int kMostTextures = 16;

CGbool validateTextureState(CGstateassignment assignment) {
    return cgGetStateAssignmentIndex(assignment) < kMostTextures &&
           (isNothing(assignment) || cgGetTextureStateAssignmentValue(assignment) != nullptr);
}

/// Binds a parameter's texture, null for none, to the unit with the assignment's index.
CGbool bindTo(CGstateassignment assignment, const ParameterObject* parameter) {
    if (!validateTextureState(assignment) || !canSetStates())
        return CG_FALSE;
    const TextureState* state = stateIn(kTextureStates, assignment);
    const bool isSampler = parameter && parameter->type->isSampler();
    const GLenum target = isSampler ? targetOf(*parameter) : (state ? state->target : GL_TEXTURE_2D);
    const GL& gl = *openGL();
    gl.activeTexture(GL_TEXTURE0 + static_cast<GLenum>(cgGetStateAssignmentIndex(assignment)));
    gl.bindTexture(target, parameter ? parameter->texture : 0);
    gl.activeTexture(GL_TEXTURE0);
    return CG_TRUE;
}

CGbool setTextureState(CGstateassignment assignment) {
    const CGparameter handle = cgGetTextureStateAssignmentValue(assignment);
    const ParameterObject* parameter = handle ? orlocg_findParameter(handle) : nullptr;
    if (parameter && parameter->type->isSampler())
        takeNamedTexture(*parameter);
    return bindTo(assignment, parameter);
}

CGbool resetTextureState(CGstateassignment assignment) {
    return bindTo(assignment, nullptr);
}

// States of samplers: of the texture that is bound to what the sampler reads.

constexpr StateWord kWraps[] = {{"Repeat", GL_REPEAT},
                                {"Wrap", GL_REPEAT},
                                {"Clamp", GL_CLAMP},
                                {"ClampToEdge", GL_CLAMP_TO_EDGE},
                                {"ClampToBorder", GL_CLAMP_TO_BORDER},
                                {"Border", GL_CLAMP_TO_BORDER},
                                {"MirroredRepeat", GL_MIRRORED_REPEAT},
                                {"Mirror", GL_MIRRORED_REPEAT}};

/// Of Direct3D: "Clamp" blends nothing in at the edge.
constexpr StateWord kAddresses[] = {{"Wrap", GL_REPEAT},
                                    {"Repeat", GL_REPEAT},
                                    {"Clamp", GL_CLAMP_TO_EDGE},
                                    {"ClampToEdge", GL_CLAMP_TO_EDGE},
                                    {"Border", GL_CLAMP_TO_BORDER},
                                    {"ClampToBorder", GL_CLAMP_TO_BORDER},
                                    {"Mirror", GL_MIRRORED_REPEAT},
                                    {"MirroredRepeat", GL_MIRRORED_REPEAT}};

constexpr StateWord kFilters[] = {{"Nearest", GL_NEAREST},
                                  {"Point", GL_NEAREST},
                                  {"None", GL_NEAREST},
                                  {"Linear", GL_LINEAR},
                                  {"Anisotropic", GL_LINEAR},
                                  {"PyramidalQuad", GL_LINEAR},
                                  {"GaussianQuad", GL_LINEAR},
                                  {"NearestMipMapNearest", GL_NEAREST_MIPMAP_NEAREST},
                                  {"LinearMipMapNearest", GL_LINEAR_MIPMAP_NEAREST},
                                  {"NearestMipMapLinear", GL_NEAREST_MIPMAP_LINEAR},
                                  {"LinearMipMapLinear", GL_LINEAR_MIPMAP_LINEAR}};

constexpr StateWord kMipFilters[] = {{"None", GL_NONE},
                                     {"Nearest", GL_NEAREST},
                                     {"Point", GL_NEAREST},
                                     {"Linear", GL_LINEAR},
                                     {"Anisotropic", GL_LINEAR}};

constexpr StateWord kCompareModes[] = {{"None", GL_NONE}, {"CompareRToTexture", GL_COMPARE_R_TO_TEXTURE}};

constexpr StateWord kDepthModes[] = {
    {"Alpha", GL_ALPHA}, {"Intensity", GL_INTENSITY}, {"Luminance", GL_LUMINANCE}};

constexpr StateWord kCompareTests[] = {
    {"Never", GL_NEVER},         {"Less", GL_LESS},       {"LEqual", GL_LEQUAL},     {"LessEqual", GL_LEQUAL},
    {"Equal", GL_EQUAL},         {"Greater", GL_GREATER}, {"NotEqual", GL_NOTEQUAL}, {"GEqual", GL_GEQUAL},
    {"GreaterEqual", GL_GEQUAL}, {"Always", GL_ALWAYS}};

struct SamplerState { // NOLINT(clang-analyzer-optin.performance.Padding): as rows read best
    const char* name;
    CGtype type;
    StateWords words; ///< none: any number
    GLenum what;      ///< GL_NONE: it says nothing to OpenGL
    double usual;
    int most = 1;
};

constexpr SamplerState kSamplerStates[] = {
    {"AddressU", CG_INT, kAddresses, GL_TEXTURE_WRAP_S, GL_REPEAT},
    {"AddressV", CG_INT, kAddresses, GL_TEXTURE_WRAP_T, GL_REPEAT},
    {"AddressW", CG_INT, kAddresses, GL_TEXTURE_WRAP_R, GL_REPEAT},
    {"BorderColor", CG_FLOAT4, {}, GL_TEXTURE_BORDER_COLOR, 0, 4},
    {"CompareFunc", CG_INT, kCompareTests, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL},
    {"CompareMode", CG_INT, kCompareModes, GL_TEXTURE_COMPARE_MODE, GL_NONE},
    {"DepthMode", CG_INT, kDepthModes, GL_DEPTH_TEXTURE_MODE, GL_LUMINANCE},
    {"GenerateMipmap", CG_BOOL, {}, GL_GENERATE_MIPMAP, 0},
    {"LODBias", CG_FLOAT, {}, GL_TEXTURE_LOD_BIAS, 0},
    {"MagFilter", CG_INT, kFilters, GL_TEXTURE_MAG_FILTER, GL_LINEAR},
    {"MaxAnisotropy", CG_FLOAT, {}, GL_TEXTURE_MAX_ANISOTROPY_EXT, 1},
    {"MaxMipLevel", CG_FLOAT, {}, GL_TEXTURE_BASE_LEVEL, 0},
    {"MinFilter", CG_INT, kFilters, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_LINEAR},
    {"MinMipLevel", CG_FLOAT, {}, GL_TEXTURE_MAX_LEVEL, 1000},
    {"MipFilter", CG_INT, kMipFilters, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_LINEAR},
    {"MipLODBias", CG_FLOAT, {}, GL_TEXTURE_LOD_BIAS, 0},
    {"MipMapLODBias", CG_FLOAT, {}, GL_TEXTURE_LOD_BIAS, 0},
    {"SRGBTexture", CG_BOOL, {}, GL_NONE, 0}, // the picture's own format says so
    {"WrapR", CG_INT, kWraps, GL_TEXTURE_WRAP_R, GL_REPEAT},
    {"WrapS", CG_INT, kWraps, GL_TEXTURE_WRAP_S, GL_REPEAT},
    {"WrapT", CG_INT, kWraps, GL_TEXTURE_WRAP_T, GL_REPEAT}};

const SamplerState* samplerStateOf(CGstateassignment assignment) {
    return stateIn(kSamplerStates, assignment);
}

/// What is assigned; none where the state can't have it.
std::vector<float> samplerNumbersOf(CGstateassignment assignment) {
    const SamplerState* state = samplerStateOf(assignment);
    int count = 0;
    const float* found = cgGetFloatStateAssignmentValues(assignment, &count);
    if (!state || !found || count < 1 || (count != state->most && count != 1))
        return {};
    const bool isWord = std::any_of(state->words.begin(), state->words.end(), [&](const StateWord& word) {
        return static_cast<float>(word.value) == *found;
    });
    return isWord || state->words.empty() ? std::vector<float>(found, found + count) : std::vector<float>();
}

CGbool validateSamplerState(CGstateassignment assignment) {
    return !samplerNumbersOf(assignment).empty();
}

/// A sampler's number of that state; `otherwise`: it has none.
GLenum samplerNumber(CGparameter sampler, const char* name, GLenum otherwise) {
    const CGstateassignment found = samplerState(sampler, name);
    const std::vector<float> numbers = found ? samplerNumbersOf(found) : std::vector<float>();
    return numbers.empty() ? otherwise : static_cast<GLenum>(numbers[0]);
}

/// OpenGL's one filter of what two states say, in whatever order.
GLenum minifyingFilter(CGparameter sampler) {
    const GLenum within = samplerNumber(sampler, "MinFilter", GL_LINEAR);
    const GLenum between = samplerNumber(sampler, "MipFilter", GL_NONE);
    if (between == GL_NONE || (within != GL_NEAREST && within != GL_LINEAR))
        return within;
    if (between == GL_NEAREST)
        return within == GL_NEAREST ? GL_NEAREST_MIPMAP_NEAREST : GL_LINEAR_MIPMAP_NEAREST;
    return within == GL_NEAREST ? GL_NEAREST_MIPMAP_LINEAR : GL_LINEAR_MIPMAP_LINEAR;
}

CGbool giveSamplerState(CGstateassignment assignment, std::vector<float> numbers, bool isReset) {
    const SamplerState* state = samplerStateOf(assignment);
    const CGparameter handle = cgGetSamplerStateAssignmentParameter(assignment);
    const ParameterObject* sampler = orlocg_findParameter(handle);
    if (!state || numbers.empty() || !sampler || !canSetStates())
        return CG_FALSE;
    const GLenum target = targetOf(*sampler);
    numbers.resize(4, numbers.back());
    if (state->what == GL_TEXTURE_BORDER_COLOR)
        stateCalls().glTexParameterfv(target, state->what, numbers.data());
    else if (state->what == GL_TEXTURE_MIN_FILTER && !isReset)
        stateCalls().glTexParameteri(target, state->what, static_cast<GLint>(minifyingFilter(handle)));
    else if (!state->words.empty() || state->type == CG_BOOL) {
        if (state->what != GL_NONE)
            stateCalls().glTexParameteri(target, state->what, static_cast<GLint>(numbers[0]));
    } else
        stateCalls().glTexParameterf(target, state->what, numbers[0]);
    return CG_TRUE;
}

CGbool setSamplerState(CGstateassignment assignment) {
    return giveSamplerState(assignment, samplerNumbersOf(assignment), false);
}

std::vector<float> usualOf(CGstateassignment assignment) {
    const SamplerState* state = samplerStateOf(assignment);
    return state ? std::vector{static_cast<float>(state->usual)} : std::vector<float>();
}

CGbool resetSamplerState(CGstateassignment assignment) {
    return giveSamplerState(assignment, usualOf(assignment), true);
}

/// Which texture it is says the parameter.
CGbool leaveSamplerTexture(CGstateassignment) {
    return CG_TRUE;
}

CGbool validateSamplerTexture(CGstateassignment assignment) {
    return cgGetTextureStateAssignmentValue(assignment) != nullptr;
}

void addWords(CGstate state, StateWords words) {
    for (const StateWord& word : words)
        cgAddStateEnumerant(state, word.name, word.value);
}

void registerStates(CGcontext context) {
    for (const NumberState& each : numberStates()) {
        const CGstate state = cgCreateState(context, each.name, each.type);
        addWords(state, each.words);
        cgSetStateCallbacks(state, setNumberState, resetNumberState, validateNumberState);
    }
    for (const ProgramState& each : kProgramStates)
        cgSetStateCallbacks(cgCreateState(context, each.name, each.type), setProgramState, resetProgramState,
                            validateProgramState);
    for (const TextureState& each : kTextureStates)
        cgSetStateCallbacks(cgCreateState(context, each.name, CG_TEXTURE), setTextureState, resetTextureState,
                            validateTextureState);
    for (const SamplerState& each : kSamplerStates) {
        const CGstate state = cgCreateSamplerState(context, each.name, each.type);
        addWords(state, each.words);
        cgSetStateCallbacks(state, setSamplerState, resetSamplerState, validateSamplerState);
    }
    cgSetStateCallbacks(cgCreateSamplerState(context, "Texture", CG_TEXTURE), leaveSamplerTexture,
                        leaveSamplerTexture, validateSamplerTexture);
}

/// What is bound to a target of the unit that is active.
GLuint boundTo(GLenum target) {
    constexpr std::pair<GLenum, GLenum> kBindings[] = {{GL_TEXTURE_1D, GL_TEXTURE_BINDING_1D},
                                                       {GL_TEXTURE_2D, GL_TEXTURE_BINDING_2D},
                                                       {GL_TEXTURE_3D, GL_TEXTURE_BINDING_3D},
                                                       {GL_TEXTURE_RECTANGLE, GL_TEXTURE_BINDING_RECTANGLE},
                                                       {GL_TEXTURE_CUBE_MAP, GL_TEXTURE_BINDING_CUBE_MAP},
                                                       {GL_TEXTURE_1D_ARRAY, GL_TEXTURE_BINDING_1D_ARRAY},
                                                       {GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BINDING_2D_ARRAY}};
    GLint name = 0;
    for (const auto& [each, binding] : kBindings)
        if (each == target)
            stateCalls().glGetIntegerv(binding, &name);
    return static_cast<GLuint>(name);
}

} // namespace

} // namespace orlocg

using namespace orlocg;

void cgGLRegisterStates(CGcontext context) {
    if (!orlocg_findContext(context))
        return;
    const CGstate known = cgGetNamedState(context, numberStates()[0].name);
    if (!known || !cgGetStateSetCallback(known)) // once is enough
        guarded([&] { registerStates(context); });
}

void cgGLSetupSampler(CGparameter handle, GLuint texture) {
    const ParameterObject* sampler = orlocg_findParameter(handle);
    if (!sampler)
        return;
    if (!sampler->type->isSampler())
        return orlocg_raise(CG_INVALID_PARAMETER_ERROR);
    if (!canSetStates())
        return;
    const GLenum target = targetOf(*sampler);
    const GLuint before = boundTo(target);
    openGL()->bindTexture(target, texture);
    cgSetSamplerState(handle);
    openGL()->bindTexture(target, before);
    cgGLSetTextureParameter(handle, texture);
}
