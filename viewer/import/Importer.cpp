#include "import/Importer.h"

#include <cstdio>
#include <exception>
#include <new>
#include <utility>

#include <unistd.h>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/ChildProcess.h"
#include "import/ModelReader.h"
#include "import/SceneStream.h"
#include "import/SharedFraction.h"

namespace orloview {

namespace {

constexpr std::size_t kLongestError = 1000;

/// The child's work: the scene, or one line that says what is wrong.
bool readInto(int output, const std::string& path, SharedFraction& done) {
    try {
        return writeScene(readModel(path, [&done](double fraction) { done.set(fraction); }), output);
    } catch (const ImportError& error) {
        const std::string line = error.what();
        static_cast<void>(::write(output, line.data(), line.size()) != 0);
        return false;
    }
}

std::string decimal(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", number);
    return text;
}

std::string whatHappened(const ChildResult& result, const ImportLimits& limits) {
    constexpr const char* kDamaged = " (the file is probably damaged); try re-exporting it";
    switch (result.outcome) {
    case ChildOutcome::Failed:
        return result.output.empty()
                   ? std::string("the scene is too big to hand over; export it in parts")
                   : printable(std::string(result.output.begin(), result.output.end()), kLongestError);
    case ChildOutcome::OutOfMemory:
        return "the file could not be read: it takes more than " +
               decimal(static_cast<double>(limits.memoryBytes) / (1 << 30)) + " GB of memory" + kDamaged;
    case ChildOutcome::OutOfTime:
        return "the file could not be read: it takes longer than " + decimal(limits.seconds) + " seconds" +
               kDamaged;
    case ChildOutcome::NotStarted:
        return "the file could not be read: no process could be started for it; try again later";
    default:
        return std::string("the file could not be read: the importer crashed") + kDamaged;
    }
}

} // namespace

ImportResult importModel(const std::string& path, const ImportLimits& limits, const ProgressReport& report) {
    ImportResult result;
    SharedFraction done;
    try {
        const ChildResult child = runInChild([&](int output) { return readInto(output, path, done); }, limits,
                                             [&] { tell(report, done.get(), 1.0); });
        if (child.outcome != ChildOutcome::Done)
            result.error = whatHappened(child, limits);
        else if (!readScene(child.output, result.scene))
            result.error = whatHappened({ChildOutcome::Crashed, {}}, limits);
    } catch (const std::bad_alloc&) {
        result.error = whatHappened({ChildOutcome::OutOfMemory, {}}, limits);
    }
    return result;
}

} // namespace orloview
