#include "import/Importer.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <new>
#include <utility>

#include <unistd.h>

#include "base/ChildProcess.h"
#include "base/Confinement.h"
#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/Text.h"
#include "import/Allowance.h"
#include "import/ModelReader.h"
#include "import/SceneStream.h"
#include "import/SharedFraction.h"

namespace orloview {

namespace {

constexpr size_t kLongestError = 1000;

/// The child's work: the scene, or one line that says what is wrong.
bool readInto(int output, const std::string& path, const ModelFolder& folder, SharedFraction& done) {
    try {
        return writeScene(readModel(path, folder, [&done](double fraction) { done.set(fraction); }), output);
    } catch (const ImportError& error) {
        const std::string line = error.what();
        static_cast<void>(::write(output, line.data(), line.size()) != 0);
        return false;
    }
}

size_t memoryOfMachine() {
    return static_cast<size_t>(::sysconf(_SC_PHYS_PAGES)) * static_cast<size_t>(::sysconf(_SC_PAGESIZE));
}

ChildLimits childLimits(const std::string& path, const ImportLimits& asked) {
    ChildLimits limits;
    const size_t size = bytesOnDisk(path);
    limits.mostMemoryBytes = asked.memoryBytes.value_or(std::max(limits.memoryBytes, memoryOfMachine()));
    limits.memoryBytes =
        asked.memoryBytes.value_or(std::clamp(memoryFor(size), limits.memoryBytes, limits.mostMemoryBytes));
    limits.mostSeconds = asked.seconds.value_or(std::numeric_limits<unsigned>::max());
    limits.seconds = asked.seconds.value_or(std::max(limits.seconds, secondsFor(size)));
    return limits;
}

std::string whatHappened(const ChildResult& result) {
    const std::string kUnread = "the file could not be read: ";
    switch (result.outcome) {
    case ChildOutcome::Failed:
        return printable(std::string(result.output.begin(), result.output.end()), kLongestError);
    case ChildOutcome::OutOfMemory:
        return kUnread + beyondMemory(result.limits.memoryBytes, "try re-exporting it");
    case ChildOutcome::OutOfTime:
        return kUnread + beyondTime(result.limits.seconds, "try re-exporting it");
    case ChildOutcome::NotStarted:
        return kUnread + "no process could be started for it; try again later";
    default:
        return kUnread + "the importer crashed (the file is probably damaged); try re-exporting it";
    }
}

} // namespace

ImportResult importModel(const std::string& path, const ImportLimits& asked, const ProgressReport& report) {
    ImportResult result;
    SharedFraction done;
    const ModelFolder folder(path, asked.allowOutside);
    try {
        const ChildResult child = runInChild(
            [&](int output) {
                confine(folder.readable());
                return readInto(output, path, folder, done);
            },
            childLimits(path, asked), [&] { tell(report, done.get(), 1.0); });
        if (child.outcome != ChildOutcome::Done)
            result.error = whatHappened(child);
        else if (!readScene(child.output, result.scene))
            result.error = whatHappened({ChildOutcome::Crashed, {}, {}});
    } catch (const std::bad_alloc&) {
        result.error = "there is not enough memory on this machine for what is in it; export it in parts";
    }
    return result;
}

} // namespace orloview
