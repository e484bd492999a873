// Memory that runs short: no exception gets out, the failure result comes back, and no GL name is left.

#include "FrameBufferTest.h"

#include "state/GLLight.h"
#include "state/GLLighting.h"

#include <cstdlib>
#include <new>

namespace {

/// The request for a single object that fails next, counted from 1; 0 for none.
int theFailingObject = 0;
/// Vectors of exactly this many bytes fail; 0 for none.
size_t theFailingSize = 0;

} // namespace

// Not inlined: seeing half of a pair, the compiler takes malloc and delete for a mismatch.
[[gnu::noinline]] void* operator new(size_t size) {
    if (size != 0 && size == theFailingSize)
        throw std::bad_alloc();
    return std::malloc(size);
}

[[gnu::noinline]] void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return theFailingObject != 0 && --theFailingObject == 0 ? nullptr : std::malloc(size);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}

namespace {

class NoMemory : public FrameBufferTest {
protected:
    /// For a call that can't have the n-th object it asks for.
    GLFrameBuffer& buffer(int failing = 1) {
        theFailingObject = failing;
        return fBuffer;
    }

    GLFrameBuffer fBuffer;
};

TEST_F(NoMemory, aBufferFailsWhole) {
    EXPECT_EQ(buffer(1).createOffscreen(bufferFormat(), 8, 4), 5u) << "no colour texture";
    EXPECT_EQ(buffer(2).createOffscreen(bufferFormat(), 8, 4), 5u) << "no depth texture";
    EXPECT_EQ(buffer().createOffscreen(bufferFormat(2, 15, 16, 5), 8, 8), 5u) << "no cube map";
    EXPECT_TRUE(ledger(NameKind::Framebuffer).live.empty());
    EXPECT_TRUE(ledger(NameKind::Texture).live.empty());

    GLStartupContext::fpGlobalGLStartupContext = nullptr;
    const WindowWrapper window(nullptr, 5, fakeDisplay());
    EXPECT_EQ(buffer().createOffscreen(bufferFormat(), 8, 4), 4u) << "no start-up context";
    EXPECT_EQ(buffer().createInWindow(window, bufferFormat()), 4u);
    EXPECT_EQ(buffer().createOffscreen(window, bufferFormat(), 8, 8, false), 4u);
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
}

TEST_F(NoMemory, nothingIsRead) {
    ASSERT_EQ(buffer(0).createOffscreen(bufferFormat(), 8, 4), 0u);
    clearRecorded();
    EXPECT_EQ(buffer().readColorBuffer(2, 0, 0, 0, 0, nullptr), nullptr);
    EXPECT_EQ(buffer().readDepthBuffer(), nullptr);
    EXPECT_EQ(buffer().copyDepthBuffer2Texture2D(0, 0, 8, 4), nullptr);
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(NoMemory, lightsKeepWhatTheyGot) {
    GLLight light;
    theFailingObject = 3;
    light.addProjector(5);
    EXPECT_EQ(light.fProjectors.size(), 2u);
    theFailingSize = 1000 * sizeof(void*);
    light.addProjector(1000);
    EXPECT_TRUE(light.fProjectors.empty());

    theFailingObject = 1;
    light.allocateShadowMap(kRasterDepth24);
    theFailingSize = sizeof(void*); // the list's first entry
    light.allocateShadowMap(kRasterDepth24);
    EXPECT_TRUE(light.fShadowMaps.empty());
    EXPECT_TRUE(ledger(NameKind::Texture).live.empty());

    script().values[GL_MAX_LIGHTS] = {70000};
    theFailingSize = 70000 * sizeof(void*);
    GLLighting lighting;
    theFailingSize = 0;
    EXPECT_TRUE(lighting.fLightSlots.empty());
}

} // namespace
