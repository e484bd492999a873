#pragma once

#include "objects/Objects.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

// The tables behind the handles: for libCg.so's own sources; others ask find().

namespace orlocg {

/// What is there once for the whole process.
struct Global {
    std::unordered_map<uintptr_t, ContextObject*> contexts;
    std::unordered_map<uintptr_t, ProgramObject*> programs;
    std::unordered_map<uintptr_t, ParameterObject*> parameters;
    std::unordered_map<uintptr_t, std::unique_ptr<BufferObject>> buffers;
    std::unordered_map<uintptr_t, EffectPart*> effectParts;
    std::vector<std::unique_ptr<ContextObject>> owned;
    uintptr_t lastHandle = 0; ///< of all kinds together, so that a handle of another kind is none
    CGerror error = CG_NO_ERROR;
    CGerrorCallbackFunc callback = nullptr;
    CGerrorHandlerFunc handler = nullptr;
    void* handlerData = nullptr;
    CGcontext asked = nullptr; ///< the context of what was found last, for the handler
    Binding* binding = nullptr;
};

/// Stays to the end of the process: what hangs on programs may need an OpenGL that is gone by then.
Global& global();

/// The next handle: a number that looks like an address to C.
template <typename Handle>
Handle makeHandle() {
    return reinterpret_cast<Handle>(++global().lastHandle); // NOLINT(performance-no-int-to-ptr)
}

template <typename Objects, typename Handle>
auto findIn(const Objects& objects, Handle handle) -> decltype(objects.begin()->second) {
    const auto found = objects.find(reinterpret_cast<uintptr_t>(handle));
    return found == objects.end() ? nullptr : found->second;
}

template <typename Objects, typename Handle>
auto findOrRaise(const Objects& objects, Handle handle, CGerror error) {
    const auto found = findIn(objects, handle);
    if (!found)
        raise(error);
    return found;
}

/// Calls `work`; an exception, which nothing but a lack of memory throws, becomes an error.
template <typename Result, typename Work>
Result guarded(Result otherwise, Work&& work) {
    try {
        return work();
    } catch (const std::exception&) {
        raise(CG_MEMORY_ALLOC_ERROR);
        return otherwise;
    }
}

} // namespace orlocg
