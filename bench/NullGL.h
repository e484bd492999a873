#pragma once

#include <iterator>
#include <string>
#include <string_view>
#include <vector>

// A libGL.so whose functions return at once: what is left when instructions are counted is the caller's.

struct NullFunction {
    const char* name;
    void (*address)();
};

/// Every function that GL's headers declare, in byte order of the names.
extern const NullFunction kNullFunctions[];
extern const NullFunction* const kNullFunctionsEnd;

/// When set, the names asked of glXGetProcAddressARB are appended to it.
extern std::vector<std::string>* nullGLLookups;
