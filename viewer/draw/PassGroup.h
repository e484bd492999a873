#pragma once

#include <gl/GLDebugOutput.h>

namespace orloview {

/// Shows debuggers of frames, and the log of calls, which part of the frame what is drawn meanwhile belongs
/// to.
class PassGroup {
public:
    explicit PassGroup(const char* name) { GLDebugOutput::pushGroup(name); }
    ~PassGroup() { GLDebugOutput::popGroup(); }

    PassGroup(const PassGroup&) = delete;
    PassGroup& operator=(const PassGroup&) = delete;
};

} // namespace orloview
