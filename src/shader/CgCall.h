#pragma once

#include "shader/CgEntryPoints.h"

/// Calls an entry point of Cg's. Without it nothing happens, and null or 0 comes back: no program, no
/// parameter.
template <typename Result, typename... Parameters, typename... Arguments>
Result callCg(Result (*entry)(Parameters...), Arguments... arguments) {
    return entry ? entry(arguments...) : Result();
}
