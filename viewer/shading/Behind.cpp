#include "shading/Behind.h"

#include "draw/GL.h"

#include <algorithm>

#include <state/GLPassState.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

/// The smallest level: 2 to the power of -6 of the largest.
constexpr int kLevels = 7;

/// Where a level lies in the texture: the first on the left, the others above each other on the right.
struct LevelPlace {
    int side;
    int left;
    int bottom;
};

LevelPlace placeOf(int level) {
    const int side = Behind::kSide >> level;
    return {side, level == 0 ? 0 : Behind::kSide, level == 0 ? 0 : Behind::kSide - 2 * side};
}

/// A picture over the whole viewport.
void drawLevel(const LevelPlace& from) {
    constexpr auto kWidth = 2.0F * Behind::kSide;
    constexpr auto kHeight = 1.0F * Behind::kSide;
    gl().glBegin(GL_QUADS);
    for (const auto& [x, y] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
        gl().glTexCoord2f(static_cast<float>(from.left + x * from.side) / kWidth,
                          static_cast<float>(from.bottom + y * from.side) / kHeight);
        gl().glVertex2f(2.0F * static_cast<float>(x) - 1.0F, 2.0F * static_cast<float>(y) - 1.0F);
    }
    gl().glEnd();
}

void copy(const LevelPlace& to) {
    gl().glCopyTexSubImage2D(GL_TEXTURE_2D, 0, to.left, to.bottom, 0, 0, to.side, to.side);
}

} // namespace

Behind::Behind()
    : fCanvas(Canvas::Kind::Picture, kSide, kSide),
      fLevels(new GLTexture2D(fCanvas.texture().fRasterFormat, false)) {
    fLevels->ref();
    fLevels->GLloadImage(nullptr, 2 * kSide, kSide);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, IHWTexUsage::kClampToEdge, IHWTexUsage::kClampToEdge);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kLinear, IHWTexUsage::kLinear);
    fLevels->unbind();
}

Behind::~Behind() {
    fLevels->unref();
}

void Behind::update(const View& view, const std::function<void(GLFrameBuffer&)>& draw) {
    fEyeToMap = view.projection.then(halved());
    fCanvas.makeCurrent();
    draw(fCanvas.target());
    makeSmaller();
}

/// Each is drawn from the one before, four texels a pixel, where the frame was, and goes to its place.
void Behind::makeSmaller() {
    gl().glActiveTexture(GL_TEXTURE0);
    fLevels->bind();
    copy(placeOf(0));
    GLPassState().applyGL(false);
    for (const GLenum capability : {GL_DEPTH_TEST, GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST, GL_BLEND})
        gl().glDisable(capability);
    gl().glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl().glEnable(GL_TEXTURE_2D);
    gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    for (const GLenum matrix : {GL_PROJECTION, GL_MODELVIEW}) {
        gl().glMatrixMode(matrix);
        gl().glLoadIdentity();
    }
    for (int level = 1; level < kLevels; ++level) {
        const LevelPlace place = placeOf(level);
        gl().glViewport(0, 0, place.side, place.side);
        drawLevel(placeOf(level - 1));
        copy(place);
    }
    gl().glDisable(GL_TEXTURE_2D);
    fLevels->unbind();
}

} // namespace orloview
