#pragma once

#include "draw/Culling.h"
#include "draw/DrawableScene.h"
#include "draw/SceneLights.h"
#include "draw/SceneParticles.h"
#include "scene/View.h"
#include "shading/SceneShaders.h"
#include "shading/UserShader.h"

#include "output/Picture.h"

#include <framebuffer/GLFrameBuffer.h>
#include <orlohost/koColor.h>

namespace orloview {

/// How a frame looks, apart from what is in it.
struct FrameLook {
    int width = 0;
    int height = 0;
    int left = 0; ///< what of the frame the target holds begins here: a target may be smaller than the frame
    int bottom = 0;
    koColor::Color background;      ///< linear, multiplied by its alpha
    ToneMap toneMap = ToneMap::Cut; ///< for who shows the frame; of what is lit
    bool wireframe = false;
    bool lights = true;
    bool culling = true; ///< hides triangles that are seen from behind, where the material says so
    bool grid = false;
    bool axes = false;
    float pointSize = 3.0F; ///< pixels
    float lineWidth = 1.0F;
};

/// How a frame of that look becomes a picture.
inline Development developmentOf(const FrameLook& look) {
    return {look.background[3] == 1.0F, look.lights ? look.toneMap : ToneMap::Cut};
}

/// How a frame deals with the answers to its questions of what is hidden.
enum class Answers : std::uint8_t {
    Awaited,    ///< asks first, and draws what is seen
    AsTheyCome, ///< goes by those of earlier frames
    Ignored     ///< draws all that is in view
};

/// What is in a frame.
struct FrameContent {
    DrawableScene& drawable;
    SceneLights& lights;
    DrawableScene& grid; ///< of one instance, as axes
    DrawableScene& axes;
    SceneShaders* shaders;     ///< of `drawable`; null: GL's own functions draw it
    ShadowMap* shadows;        ///< of the shaders' first light; null: none
    UserShader* userShader;    ///< in the place of all materials; null: none
    Culling* culling;          ///< of `drawable`; null: everything is drawn
    SceneParticles* particles; ///< draws the points of `drawable`'s scene; null: they are points
    Answers answers = Answers::Awaited;
};

/// Draws one frame: the road from the library's frame buffer to the last group. Needs the context that the
/// buffer lives in current. What stands in the buffer afterwards is linear, colour multiplied by alpha.
void drawFrame(GLFrameBuffer& target, const View& view, const FrameContent& content, const FrameLook& look);

} // namespace orloview
