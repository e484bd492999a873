#include "gl/GLCallLog.h"

#include "gl/GLCallText.h"
#include "gl/GLFunctionTable.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

enum EntryIndex : size_t {
#define ENTRY_ANY(ret, name, ...) kEntry_##name,
#include "gl/GLEntryPoints.inc"
};

/// Where the entry points of GLX begin: no error of GL is asked for there.
constexpr size_t kFirstOfGLX = kEntry_glXChooseVisual;

struct Total {
    uint64_t calls = 0;
    uint64_t errors = 0;
    Clock::duration time{};
};

/// The log of the process, as long as there is one.
struct CallLog {
    GLCallLog::Writer writer = nullptr;
    void* context = nullptr;
    GLCallText text;
    std::vector<Total> totals = std::vector<Total>(text.count());
    GLenum keptError = GL_NO_ERROR;
    bool insideBegin = false;
    bool telling = false;
};

std::unique_ptr<CallLog> callLog;

/// Counts a call and tells of it.
void tellCall(size_t entry, const CallValue* arguments, const CallValue& result,
              Clock::duration time) noexcept;

/// Stands in the slot kSlot: makes the call and tells of it.
template <auto kSlot, size_t kEntry>
struct Told;

template <typename Result, typename... Arguments, Result (*GLFunctionTable::*kSlot)(Arguments...),
          size_t kEntry>
struct Told<kSlot, kEntry> {
    static inline Result (*fsDriver)(Arguments...) = nullptr;

    static void install(GLFunctionTable& table) {
        if (table.*kSlot && table.*kSlot != call)
            fsDriver = std::exchange(table.*kSlot, call);
    }

    static void remove(GLFunctionTable& table) {
        if (table.*kSlot == call)
            table.*kSlot = fsDriver;
    }

    static Result call(Arguments... arguments) {
        if (!callLog || callLog->telling)
            return fsDriver(arguments...);
        const Clock::time_point begin = Clock::now();
        if constexpr (std::is_void_v<Result>) {
            fsDriver(arguments...);
            const Clock::duration time = Clock::now() - begin;
            const CallValue values[] = {CallValue(arguments)..., CallValue()};
            tellCall(kEntry, values, CallValue(), time);
        } else {
            Result result = fsDriver(arguments...);
            const Clock::duration time = Clock::now() - begin;
            if constexpr (kEntry == kEntry_glGetError) {
                if (const GLenum kept = std::exchange(callLog->keptError, GL_NO_ERROR))
                    result = kept;
            }
            const CallValue values[] = {CallValue(arguments)..., CallValue()};
            tellCall(kEntry, values, CallValue(result), time);
            return result;
        }
    }
};

/// The error that a call has raised, kept until the host asks for one.
GLenum errorAfter(CallLog& log, size_t entry) {
    if (entry == kEntry_glBegin || entry == kEntry_glEnd)
        log.insideBegin = entry == kEntry_glBegin;
    const auto driver = Told<&GLFunctionTable::fglGetError, kEntry_glGetError>::fsDriver;
    if (entry >= kFirstOfGLX || entry == kEntry_glGetError || log.insideBegin || !driver)
        return GL_NO_ERROR;
    const GLenum error = driver();
    if (log.keptError == GL_NO_ERROR)
        log.keptError = error;
    return error;
}

void tell(CallLog& log, const std::string& line) {
    log.telling = true;
    log.writer(log.context, line.c_str());
    log.telling = false;
}

double microseconds(Clock::duration time) {
    return std::chrono::duration<double, std::micro>(time).count();
}

void tellCall(size_t entry, const CallValue* arguments, const CallValue& result,
              Clock::duration time) noexcept try {
    CallLog& log = *callLog;
    const GLenum error = errorAfter(log, entry);
    Total& total = log.totals[entry];
    ++total.calls;
    total.errors += error != GL_NO_ERROR;
    total.time += time;
    char took[32];
    std::snprintf(took, sizeof took, "  %.1f us", microseconds(time));
    std::string line = log.text.call(entry, arguments, result) + took;
    if (error != GL_NO_ERROR)
        line += "  " + log.text.enumerant(error);
    tell(log, line);
} catch (...) { // without memory for a line the call goes untold
}

void tellTotals(CallLog& log) {
    std::vector<size_t> entries;
    Total all;
    for (size_t entry = 0; entry < log.totals.size(); ++entry) {
        if (log.totals[entry].calls > 0)
            entries.push_back(entry);
    }
    std::ranges::sort(entries, std::greater(), [&](size_t entry) { return log.totals[entry].time; });
    tell(log, "      calls    total us  us a call    errors  function");
    const auto row = [&log](const Total& total, const std::string& name) {
        char numbers[80];
        const double time = microseconds(total.time);
        std::snprintf(numbers, sizeof numbers, "%11llu %11.1f %10.2f %9llu  ",
                      static_cast<unsigned long long>(total.calls), time,
                      total.calls > 0 ? time / static_cast<double>(total.calls) : 0.0,
                      static_cast<unsigned long long>(total.errors));
        tell(log, numbers + name);
    };
    for (const size_t entry : entries) {
        row(log.totals[entry], log.text.name(entry));
        all.calls += log.totals[entry].calls;
        all.errors += log.totals[entry].errors;
        all.time += log.totals[entry].time;
    }
    row(all, "all");
}

void install(GLFunctionTable& table) {
#define ENTRY_ANY(ret, name, ...) Told<&GLFunctionTable::f##name, kEntry_##name>::install(table);
#define ENTRY_UNUSED(name)
#include "gl/GLEntryPoints.inc"
}

void remove(GLFunctionTable& table) {
#define ENTRY_ANY(ret, name, ...) Told<&GLFunctionTable::f##name, kEntry_##name>::remove(table);
#define ENTRY_UNUSED(name)
#include "gl/GLEntryPoints.inc"
}

} // namespace

bool GLCallLog::begin(Writer writer, void* context) try {
    GLFunctionTable* const table = GLFunctionTable::fpGlobalFunctionTable;
    if (!table || !writer)
        return false;
    if (!callLog)
        callLog = std::make_unique<CallLog>();
    callLog->writer = writer;
    callLog->context = context;
    install(*table);
    return true;
} catch (...) {
    return false;
}

void GLCallLog::note(const char* text) {
    if (!callLog || !text)
        return;
    try {
        tell(*callLog, std::string("-- ") + text);
    } catch (...) { // without memory for it it goes untold
    }
}

void GLCallLog::end() {
    if (!callLog)
        return;
    if (GLFunctionTable* const table = GLFunctionTable::fpGlobalFunctionTable)
        remove(*table);
    try {
        tellTotals(*callLog);
    } catch (...) { // without memory for them the totals go untold
    }
    callLog.reset();
}
