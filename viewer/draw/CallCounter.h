#pragma once

#include <cstddef>

namespace orloview {

/// What GL was asked for since the last reset.
struct CallCounts {
    size_t drawCalls = 0;
    size_t uploads = 0;
    size_t uploadedBytes = 0;
    size_t namesGenerated = 0;
};

/// Counts draw calls, uploads and generated names by standing in their slots of the table: what GL really
/// gets, whoever asks. Costs nothing where it isn't installed.
class CallCounter {
public:
    /// Takes the slots over, for the life of the process. Needs the table filled; a later start-up context
    /// fills the slots anew and ends the counting.
    static void install();

    /// The counts so far, which start again from 0.
    static CallCounts take();
};

} // namespace orloview
