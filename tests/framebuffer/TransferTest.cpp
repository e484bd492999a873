#include "FrameBufferTest.h"

#include "texture/GLTexture1D.h"
#include "texture/GLTexture2D.h"

namespace {

struct PixelTransfer {
    uint32_t bytes;
    GLenum format, type;
};
/// By pixel type; alpha shares the array with RGB.
const std::map<uint32_t, PixelTransfer> kTransfers = {
    {0, {3, GL_ALPHA, GL_UNSIGNED_BYTE}},  {1, {3, GL_RGB, GL_UNSIGNED_BYTE}},
    {2, {4, GL_RGBA, GL_UNSIGNED_BYTE}},   {3, {8, GL_RGBA, GL_HALF_FLOAT_ARB}},
    {4, {16, GL_RGBA, GL_FLOAT}},          {5, {1, GL_DEPTH_COMPONENT, GL_UNSIGNED_BYTE}},
    {8, {4, GL_DEPTH_COMPONENT, GL_FLOAT}}};

using Place = std::array<int, 4>; // x, y, width, height

/// A framebuffer object of 8 x 4 with one colour texture, and a texture of 16 x 2.
class Transfer : public FrameBufferTest {
protected:
    Transfer() {
        EXPECT_EQ(fBuffer.createOffscreen(bufferFormat(), 8, 4), 0u);
        fTexture->setWidthHeight(16, 2);
        clearRecorded();
    }
    ~Transfer() override { fBuffer.deleteInternalState(); }

    std::string bind() { return call("glBindTexture", GL_TEXTURE_2D, fTexture->textureName()); }

    /// Also deletes the array.
    void expectRead(PixelArray2D* array, uint32_t pixelType, const Place& at) {
        const std::unique_ptr<PixelArray2D> pixels(array);
        ASSERT_NE(pixels, nullptr);
        const PixelTransfer& by = kTransfers.at(pixelType);
        EXPECT_EQ(made(), (Calls{call("glPixelStorei", GL_PACK_ALIGNMENT, 1),
                                 call("glReadPixels", at[0], at[1], at[2], at[3], by.format, by.type,
                                      pixels->data())}));
        EXPECT_EQ(pixels->format().pixelType(), pixelType);
        EXPECT_EQ(pixels->format().bytesPerPixel(), by.bytes);
        EXPECT_EQ((std::array{pixels->width(), pixels->height()}), (std::array{at[2], at[3]}));
    }

    static std::string copied(const Place& at) {
        return call("glCopyTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, at[0], at[1], at[2], at[3]);
    }

    void expectCopied(GLenum source, const Place& at, bool anew = false) {
        Calls calls = {call("glReadBuffer", source), bind()};
        if (anew)
            calls.push_back(call("glTexImage2D", GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, at[2], at[3], 0,
                                 GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, nullptr));
        EXPECT_EQ(made(), calls + Calls{copied(at)});
    }

    GLFrameBuffer fBuffer;
    Shared<GLTexture2D> fTexture = makeShared<GLTexture2D>(kRasterDepth24, false);
};

TEST_F(Transfer, readsNewArraysByPixelType) {
    const auto color = [&](uint32_t type, int width = 0, int height = 0, PixelArray2D* given = nullptr) {
        return fBuffer.readColorBuffer(type, 3, 2, width, height, given);
    };
    PixelArray2D given(koSysPixelFormat(2, 4), 8, 4);
    for (uint32_t type : {0, 1, 2, 3, 4, 8})
        expectRead(color(type), type, {3, 2, 8, 4});
    expectRead(color(2, 9, 1), 2, {3, 2, 8, 1});
    expectRead(color(2, 3, 5), 2, {3, 2, 3, 4});
    EXPECT_EQ(color(2, -2, -1, &given), &given);
    EXPECT_EQ(made()[1],
              call("glReadPixels", 3, 2, -2, -1, GL_RGBA, GL_UNSIGNED_BYTE, std::as_const(given).data()));
    const auto current = [&] { return fBuffer.readCurrentColorBuffer(static_cast<PixelArray2D*>(nullptr)); };
    expectRead(current(), 2, {0, 0, 8, 4});
    expectRead(fBuffer.readDepthBuffer(), 8, {0, 0, 8, 4});
    expectRead(fBuffer.readDepthBufferInBytes(), 5, {0, 0, 8, 4});
    expectRead(fBuffer.readDepthBuffer(2, 1, 3, 2), 8, {2, 1, 3, 2});
    expectRead(fBuffer.readDepthBuffer(-5, -6, 30, 40), 8, {0, 0, 8, 4});

    for (uint32_t type : {5, 6, 7, 9, -1})
        EXPECT_FALSE(color(type) || color(type, 0, 0, &given));
    EXPECT_EQ(color(2, -2, 1), nullptr) << "no array of a negative size";
    EXPECT_EQ(fBuffer.readDepthBuffer(0, 0, -1, 2), nullptr);
    fBuffer.fActualFormat.fColorFormat = kRasterDepth16;
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(made(), Calls{});
    fBuffer.readDepthBuffer(static_cast<PixelArray2D*>(nullptr));
    EXPECT_EQ(made().size(), 4U) << "twice";
}

TEST_F(Transfer, drawsArraysByTheirType) {
    for (uint32_t type = 0; type < 11; ++type) {
        PixelArray2D pixels(koSysPixelFormat(type, 16), 8, 4);
        const auto expectDrawn = [&](bool drawn, double scale, int width, int height) {
            Calls calls;
            if (drawn)
                calls = {call("glPixelStorei", GL_UNPACK_ALIGNMENT, 1),
                         call("glRasterPos3f", scale, 2 * scale, 3 * scale),
                         call("glDrawPixels", width, height, kTransfers.at(type).format,
                              kTransfers.at(type).type, std::as_const(pixels).data())};
            EXPECT_EQ(made(), calls) << type;
        };
        EXPECT_EQ(fBuffer.drawColorBuffer(1, 2, 3, 100, 2, &pixels), type < 5 ? 1u : 0u);
        expectDrawn(type < 5, 1, 8, 2);
        fBuffer.writeCurrentColorBuffer(pixels);
        expectDrawn(type < 5, 0, 8, 4);
        fBuffer.drawDepthBuffer(1, 2, 3, 5, 100, &pixels);
        expectDrawn(type == 8, 1, 5, 4);
        fBuffer.writeDepthBuffer(pixels);
        expectDrawn(type == 8, 0, 8, 4);
    }
}

TEST_F(Transfer, drawsTexturesAsAQuad) {
    for (int bits = 0; bits < 8; ++bits) {
        const bool color = bits & 1;
        const bool enabled = bits & 2;
        const bool rectangles = gl().fExtEnabled[kCapTextureRectangle] = bits & 4;
        for (const GLenum capability : {GL_DEPTH_TEST, GL_TEXTURE_2D})
            enabled ? gl().glEnable(capability) : gl().glDisable(capability);
        Calls quad;
        for (const auto& [x, y] : {std::pair{-1, -1}, {-1, 1}, {1, 1}, {1, -1}}) {
            quad.push_back(color && rectangles ? call("glTexCoord2i", (x + 1) * 8, y + 1)
                                               : call("glTexCoord2f", (x + 1) / 2, (y + 1) / 2));
            quad.push_back(call("glVertex2f", x, y));
        }
        clearRecorded();
        color ? fBuffer.writeCurrentColorBuffer(static_cast<const IHWTexture&>(*fTexture))
              : fBuffer.writeDepthBuffer(static_cast<const IHWTexture&>(*fTexture));
        EXPECT_EQ(made(),
                  (Calls{call("glGetBooleanv", GL_DEPTH_TEST, kOut),
                         call("glGetBooleanv", GL_TEXTURE_2D, kOut), call("glMatrixMode", GL_PROJECTION),
                         call("glPushMatrix"), call("glLoadIdentity"), call("glOrtho", 0, 16, 0, 2, -1, 1),
                         call("glMatrixMode", GL_MODELVIEW), call("glLoadIdentity"),
                         call("glColorMask", color, color, color, color), call("glDepthMask", !color),
                         enabled ? call("glDisable", GL_DEPTH_TEST) : call("glEnable", GL_TEXTURE_2D), bind(),
                         call("glBegin", GL_QUADS)} +
                   quad +
                   Calls{call("glEnd"),
                         enabled ? call("glEnable", GL_DEPTH_TEST) : call("glDisable", GL_TEXTURE_2D),
                         call("glMatrixMode", GL_PROJECTION), call("glPopMatrix"),
                         call("glMatrixMode", GL_MODELVIEW)}))
            << bits;
    }
}

TEST_F(Transfer, copiesIntoTextures) {
    fBuffer.readDepthBuffer(fTexture.get());
    expectCopied(GL_DEPTH, {0, 0, 8, 4}, true);
    for (const unsigned index : {0U, 1U}) { // the second is beyond the attachments
        fBuffer.readCurrentColorBuffer(fTexture.get(), index);
        expectCopied(index == 0 ? GL_COLOR_ATTACHMENT0_EXT : GL_BACK, {0, 0, 8, 4});
    }
    fBuffer.renderTexture(fTexture.get(), -3, 2, 5, 99, 7, 9);
    expectCopied(GL_COLOR_ATTACHMENT0_EXT, {0, 2, 5, 4}, true);
    fBuffer.fColorAttachmentCount = 0;
    for (const unsigned source : {0U, 1U}) {
        fBuffer.renderTexture(fTexture.get(), 1, -1, 5, 4, 0, source);
        expectCopied(source == 0 ? GL_FRONT : GL_BACK, {1, 0, 5, 4});
    }
    fBuffer.renderTexture(fTexture.get(), 1, -1, 5, 4, 0, 2);
    EXPECT_EQ(recorded(), Calls{});
    fBuffer.fColorAttachmentCount = 1;
    const Shared<GLTexture2D> copy(fBuffer.copyDepthBuffer2Texture2D(-1, 1, 99, 2));
    ASSERT_NE(copy, nullptr);
    copy->ref();
    EXPECT_EQ(copy->fRasterFormat, kRasterRGBX8);
    EXPECT_EQ(recorded()[1], call("glReadBuffer", GL_DEPTH));
    EXPECT_EQ(made().back(), copied({0, 1, 8, 2}));

    GLFrameBuffer window;
    assign(window);
    window.fColorAttachmentCount = 2; // whatever it has attached
    script().values[GL_VIEWPORT] = {0, 0, 6, 3};
    window.readCurrentColorBuffer(fTexture.get(), 0);
    EXPECT_THAT(recorded(), testing::Contains(call("glReadBuffer", GL_BACK)));
    EXPECT_EQ(recorded().back(), copied({0, 0, 6, 3})) << "measured first";
}

TEST_F(Transfer, nothingHappensWithoutATextureOrABuffer) {
    GLTexture1D line;
    GLFrameBuffer never;
    IHWTexture* volatile nothing = nullptr;
    PixelArray2D pixels(koSysPixelFormat(2, 4), 8, 4);
    clearRecorded();
    for (const auto& [buffer, texture, array] :
         {std::tuple<GLFrameBuffer*, IHWTexture*, PixelArray2D*>{&fBuffer, nothing, nullptr},
          {&fBuffer, &line, nullptr},
          {&never, fTexture.get(), &pixels}}) {
        const IHWTexture& reference = *texture; // a host's reference, maybe to no texture
        buffer->writeCurrentColorBuffer(reference);
        buffer->writeDepthBuffer(reference);
        buffer->readCurrentColorBuffer(texture, 0);
        buffer->readDepthBuffer(texture);
        buffer->renderTexture(array ? fTexture.get() : nullptr, 0, 0, 1, 1, 0, 0);
        EXPECT_EQ(buffer->drawColorBuffer(0, 0, 0, 1, 1, array), 0u);
        buffer->drawDepthBuffer(0, 0, 0, 1, 1, array);
    }
    EXPECT_FALSE(never.copyDepthBuffer2Texture2D(0, 0, 1, 1) || never.readDepthBuffer() ||
                 never.readColorBuffer(2, 0, 0, 0, 0, nullptr));
    EXPECT_EQ(made(), Calls{});
}

} // namespace
