#pragma once

#include <cstdio>
#include <string>

namespace orloview {

/// What is to be told of OpenGL.
struct GLWatchRequest {
    bool verbose = false;
    bool debug = false;  ///< labels and groups, and what the driver says
    std::string logFile; ///< empty: no log
};

/// Tells what was asked for of the calls to OpenGL, for those who look into them. Needs the start-up context
/// current; ends before it does.
class GLWatch {
public:
    /// Throws Failure (kExitNotWritten; kExitUsage where the log would lie over one of the inputs).
    explicit GLWatch(const GLWatchRequest& request);
    ~GLWatch();

    GLWatch(const GLWatch&) = delete;
    GLWatch& operator=(const GLWatch&) = delete;

private:
    std::FILE* fLog = nullptr;
};

/// Takes away the capabilities that the environment variable ORLOGL_VETO lists by their names, with commas
/// between: ORLOGL_VETO=kCapShaderObjects,kCapVertexBufferObject. Needs the table filled. Throws Failure
/// (kExitUsage) for a name that there isn't.
void vetoCapabilities();

} // namespace orloview
