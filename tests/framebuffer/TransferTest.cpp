#include "FrameBufferTest.h"

#include "texture/GLTexture1D.h"
#include "texture/GLTexture2D.h"

namespace {

/// A framebuffer object of 8 x 4 with one colour texture.
class Transfer : public FrameBufferTest {
protected:
    Transfer() {
        const koBufferFormat format(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                    IHWTexture::kTexture2D);
        EXPECT_EQ(fBuffer.createOffscreen(format, 8, 4), 0u);
        fTexture->ref();
        fTexture->setWidthHeight(16, 2);
        clearRecorded();
    }
    ~Transfer() override {
        fTexture->unref();
        fBuffer.deleteInternalState();
    }

    static Calls read(int x, int y, int width, int height, GLenum type, const PixelArray2D* pixels) {
        return {call("glPixelStorei", GL_PACK_ALIGNMENT, 1),
                call("glReadPixels", x, y, width, height, GL_DEPTH_COMPONENT, type, pixels->data())};
    }

    Calls copied(GLenum source, int x, int y, int width, int height, bool anew = true) {
        Calls calls = {call("glReadBuffer", source),
                       call("glBindTexture", GL_TEXTURE_2D, fTexture->textureName())};
        if (anew)
            calls.push_back(call("glTexImage2D", GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, width, height, 0,
                                 GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, nullptr));
        calls.push_back(call("glCopyTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, x, y, width, height));
        return calls;
    }

    GLFrameBuffer fBuffer;
    GLTexture2D* fTexture = new GLTexture2D(kRasterDepth24, false);
};

TEST_F(Transfer, readsDepth) {
    const auto expectRead = [&](PixelArray2D* array, int x, int y, int width, int height, uint32_t type,
                                uint32_t bytes) {
        const std::unique_ptr<PixelArray2D> pixels(array);
        ASSERT_NE(pixels, nullptr);
        EXPECT_EQ(made(), read(x, y, width, height, bytes == 1 ? GL_UNSIGNED_BYTE : GL_FLOAT, pixels.get()));
        EXPECT_EQ(pixels->format().pixelType(), type);
        EXPECT_EQ(pixels->format().bytesPerPixel(), bytes);
        EXPECT_EQ(pixels->width(), width);
        EXPECT_EQ(pixels->height(), height);
    };
    expectRead(fBuffer.readDepthBuffer(), 0, 0, 8, 4, 8, 4);
    expectRead(fBuffer.readDepthBufferInBytes(), 0, 0, 8, 4, 5, 1);
    expectRead(fBuffer.readDepthBuffer(2, 1, 3, 2), 2, 1, 3, 2, 8, 4);
    expectRead(fBuffer.readDepthBuffer(-5, -6, 30, 40), 0, 0, 8, 4, 8, 4);
    EXPECT_EQ(fBuffer.readDepthBuffer(0, 0, -1, 2), nullptr);
    EXPECT_EQ(made(), Calls{});
    fBuffer.readDepthBuffer(static_cast<PixelArray2D*>(nullptr));
    EXPECT_EQ(made().size(), 4U) << "twice";
}

TEST_F(Transfer, readsColourByTheNumberOfItsFormat) {
    const std::unique_ptr<PixelArray2D> pixels(
        fBuffer.readCurrentColorBuffer(static_cast<PixelArray2D*>(nullptr)));
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(pixels->format().pixelType(), 2u);
    EXPECT_EQ(made().back(), call("glReadPixels", 0, 0, 8, 4, GL_RGBA, GL_UNSIGNED_BYTE,
                                  static_cast<const void*>(pixels->data())));
    fBuffer.fActualFormat.fColorFormat = kRasterDepth16;
    EXPECT_EQ(fBuffer.readCurrentColorBuffer(static_cast<PixelArray2D*>(nullptr)), nullptr);
}

TEST_F(Transfer, drawsArraysByTheirType) {
    const std::pair<GLenum, GLenum> kTransfers[] = {{GL_ALPHA, GL_UNSIGNED_BYTE},
                                                    {GL_RGB, GL_UNSIGNED_BYTE},
                                                    {GL_RGBA, GL_UNSIGNED_BYTE},
                                                    {GL_RGBA, 0x140B},
                                                    {GL_RGBA, GL_FLOAT}};
    const auto drawn = [](double x, double y, double z, int width, int height, GLenum format, GLenum type,
                          const PixelArray2D& pixels) {
        return Calls{call("glPixelStorei", GL_UNPACK_ALIGNMENT, 1), call("glRasterPos3f", x, y, z),
                     call("glDrawPixels", width, height, format, type, pixels.data())};
    };
    for (uint32_t type = 0; type < 11; ++type) {
        PixelArray2D pixels(koSysPixelFormat(type, 16), 8, 4);
        const uint32_t result = fBuffer.drawColorBuffer(1, 2, 3, 100, 2, &pixels);
        EXPECT_EQ(result != 0, type < 5);
        EXPECT_EQ(made(), type < 5
                              ? drawn(1, 2, 3, 8, 2, kTransfers[type].first, kTransfers[type].second, pixels)
                              : Calls{});
        fBuffer.writeCurrentColorBuffer(pixels);
        EXPECT_EQ(made(), type < 5
                              ? drawn(0, 0, 0, 8, 4, kTransfers[type].first, kTransfers[type].second, pixels)
                              : Calls{});
        fBuffer.drawDepthBuffer(1, 2, 3, 5, 100, &pixels);
        EXPECT_EQ(made(), type == 8 ? drawn(1, 2, 3, 5, 4, GL_DEPTH_COMPONENT, GL_FLOAT, pixels) : Calls{});
        fBuffer.writeDepthBuffer(pixels);
        EXPECT_EQ(made(), type == 8 ? drawn(0, 0, 0, 8, 4, GL_DEPTH_COMPONENT, GL_FLOAT, pixels) : Calls{});
    }
    EXPECT_EQ(fBuffer.drawColorBuffer(0, 0, 0, 1, 1, nullptr), 0u);
    fBuffer.drawDepthBuffer(0, 0, 0, 1, 1, nullptr);
    EXPECT_EQ(made(), Calls{});
}

TEST_F(Transfer, drawsTexturesAsAQuad) {
    const auto quad = [&](bool texels) {
        Calls calls = {call("glBegin", GL_QUADS)};
        const double corners[4][4] = {{-1, -1, 0, 0}, {-1, 1, 0, 1}, {1, 1, 1, 1}, {1, -1, 1, 0}};
        for (const auto& c : corners) {
            calls.push_back(texels ? call("glTexCoord2i", c[2] * 16, c[3] * 2)
                                   : call("glTexCoord2f", c[2], c[3]));
            calls.push_back(call("glVertex2f", c[0], c[1]));
        }
        calls.push_back(call("glEnd"));
        return calls;
    };
    for (const bool color : {true, false}) {
        for (const bool rectangles : {true, false}) {
            for (const bool enabled : {true, false}) {
                gl().fExtEnabled[kCapTextureRectangle] = rectangles;
                for (const GLenum capability : {GL_DEPTH_TEST, GL_TEXTURE_2D})
                    enabled ? gl().glEnable(capability) : gl().glDisable(capability);
                clearRecorded();
                const IHWTexture& texture = *fTexture;
                color ? fBuffer.writeCurrentColorBuffer(texture) : fBuffer.writeDepthBuffer(texture);
                Calls expected = {call("glGetBooleanv", GL_DEPTH_TEST, kOut),
                                  call("glGetBooleanv", GL_TEXTURE_2D, kOut),
                                  call("glMatrixMode", GL_PROJECTION),
                                  call("glPushMatrix"),
                                  call("glLoadIdentity"),
                                  call("glOrtho", 0, 16, 0, 2, -1, 1),
                                  call("glMatrixMode", GL_MODELVIEW),
                                  call("glLoadIdentity"),
                                  call("glColorMask", color, color, color, color),
                                  call("glDepthMask", !color),
                                  enabled ? call("glDisable", GL_DEPTH_TEST)
                                          : call("glEnable", GL_TEXTURE_2D),
                                  call("glBindTexture", GL_TEXTURE_2D, fTexture->textureName())};
                const Calls corners = quad(color && rectangles);
                expected.insert(expected.end(), corners.begin(), corners.end());
                expected.push_back(enabled ? call("glEnable", GL_DEPTH_TEST)
                                           : call("glDisable", GL_TEXTURE_2D));
                for (const std::string& last : {call("glMatrixMode", GL_PROJECTION), call("glPopMatrix"),
                                                call("glMatrixMode", GL_MODELVIEW)})
                    expected.push_back(last);
                EXPECT_EQ(made(), expected);
            }
        }
    }
}

TEST_F(Transfer, copiesIntoTextures) {
    fBuffer.readDepthBuffer(fTexture);
    EXPECT_EQ(made(), copied(GL_DEPTH, 0, 0, 8, 4));
    fBuffer.readCurrentColorBuffer(fTexture, 0);
    EXPECT_EQ(made(), copied(GL_COLOR_ATTACHMENT0_EXT, 0, 0, 8, 4, false));
    fBuffer.readCurrentColorBuffer(fTexture, 1);
    EXPECT_EQ(made(), copied(GL_BACK, 0, 0, 8, 4, false)) << "beyond the attachments";
    fBuffer.renderTexture(fTexture, -3, 2, 5, 99, 7, 9);
    EXPECT_EQ(made(), copied(GL_COLOR_ATTACHMENT0_EXT, 0, 2, 5, 4));
    fBuffer.fColorAttachmentCount = 0;
    for (const unsigned source : {0U, 1U, 2U}) {
        fBuffer.renderTexture(fTexture, 1, -1, 5, 4, 0, source);
        EXPECT_EQ(made(),
                  source == 2 ? Calls{} : copied(source == 0 ? GL_FRONT : GL_BACK, 1, 0, 5, 4, false));
    }
    fBuffer.fColorAttachmentCount = 1;
    GLTexture2D* copy = fBuffer.copyDepthBuffer2Texture2D(-1, 1, 99, 2);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->fRasterFormat, kRasterRGBX8);
    EXPECT_EQ(made(), (Calls{call("glGenTextures", 1, kOut), call("glReadBuffer", GL_DEPTH),
                             call("glBindTexture", GL_TEXTURE_2D, copy->textureName()),
                             call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RGBA8, 8, 2, 0, GL_RGB,
                                  GL_UNSIGNED_BYTE, nullptr),
                             call("glCopyTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, 0, 1, 8, 2)}));
    copy->ref();
    copy->unref();
}

TEST_F(Transfer, nothingHappensWithoutATextureOrABuffer) {
    GLTexture1D line;
    GLFrameBuffer never;
    const IHWTexture* volatile nothing = nullptr;
    PixelArray2D pixels(koSysPixelFormat(2, 4), 8, 4);
    clearRecorded();
    for (const IHWTexture* texture :
         {const_cast<const IHWTexture*>(nothing), static_cast<const IHWTexture*>(&line)}) {
        const IHWTexture& reference = *texture; // a host's reference to no texture
        fBuffer.writeCurrentColorBuffer(reference);
        fBuffer.writeDepthBuffer(reference);
        fBuffer.readCurrentColorBuffer(const_cast<IHWTexture*>(texture), 0);
        fBuffer.readDepthBuffer(const_cast<IHWTexture*>(texture));
    }
    fBuffer.renderTexture(nullptr, 0, 0, 1, 1, 0, 0);
    never.writeCurrentColorBuffer(*fTexture);
    never.writeDepthBuffer(*fTexture);
    never.readCurrentColorBuffer(fTexture, 0);
    never.readDepthBuffer(fTexture);
    never.renderTexture(fTexture, 0, 0, 1, 1, 0, 0);
    never.writeCurrentColorBuffer(pixels);
    never.readDepthBuffer(&pixels);
    EXPECT_EQ(never.copyDepthBuffer2Texture2D(0, 0, 1, 1), nullptr);
    EXPECT_EQ(never.readDepthBuffer(), nullptr);
    EXPECT_EQ(never.drawColorBuffer(0, 0, 0, 1, 1, &pixels), 0u);
    EXPECT_EQ(made(), Calls{});
}

TEST_F(Transfer, measuresAWindowFirst) {
    GLFrameBuffer window;
    adopt(window, GLFrameBuffer::kWindowed);
    window.fColorAttachmentCount = 2;
    script().values[GL_VIEWPORT] = {0, 0, 6, 3};
    clearRecorded();
    window.readCurrentColorBuffer(fTexture, 0);
    const Calls calls = made();
    ASSERT_GE(calls.size(), 4U);
    EXPECT_EQ(calls[calls.size() - 4], call("glReadBuffer", GL_BACK)) << "whatever it has attached";
    EXPECT_EQ(calls.back(), call("glCopyTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, 0, 0, 6, 3));
}

} // namespace
