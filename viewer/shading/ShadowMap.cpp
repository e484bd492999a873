#include "shading/ShadowMap.h"

#include "draw/DepthFrame.h"
#include "draw/Placed.h"
#include "scene/Vectors.h"
#include "scene/View.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include <gl/GLFunctionTable.h>
#include <state/GLCamera.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

constexpr int kSide = 2048;

int sideHere() {
    return std::min(kSide, Canvas::largestSide());
}

/// World to the space of an eye at a place, with `back` behind it.
koLinear::AffineMatrix towards(const Vector& back, const Point& place) {
    return koLinear::AffineMatrix::translation(-place[0], -place[1], -place[2])
        .then(frameAlong(back).inverse());
}

bool isSame(const koLinear::AffineMatrix& a, const koLinear::AffineMatrix& b) {
    return std::equal(a[0], a[0] + 12, b[0]);
}

} // namespace

ShadowMap::ShadowMap(const Scene& scene, SceneLights& lights)
    : fLights(lights), fBounds(scene.bounds()), fCanvas(Canvas::Kind::Picture, sideHere(), sideHere()) {
    GLLight& light = lights.light(0);
    light.addProjector(1);
    fProjector = light.fProjectors.at(0);
    light.allocateShadowMap(kRasterDepth24);
    fMap = light.fShadowMaps.at(0);
}

void ShadowMap::update(DrawableScene& drawable, const koLinear::AffineMatrix& worldToEye) {
    const koLinear::AffineMatrix toWorld = fLights.toWorld(0, worldToEye);
    if (fDrawnFor && isSame(*fDrawnFor, toWorld))
        return;
    fDrawnFor = toWorld;
    aim(toWorld);
    draw(drawable);
}

/// A light without a place sees the whole scene; a spot what is in its cone; a point light what is towards
/// the middle of the scene.
void ShadowMap::aim(const koLinear::AffineMatrix& toWorld) {
    const Light* light = fLights.fileLight(0);
    const Point middle = centerOf(fBounds);
    const double radius = radiusOf(fBounds);
    const Vector back = toWorld.transform(Vector(0.0, 0.0, 1.0));
    if (!light || light->kind == Light::Kind::Directional) {
        Bounds box;
        box.extend(fBounds, towards(back, middle));
        const Point center = centerOf(box);
        const double room = 0.01 * radius;
        const auto half = [&](int axis) { return 0.5 * (box.max[axis] - box.min[axis]) + room; };
        fProjector->fViewTransform =
            towards(back, middle)
                .then(koLinear::AffineMatrix::translation(-center[0], -center[1], -center[2]));
        fProjector->fProjection = orthographic(half(0), half(1), -half(2), half(2));
    } else {
        constexpr double kWidest = 2.0 * std::numbers::pi / 3.0;
        const Point place = toWorld.transform(Point());
        const Vector toLight = between(middle, place);
        const double distance = length(toLight);
        const bool isSpot = light->kind == Light::Kind::Spot;
        const double around = distance > radius ? 2.0 * std::asin(radius / distance) : kWidest;
        const double angle = isSpot ? 2.0 * light->outerConeAngle : around;
        fProjector->fViewTransform = towards(isSpot || distance == 0.0 ? back : toLight, place);
        fProjector->fProjection = perspective(std::clamp(angle, 0.01, kWidest), 1.0,
                                              std::max(distance - radius, 0.01 * radius), distance + radius);
    }
    fWorldToMap =
        koLinear::ProjMatrix(fProjector->fViewTransform).then(fProjector->fProjection).then(halved());
}

void ShadowMap::draw(DrawableScene& drawable) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const int side = sideHere();
    fCanvas.target().makeCurrent();
    beginDepthFrame(side);
    gl.glEnable(GL_POLYGON_OFFSET_FILL); // a surface lies a little behind its own image in the map
    gl.glPolygonOffset(2.0F, 8.0F);
    fProjector->bind();
    for (const size_t index : drawable.opaqueInstances())
        drawPlaced(drawable, index, [&] { drawable.drawShape(index); });
    gl.glDisable(GL_POLYGON_OFFSET_FILL);
    gl.glActiveTexture(GL_TEXTURE0);
    fMap->GLloadRenderedImage(0, 0, side, side);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, IHWTexUsage::kClampToEdge, IHWTexUsage::kClampToEdge);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kLinear, IHWTexUsage::kLinear);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE_ARB, GL_COMPARE_R_TO_TEXTURE_ARB);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC_ARB, GL_LEQUAL);
    fMap->unbind();
}

} // namespace orloview
