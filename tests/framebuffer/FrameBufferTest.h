#pragma once

#include "DoubleTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLStartupContext.h"

#include <algorithm>

/// One call on the road to a buffer, and what creating answers when it fails; 0 where nobody looks.
struct Step {
    std::string call;
    uint32_t failure = 0;
};
using Steps = std::vector<Step>;

inline Calls callsOf(const Steps& steps) {
    Calls calls;
    for (const Step& step : steps)
        calls.push_back(step.call);
    return calls;
}

/// A test on the recording GL with a start-up context on a display that was never opened, referenced once by
/// the host.
class FrameBufferTest : public DoubleTest {
protected:
    FrameBufferTest() : fStartup(new GLStartupContext(WindowWrapper(nullptr, 5, fakeDisplay()), nullptr)) {
        fStartup->ref();
        GLStartupContext::fpGlobalGLStartupContext = fStartup;
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
        clearRecorded();
    }

    // Framebuffer objects keep their references.
    ~FrameBufferTest() override { delete fStartup; }

    GLStartupContext& startup() { return *fStartup; }

    static std::string startupMadeCurrent() {
        return call("glXMakeCurrent", fakeDisplay(), nthName(NameKind::XWindow), nthContext());
    }

    /// Lets each step of a road fail that anybody looks at: there creating ends with its answer,
    /// `check(buffer, step, calls)` looks at what is left and at the calls until then, and the next try
    /// succeeds.
    template <typename Create, typename Check>
    void walkFailures(const Steps& steps, Create create, Check check) {
        Calls calls;
        for (const Step& step : steps) {
            SCOPED_TRACE(step.call);
            const std::string name = step.call.substr(0, step.call.find('(') + 1);
            calls.push_back(step.call);
            if (step.failure == 0)
                continue;
            failNext(name.substr(0, name.size() - 1).c_str(),
                     static_cast<int>(std::ranges::count_if(
                         calls, [&](const std::string& earlier) { return earlier.starts_with(name); })));
            GLFrameBuffer buffer;
            EXPECT_EQ(create(buffer), step.failure);
            EXPECT_FALSE(buffer.fOwnsDrawable);
            check(buffer, step, calls);
            clearRecorded();
            buffer.deleteInternalState();
            EXPECT_EQ(startup().refCount(), 1);
            EXPECT_EQ(create(buffer), 0u) << "tries again";
        }
    }

    /// A window or pbuffer as a create operation leaves it, with one reference on the start-up context.
    void adopt(GLFrameBuffer& buffer, GLFrameBuffer::Kind kind) {
        buffer.fKind = kind;
        buffer.fFunctionTable = &gl();
        buffer.fDisplay = fakeDisplay();
        buffer.fContext = nthContext(7);
        (kind == GLFrameBuffer::kOffscreen ? buffer.fPbuffer : buffer.fDrawable) = 0x321;
        buffer.fOwnsDrawable = true;
    }

private:
    GLStartupContext* fStartup;
};
