#include "shading/Backdrop.h"

#include "draw/GL.h"
#include "draw/LinkedProgram.h"
#include "scene/Vectors.h"
#include "shading/LightTexture.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include <state/GLPassState.h>

namespace orloview {

namespace {

constexpr const char* kVertexSource = R"(
void main() {
    gl_Position = gl_Vertex;
    gl_TexCoord[0] = gl_MultiTexCoord0;
}
)";

// As the materials' shaders find a place in a picture of the sky (docs/shading-networks.md). The one sampler
// reads unit 0.
constexpr const char* kFragmentSource = R"(
uniform sampler2D sky;

void main() {
    vec3 d = normalize(gl_TexCoord[0].xyz);
    float ahead = abs(d.z) < 1e-6 ? 1e-6 : -d.z;
    vec2 place = vec2(0.5 + 0.15915494 * atan(d.x, ahead), 0.31830989 * atan(length(d.xz), d.y));
    gl_FragColor = vec4(texture2D(sky, place).rgb, 1.0);
}
)";

/// A sky of a color for each height is the same all round.
SkyPicture pictureOf(const Sky& sky) {
    constexpr int kRows = 1024;
    SkyPicture picture;
    picture.width = 2;
    picture.height = kRows;
    for (int y = 0; y < kRows; ++y) {
        const Sky::Color color = sky.at(std::cos(std::numbers::pi * (y + 0.5) / kRows));
        for (int x = 0; x < picture.width; ++x)
            std::transform(color.begin(), color.end(), std::back_inserter(picture.rgb),
                           [](double channel) { return static_cast<float>(channel); });
    }
    return picture;
}

/// What is seen at a place of the viewport, -1 to 1, in the eye's space.
Vector directionAt(const View& view, double x, double y) {
    const koLinear::ProjMatrix& p = view.projection;
    const bool isOrthographic = p[2][3] == 0.0;
    if (isOrthographic)
        return {(x - p[3][0]) / p[0][0], (y - p[3][1]) / p[1][1], -view.skyDistance};
    return {(x + p[2][0]) / p[0][0], (y + p[2][1]) / p[1][1], -1.0};
}

} // namespace

Backdrop::~Backdrop() {
    if (fTexture)
        fTexture->unref();
    if (fProgram != 0)
        gl().glDeleteObjectARB(fProgram);
}

void Backdrop::prepare() {
    const SkyPicture made = fSky.picture ? SkyPicture() : pictureOf(*fSky.heights);
    const SkyPicture& picture = fSky.picture ? *fSky.picture : made;
    fProgram = linkedProgram(kVertexSource, kFragmentSource);
    fTexture = uploadLight(picture.rgb, picture.width, picture.height, fSky.factor, IHWTexUsage::kRepeat);
}

void Backdrop::draw(const View& view) {
    gl().glActiveTexture(GL_TEXTURE0);
    if (!fTexture)
        prepare();
    if (fProgram == 0)
        return;
    const koLinear::AffineMatrix& toEye = view.worldToEye;
    const Vector axes[] = {toEye.transform(fSky.right), toEye.transform(fSky.up), toEye.transform(fSky.back)};
    GLPassState().applyGL(false);
    for (const GLenum capability : {GL_DEPTH_TEST, GL_CULL_FACE, GL_ALPHA_TEST, GL_BLEND})
        gl().glDisable(capability);
    gl().glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    fTexture->bind();
    gl().glUseProgramObjectARB(fProgram);
    gl().glBegin(GL_QUADS);
    for (const auto& [x, y] : {std::pair{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}) {
        const Vector direction = directionAt(view, x, y);
        gl().glTexCoord3d(dot(direction, axes[0]), dot(direction, axes[1]), dot(direction, axes[2]));
        gl().glVertex2d(x, y);
    }
    gl().glEnd();
    gl().glUseProgramObjectARB(0);
    fTexture->unbind();
}

} // namespace orloview
