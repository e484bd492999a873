#include "import/Importer.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

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

// What a child begins with, and what follows.
constexpr char kScene = 's';
constexpr char kReason = 'r';

bool writeMark(int output, char mark) {
    return ::write(output, &mark, 1) == 1;
}

/// The child's work: the scene, or one line that says what is wrong.
bool readInto(int output, const std::string& path, std::span<const std::uint8_t> piped,
              const ModelFolder& folder, SharedFraction& done) {
    confine(folder.readable());
    try {
        static Scene scene; // stays: when this process has ended, the parent still reads from its pages
        const auto report = [&done](double fraction) { done.set(fraction); };
        scene = piped.empty() ? readModel(path, folder, report) : readModel(piped, path, folder, report);
        return writeMark(output, kScene) && writeScene(scene, output);
    } catch (const ImportError& error) {
        const std::string line = error.what();
        static_cast<void>(writeMark(output, kReason) && ::write(output, line.data(), line.size()) > 0);
        return false;
    }
}

/// What such a child has written: an error, or a scene, and whether that is a good one.
struct Taken {
    std::vector<std::uint8_t> reason;
    Scene scene;
    bool isGood = false;
};

void take(ChildOutput& from, size_t mostBytes, Taken& taken) {
    char mark = 0;
    if (!from.take(&mark, 1))
        return;
    if (mark == kReason)
        taken.reason = from.takeRest();
    else
        taken.isGood =
            readScene([&from](void* to, size_t size) { return from.take(to, size); }, mostBytes, taken.scene);
}

size_t memoryOfMachine() {
    return static_cast<size_t>(::sysconf(_SC_PHYS_PAGES)) * static_cast<size_t>(::sysconf(_SC_PAGESIZE));
}

ChildLimits childLimits(size_t size, const ImportLimits& asked) {
    ChildLimits limits;
    limits.mostMemoryBytes = asked.memoryBytes.value_or(std::max(limits.memoryBytes, memoryOfMachine()));
    limits.memoryBytes =
        asked.memoryBytes.value_or(std::clamp(memoryFor(size), limits.memoryBytes, limits.mostMemoryBytes));
    limits.mostSeconds = asked.seconds.value_or(std::numeric_limits<unsigned>::max());
    limits.seconds = asked.seconds.value_or(std::max(limits.seconds, secondsFor(size)));
    return limits;
}

std::string whatHappened(const ChildResult& result, const std::vector<std::uint8_t>& reason) {
    const std::string kUnread = "the file could not be read: ";
    switch (result.outcome) {
    case ChildOutcome::Failed:
        return printable(std::string(reason.begin(), reason.end()), kLongestError);
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

/// The process that readers are forked from, and how far the one at work is.
struct Readers {
    // An order is the model's path behind two letters.
    static constexpr char kYes = 'y';
    static constexpr char kNo = 'n';

    static std::string orderFor(const std::string& path, bool allowOutside, bool isPiped) {
        return std::string{allowOutside ? kYes : kNo, isPiped ? kYes : kNo} + path;
    }

    explicit Readers(std::vector<std::uint8_t> bytes) : piped(std::move(bytes)) {}

    std::vector<std::uint8_t> piped;
    SharedFraction done;
    ChildStarter starter{[this](const std::string& order, int output) {
        const std::string path = order.substr(2);
        const ModelFolder folder(path, order[0] == kYes);
        const bool isPiped = order[1] == kYes;
        return readInto(output, path, isPiped ? piped : std::vector<std::uint8_t>(), folder, done);
    }};
};
std::unique_ptr<Readers> fsReaders;

} // namespace

void startReaders(std::vector<std::uint8_t> piped) {
    fsReaders = std::make_unique<Readers>(std::move(piped));
}

ImportResult importModel(const std::string& path, const ImportLimits& asked, const ProgressReport& report,
                         const std::function<void()>& meanwhile, std::span<const std::uint8_t> piped) {
    ImportResult result;
    SharedFraction ownFraction;
    SharedFraction& done = fsReaders ? fsReaders->done : ownFraction;
    done.set(0.0);
    const ModelFolder folder(path, asked.allowOutside);
    const ChildLimits limits = childLimits(piped.empty() ? bytesOnDisk(path) : piped.size(), asked);
    try {
        Taken taken;
        const auto work = [&](int output) { return readInto(output, path, piped, folder, done); };
        const auto taker = [&](ChildOutput& from) {
            if (meanwhile)
                meanwhile();
            take(from, limits.mostMemoryBytes, taken);
        };
        const auto whileWaiting = [&] { tell(report, done.get(), 1.0); };
        const ChildResult child =
            fsReaders ? fsReaders->starter.run(Readers::orderFor(path, asked.allowOutside, !piped.empty()),
                                               limits, taker, whileWaiting)
                      : runInChild(work, limits, taker, whileWaiting);
        if (child.outcome != ChildOutcome::Done)
            result.error = whatHappened(child, taken.reason);
        else if (!taken.isGood)
            result.error = whatHappened({ChildOutcome::Crashed, {}, {}}, {});
        else
            result.scene = std::move(taken.scene);
    } catch (const std::bad_alloc&) {
        result.error = "there is not enough memory on this machine for what is in it; export it in parts";
    }
    return result;
}

} // namespace orloview
