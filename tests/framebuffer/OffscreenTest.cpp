#include "FrameBufferTest.h"

#include "texture/GLTexture2D.h"

#include <functional>

namespace {

constexpr GLuint kFramebuffer = nthName(NameKind::Framebuffer);
constexpr GLuint kRenderbuffer = nthName(NameKind::Renderbuffer);

koBufferFormat wanted(uint32_t color, uint32_t depth, uint32_t stencil, uint32_t textureType = 2) {
    return {static_cast<RasterFormat>(color), static_cast<RasterFormat>(depth),
            static_cast<RasterFormat>(stencil), kSamplingMultiple,
            static_cast<IHWTexture::TextureType>(textureType)};
}

class Offscreen : public FrameBufferTest {
protected:
    static Calls opening() {
        return {startupMadeCurrent(), call("glGetIntegerv", GL_MAX_RENDERBUFFER_SIZE_EXT, kOut),
                call("glGenFramebuffersEXT", 1, kOut),
                call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, kFramebuffer)};
    }

    static Calls closing() {
        return {call("glCheckFramebufferStatusEXT", GL_FRAMEBUFFER_EXT),
                call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0)};
    }

    static Calls nearest(GLenum target) {
        Calls calls;
        for (const auto& [parameter, value] : {std::pair{GL_TEXTURE_MIN_FILTER, GL_NEAREST},
                                               {GL_TEXTURE_MAG_FILTER, GL_NEAREST},
                                               {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
                                               {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE}})
            calls.push_back(call("glTexParameterf", target, parameter, value));
        return calls;
    }

    /// The n-th texture, made and attached: 8 x 4.
    static Calls attached(int n, GLenum target, GLenum point, GLenum store, GLenum data, GLenum type) {
        const auto name = nthName(NameKind::Texture, n);
        const std::string bound = call("glBindTexture", target, name);
        return Calls{call("glGenTextures", 1, kOut), bound, bound,
                     call("glTexImage2D", target, 0, store, 8, 4, 0, data, type, nullptr)} +
               nearest(target) +
               Calls{call("glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, point, target, name, 0)};
    }

    static void expectLive(size_t framebuffers, size_t textures, size_t renderbuffers) {
        EXPECT_EQ(ledger(NameKind::Framebuffer).live.size(), framebuffers);
        EXPECT_EQ(ledger(NameKind::Texture).live.size(), textures);
        EXPECT_EQ(ledger(NameKind::Renderbuffer).live.size(), renderbuffers);
        EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, static_cast<int>(textures));
        for (NameKind kind : {NameKind::Framebuffer, NameKind::Texture, NameKind::Renderbuffer})
            EXPECT_EQ(ledger(kind).strayDeletions, 0);
    }
};

TEST_F(Offscreen, colorAndDepthInOrder) {
    // A rectangle's depth is an ordinary texture.
    const std::pair<koBufferFormat, Calls> kColors[] = {
        {wanted(4, 5, 16, 3),
         attached(0, GL_TEXTURE_RECTANGLE_ARB, GL_COLOR_ATTACHMENT0_EXT, GL_RGBA32F_ARB, GL_RGBA, GL_FLOAT) +
             Calls{call("glBindTexture", GL_TEXTURE_RECTANGLE_ARB, 0)}},
        {wanted(2, 7, 16),
         attached(0, GL_TEXTURE_2D, GL_COLOR_ATTACHMENT0_EXT, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE) +
             Calls{call("glBindTexture", GL_TEXTURE_2D, 0)}},
    };
    const Calls limit = {call("glGetIntegerv", GL_MAX_COLOR_ATTACHMENTS_EXT, kOut)};
    const Calls depth = attached(1, GL_TEXTURE_2D, GL_DEPTH_ATTACHMENT_EXT, GL_DEPTH_COMPONENT24,
                                 GL_DEPTH_COMPONENT, GL_UNSIGNED_INT);
    for (const auto& [format, color] : kColors) {
        resetRecording();
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
        GLFrameBuffer made;
        EXPECT_EQ(made.createOffscreen(format, 8, 4), 0u);
        EXPECT_EQ(recorded(), opening() + limit + color + depth + closing());
    }
    resetRecording();
    script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
    const int references = startup().refCount();
    const int instances = GLFrameBuffer::fsNumInstances_GLFrameBuffer;
    GLFrameBuffer buffer;
    EXPECT_EQ(buffer.createOffscreen(wanted(2, 7, 16), 8, 4), 0u);
    EXPECT_TRUE(buffer.isOffscreen());
    EXPECT_TRUE(buffer.fFramebufferObjectFlag);
    EXPECT_FALSE(buffer.fGLXDrawableFlag);
    EXPECT_TRUE(buffer.fOwnsDrawable);
    EXPECT_EQ(buffer.fColorAttachmentCount, 1u);
    EXPECT_EQ(buffer.fRequestedFormat.fSamplingType, kSamplingMultiple);
    EXPECT_EQ(buffer.fActualFormat.fSamplingType, kSamplingSingle);
    EXPECT_EQ(buffer.fActualFormat.fColorFormat, 2u);
    EXPECT_EQ(buffer.fActualFormat.fDepthFormat, 7u);
    EXPECT_EQ(buffer.fActualFormat.fStencilFormat, 16u);
    EXPECT_EQ(buffer.fActualFormat.fTextureType, 2u);
    int width = 0;
    int height = 0;
    clearRecorded();
    buffer.getDimensions(&width, &height);
    buffer.swapBuffers();
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 4);
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(startup().refCount(), references + 1);

    buffer.deleteInternalState();
    expectLive(0, 0, 0);
    EXPECT_FALSE(buffer.isOffscreen());
    EXPECT_EQ(startup().refCount(), references + 1) << "framebuffer objects keep theirs";
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances + 1);
    buffer.deleteInternalState();
    expectLive(0, 0, 0);
}

TEST_F(Offscreen, cubeMapColorOfTheWidth) {
    const auto name = nthName(NameKind::Texture);
    Calls cube = {call("glGetIntegerv", GL_MAX_COLOR_ATTACHMENTS_EXT, kOut),
                  call("glGenTextures", 1, kOut),
                  call("glBindTexture", GL_TEXTURE_CUBE_MAP, name),
                  call("glPixelStorei", GL_UNPACK_ROW_LENGTH, 0),
                  call("glPixelStorei", GL_UNPACK_ALIGNMENT, 1),
                  call("glPixelStorei", GL_UNPACK_SKIP_ROWS, 0),
                  call("glPixelStorei", GL_UNPACK_SKIP_PIXELS, 0),
                  call("glBindTexture", GL_TEXTURE_CUBE_MAP, name)};
    for (int face = 0; face < 6; ++face)
        cube.push_back(call("glTexImage2D", GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGBA16F_ARB, 8, 8, 0,
                            GL_RGBA, 0x140B, nullptr));
    cube = cube + nearest(GL_TEXTURE_CUBE_MAP);
    cube.push_back(call("glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT,
                        GL_TEXTURE_CUBE_MAP_POSITIVE_X, name, 0));
    cube.push_back(call("glBindTexture", GL_TEXTURE_CUBE_MAP, 0));
    GLFrameBuffer buffer;
    EXPECT_EQ(buffer.createOffscreen(wanted(3, 15, 16, 5), 8, 4), 0u);
    EXPECT_EQ(recorded(), opening() + cube + closing());
    EXPECT_EQ(buffer.fActualFormat.fTextureType, 5u);
    buffer.deleteInternalState();
    EXPECT_TRUE(ledger(NameKind::Texture).live.empty());
    EXPECT_TRUE(ledger(NameKind::Framebuffer).live.empty());
}

TEST_F(Offscreen, depthAndStencilForms) {
    const Calls undrawn = {call("glDrawBuffer", GL_NONE), call("glReadBuffer", GL_NONE)};
    const auto depth = [](GLenum store, GLenum data, GLenum type) {
        return attached(0, GL_TEXTURE_2D, GL_DEPTH_ATTACHMENT_EXT, store, data, type);
    };
    const auto stencil = [](GLenum store) {
        return Calls{call("glGenRenderbuffersEXT", 1, kOut),
                     call("glBindRenderbufferEXT", GL_RENDERBUFFER_EXT, kRenderbuffer),
                     call("glRenderbufferStorageEXT", GL_RENDERBUFFER_EXT, store, 8, 4),
                     call("glFramebufferRenderbufferEXT", GL_FRAMEBUFFER_EXT, GL_STENCIL_ATTACHMENT_EXT,
                          GL_RENDERBUFFER_EXT, kRenderbuffer)};
    };
    const Calls depth16 = depth(GL_DEPTH_COMPONENT16, GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT) + undrawn;
    const Calls depth24 = depth(GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT) + undrawn;
    const struct {
        uint32_t depth, stencil;
        bool packedVetoed;
        Calls calls;
    } kCases[] = {
        {15, 16, false, {}},
        {15, 10, false, stencil(0x8D46)},
        {15, 11, false, stencil(0x8D47)},
        {15, 12, false, stencil(0x1901)},
        {15, 13, true, stencil(0x8D49)},
        {15, 99, false, stencil(0x8D48)},
        {6, 16, false, depth16},
        {7, 16, false, depth24},
        {9, 16, false, depth24},
        {6, 10, true, depth16},
        {7, 12, true, depth24},
        {7, 12, false, depth(0x88F0, 0x84F9, 0x84FA)},
        {6, 12, false, depth(0x88F0, 0x84F9, 0x84FA)},
    };
    for (const auto& c : kCases) {
        resetRecording();
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {8};
        gl().fExtEnabled[kCapPackedDepthStencil] = !c.packedVetoed;
        GLFrameBuffer buffer;
        EXPECT_EQ(buffer.createOffscreen(wanted(14, c.depth, c.stencil), 8, 4), 0u);
        EXPECT_EQ(recorded(), opening() + c.calls + closing()) << c.depth << ", " << c.stencil;
        const bool renderbuffer = c.depth == 15 && c.stencil != 16;
        EXPECT_EQ(buffer.fStencilRenderbufferId, renderbuffer ? kRenderbuffer : 0);
        buffer.deleteInternalState();
        expectLive(0, 0, renderbuffer); // a stencil renderbuffer stays with the context
    }
}

TEST_F(Offscreen, failuresLeaveNothing) {
    const auto veto = [](bool* flags) { return [=] { flags[kCapFramebufferObject] = false; }; };
    const auto incomplete = [] { script().framebufferStatus = GL_FRAMEBUFFER_UNSUPPORTED_EXT; };
    struct Case {
        const char* what;
        uint32_t result;
        int framebuffersMade;
        std::function<void()> provoke = [] {};
        koBufferFormat format = wanted(2, 7, 16);
        unsigned width = 8, height = 4;
        size_t renderbuffersLeft = 0;
    };
    const Case kCases[] = {
        {"not offered", 1, 0, veto(gl().fExtSupported)},
        {"vetoed", 1, 0, veto(gl().fExtEnabled)},
        {"too wide", 4, 0, [] {}, wanted(2, 7, 16), 65, 64},
        {"too high", 4, 0, [] {}, wanted(2, 7, 16), 64, 65},
        {"far too high", 4, 0, [] {}, wanted(2, 7, 16), 64, 0xFFFFFFFF},
        {"no limit", 4, 0, [] { script().values.erase(GL_MAX_RENDERBUFFER_SIZE_EXT); }},
        {"no name", 5, 0, [] { failNext("glGenFramebuffersEXT"); }},
        {"no attachments", 2, 1, [] { script().values[GL_MAX_COLOR_ATTACHMENTS_EXT] = {0}; }},
        {"1D colour", 2, 1, [] {}, wanted(2, 7, 16, 1)},
        {"3D colour", 2, 1, [] {}, wanted(2, 7, 16, 4)},
        {"packed, 1 bit", 2, 1, [] {}, wanted(2, 7, 10)},
        {"packed, 16 bits", 2, 1, [] {}, wanted(2, 6, 13)},
        {"incomplete", 2, 1, incomplete},
        {"incomplete with stencil", 2, 1, incomplete, wanted(2, 15, 12), 8, 4, 1},
    };
    for (const auto& c : kCases) {
        resetRecording();
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
        c.provoke();
        const int references = startup().refCount();
        {
            GLFrameBuffer buffer;
            EXPECT_EQ(buffer.createOffscreen(c.format, c.width, c.height), c.result) << c.what;
            EXPECT_EQ(buffer.fKind, 0u);
            EXPECT_EQ(buffer.fColorAttachmentCount, 0u);
            EXPECT_EQ(buffer.fGLXDrawableFlag, c.framebuffersMade == 0) << c.what;
            EXPECT_EQ(buffer.fRequestedFormat.fColorFormat, 2u);
            EXPECT_EQ(startup().refCount(), references + 1);
        }
        EXPECT_EQ(ledger(NameKind::Framebuffer).made, c.framebuffersMade) << c.what;
        expectLive(0, 0, c.renderbuffersLeft);
        gl().fExtSupported[kCapFramebufferObject] = gl().fExtEnabled[kCapFramebufferObject] = true;
    }
}

TEST_F(Offscreen, aStencilWithoutANameIsNotAttached) {
    script().failing = {{"glGenRenderbuffersEXT", 1}};
    GLFrameBuffer buffer;
    EXPECT_EQ(buffer.createOffscreen(wanted(14, 15, 12), 8, 4), 0u);
    EXPECT_EQ(recorded(), opening() + Calls{call("glGenRenderbuffersEXT", 1, kOut)} + closing());
}

TEST_F(Offscreen, leavesAnEmptyStartupContextWithoutATable) {
    GLStartupContext::fpGlobalGLStartupContext = nullptr;
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    GLFrameBuffer buffer;
    EXPECT_EQ(buffer.createOffscreen(wanted(2, 7, 16), 8, 4), 4u);
    EXPECT_EQ(buffer.fRequestedFormat.fColorFormat, 14u) << "not even the request is kept";
    GLStartupContext* empty = GLStartupContext::fpGlobalGLStartupContext;
    ASSERT_NE(empty, nullptr);
    EXPECT_FALSE(empty->valid);
    EXPECT_EQ(empty->refCount(), 1);
    EXPECT_EQ(buffer.createOffscreen(wanted(2, 7, 16), 8, 4), 4u) << "and so for all that follow";
    EXPECT_EQ(recorded(), Calls{});
    delete empty;
    GLFunctionTable::fpGlobalFunctionTable = &gl();
}

TEST_F(Offscreen, becomesTheTarget) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(wanted(2, 15, 16), 8, 4), 0u);
    const std::string bound = call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, kFramebuffer);
    const std::string checked = call("glCheckFramebufferStatusEXT", GL_FRAMEBUFFER_EXT);
    const auto made = [&buffer] {
        clearRecorded();
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        return recorded();
    };
    EXPECT_EQ(made(), (Calls{bound, call("glDrawBuffer", GL_COLOR_ATTACHMENT0_EXT), checked}));

    // A cube map by its first selected face; bits beyond the six select none.
    buffer.fAttachmentPoints[0] = GL_COLOR_ATTACHMENT1_EXT;
    buffer.fColorTextures[0]->fTextureType = IHWTexture::kTextureCubeMap;
    const Calls whole = {bound, call("glDrawBuffer", GL_COLOR_ATTACHMENT1_EXT), checked};
    for (const auto& [mask, face] : std::initializer_list<std::pair<uint32_t, int>>{
             {0, 0}, {1, 0}, {0x20, 5}, {0x0C, 2}, {0x48, 3}, {0x40, -1}, {0x80000000, -1}}) {
        buffer.fCubeFaceMask = mask;
        Calls expected = whole;
        if (face >= 0)
            expected.insert(expected.begin() + 2,
                            call("glFramebufferTexture2DEXT", GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT1_EXT,
                                 GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, nthName(NameKind::Texture), 0));
        EXPECT_EQ(made(), expected) << mask;
    }
    std::swap(buffer.fColorTextures[0], buffer.fColorTextures[1]); // a slot may be empty
    EXPECT_EQ(made(), whole);
    std::swap(buffer.fColorTextures[0], buffer.fColorTextures[1]);

    script().framebufferStatus = GL_FRAMEBUFFER_UNSUPPORTED_EXT;
    EXPECT_EQ(buffer.makeCurrent(), 0u);
    script().framebufferStatus = GL_FRAMEBUFFER_COMPLETE_EXT;
    buffer.deleteInternalState();
    clearRecorded();
    EXPECT_EQ(buffer.makeCurrent(), 0u);
    EXPECT_EQ(recorded(), Calls{});

    ASSERT_EQ(buffer.createOffscreen(wanted(14, 6, 16), 8, 4), 0u);
    clearRecorded();
    EXPECT_EQ(buffer.makeCurrent(), 1u);
    EXPECT_EQ(recorded(), (Calls{call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, kFramebuffer + 1),
                                 call("glDrawBuffer", GL_NONE), checked}));
}

TEST_F(Offscreen, readsByPixelType) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(wanted(2, 15, 16), 8, 4), 0u);
    const struct {
        uint32_t bytes;
        GLenum format, type;
    } kTypes[] = {{3, GL_ALPHA, GL_UNSIGNED_BYTE},
                  {3, GL_RGB, GL_UNSIGNED_BYTE},
                  {4, GL_RGBA, GL_UNSIGNED_BYTE},
                  {8, GL_RGBA, 0x140B},
                  {16, GL_RGBA, GL_FLOAT},
                  {0, 0, 0},
                  {0, 0, 0},
                  {0, 0, 0},
                  {4, GL_DEPTH_COMPONENT, GL_FLOAT}};
    for (uint32_t type : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1}) {
        clearRecorded();
        const std::unique_ptr<PixelArray2D> made(buffer.readColorBuffer(type, 3, 2, 0, 0, nullptr));
        if (type > 8 || kTypes[type].bytes == 0) {
            PixelArray2D given(koSysPixelFormat(type, 4), 8, 4);
            EXPECT_EQ(made, nullptr);
            EXPECT_EQ(buffer.readColorBuffer(type, 3, 2, 0, 0, &given), nullptr);
            EXPECT_EQ(recorded(), Calls{}) << type;
            continue;
        }
        ASSERT_NE(made, nullptr) << type;
        EXPECT_EQ(made->format().pixelType(), type);
        EXPECT_EQ(made->format().bytesPerPixel(), kTypes[type].bytes);
        EXPECT_EQ(recorded(), (Calls{call("glPixelStorei", GL_PACK_ALIGNMENT, 1),
                                     call("glReadPixels", 3, 2, 8, 4, kTypes[type].format, kTypes[type].type,
                                          static_cast<const void*>(made->data()))}));
    }
}

TEST_F(Offscreen, clipsWhatItReads) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(wanted(2, 15, 16), 8, 4), 0u);
    PixelArray2D given(koSysPixelFormat(2, 4), 8, 4);
    for (const auto& [asked, read] :
         std::initializer_list<std::pair<std::pair<int, int>, std::pair<int, int>>>{
             {{0, 0}, {8, 4}}, {{9, 5}, {8, 4}}, {{3, 0}, {3, 4}}, {{0, 1}, {8, 1}}, {{-2, -1}, {-2, -1}}}) {
        clearRecorded();
        EXPECT_EQ(buffer.readColorBuffer(2, 0, 0, asked.first, asked.second, &given), &given);
        EXPECT_EQ(recorded().back(), call("glReadPixels", 0, 0, read.first, read.second, GL_RGBA,
                                          GL_UNSIGNED_BYTE, static_cast<const void*>(given.data())));
    }
    clearRecorded();
    EXPECT_EQ(buffer.readColorBuffer(2, 0, 0, -2, 1, nullptr), nullptr);
    EXPECT_EQ(recorded(), Calls{}) << "no array of a negative size";
    EXPECT_EQ(GLFrameBuffer().readColorBuffer(2, 0, 0, 0, 0, nullptr), nullptr);
    EXPECT_EQ(recorded(), Calls{}) << "never created";
}

} // namespace
