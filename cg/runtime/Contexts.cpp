#include "objects/Connections.h"
#include "objects/Effects.h"
#include "objects/Handles.h"
#include "objects/Values.h"

using namespace orlocg;

namespace {

/// Takes a context's setting where it is one of those named.
template <size_t N>
void setMode(CGcontext handle, CGenum ContextObject::*setting, CGenum mode, const CGenum (&known)[N]) {
    ContextObject* context = find(handle);
    if (!context)
        return;
    for (const CGenum each : known)
        if (mode == each) {
            context->*setting = mode;
            return;
        }
    raise(CG_INVALID_ENUMERANT_ERROR);
}

} // namespace

CGcontext cgCreateContext(void) {
    return guarded<CGcontext>(nullptr, [] {
        auto context = std::make_unique<ContextObject>();
        context->handle = makeHandle<CGcontext>();
        global().contexts.emplace(reinterpret_cast<uintptr_t>(context->handle), context.get());
        global().owned.push_back(std::move(context));
        return global().owned.back()->handle;
    });
}

void cgDestroyContext(CGcontext handle) {
    ContextObject* context = find(handle);
    if (!context)
        return;
    while (!context->programs.empty())
        cgDestroyProgram(context->programs.back()->handle);
    for (const std::unique_ptr<EffectObject>& effect : context->effects)
        forget(*effect);
    for (const auto& states : context->states)
        for (const std::unique_ptr<EffectPart>& state : states)
            forget(*state);
    for (const std::unique_ptr<ParameterObject>& parameter : context->parameters)
        forget(*parameter);
    std::erase_if(global().buffers, [&](const auto& each) { return each.second->context == context; });
    global().contexts.erase(reinterpret_cast<uintptr_t>(handle));
    std::erase_if(global().owned, [&](const auto& each) { return each.get() == context; });
}

CGbool cgIsContext(CGcontext context) {
    return findIn(global().contexts, context) != nullptr;
}

const char* cgGetLastListing(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context && context->hasListing ? context->listing.c_str() : nullptr;
}

void cgSetLastListing(CGhandle handle, const char* listing) {
    const ProgramObject* program = findIn(global().programs, handle);
    ContextObject* context = program ? program->context : find(static_cast<CGcontext>(handle));
    if (!context)
        return;
    guarded([&] {
        context->listing = listing ? listing : "";
        context->hasListing = listing != nullptr;
    });
}

void cgSetAutoCompile(CGcontext context, CGenum mode) {
    setMode(context, &ContextObject::autoCompile, mode,
            {CG_COMPILE_MANUAL, CG_COMPILE_IMMEDIATE, CG_COMPILE_LAZY});
}

CGenum cgGetAutoCompile(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context ? context->autoCompile : CG_UNKNOWN;
}

void cgSetParameterSettingMode(CGcontext handle, CGenum mode) {
    setMode(handle, &ContextObject::settingMode, mode,
            {CG_IMMEDIATE_PARAMETER_SETTING, CG_DEFERRED_PARAMETER_SETTING});
    // What waited would else overtake what is set from now on.
    if (const ContextObject* context = findIn(global().contexts, handle);
        context && context->settingMode == CG_IMMEDIATE_PARAMETER_SETTING)
        for (const std::unique_ptr<ProgramObject>& program : context->programs)
            cgUpdateProgramParameters(program->handle);
}

CGenum cgGetParameterSettingMode(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context ? context->settingMode : CG_UNKNOWN;
}

CGenum cgSetLockingPolicy(CGenum policy) {
    if (policy != CG_NO_LOCKS_POLICY)
        raise(CG_INVALID_ENUMERANT_ERROR);
    return CG_NO_LOCKS_POLICY;
}

CGenum cgGetLockingPolicy(void) {
    return CG_NO_LOCKS_POLICY;
}

void cgSetCompilerIncludeString(CGcontext handle, const char* name, const char* source) {
    ContextObject* context = find(handle);
    if (!context)
        return;
    guarded([&] {
        if (!name)
            context->includes.clear();
        else if (!source)
            context->includes.erase(name);
        else
            context->includes[name] = source;
    });
}

void cgSetCompilerIncludeFile(CGcontext handle, const char* name, const char* fileName) {
    if (!fileName || !name)
        return cgSetCompilerIncludeString(handle, name, nullptr);
    guarded([&] {
        const std::optional<std::string> text = readFile(fileName);
        if (!text)
            raise(CG_FILE_READ_ERROR);
        else
            cgSetCompilerIncludeString(handle, name, text->c_str());
    });
}

void cgSetCompilerIncludeCallback(CGcontext handle, CGIncludeCallbackFunc callback) {
    if (ContextObject* context = find(handle))
        context->includeCallback = callback;
}

CGIncludeCallbackFunc cgGetCompilerIncludeCallback(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context ? context->includeCallback : nullptr;
}
