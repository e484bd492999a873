// What can't be asked for at once.

#include "base/ExitCode.h"
#include "options/CommandLine.h"
#include "output/DepthFile.h"
#include "output/PictureFile.h"

#include <algorithm>

namespace orloview {

namespace {

void checkParticles(const Options& options) {
    if (options.demo && !options.models.empty())
        throw Failure(kExitUsage,
                      "--demo shows a scene of its own; leave --demo or " + options.models.front() + " out");
    if (options.demo && options.turntable > 0)
        throw Failure(kExitUsage, "--turntable: the fountain never stands still; give --frames N");
    if (options.frames > 0 && options.turntable > 0)
        throw Failure(kExitUsage, "--frames and --turntable: each makes a series; give one of them");
    if (options.frames > 0 && (options.output.empty() || options.output == "-"))
        throw Failure(kExitUsage,
                      "--frames: give -o and a name, such as -o drops.png, for drops_001.png and so on");
    if (!options.spriteImages.empty() && options.particles != ParticleKind::Sprites)
        throw Failure(kExitUsage, "--sprite-images: they are of sprites; give --particles sprites");
    if (options.lit && !options.particles)
        throw Failure(kExitUsage,
                      "--lit: it lights particles; give --particles points, multi, sprites or streaks");
}

void checkOwnShader(const Options& options) {
    const char* const own = options.ownShaderSwitch();
    if (!own)
        return;
    if (options.cg && !options.shader.empty())
        throw Failure(kExitUsage,
                      own + std::string(" and --shader: each takes the place of all materials; give one"));
    if (options.shading || options.compare || !options.dumpShaders.empty())
        throw Failure(kExitUsage, own + std::string(" takes the place of all materials; leave --shading, "
                                                    "--compare and --dump-shaders out"));
    if (options.shadows)
        throw Failure(kExitUsage,
                      "--shadows: the materials' shaders draw them; leave " + std::string(own) + " out");
    if (options.cull)
        throw Failure(kExitUsage,
                      "--cull: a shader of your own may move or leave out what hides the rest; leave "
                      "one of them out");
}

/// Parts are put together row by row.
void checkParts(const Options& options) {
    const char* const given = options.join > 0 ? "--join" : "--only";
    const std::optional<PictureFormat> format = formatOf(options.output);
    if (!format || options.output == "-")
        throw Failure(kExitUsage,
                      std::string(given) + ": give -o and the name of the whole, such as -o poster.png");
    if ((*format == PictureFormat::Jpeg || *format == PictureFormat::Bmp) && !options.isSeries())
        throw Failure(kExitUsage,
                      std::string(given) + ": parts of " + options.output +
                          " can't be put together; give a name ending in .png, .tga, .ppm or .pfm");
    if (options.join > 0 && (!options.models.empty() || options.demo || options.only))
        throw Failure(kExitUsage, "--join: it reads the parts of -o " + options.output + "; leave " +
                                      (options.only ? "--only" : options.subject()) + " out");
    if (options.only && (!options.depth.empty() || !options.cubeMap.empty() || options.compare))
        throw Failure(kExitUsage,
                      "--only: it shares out what -o writes; leave --depth, --cube-map and --compare out");
}

void checkOutputs(const Options& options) {
    if (!options.output.empty() && !formatOf(options.output))
        throw Failure(kExitUsage, "-o " + options.output +
                                      ": no picture format has this suffix; give a name ending in " +
                                      kPictureFormats);
    if (!options.output.empty() && options.background[3] < 1.0F && !hasAlpha(*formatOf(options.output)))
        throw Failure(kExitUsage, "--background: " + options.output +
                                      " can't hold what is transparent; give a name ending in .png or .tga, "
                                      "or another colour");
    if (!options.depth.empty() && !isDepthFile(options.depth))
        throw Failure(kExitUsage,
                      "--depth " + options.depth + ": give a name ending in .pfm (distances) or .png");
    if (options.turntable > 0 && (options.output.empty() || options.output == "-"))
        throw Failure(kExitUsage,
                      "--turntable: give -o and a name, such as -o turn.png, for turn_001.png and so on");
}

void checkEye(const Options& options) {
    if (options.hasDirection && (options.eye || options.camera))
        throw Failure(kExitUsage, std::string(options.eye ? "--eye" : "--camera") +
                                      " says where the eye is; leave --view, --azimuth and --elevation out");
    if (options.camera &&
        (options.eye || options.target || options.up || options.fieldOfView || options.orthographic))
        throw Failure(kExitUsage,
                      "--camera: a camera of the file has its own --eye, --target, --up, --fov and "
                      "--orthographic; leave them out");
    if (options.eye && options.target && (*options.eye)[0] == (*options.target)[0] &&
        (*options.eye)[1] == (*options.target)[1] && (*options.eye)[2] == (*options.target)[2])
        throw Failure(kExitUsage, "--eye and --target are the same point; move one of them");
    if (options.up && (*options.up)[0] == 0.0 && (*options.up)[1] == 0.0 && (*options.up)[2] == 0.0)
        throw Failure(kExitUsage, "--up 0,0,0: give a direction, such as --up 0,1,0");
}

} // namespace

void checkTogether(const Options& options) {
    if (options.quiet && options.verbose)
        throw Failure(kExitUsage, "-q and -v: give one of them, not both");
    if (options.glInfo || options.listFormats)
        return;
    if (options.join > 0)
        return checkParts(options);
    if (options.models.empty() && !options.demo)
        throw Failure(kExitUsage, "no model given; try orloview MODEL (--help tells more)");
    const auto piped = std::count(options.models.begin(), options.models.end(), "-");
    if (piped > 1)
        throw Failure(kExitUsage, "-: standard input brings one model; give it once");
    if (piped == 0 && !options.format.empty())
        throw Failure(kExitUsage, "--format: it is of standard input; give - as a model");
    checkParticles(options);
    if (options.json && !options.info)
        throw Failure(kExitUsage, "--json: only --info prints it; give --info, or leave --json out");
    if (options.info)
        return;
    checkOutputs(options);
    if (options.only)
        checkParts(options);
    checkOwnShader(options);
    if (options.showSky && !options.hasSky())
        throw Failure(kExitUsage, "--show-sky: there is none; leave --sky none or --show-sky out");
    if (options.skyRotation != 0.0 && options.skyFile.empty())
        throw Failure(kExitUsage,
                      "--sky-rotation: only a picture differs by where one looks; give --sky FILE");
    if (options.shadows && options.shading == Shading::Fixed)
        throw Failure(kExitUsage, "--shadows: the materials' shaders draw them; leave --shading fixed out");
    if (options.ambientOcclusion && (options.ownShaderSwitch() || options.shading == Shading::Fixed))
        throw Failure(kExitUsage, "--ao: the materials' shaders draw it; leave " +
                                      std::string(options.ownShaderSwitch() ? options.ownShaderSwitch()
                                                                            : "--shading fixed") +
                                      " out");
    if (options.glRoad == GLRoad::Egl && options.sampling.pbuffer)
        throw Failure(kExitUsage,
                      "--display egl: pbuffers are on an X display; leave --offscreen pbuffer out");
    if (options.glRoad == GLRoad::Egl && !options.writes() && !options.compare && !options.glInfo)
        throw Failure(kExitUsage, "--display egl: a window needs an X display; give -o picture.png");
    if ((options.cull || options.shadows || options.ambientOcclusion) && options.sampling.pbuffer)
        throw Failure(kExitUsage,
                      "--offscreen pbuffer: what --cull, --shadows and --ao need lives in another context; "
                      "leave these or --offscreen pbuffer out");
    if (options.clip && !options.canClip())
        throw Failure(
            kExitUsage,
            "--clip: only what GLSL and OpenGL's own functions draw can be cut; leave --clip, or " +
                std::string(options.ownShaderSwitch() ? options.ownShaderSwitch() : "--shading cg") +
                ", out");
    if (options.compare && options.shading)
        throw Failure(kExitUsage, "--compare draws with both; leave --shading out");
    if (!options.dumpShaders.empty() && options.shading == Shading::Fixed)
        throw Failure(kExitUsage,
                      "--dump-shaders: there are none with --shading fixed; leave one of them out");
    checkEye(options);
}

} // namespace orloview
