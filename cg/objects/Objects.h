#pragma once

#include "compile/Compiler.h"

#include <Cg/cg.h>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orlocg {

struct ContextObject;
struct EffectObject;
struct EffectPart;
struct ProgramObject;

/// What libCgGL.so hangs on a program; goes with it.
struct Extension {
    Extension() = default;
    virtual ~Extension() = default;
    Extension(const Extension&) = delete;
    Extension& operator=(const Extension&) = delete;
};

/// A parameter, a member or an element of one.
struct ParameterObject {
    CGparameter handle = nullptr;
    ContextObject* context = nullptr;
    EffectObject* effect = nullptr;      ///< of a whole that is one of an effect's
    CGtype objectType = CG_UNKNOWN_TYPE; ///< CG_STRING or CG_TEXTURE, of that
    ProgramObject* program = nullptr;    ///< null: the context's own
    ParameterObject* parent = nullptr;
    const Variable* variable = nullptr; ///< of the whole; null where there is no program
    const Type* type = nullptr;
    std::string name; ///< with its owners
    std::string semantic;
    CGresource resource = CG_UNDEFINED;
    unsigned long resourceIndex = 0;
    int unit = -1; ///< of a sampler that the program reads
    bool isUniform = false;
    bool isOutput = false;
    bool isLiteral = false; ///< of a whole: its value is a constant of the program
    std::vector<std::unique_ptr<ParameterObject>> parts; ///< members or elements
    size_t place = 0;                                    ///< among its owner's parts
    std::vector<double> initial;                         ///< of a leaf, where the program gives some

    // What a leaf is set to.
    std::vector<float> values; ///< read by valuesOf(); empty: nobody has asked for them
    unsigned texture = 0;
    int location = -1;      ///< where GL has it
    bool isWaiting = false; ///< to be sent, in its program's `waiting`

    int buffer = -1; ///< which of the program's buffers it is read from
    int offset = -1; ///< its first byte there

    ParameterObject* source = nullptr; ///< that it is connected to
    std::vector<ParameterObject*> destinations;

    std::string glslName;     ///< that cgGetParameterResourceName gave
    std::vector<double> told; ///< that cgGetParameterValues gave

    bool isLeaf() const { return parts.empty(); }
    Direction direction() const { return variable ? variable->direction : Direction::In; }
    bool isReferenced() const { return variable && variable->isReferenced; }
};

using ParameterList = std::vector<std::unique_ptr<ParameterObject>>;

struct ProgramObject {
    CGprogram handle = nullptr;
    ContextObject* context = nullptr;
    CGprofile profile = CG_PROFILE_UNKNOWN;
    std::string source;
    bool isObject = false; ///< the source is what a compiled program's text was
    CompileOptions options;
    std::vector<std::string> arguments;
    std::vector<const char*> argumentTexts; ///< the same for C, up to a null
    std::unique_ptr<CompiledProgram> compiled;
    bool isStale = false;        ///< changed since it was compiled
    ParameterList parameters[2]; ///< of the entry, and globals
    std::vector<ParameterObject*> waiting;
    std::array<CGbuffer, 12> buffers{};  ///< that parameters are read from
    bool readsBuffers = false;           ///< some are
    std::map<CGenum, std::string> texts; ///< that cgGetProgramString gave
    std::unique_ptr<Extension> extension;

    /// The programs that a combined one is made of, each of a stage of its own. They have a handle, and
    /// aren't among their context's.
    std::vector<std::unique_ptr<ProgramObject>> domains;
    ProgramObject* combined = nullptr; ///< that it is a part of

    /// Compiles the source and makes the parameters. False: the context's listing says why.
    bool compile();
    /// Their handles are stale from then on.
    void forgetParameters();
    /// GLSL, with the values of literal parameters.
    std::string glsl() const;
};

struct ContextObject {
    ContextObject();
    ~ContextObject();

    CGcontext handle = nullptr;
    std::string listing;
    bool hasListing = false;
    std::vector<std::unique_ptr<ProgramObject>> programs;

    std::vector<std::unique_ptr<EffectObject>> effects;
    std::vector<std::unique_ptr<EffectPart>> states[2]; ///< that effects name, of passes and of samplers
    std::map<std::string, EffectPart*> statesByName[2];

    Types types; ///< of its own parameters
    ParameterList parameters;

    CGenum autoCompile = CG_COMPILE_IMMEDIATE;
    CGenum settingMode = CG_IMMEDIATE_PARAMETER_SETTING;
    bool managesTextures = false;
    std::map<std::string, std::string> includes; ///< texts by name
    CGIncludeCallbackFunc includeCallback = nullptr;
};

struct BufferObject {
    CGbuffer handle = nullptr;
    ContextObject* context = nullptr;
    CGbufferusage usage = CG_BUFFER_USAGE_STATIC_DRAW;
    std::vector<unsigned char> bytes;
    bool isMapped = false;
    std::unique_ptr<Extension> extension; ///< where OpenGL has the bytes too
};

/// Gives a program's parameters the values that stand in its buffers.
void readBuffers(ProgramObject& program);

/// Finds the place in a buffer of each parameter that asks for one, "BUFFER[1]" or "BUFFER[1][16]": one
/// behind the other as OpenGL lays out uniform blocks (std140).
void placeInBuffers(ProgramObject& program);

/// What libCgGL.so does for libCg.so, where it is loaded.
class Binding {
public:
    virtual ~Binding() = default;

    /// Hands a leaf's values to its program, if that is loaded and uses them.
    virtual void send(const ParameterObject& leaf) = 0;
    /// The same of elements of an array, in one call.
    virtual void sendElements(const ParameterObject& array, size_t first, size_t count) = 0;
    /// Makes them GL's current attribute of a varying parameter.
    virtual void setAttribute(const ParameterObject& p, const float (&v)[4]) = 0;
    /// Loads a program whose text is another, if it is loaded.
    virtual void reload(ProgramObject& program) = 0;
    /// Takes a buffer's bytes to OpenGL, where it has them too, and back.
    virtual void store(const BufferObject& buffer) = 0;
    virtual void fetch(BufferObject& buffer) = 0;
};

/// Handles are numbers, never addresses: one that is stale is found out, whoever has its memory now. All of
/// these give null and raise the error for a handle that is none of theirs.
ContextObject* find(CGcontext handle);
ProgramObject* find(CGprogram handle);
ParameterObject* find(CGparameter handle);

/// What a file holds that a program or an effect includes: one of the context's own, else one on the disk.
/// The context's have the names that programs write, whatever folder those are in.
std::optional<std::string> readIncluded(ContextObject& context, const CompileOptions& options,
                                        const std::string& path);

/// A file of the disk; nothing where it can't be read.
std::optional<std::string> readFile(const std::string& path);

/// Takes note of an error and tells the callback and the handler.
void raise(CGerror error);

} // namespace orlocg

// The same for libCgGL.so, which is built with this one.
extern "C" {
orlocg::ContextObject* orlocg_findContext(CGcontext handle);
orlocg::ProgramObject* orlocg_findProgram(CGprogram handle);
orlocg::ParameterObject* orlocg_findParameter(CGparameter handle);
orlocg::BufferObject* orlocg_findBuffer(CGbuffer handle);
void orlocg_raise(CGerror error);
void orlocg_setBinding(orlocg::Binding* binding);

/// After a leaf was set, or elements of an array of leaves: tells GL, now or later, and what is connected.
void orlocg_changed(orlocg::ParameterObject* leaf);
void orlocg_changedElements(orlocg::ParameterObject* array, size_t first, size_t count);
/// Sends what waits, and what stands in buffers.
void orlocg_sendWaiting(orlocg::ProgramObject* program);
/// Compiles a stale program where its context compiles them when they are needed. False: it isn't compiled.
bool orlocg_compileForUse(orlocg::ProgramObject* program);
}
