#include "shading/ShadowMap.h"

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

/// Axes of unit length at a point, the last of them along `z`.
koLinear::AffineMatrix frameAt(const Point& place, const Vector& z) {
    const Vector back = scaled(z, 1.0 / length(z));
    const Vector side = std::abs(back[1]) < 0.9 ? Vector(0.0, 1.0, 0.0) : Vector(1.0, 0.0, 0.0);
    Vector right = cross(side, back);
    right = scaled(right, 1.0 / length(right));
    const Vector up = cross(back, right);
    return {right[0], right[1], right[2], up[0],    up[1],    up[2],
            back[0],  back[1],  back[2],  place[0], place[1], place[2]};
}

Bounds boundsIn(const koLinear::AffineMatrix& space, const Bounds& bounds) {
    Bounds result;
    for (int corner = 0; corner < 8; ++corner) {
        const auto side = [&](int axis) {
            return (corner >> axis & 1) != 0 ? bounds.max[axis] : bounds.min[axis];
        };
        result.extend(space.transform(Point(side(0), side(1), side(2))));
    }
    return result;
}

/// All of a box, from the front of it to the back.
koLinear::ProjMatrix parallel(const Bounds& box, double margin) {
    koLinear::ProjMatrix matrix;
    for (int axis = 0; axis < 3; ++axis) {
        const double half = 0.5 * (box.max[axis] - box.min[axis]) + margin;
        matrix[axis][axis] = (axis == 2 ? -1.0 : 1.0) / half;
        matrix[3][axis] = -0.5 * (box.max[axis] + box.min[axis]) * matrix[axis][axis];
    }
    return matrix;
}

koLinear::ProjMatrix perspective(double angle, double zNear, double zFar) {
    koLinear::ProjMatrix matrix;
    matrix[0][0] = matrix[1][1] = 1.0 / std::tan(0.5 * angle);
    matrix[2][2] = (zFar + zNear) / (zNear - zFar);
    matrix[2][3] = -1.0;
    matrix[3][2] = 2.0 * zFar * zNear / (zNear - zFar);
    matrix[3][3] = 0.0;
    return matrix;
}

/// From -1..1 to 0..1.
koLinear::ProjMatrix halved() {
    koLinear::ProjMatrix matrix;
    for (int axis = 0; axis < 3; ++axis)
        matrix[axis][axis] = matrix[3][axis] = 0.5;
    return matrix;
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
        fProjector->fViewTransform = frameAt(middle, back).inverse();
        fProjector->fProjection = parallel(boundsIn(fProjector->fViewTransform, fBounds), 0.01 * radius);
    } else {
        constexpr double kWidest = 2.0 * std::numbers::pi / 3.0;
        const Point place = toWorld.transform(Point());
        const Vector towards = between(middle, place);
        const double distance = length(towards);
        const bool isSpot = light->kind == Light::Kind::Spot;
        const double around = distance > radius ? 2.0 * std::asin(radius / distance) : kWidest;
        const double angle = isSpot ? 2.0 * light->outerConeAngle : around;
        fProjector->fViewTransform = frameAt(place, isSpot || distance == 0.0 ? back : towards).inverse();
        fProjector->fProjection = perspective(std::clamp(angle, 0.01, kWidest),
                                              std::max(distance - radius, 0.01 * radius), distance + radius);
    }
    fWorldToMap =
        koLinear::ProjMatrix(fProjector->fViewTransform).then(fProjector->fProjection).then(halved());
}

void ShadowMap::draw(DrawableScene& drawable) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const int side = sideHere();
    fCanvas.target().makeCurrent();
    gl.glViewport(0, 0, side, side);
    gl.glDepthMask(GL_TRUE);
    gl.glClear(GL_DEPTH_BUFFER_BIT);
    gl.glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    for (const GLenum capability : {GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST, GL_BLEND})
        gl.glDisable(capability);
    gl.glEnable(GL_DEPTH_TEST);
    gl.glDepthFunc(GL_LEQUAL);
    gl.glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl.glEnable(GL_POLYGON_OFFSET_FILL); // a surface lies a little behind its own image in the map
    gl.glPolygonOffset(2.0F, 8.0F);
    fProjector->bind();
    for (const size_t index : drawable.opaqueInstances()) {
        gl.glPushMatrix();
        gl.glMultMatrixd(koLinear::ProjMatrix(drawable.scene().instances[index].toWorld).data());
        drawable.drawShape(index);
        gl.glPopMatrix();
    }
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
