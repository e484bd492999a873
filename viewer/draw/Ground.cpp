#include "draw/Ground.h"

#include "base/ExitCode.h"
#include "draw/DepthFrame.h"
#include "draw/GL.h"
#include "draw/Placed.h"
#include "scene/View.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <state/GLCamera.h>
#include <state/GLPassState.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

constexpr int kPixels = 256; ///< each way

/// How dark the ground is where no light comes at all.
constexpr float kDarkest = 0.8F;

/// The mean over a square window, along one axis after the other; beyond the edges there is nothing.
void blur(std::vector<float>& picture, int reach) {
    const auto along = [&](size_t step, size_t across) {
        std::vector<float> line(kPixels);
        for (size_t i = 0; i < kPixels; ++i) {
            float* first = picture.data() + i * across;
            double sum = 0.0;
            for (int k = 0; k < std::min(reach, kPixels); ++k)
                sum += first[static_cast<size_t>(k) * step];
            for (int k = 0; k < kPixels; ++k) {
                if (k + reach < kPixels)
                    sum += first[static_cast<size_t>(k + reach) * step];
                line[static_cast<size_t>(k)] = static_cast<float>(sum / (2 * reach + 1));
                if (k - reach >= 0)
                    sum -= first[static_cast<size_t>(k - reach) * step];
            }
            for (size_t k = 0; k < kPixels; ++k)
                first[k * step] = line[k];
        }
    };
    along(1, kPixels);
    along(kPixels, 1);
}

/// How much of an even sky each place lacks. A patch at a height h keeps off the share
/// h^2 / (pi (h^2 + d^2)^2) of its area at a distance d. So patches of about one height are blurred together:
/// by the mean of two bells, 0.6 h and 1.5 h wide, which comes within 5 parts in 100 of that.
std::vector<float> shadeFrom(const std::vector<float>& heights, double pixel) {
    std::vector<float> shade(heights.size());
    double least = 0.0;
    for (double most = pixel; least < 2.0 * kPixels * pixel; least = most, most *= 1.25) {
        std::vector<float> layer(heights.size());
        bool isEmpty = true;
        for (size_t i = 0; i < heights.size(); ++i) {
            if (heights[i] >= least && heights[i] < most) {
                layer[i] = 1.0F;
                isEmpty = false;
            }
        }
        if (isEmpty)
            continue;
        const double height = 0.5 * (least + most) / pixel;
        for (const double width : {0.6 * height, 1.5 * height}) {
            std::vector<float> blurred = layer;
            const int reach = static_cast<int>(std::lround(std::max(width - 0.5, 0.0)));
            for (int i = 0; i < 3 && reach > 0; ++i) // three boxes make a bell as wide as they reach
                blur(blurred, std::min(reach, kPixels));
            std::transform(shade.begin(), shade.end(), blurred.begin(), shade.begin(),
                           [](float sum, float part) { return sum + 0.5F * part; });
        }
    }
    return shade;
}

/// 1 in the middle of the square, 0 at its sides.
float window(int x, int y) {
    const auto fade = [](int i) {
        const double edge = 1.0 - std::abs(2.0 * (i + 0.5) / kPixels - 1.0);
        return std::clamp(edge / 0.25, 0.0, 1.0);
    };
    const double both = fade(x) * fade(y);
    return static_cast<float>(both * both * (3.0 - 2.0 * both));
}

} // namespace

Ground::Ground(const GroundSquare& square) : fSide(square.side), fHeight(square.height) {
    for (int i = 0; i < 3; ++i) {
        fToWorld[0][i] = square.right[i];
        fToWorld[1][i] = square.ahead[i];
        fToWorld[2][i] = square.up[i];
        fToWorld[3][i] = square.middle[i];
    }
}

Ground::~Ground() {
    if (fShade)
        fShade->unref();
}

/// How high the lowest is that stands over each place, seen from below; infinite where nothing does. Rows
/// ahead.
std::vector<float> Ground::heights(DrawableScene& drawable) {
    if (!fCanvas)
        fCanvas = std::make_unique<Canvas>(Canvas::Kind::Picture, kPixels, kPixels);
    fCanvas->makeCurrent();
    fCanvas->target().makeCurrent();
    beginDepthFrame(kPixels);
    // Looking up, what is to the right of one who looks ahead is to the left: mirrored, it is no more.
    GLCamera camera;
    camera.fViewTransform = fToWorld.inverse().then(koLinear::AffineMatrix::scaling(1.0, 1.0, -1.0));
    camera.fProjection = orthographic(fSide, fSide, 0.0, 1.1 * fHeight);
    camera.bind();
    for (size_t index = 0; index < drawable.scene().instances.size(); ++index)
        drawPlaced(drawable, index, [&] { drawable.drawShape(index); });
    const std::unique_ptr<PixelArray2D> depth(fCanvas->target().readDepthBuffer(0, 0, kPixels, kPixels));
    if (!depth)
        throw Failure(kExitNoGL, "--ground: this OpenGL gives no depth back; leave it out");
    const auto* values = static_cast<const float*>(depth->data());
    std::vector<float> heights(size_t{kPixels} * kPixels);
    std::transform(values, values + heights.size(), heights.begin(), [this](float value) {
        return value < 1.0F ? value * static_cast<float>(1.1 * fHeight)
                            : std::numeric_limits<float>::infinity();
    });
    return heights;
}

void Ground::update(DrawableScene& drawable) {
    if (fIsFound)
        return;
    fIsFound = true;
    const std::vector<float> shade = shadeFrom(heights(drawable), 2.0 * fSide / kPixels);
    std::vector<std::uint8_t> texels(shade.size() * 4);
    for (int y = 0; y < kPixels; ++y) {
        for (int x = 0; x < kPixels; ++x) {
            const size_t i = static_cast<size_t>(y) * kPixels + static_cast<size_t>(x);
            const float dark = kDarkest * std::min(shade[i], 1.0F) * window(x, y);
            texels[i * 4 + 3] = static_cast<std::uint8_t>(std::lround(255.0F * dark));
        }
    }
    if (!fShade) {
        fShade = new GLTexture2D(kRasterRGBA8, false);
        fShade->ref();
    }
    gl().glActiveTexture(GL_TEXTURE0);
    fShade->GLloadImage(texels.data(), kPixels, kPixels);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, IHWTexUsage::kClampToEdge, IHWTexUsage::kClampToEdge);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kLinear, IHWTexUsage::kLinear);
    fShade->unbind();
}

void Ground::draw() const {
    GLPassState state;
    state.setDepthMask(false);
    state.setBlendFuncFactors(GLPassState::kBlendOne, GLPassState::kBlendOneMinusSourceAlpha);
    state.applyGL(false);
    gl().glEnable(GL_BLEND);
    gl().glEnable(GL_CULL_FACE); // nothing is seen of it from below
    gl().glFrontFace(GL_CCW);
    gl().glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl().glDisable(GL_LIGHTING);
    gl().glDisable(GL_ALPHA_TEST);
    fShade->bind();
    gl().glEnable(GL_TEXTURE_2D);
    gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    gl().glPushMatrix();
    gl().glMultMatrixd(koLinear::ProjMatrix(fToWorld).data());
    gl().glBegin(GL_QUADS);
    for (const auto& [x, y] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
        gl().glTexCoord2f(static_cast<float>(x), static_cast<float>(y));
        gl().glVertex2f(static_cast<float>((2 * x - 1) * fSide), static_cast<float>((2 * y - 1) * fSide));
    }
    gl().glEnd();
    gl().glPopMatrix();
    gl().glDisable(GL_TEXTURE_2D);
    fShade->unbind();
}

} // namespace orloview
