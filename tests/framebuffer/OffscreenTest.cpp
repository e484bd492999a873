#include "FrameBufferTest.h"

#include "texture/GLTexture2D.h"

#include <functional>

namespace {

constexpr GLuint kFramebuffer = nthName(NameKind::Framebuffer);
constexpr GLuint kRenderbuffer = nthName(NameKind::Renderbuffer);

class Offscreen : public FrameBufferTest {
protected:
    /// What was recorded, without what textures do by themselves.
    static Calls framebufferCalls() {
        Calls calls = made();
        std::erase_if(calls, [](const std::string& text) {
            return text.starts_with("glGenTextures") || text.starts_with("glPixelStorei") ||
                   (text.starts_with("glBindTexture") && !text.ends_with(", 0)"));
        });
        return calls;
    }

    static Calls road(const Calls& attachments) {
        return Calls{on("glXMakeCurrent", nthName(NameKind::XWindow), nthContext()),
                     call("glGetIntegerv", GL_MAX_RENDERBUFFER_SIZE_EXT, kOut),
                     call("glGenFramebuffersEXT", 1, kOut), bound(kFramebuffer)} +
               attachments + Calls{fChecked, bound(0)};
    }

    /// The n-th texture: its storage, the nearest texel without a border, its place.
    static Calls texture(int n, GLenum target, GLenum store, GLenum data, GLenum type) {
        const bool isCube = target == GL_TEXTURE_CUBE_MAP;
        const GLenum side = isCube ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : target;
        Calls calls;
        for (GLenum face = side; face < side + (isCube ? 6 : 1); ++face)
            calls.push_back(call("glTexImage2D", face, 0, store, 8, isCube ? 8 : 4, 0, data, type, nullptr));
        for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
            calls.push_back(call("glTexParameterf", target, filter, GL_NEAREST));
        for (const GLenum wrap : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
            calls.push_back(call("glTexParameterf", target, wrap, GL_CLAMP_TO_EDGE));
        const GLenum point = data == GL_RGBA ? GL_COLOR_ATTACHMENT0_EXT : GL_DEPTH_ATTACHMENT_EXT;
        calls.push_back(call("glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, point, side,
                             nthName(NameKind::Texture, n), 0));
        return calls;
    }

    static Calls color(GLenum target, GLenum store, GLenum type) {
        return Calls{call("glGetIntegerv", GL_MAX_COLOR_ATTACHMENTS_EXT, kOut)} +
               texture(0, target, store, GL_RGBA, type) + Calls{call("glBindTexture", target, 0)};
    }

    /// Names of framebuffers, textures and renderbuffers.
    static std::array<size_t, 3> live() {
        return {ledger(NameKind::Framebuffer).live.size(), ledger(NameKind::Texture).live.size(),
                ledger(NameKind::Renderbuffer).live.size()};
    }

    static inline const std::string fChecked = call("glCheckFramebufferStatusEXT", GL_FRAMEBUFFER_EXT);
};

TEST_F(Offscreen, isMadeByItsFormat) {
    const auto stencil = [](GLenum store) {
        return Calls{call("glGenRenderbuffersEXT", 1, kOut),
                     call("glBindRenderbufferEXT", GL_RENDERBUFFER_EXT, kRenderbuffer),
                     call("glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, store, 8, 4),
                     call("glFramebufferRenderbufferEXT", GL_FRAMEBUFFER_EXT, GL_STENCIL_ATTACHMENT_EXT,
                          GL_RENDERBUFFER_EXT, kRenderbuffer)};
    };
    const Calls undrawn = {call("glDrawBuffer", GL_NONE), call("glReadBuffer", GL_NONE)};
    const Calls depth16 =
        texture(0, GL_TEXTURE_2D, GL_DEPTH_COMPONENT16, GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT) + undrawn;
    const auto depth24 = [&](int n) {
        return texture(n, GL_TEXTURE_2D, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT);
    };
    const Calls packed =
        texture(0, GL_TEXTURE_2D, GL_DEPTH24_STENCIL8_EXT, GL_DEPTH_STENCIL_EXT, GL_UNSIGNED_INT_24_8_EXT);
    const struct {
        koBufferFormat format;
        Calls calls;
        bool packedVetoed = false;
    } kCases[] = {
        {bufferFormat(2, 7, 16), color(GL_TEXTURE_2D, GL_RGBA8, GL_UNSIGNED_BYTE) + depth24(1)},
        {bufferFormat(4, 5, 16, 3), color(GL_TEXTURE_RECTANGLE_ARB, GL_RGBA32F_ARB, GL_FLOAT) + depth24(1)},
        {bufferFormat(3, 15, 16, 5), color(GL_TEXTURE_CUBE_MAP, GL_RGBA16F_ARB, GL_HALF_FLOAT_ARB)},
        {bufferFormat(14, 15, 16), {}},
        {bufferFormat(14, 15, 10), stencil(GL_STENCIL_INDEX1_EXT)},
        {bufferFormat(14, 15, 11), stencil(GL_STENCIL_INDEX4_EXT)},
        {bufferFormat(14, 15, 12), stencil(GL_STENCIL_INDEX)},
        {bufferFormat(14, 15, 13), stencil(GL_STENCIL_INDEX16_EXT), true},
        {bufferFormat(14, 15, 99), stencil(GL_STENCIL_INDEX8_EXT)},
        {bufferFormat(14, 6, 16), depth16},
        {bufferFormat(14, 7, 16), depth24(0) + undrawn},
        {bufferFormat(14, 9, 16), depth24(0) + undrawn},
        {bufferFormat(14, 7, 12), depth24(0) + undrawn, true},
        {bufferFormat(14, 7, 12), packed},
        {bufferFormat(14, 6, 12), packed},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(testing::PrintToString(numbers(c.format)));
        resetRecording();
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {8};
        gl().fExtEnabled[kCapPackedDepthStencil] = !c.packedVetoed;
        GLFrameBuffer buffer;
        EXPECT_EQ(buffer.createOffscreen(c.format, 8, 4), 0u);
        EXPECT_EQ(framebufferCalls(), road(c.calls));
        const bool renderbuffer = c.format.fDepthFormat == 15 && c.format.fStencilFormat != 16;
        EXPECT_EQ(buffer.fStencilRenderbufferId, renderbuffer ? kRenderbuffer : 0);
        buffer.deleteInternalState();
        EXPECT_EQ(live(), (std::array<size_t, 3>{0, 0, renderbuffer}))
            << "a stencil renderbuffer stays with the context";
    }
    resetRecording();
    script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {8};
    failNext("glGenRenderbuffersEXT");
    EXPECT_EQ(GLFrameBuffer().createOffscreen(bufferFormat(14, 15, 12), 8, 4), 0u);
    EXPECT_EQ(made()[5], fChecked) << "a stencil without a name is not attached";
}

TEST_F(Offscreen, isMeasuredAndReleased) {
    GLFrameBuffer buffer;
    const koBufferFormat requested = bufferFormat(2, 7, 16, 2, kSamplingMultiple);
    ASSERT_EQ(buffer.createOffscreen(requested, 4, 64), 0u);
    EXPECT_TRUE(buffer.isOffscreen() && buffer.fFramebufferObjectFlag && buffer.fOwnsDrawable);
    EXPECT_EQ(numbers(buffer.fRequestedFormat), numbers(requested));
    EXPECT_EQ(numbers(buffer.fActualFormat), numbers(bufferFormat()));
    clearRecorded();
    std::array<int, 2> size = {};
    buffer.getDimensions(&size[0], &size[1]);
    EXPECT_EQ(size, (std::array{4, 64}));
    buffer.swapBuffers();
    EXPECT_EQ(recorded(), Calls{});
    auto* const beyondTheCount = buffer.fColorTextures[1] = reinterpret_cast<IGLTexture*>(8);
    buffer.fDepthRenderbufferId = 31; // of a host's
    for (int i = 0; i < 2; ++i)
        buffer.deleteInternalState();
    EXPECT_EQ(live(), (std::array<size_t, 3>{}));
    EXPECT_THAT(recorded(), testing::Contains(call("glDeleteRenderbuffersEXT", 1, Values{31})));
    EXPECT_EQ(buffer.fColorTextures[1], beyondTheCount);
    EXPECT_EQ(buffer.fKind | buffer.fColorAttachmentCount | buffer.makeCurrent(), 0u);
    EXPECT_EQ(startup().refCount(), 2) << "framebuffer objects keep theirs";
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, 1);
}

TEST_F(Offscreen, saysWhyItFails) {
    const auto veto = [](bool* flags) { return [=] { flags[kCapFramebufferObject] = false; }; };
    const struct {
        const char* what;
        uint32_t result;
        std::function<void()> provoke = [] {};
        koBufferFormat format = bufferFormat();
        unsigned width = 8, height = 4;
    } kCases[] = {
        {"not offered", 1, veto(gl().fExtSupported)},
        {"vetoed", 1, veto(gl().fExtEnabled)},
        {"too wide", 4, [] {}, bufferFormat(), 65, 64},
        {"too high", 4, [] {}, bufferFormat(), 64, 65},
        {"far too high", 4, [] {}, bufferFormat(), 64, 0xFFFFFFFF},
        {"no limit", 4, [] { script().values.erase(GL_MAX_RENDERBUFFER_SIZE_EXT); }},
        {"no name", 5, [] { failNext("glGenFramebuffersEXT"); }},
        {"no attachments", 2, [] { script().values[GL_MAX_COLOR_ATTACHMENTS_EXT] = {0}; }},
        {"1D colour", 2, [] {}, bufferFormat(2, 7, 16, 1)},
        {"3D colour", 2, [] {}, bufferFormat(2, 7, 16, 4)},
        {"packed, 1 bit", 2, [] {}, bufferFormat(2, 7, 10)},
        {"packed, 16 bits", 2, [] {}, bufferFormat(2, 6, 13)},
        {"incomplete", 2, [] { script().framebufferStatus = GL_FRAMEBUFFER_UNSUPPORTED_EXT; }},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        resetRecording();
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
        c.provoke();
        GLFrameBuffer buffer;
        EXPECT_EQ(buffer.createOffscreen(c.format, c.width, c.height), c.result);
        EXPECT_EQ(buffer.fKind | buffer.fColorAttachmentCount, 0u);
        EXPECT_EQ(buffer.fRequestedFormat.fColorFormat, 2u);
        gl().fExtSupported[kCapFramebufferObject] = gl().fExtEnabled[kCapFramebufferObject] = true;
    }
    GLStartupContext::fpGlobalGLStartupContext = nullptr;
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_EQ(GLFrameBuffer().createOffscreen(bufferFormat(), 8, 4), 4u);
    ASSERT_NE(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "an empty one is left";
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext->refCount(), 1);
    delete GLStartupContext::fpGlobalGLStartupContext;
    GLFunctionTable::fpGlobalFunctionTable = &gl();
}

TEST_F(Offscreen, becomesTheTarget) {
    GLFrameBuffer depthAlone;
    ASSERT_EQ(depthAlone.createOffscreen(bufferFormat(14, 6), 8, 4), 0u);
    clearRecorded();
    EXPECT_EQ(depthAlone.makeCurrent(), 1u);
    EXPECT_EQ(made(), (Calls{bound(kFramebuffer), call("glDrawBuffer", GL_NONE), fChecked}));

    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(bufferFormat(2, 15), 8, 4), 0u);
    buffer.fAttachmentPoints[0] = GL_COLOR_ATTACHMENT1_EXT;
    IGLTexture* const texture = buffer.fColorTextures[0];
    const auto expectFace = [&](int face) {
        clearRecorded();
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        Calls expected = {bound(kFramebuffer + 1), call("glDrawBuffer", GL_COLOR_ATTACHMENT1_EXT)};
        if (face >= 0)
            expected.push_back(call("glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT1_EXT,
                                    GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, texture->textureName(), 0));
        EXPECT_EQ(made(), expected + Calls{fChecked}) << buffer.fCubeFaceMask;
    };
    expectFace(-1);
    // A cube map by its first selected face; bits beyond the six select none.
    texture->fTextureType = IHWTexture::kTextureCubeMap;
    for (const auto& [mask, face] : {std::pair{0x0CU, 2}, {0x20U, 5}, {0x48U, 3}, {0x40U, -1}, {0U, 0}}) {
        buffer.fCubeFaceMask = mask;
        expectFace(face);
    }
    buffer.fColorTextures[0] = nullptr; // a slot may be empty
    expectFace(-1);
    buffer.fColorTextures[0] = texture;
    script().framebufferStatus = GL_FRAMEBUFFER_UNSUPPORTED_EXT;
    EXPECT_EQ(buffer.makeCurrent(), 0u);
}

} // namespace
