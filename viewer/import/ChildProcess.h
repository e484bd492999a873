#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "import/Importer.h"

namespace orloview {

/// What became of a piece of work that ran in a process of its own.
enum class ChildOutcome { Done, Failed, Crashed, OutOfMemory, OutOfTime, NotStarted };

struct ChildResult {
    ChildOutcome outcome = ChildOutcome::NotStarted;
    std::vector<std::uint8_t> output; ///< what the work wrote: its result, or why it failed
};

/// The work of a child: writes its result to the file descriptor and returns whether it succeeded. It may
/// throw std::bad_alloc; anything else that leaves it counts as a crash.
using ChildWork = std::function<bool(int fileDescriptor)>;

/// Runs the work in a forked process with these limits, its standard output and error silenced, and waits for
/// it, calling `whileWaiting` about 20 times a second. The child ends with its parent. Not for a process that
/// has started threads, or whose standard streams are closed: what is opened here would get their numbers.
ChildResult runInChild(const ChildWork& work, const ImportLimits& limits,
                       const std::function<void()>& whileWaiting = {});

} // namespace orloview
