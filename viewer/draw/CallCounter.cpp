#include "draw/CallCounter.h"

#include <gl/GLFunctionTable.h>

#include <utility>

namespace orloview {

namespace {

CallCounts counts;

void countDraw(...) {
    ++counts.drawCalls;
}

void countBufferUpload(GLenum, GLsizeiptrARB size, const void* data, GLenum) {
    if (!data)
        return;
    ++counts.uploads;
    counts.uploadedBytes += static_cast<size_t>(size);
}

void countSubUpload(GLenum, GLintptrARB, GLsizeiptrARB size, const void*) {
    ++counts.uploads;
    counts.uploadedBytes += static_cast<size_t>(size);
}

void countImageUpload(...) {
    ++counts.uploads;
}

void countNames(GLsizei n, GLuint*) {
    counts.namesGenerated += static_cast<size_t>(n);
}

/// Stands in the slot kSlot: counts the call with kCount, then makes it.
template <auto kSlot, auto kCount>
class Counted;

template <typename Result, typename... Arguments, Result (*GLFunctionTable::*kSlot)(Arguments...),
          auto kCount>
class Counted<kSlot, kCount> {
public:
    static void install(GLFunctionTable& table) {
        if (table.*kSlot && table.*kSlot != call)
            fsOriginal = std::exchange(table.*kSlot, call);
    }

private:
    static Result call(Arguments... arguments) {
        kCount(arguments...);
        return fsOriginal(arguments...);
    }

    static inline Result (*fsOriginal)(Arguments...) = nullptr;
};

} // namespace

void CallCounter::install() {
    GLFunctionTable& table = *GLFunctionTable::fpGlobalFunctionTable;
    Counted<&GLFunctionTable::fglDrawArrays, countDraw>::install(table);
    Counted<&GLFunctionTable::fglDrawElements, countDraw>::install(table);
    Counted<&GLFunctionTable::fglDrawRangeElements, countDraw>::install(table);
    Counted<&GLFunctionTable::fglBegin, countDraw>::install(table);
    Counted<&GLFunctionTable::fglBufferDataARB, countBufferUpload>::install(table);
    Counted<&GLFunctionTable::fglBufferSubDataARB, countSubUpload>::install(table);
    Counted<&GLFunctionTable::fglTexImage2D, countImageUpload>::install(table);
    Counted<&GLFunctionTable::fglTexSubImage2D, countImageUpload>::install(table);
    Counted<&GLFunctionTable::fglGenBuffersARB, countNames>::install(table);
    Counted<&GLFunctionTable::fglGenTextures, countNames>::install(table);
    Counted<&GLFunctionTable::fglGenFramebuffersEXT, countNames>::install(table);
    Counted<&GLFunctionTable::fglGenRenderbuffersEXT, countNames>::install(table);
}

CallCounts CallCounter::take() {
    return std::exchange(counts, {});
}

} // namespace orloview
