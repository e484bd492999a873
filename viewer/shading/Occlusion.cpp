#include "shading/Occlusion.h"

#include "base/ExitCode.h"
#include "draw/DepthFrame.h"
#include "draw/GL.h"
#include "draw/Placed.h"

#include <string>
#include <utility>

#include <state/GLCamera.h>
#include <state/GLPassState.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

constexpr int kPixelsEachWay = 1024; ///< pixels each way; the shaders below know it too

/// Eye space from the map of depths.
constexpr const char* kPlaceSource = R"(
uniform sampler2D depth;
uniform vec4 across; // three entries of the projection for x, then those that make w of z
uniform vec4 up;
uniform vec2 deep;

vec3 placeAt(vec2 uv) {
    vec3 clip = 2.0 * vec3(uv, texture2D(depth, uv).r) - 1.0;
    float z = (clip.z * up.w - deep.y) / (deep.x - clip.z * across.w);
    vec2 xy = clip.xy * (across.w * z + up.w);
    return vec3((xy - vec2(across.y, up.y) * z - vec2(across.z, up.z)) / vec2(across.x, up.x), z);
}
)";

// Looks at 16 places round each, on a spiral that is turned by one of 16 angles, which the second pass
// averages. Each that rises over the surface's plane keeps off light: the more, the nearer it is and the more
// upright it stands. How much was fitted so that a wall takes away half of the light at its foot.
constexpr const char* kFindSource = R"(
uniform vec3 lens; // how large a length of 1 is drawn at a depth of 1; whether it is at any depth
uniform float reach;

vec3 shorter(vec3 a, vec3 b) {
    return dot(a, a) < dot(b, b) ? a : b;
}

void main() {
    const float texel = 1.0 / 1024.0;
    vec2 uv = gl_FragCoord.xy * texel;
    vec3 place = placeAt(uv);
    vec3 along = shorter(placeAt(uv + vec2(texel, 0.0)) - place, place - placeAt(uv - vec2(texel, 0.0)));
    vec3 up = shorter(placeAt(uv + vec2(0.0, texel)) - place, place - placeAt(uv - vec2(0.0, texel)));
    vec3 normal = normalize(cross(along, up));
    vec2 spread = min(lens.xy * reach / mix(-place.z, 1.0, lens.z), vec2(0.2));
    vec2 cell = mod(floor(gl_FragCoord.xy), 4.0);
    float turn = 6.2831853 / 16.0 * (4.0 * cell.x + cell.y);
    float sum = 0.0;
    for (int i = 0; i < 16; ++i) {
        float share = (float(i) + 0.5) / 16.0;
        float angle = 2.3999632 * float(i) + turn;
        vec3 way = placeAt(uv + spread * share * vec2(cos(angle), sin(angle))) - place;
        float square = dot(way, way);
        float rise = max(dot(way, normal) - 0.01 * reach, 0.0) * inversesqrt(square + 1e-12);
        sum += rise * max(1.0 - square / (reach * reach), 0.0);
    }
    gl_FragColor = vec4(clamp(1.0 - 2.6 / 16.0 * sum, 0.0, 1.0));
}
)";

// The mean of 4 x 4 pixels that are about as far away.
constexpr const char* kSmoothSource = R"(
uniform sampler2D found;
uniform float reach;

void main() {
    const float texel = 1.0 / 1024.0;
    vec2 uv = gl_FragCoord.xy * texel;
    float here = placeAt(uv).z;
    vec2 sum = vec2(0.0);
    for (int y = -2; y < 2; ++y) {
        for (int x = -2; x < 2; ++x) {
            vec2 at = uv + vec2(x, y) * texel;
            float weight = abs(placeAt(at).z - here) < 0.3 * reach ? 1.0 : 0.001;
            sum += weight * vec2(texture2D(found, at).r, 1.0);
        }
    }
    gl_FragColor = vec4(sum.x / sum.y);
}
)";

std::string source(const char* own) {
    return std::string(kPlaceSource) + own;
}

GLTexture2D* copyOfFrame(RasterFormat format, IHWTexUsage::Filter filter) {
    auto* texture = new GLTexture2D(format, false);
    texture->ref();
    texture->GLloadRenderedImage(0, 0, kPixelsEachWay, kPixelsEachWay);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, IHWTexUsage::kClampToEdge, IHWTexUsage::kClampToEdge);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, filter, filter);
    texture->unbind();
    return texture;
}

} // namespace

Occlusion::Places::Places(const ScreenPass& pass)
    : across(pass.place("across")), up(pass.place("up")), deep(pass.place("deep")),
      reach(pass.place("reach")), lens(pass.place("lens")), depth(pass.place("depth")) {}

Occlusion::Parts::Parts()
    : canvas(Canvas::Kind::Picture, kPixelsEachWay, kPixelsEachWay), find(source(kFindSource)),
      smooth(source(kSmoothSource)), findPlaces(find), smoothPlaces(smooth) {
    if (!find.usable() || !smooth.usable())
        throw Failure(kExitNoGL, "--ao: this OpenGL has no shaders that could find it out; leave it out");
    canvas.target().makeCurrent();
    depth = copyOfFrame(kRasterDepth24, IHWTexUsage::kNearest);
    map = copyOfFrame(kRasterRGBA8, IHWTexUsage::kLinear);
}

Occlusion::Parts::~Parts() {
    depth->unref();
    map->unref();
}

Occlusion::~Occlusion() = default;

void Occlusion::prepare() {
    if (!fParts)
        fParts = std::make_unique<Parts>();
}

void Occlusion::update(DrawableScene& drawable, const View& view) {
    prepare();
    fEyeToMap = view.projection.then(halved());
    fParts->canvas.makeCurrent();
    fParts->canvas.target().makeCurrent();
    gl().glActiveTexture(GL_TEXTURE0);
    drawDepth(drawable, view);
    gl().glDisable(GL_DEPTH_TEST);
    find(view);
    smooth();
}

void Occlusion::drawDepth(DrawableScene& drawable, const View& view) {
    beginDepthFrame(kPixelsEachWay);
    GLCamera camera;
    camera.fViewTransform = view.worldToEye;
    camera.fProjection = view.projection;
    camera.bind();
    for (const size_t index : drawable.opaqueInstances())
        drawPlaced(drawable, index, [&] { drawable.drawShape(index); });
    fParts->depth->GLloadRenderedImage(0, 0, kPixelsEachWay, kPixelsEachWay);
}

/// Leaves the depth bound.
void Occlusion::find(const View& view) {
    const koLinear::ProjMatrix& p = view.projection;
    const bool isOrthographic = p[2][3] == 0.0;
    const auto entry = [&](int row, int column) { return static_cast<float>(p[row][column]); };
    for (const auto& [pass, places] :
         {std::pair{&fParts->smooth, &fParts->smoothPlaces}, {&fParts->find, &fParts->findPlaces}}) {
        pass->begin();
        gl().glUniform4fARB(places->across, entry(0, 0), entry(2, 0), entry(3, 0), entry(2, 3));
        gl().glUniform4fARB(places->up, entry(1, 1), entry(2, 1), entry(3, 1), entry(3, 3));
        gl().glUniform2fARB(places->deep, entry(2, 2), entry(3, 2));
        gl().glUniform1fARB(places->reach, static_cast<float>(fReach));
    }
    GLPassState().applyGL(false);
    gl().glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl().glUniform3fARB(fParts->findPlaces.lens, static_cast<float>(0.5 * p[0][0]),
                        static_cast<float>(0.5 * p[1][1]), isOrthographic ? 1.0F : 0.0F);
    fParts->find.run();
}

void Occlusion::smooth() {
    gl().glActiveTexture(GL_TEXTURE0 + 1);
    fParts->depth->bind();
    gl().glActiveTexture(GL_TEXTURE0);
    fParts->map->GLloadRenderedImage(0, 0, kPixelsEachWay, kPixelsEachWay);
    fParts->smooth.begin();
    gl().glUniform1iARB(fParts->smoothPlaces.depth, 1);
    fParts->smooth.run();
    fParts->map->GLloadRenderedImage(0, 0, kPixelsEachWay, kPixelsEachWay);
    fParts->map->unbind();
    gl().glActiveTexture(GL_TEXTURE0 + 1);
    fParts->depth->unbind();
    gl().glActiveTexture(GL_TEXTURE0);
}

} // namespace orloview
