#include "session/GLWatch.h"

#include "base/ExitCode.h"
#include "base/Say.h"
#include "output/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <gl/GLCallLog.h>
#include <gl/GLDebugOutput.h>
#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

/// Line by line, so that a log tells the last call before a crash.
void writeLogLine(void* file, const char* line) {
    std::fprintf(static_cast<std::FILE*>(file), "%s\n", line);
}

void sayMessage(void*, GLenum, GLenum type, GLenum severity, const char* message) {
    const char* const kind = type == GL_DEBUG_TYPE_ERROR                  ? "error"
                             : severity == GL_DEBUG_SEVERITY_NOTIFICATION ? "note"
                                                                          : "message";
    say(std::string("OpenGL ") + kind + ": " + message);
}

struct NamedCapability {
    std::string_view name;
    GLCapability capability;
};
constexpr NamedCapability kNamedCapabilities[] = {
#define ORLO_NAMED(name, index) {#name, name},
    ORLO_CAPABILITIES(ORLO_NAMED)
#undef ORLO_NAMED
};

} // namespace

GLWatch::GLWatch(const GLWatchRequest& request) {
    if (!request.logFile.empty()) {
        if (OutputFile::isSpared(request.logFile))
            throw Failure(kExitUsage, "--gl-log " + request.logFile +
                                          ": this is one of the files that are read; give another name");
        static bool isBegun = false; // pictures that are compared have a session each
        fLog = std::fopen(request.logFile.c_str(), isBegun ? "ae" : "we");
        isBegun = true;
        if (!fLog)
            throw Failure(kExitNotWritten,
                          "--gl-log " + request.logFile + ": it can't be written: " + std::strerror(errno));
        std::setvbuf(fLog, nullptr, _IOLBF, BUFSIZ);
        GLCallLog::begin(writeLogLine, fLog);
    }
    if (request.debug && !GLDebugOutput::begin(sayMessage, nullptr))
        say("--gl-debug: this OpenGL has no labels and messages (GL_KHR_debug)");
}

GLWatch::~GLWatch() {
    GLDebugOutput::end();
    GLCallLog::end();
    if (fLog && std::fclose(fLog) != 0)
        say("--gl-log: the log could not be written to its end");
}

void vetoCapabilities() {
    const char* const veto = std::getenv("ORLOGL_VETO");
    for (std::string_view rest = veto ? veto : ""; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        const auto* const found = std::ranges::find(kNamedCapabilities, name, &NamedCapability::name);
        if (found == std::end(kNamedCapabilities))
            throw Failure(kExitUsage, "ORLOGL_VETO: there is no capability \"" + std::string(name) +
                                          "\"; --gl-info lists them, and commas go between");
        GLFunctionTable::fpGlobalFunctionTable->fExtEnabled[found->capability] = false;
    }
}

} // namespace orloview
