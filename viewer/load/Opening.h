#pragma once

#include "load/LoadModels.h"

#include "base/Descriptor.h"

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace orloview {

/// Models that are read on a thread of their own, while the window goes on. Needs startReaders.
class Opening {
public:
    explicit Opening(const Options& options);

    /// Stops the reading.
    ~Opening();

    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

    const Options& options() const { return fOptions; }

    /// How far it is, 0 to 1.
    double fraction() const { return fFraction; }

    /// Becomes readable when it is done.
    int descriptor() const { return fDone.number(); }
    bool isDone() const;

    /// Waits for it. Throws what loadModels throws.
    Loaded take() { return fLoaded.get(); }

    /// What was told meanwhile, a line each; once it is taken.
    const std::vector<std::string>& lines() const { return fLines; }

private:
    Loaded read();
    void run();

    Options fOptions;
    Descriptor fDone;
    std::atomic<double> fFraction = 0.0;
    std::atomic<bool> fStop = false;
    std::vector<std::string> fLines;
    std::packaged_task<Loaded()> fTask;
    std::future<Loaded> fLoaded;
    std::thread fThread;
};

} // namespace orloview
