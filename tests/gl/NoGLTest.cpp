// The library in a process that has no OpenGL at all.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Slots.h"

#include "gl/GLStartupContext.h"

#include <dlfcn.h>

// Defined by the program, so that "libGL.so" can't be found even where it is installed.
extern "C" [[gnu::visibility("default")]] void* dlopen(const char* file, int mode) {
    const auto open =
        reinterpret_cast<void* (*)(const char*, int)>(dlvsym(RTLD_NEXT, "dlopen", "GLIBC_2.34"));
    return file && std::string_view(file).find("libGL") != std::string_view::npos ? nullptr
                                                                                  : open(file, mode);
}

namespace {

TEST(NoGL, leavesEverySlotNullAndMakesNoStartupContext) {
    ASSERT_EQ(dlsym(RTLD_DEFAULT, "glBegin"), nullptr) << "this process has a GL";
    GLFunctionTable table;
    table.populate();
    EXPECT_THAT(slotsOf(table), testing::Each(nullptr));
    EXPECT_THAT(table.fExtSupported, testing::Each(false));
    EXPECT_EQ(table.fMaxTextureUnits, 1);
    EXPECT_EQ(table.fMaxTextureSize, 0);
    EXPECT_FALSE(table.ensureLiveMultitexture());

    auto* display = reinterpret_cast<Display*>(8); // never looked into
    auto* startup = new GLStartupContext(WindowWrapper(nullptr, 0, display), nullptr);
    startup->ref();
    EXPECT_FALSE(startup->valid);
    startup->unref();
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, nullptr);
}

} // namespace
