#include "DriverTest.h"

#include "texture/GLTexture2D.h"

#include <span>

namespace {

class DriverTexture2D : public DriverTest {
protected:
    /// Draws the texture over the whole viewport, replacing colour and alpha where it has them; `right` and
    /// `top` are the coordinates of the far corner.
    void draw(GLTexture2D& texture, GLenum target, float right = 1, float top = 1) {
        EXPECT_TRUE(texture.bind());
        gl().glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
        gl().glEnable(target);
        gl().glColor4f(1, 1, 1, 1);
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
            gl().glTexCoord2f(static_cast<float>(x) * right, static_cast<float>(y) * top);
            gl().glVertex2f(static_cast<float>(2 * x - 1), static_cast<float>(2 * y - 1));
        }
        gl().glEnd();
        gl().glDisable(target);
    }

    GLint levelValue(GLint level, GLenum parameter) {
        GLint value = 0;
        gl().glGetTexLevelParameteriv(GL_TEXTURE_2D, level, parameter, &value);
        return value;
    }
};

/// Channel c of texel t, in eighths.
int eighths(int t, int c) {
    return (3 * t + 2 * c + 1) % 8;
}

/// The 4 x 2 image of these in the client layout of a format.
template <typename T>
std::vector<unsigned char> image(int channels, T (*encode)(int)) {
    std::vector<unsigned char> bytes;
    for (int t = 0; t < 8; ++t) {
        for (int c = 0; c < channels; ++c) {
            const T value = encode(eighths(t, c));
            const auto* raw = reinterpret_cast<const unsigned char*>(&value);
            bytes.insert(bytes.end(), raw, raw + sizeof value);
        }
    }
    return bytes;
}

GLubyte asByte(int e) {
    return static_cast<GLubyte>(e * 32);
}
GLushort asHalf(int e) {
    constexpr GLushort kHalves[] = {0, 0x3000, 0x3400, 0x3600, 0x3800, 0x3900, 0x3A00, 0x3B00};
    return kHalves[e];
}
float asFloat(int e) {
    return static_cast<float>(e) / 8;
}

TEST_F(DriverTexture2D, showsEachColorFormat) {
    const DrawTarget target(gl(), 4, 2);
    // Which channel of the texel shows in red, green, blue and alpha; -1 for one.
    const struct {
        RasterFormat format;
        std::vector<unsigned char> data;
        std::array<int, 4> shown;
        double unit;
    } kCases[] = {
        {kRasterAlpha8, image(1, asByte), {-1, -1, -1, 0}, 32},
        {kRasterRGB8, image(3, asByte), {0, 1, 2, -1}, 32},
        {kRasterRGBA8, image(4, asByte), {0, 1, 2, 3}, 32},
        {kRasterRGBA16F, image(4, asHalf), {0, 1, 2, 3}, 255.0 / 8},
        {kRasterRGBA32F, image(4, asFloat), {0, 1, 2, 3}, 255.0 / 8},
        {kRasterIntensity8, image(1, asByte), {0, 0, 0, 0}, 32},
        {kRasterRGBX8, image(3, asByte), {0, 1, 2, -1}, 32},
    };
    for (const auto& c : kCases) {
        GLTexture2D texture(c.format, false);
        std::vector<unsigned char> data = c.data;
        EXPECT_TRUE(texture.GLloadImage(data.data(), 4, 2));
        draw(texture, GL_TEXTURE_2D);
        for (int t = 0; t < 8; ++t) {
            const Pixel pixel = readPixel(t % 4, t / 4);
            for (size_t i = 0; i < 4; ++i) {
                const double expected = c.shown[i] < 0 ? 255 : eighths(t, c.shown[i]) * c.unit;
                EXPECT_NEAR(pixel[i], expected, 0.51) << "format " << c.format << ", texel " << t;
            }
        }
        expectNoErrors();
    }
}

TEST_F(DriverTexture2D, rectanglesTakeTexelCoordinates) {
    const DrawTarget target(gl(), 3, 5);
    GLTexture2D texture(kRasterRGBA8, true);
    std::array<GLuint, 15> data = {};
    for (GLuint t = 0; t < data.size(); ++t)
        data[t] = 0xFF000000U | t * 0x11;
    EXPECT_TRUE(texture.GLloadImage(data.data(), 3, 5));
    draw(texture, GL_TEXTURE_RECTANGLE_ARB, 3, 5);
    for (int t = 0; t < 15; ++t)
        EXPECT_EQ(readPixel(t % 3, t / 3), (Pixel{t * 0x11, 0, 0, 255}));
}

TEST_F(DriverTexture2D, copiesWhatWasRendered) {
    const DrawTarget target(gl(), 8, 8);
    std::array<GLuint, 64> whole = {};
    for (GLuint t = 0; t < whole.size(); ++t)
        whole[t] = 0xFF000000U | t;
    for (bool rectangle : {false, true}) {
        GLTexture2D texture(kRasterRGBA8, rectangle);
        const GLenum at = rectangle ? GL_TEXTURE_RECTANGLE_ARB : GL_TEXTURE_2D;
        gl().glRasterPos2f(-1, -1);
        gl().glDrawPixels(8, 8, GL_RGBA, GL_UNSIGNED_BYTE, whole.data());
        for (const auto& [x, y, side] : {std::array{1, 2, 4}, {3, 0, 4}, {6, 6, 2}}) {
            EXPECT_TRUE(texture.GLloadRenderedImage(x, y, side, side));
            std::array<GLuint, 64> copied = {};
            gl().glGetTexImage(at, 0, GL_RGBA, GL_UNSIGNED_BYTE, copied.data());
            for (int t = 0; t < side * side; ++t)
                EXPECT_EQ(copied[t], whole[(y + t / side) * 8 + x + t % side]) << x << ", " << y;
        }
    }
}

TEST_F(DriverTexture2D, makesMipmapsByGLAndByGLU) {
    std::array<GLuint, 8> data = {0xFF000010, 0xFF000030, 0xFFFF0000, 0xFFFF0000,
                                  0xFF000050, 0xFF000070, 0xFFFF0000, 0xFFFF0000};
    for (bool automatic : {true, false}) {
        gl().fExtEnabled[kCapGenerateMipmap] = automatic;
        GLTexture2D texture(kRasterRGBA8, false);
        EXPECT_TRUE(texture.GLloadImageMipmap(data.data(), 4, 2));
        GLint generates = 0;
        gl().glGetTexParameteriv(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, &generates);
        EXPECT_EQ(generates, automatic);
        EXPECT_EQ(levelValue(1, GL_TEXTURE_WIDTH), 2);
        EXPECT_EQ(levelValue(1, GL_TEXTURE_HEIGHT), 1);
        EXPECT_EQ(levelValue(2, GL_TEXTURE_WIDTH), 1);
        std::array<GLubyte, 8> half = {};
        gl().glGetTexImage(GL_TEXTURE_2D, 1, GL_RGBA, GL_UNSIGNED_BYTE, half.data());
        EXPECT_NEAR(half[0], 0x40, 8) << "GL recommends the mean of four, and leaves the filter to drivers";
        EXPECT_THAT(std::span(half).subspan(1), testing::ElementsAre(0, 0, 255, 0, 0, 255, 255));
        // One level by hand over what was made.
        EXPECT_TRUE(texture.GLloadImageLevel(data.data(), 1, 2, 1));
        gl().glGetTexImage(GL_TEXTURE_2D, 1, GL_RGBA, GL_UNSIGNED_BYTE, half.data());
        EXPECT_THAT(half, testing::ElementsAre(0x10, 0, 0, 255, 0x30, 0, 0, 255));
    }
    // GLU knows no half floats and no packed depth: true all the same, and nothing is made.
    for (RasterFormat format : {kRasterRGBA16F, kRasterDepth24Stencil8}) {
        GLTexture2D texture(format, false);
        EXPECT_TRUE(texture.GLloadImageMipmap(data.data(), 1, 1));
        EXPECT_EQ(levelValue(0, GL_TEXTURE_WIDTH), 0) << format;
    }
}

} // namespace
