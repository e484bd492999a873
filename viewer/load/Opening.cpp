#include "load/Opening.h"

#include "base/ExitCode.h"
#include "base/SignalsElsewhere.h"

#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>

namespace orloview {

namespace {

/// Leaves the reading from inside, when nobody waits for it any more.
struct Stopped {};

} // namespace

Opening::Opening(const Options& options)
    : fOptions(options), fDone(eventfd(0, EFD_CLOEXEC)), fTask([this] { return read(); }),
      fLoaded(fTask.get_future()) {
    const SignalsElsewhere elsewhere;
    try {
        fThread = std::thread([this] { run(); });
    } catch (const std::system_error&) { // no more threads
        run();
    }
}

Opening::~Opening() {
    fStop = true;
    if (fThread.joinable())
        fThread.join();
}

void Opening::run() {
    fTask();
    eventfd_write(fDone.number(), 1);
}

Loaded Opening::read() {
    const auto report = [this](double fraction) {
        if (fStop)
            throw Stopped();
        fFraction = fraction;
    };
    return loadModels(fOptions, {report, [this](const std::string& line) { fLines.push_back(line); }, {}});
}

bool Opening::isDone() const {
    pollfd done{fDone.number(), POLLIN, 0};
    return poll(&done, 1, 0) > 0;
}

} // namespace orloview
