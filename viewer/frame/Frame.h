#pragma once

#include "draw/Culling.h"
#include "draw/DrawableScene.h"
#include "draw/FrameLook.h"
#include "draw/Ground.h"
#include "draw/Marks.h"
#include "draw/SceneLights.h"
#include "draw/SceneParticles.h"
#include "scene/View.h"
#include "shading/Backdrop.h"
#include "shading/LateLight.h"
#include "shading/SceneShaders.h"
#include "shading/UserShader.h"

#include <cstdint>
#include <framebuffer/GLFrameBuffer.h>

namespace orloview {

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
    Behind* behind;            ///< of the shaders; null: nothing is clear
    Occlusion* occlusion;      ///< of the shaders; null: there are none
    LateLight* lateLight;      ///< of the shaders; null: each triangle is lit as it is drawn
    UserShader* userShader;    ///< in the place of all materials; null: none
    Ground& ground;            ///< of `drawable`
    Marks& marks;              ///< of its scene
    Culling* culling;          ///< of `drawable`; null: everything is drawn
    Backdrop* backdrop;        ///< the sky, where it is shown; null: there is none
    SceneParticles* particles; ///< draws the points of `drawable`'s scene; null: they are points
    Answers answers = Answers::Awaited;
};

/// Draws what a frame needs beside: shadow maps, and what stands behind clear things. For a frame that is
/// drawn in parts once, before the first. Needs the start-up context current.
void prepareFrame(const View& view, const FrameContent& content, const FrameLook& look);

/// Draws one frame that is prepared: the road from the library's frame buffer to the last group. Needs the
/// context that the buffer lives in current. What stands in the buffer afterwards is linear, colour
/// multiplied by alpha.
void drawFrame(GLFrameBuffer& target, const View& view, const FrameContent& content, const FrameLook& look);

} // namespace orloview
