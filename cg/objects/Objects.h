#pragma once

#include "compile/Compiler.h"

#include <Cg/cg.h>

#include <memory>
#include <string>
#include <vector>

namespace orlocg {

struct ContextObject;
struct ProgramObject;

/// What libCgGL.so hangs on a program or a parameter; goes with it.
struct Extension {
    Extension() = default;
    virtual ~Extension() = default;
    Extension(const Extension&) = delete;
    Extension& operator=(const Extension&) = delete;
};

/// A parameter, a member or an element of one.
struct ParameterObject {
    CGparameter handle = nullptr;
    ProgramObject* program = nullptr;
    ParameterObject* parent = nullptr;
    const Variable* variable = nullptr; ///< of the whole
    const Type* type = nullptr;
    std::string name; ///< with its owners
    std::string semantic;
    CGresource resource = CG_UNDEFINED;
    unsigned long resourceIndex = 0;
    int unit = -1; ///< of a sampler that the program reads
    bool isUniform = false;
    bool isOutput = false;
    std::vector<std::unique_ptr<ParameterObject>> parts; ///< members or elements
    size_t place = 0;                                    ///< among its owner's parts
    std::vector<double> initial;                         ///< of a leaf, where the program gives some
    std::unique_ptr<Extension> extension;

    bool isLeaf() const { return parts.empty(); }
};

struct ProgramObject {
    CGprogram handle = nullptr;
    ContextObject* context = nullptr;
    CGprofile profile = CG_PROFILE_UNKNOWN;
    std::string source;
    CompileOptions options;
    std::unique_ptr<CompiledProgram> compiled;
    std::vector<std::unique_ptr<ParameterObject>> parameters[2]; ///< of the entry, and globals
    std::unique_ptr<Extension> extension;

    /// Compiles the source and makes the parameters. False: the context's listing says why.
    bool compile();
    /// Their handles are stale from then on.
    void forgetParameters();
};

struct ContextObject {
    CGcontext handle = nullptr;
    std::string listing;
    bool hasListing = false;
    std::vector<std::unique_ptr<ProgramObject>> programs;
};

/// Handles are numbers, never addresses: one that is stale is found out, whoever has its memory now. All of
/// these give null and raise the error for a handle that is none of theirs.
ContextObject* find(CGcontext handle);
ProgramObject* find(CGprogram handle);
ParameterObject* find(CGparameter handle);

/// Takes note of an error and calls the callback.
void raise(CGerror error);

} // namespace orlocg

// The same for libCgGL.so, which is built with this one.
extern "C" {
orlocg::ProgramObject* orlocg_findProgram(CGprogram handle);
orlocg::ParameterObject* orlocg_findParameter(CGparameter handle);
void orlocg_raise(CGerror error);
}
