#pragma once

#include "base/ImportLimits.h"
#include "draw/FrameLook.h"
#include "draw/Particles.h"
#include "draw/Shading.h"
#include "output/Progress.h"
#include "output/Sampling.h"
#include "output/Share.h"
#include "output/ToneMap.h"
#include "scene/View.h"
#include "session/GLRoad.h"
#include "session/GLWatch.h"
#include "shading/Sky.h"
#include "texture/SkyPicture.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <orlohost/koLinear.h>

namespace orloview {

struct PipedModel {
    std::vector<std::uint8_t> bytes;
    std::string fault; ///< why there are none
};

/// What the command line asks for. Values are checked: sizes and angles are in range, nothing contradicts.
struct Options {
    std::vector<std::string> models;

    /// What came through standard input, for the one that is "-"; null until it is read.
    std::shared_ptr<const PipedModel> piped;

    /// The suffix of the one that comes through standard input ("-"); empty: its content tells.
    std::string format;

    /// Of reading each of them, and each of their pictures.
    ImportLimits limits;

    /// The picture's file; "-" is standard output. Empty: show the model in a window.
    std::string output;

    /// Of the picture or the window, pixels.
    int width = 1280;
    int height = 720;

    Direction direction;
    bool hasDirection = false; ///< one of the switches was given

    std::optional<koLinear::Point> eye;
    std::optional<koLinear::Point> target;
    std::optional<koLinear::Vector> up;

    /// The whole vertical angle, degrees.
    std::optional<double> fieldOfView;

    /// Name or index of a camera of the file.
    std::optional<std::string> camera;

    /// Name of a variant of the file.
    std::optional<std::string> variant;

    /// Red, green, blue, alpha as the picture stores them (sRGB), 0 to 1.
    std::array<float, 4> background{0.16F, 0.17F, 0.19F, 1.0F};

    /// Of a picture.
    Sampling sampling;
    GLRoad glRoad = GLRoad::Auto;

    /// Of how many pictures one goes round the model, or 0.
    int turntable = 0;

    /// What points are drawn as; none: as points.
    std::optional<ParticleKind> particles;
    std::vector<std::string> spriteImages;
    float pointSize = 3.0F; ///< pixels; of streaks their width
    bool lit = false;       ///< of particles

    /// Shows the fountain in the place of models.
    bool demo = false;

    /// Name or index of an animation of the file; none: the first.
    std::optional<std::string> animation;

    /// When what moves is shown, or begins to be, in seconds; none: at 0, and moving in a window.
    std::optional<double> time;

    /// How many pictures of what moves are written, or 0, and how many of them make a second.
    int frames = 0;
    double framesPerSecond = 30.0;

    /// Whether -o is written as numbered pictures.
    bool isSeries() const { return turntable > 0 || frames > 0; }

    /// What is shown, for titles and for names of files.
    std::string subject() const {
        return models.empty() ? "fountain" : models.front() == "-" ? "stdin" : models.front();
    }

    /// Which of the pictures of a series, or of the bands of a picture, this run draws; none: all.
    std::optional<Share> only;

    /// How many parts of a picture are put together, or 0: nothing is read or drawn then.
    int join = 0;

    /// The file of a picture of distances, and the folder of a cube map; empty: none.
    std::string depth;
    std::string cubeMap;

    /// Whether files are written instead of showing a window.
    bool writes() const { return !output.empty() || !depth.empty() || !cubeMap.empty(); }

    /// What the scene is drawn by; none: shaders where OpenGL has them.
    std::optional<Shading> shading;

    /// What becomes of what is too bright; none: as the shading asks for.
    std::optional<ToneMap> toneMap;

    /// What shines from all round, in the place of which a picture may be; none without shaders.
    std::optional<Sky> sky;
    std::string skyFile;
    std::shared_ptr<const SkyPicture> skyPicture; ///< what is in it, once it is read
    double skyRotation = 0.0;                     ///< degrees, to the right
    bool showSky = false;

    bool hasSky() const { return sky || !skyFile.empty(); }

    /// Multiplies all light.
    float exposure = 1.0F;

    /// Two shadings whose pictures are compared.
    std::optional<std::array<Shading, 2>> compare;

    /// The files of the user's own shader, without .vert and .frag; empty: none.
    std::string shader;

    /// A Cg shader, or an effect, in the place of all materials.
    std::optional<CgRequest> cg;

    /// The switch that asks for a shader in the place of all materials; null: none does.
    const char* ownShaderSwitch() const {
        return cg ? (cg->isEffect ? "--cgfx" : "--cg") : shader.empty() ? nullptr : "--shader";
    }

    /// Whether GL's clip planes cut what is drawn: other shaders don't say where their vertices are.
    bool canClip() const { return !ownShaderSwitch() && shading != Shading::Cg; }

    /// The switches given that say how the scene is shaded, each with a space before it.
    std::string shadingSwitches;

    /// The folder that the sources of shaders are written to; empty: none.
    std::string dumpShaders;

    /// Name or index of a part that is outlined, and two points whose distance is.
    std::optional<std::string> part;
    std::optional<std::array<koLinear::Point, 2>> measure;

    std::optional<Clip> clip;

    bool orthographic = false;
    bool wireframe = false;
    bool edges = false;
    bool lights = true;
    bool shadows = false;
    bool culling = true;
    bool cull = false; ///< leaves out groups that nobody sees
    bool grid = false;
    bool axes = false;
    bool ground = false;
    bool ambientOcclusion = false;
    Progress::Mode progress = Progress::Mode::Silent;

    // What a window begins with.
    bool stats = false; ///< without one: told frame by frame
    bool showTree = false;
    bool showWarnings = false;
    bool showExposure = false;

    bool info = false;
    bool json = false;
    bool listFormats = false;
    bool glInfo = false;
    bool glDebug = false;
    std::string glLog; ///< the file that calls to OpenGL are written to; empty: none
    bool quiet = false;
    bool verbose = false;

    GLWatchRequest glWatch() const { return {verbose, glDebug, glLog}; }
};

} // namespace orloview
