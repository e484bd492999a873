#pragma once

#include <shader/CGcontextSingleton.h>

namespace orloview {

// What of the Cg runtime's effects is called here.
#define ORLOVIEW_EFFECT_CALLS(CALL)                                                                          \
    CALL(cgCallStateValidateCallback)                                                                        \
    CALL(cgCreateEffectFromFile)                                                                             \
    CALL(cgDestroyEffect)                                                                                    \
    CALL(cgGetFirstEffectParameter)                                                                          \
    CALL(cgGetFirstPass)                                                                                     \
    CALL(cgGetFirstStateAssignment)                                                                          \
    CALL(cgGetFirstTechnique)                                                                                \
    CALL(cgGetNamedEffectParameter)                                                                          \
    CALL(cgGetNamedParameterAnnotation)                                                                      \
    CALL(cgGetNamedSamplerStateAssignment)                                                                   \
    CALL(cgGetNamedTechnique)                                                                                \
    CALL(cgGetNextPass)                                                                                      \
    CALL(cgGetNextStateAssignment)                                                                           \
    CALL(cgGetNextTechnique)                                                                                 \
    CALL(cgGetParameterClass)                                                                                \
    CALL(cgGetParameterColumns)                                                                              \
    CALL(cgGetParameterRows)                                                                                 \
    CALL(cgGetPassName)                                                                                      \
    CALL(cgGetStateAssignmentState)                                                                          \
    CALL(cgGetStateName)                                                                                     \
    CALL(cgGetStringAnnotationValue)                                                                         \
    CALL(cgGetTechniqueName)                                                                                 \
    CALL(cgGLRegisterStates)                                                                                 \
    CALL(cgGLSetupSampler)                                                                                   \
    CALL(cgResetPassState)                                                                                   \
    CALL(cgSetPassState)                                                                                     \
    CALL(cgValidateTechnique)

struct EffectCalls {
#define ORLOVIEW_MEMBER(name) decltype(&::name) name = nullptr;
    ORLOVIEW_EFFECT_CALLS(ORLOVIEW_MEMBER)
#undef ORLOVIEW_MEMBER

    bool areThere = true;
};

/// Needs the runtime loaded.
inline EffectCalls findEffectCalls() {
    EffectCalls calls;
    const auto find = [&](auto& call, const char* name) {
        call = reinterpret_cast<std::remove_reference_t<decltype(call)>>(findCgFunction(name));
        calls.areThere = calls.areThere && call;
    };
#define ORLOVIEW_FIND(name) find(calls.name, #name);
    ORLOVIEW_EFFECT_CALLS(ORLOVIEW_FIND)
#undef ORLOVIEW_FIND
    return calls;
}

} // namespace orloview
