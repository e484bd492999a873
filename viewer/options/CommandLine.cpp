#include "options/CommandLine.h"

#include "base/ExitCode.h"
#include "output/DepthFile.h"
#include "output/PictureFile.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <unistd.h>

namespace orloview {

namespace {

constexpr int kLargestSide = 65536;

const char* const kFooter = R"(
Examples:
  orloview model.glb
  orloview model.glb -o picture.png
  orloview part1.obj part2.stl -o - --size 1920x1080 --background white > both.png
  orloview room.gltf -o view.png --camera Entrance
  orloview bunny.ply -o side.png --eye 3,1,0 --target 0,0.1,0 --fov 30
  orloview model.glb --info --json
  orloview cloud.csv --particles sprites --sprite-images smoke.png,spark.png
  orloview --demo particles -o drops.png --frames 60

Exit codes:
  0   the picture is written, the window closed, or what was asked for is printed
  1   a switch or its value is wrong
  2   no model could be read, or nothing in it can be drawn
  3   the picture is written, but some input was left out (each is named)
  4   no display, or no OpenGL that can do it
  5   the picture could not be written (an older one is untouched)
  70  a fault of orloview itself
)";

struct NamedColor {
    const char* name;
    unsigned rgb;
};

constexpr NamedColor kNamedColors[] = {
    {"black", 0x000000},   {"silver", 0xC0C0C0}, {"gray", 0x808080}, {"grey", 0x808080},
    {"white", 0xFFFFFF},   {"maroon", 0x800000}, {"red", 0xFF0000},  {"purple", 0x800080},
    {"fuchsia", 0xFF00FF}, {"green", 0x008000},  {"lime", 0x00FF00}, {"olive", 0x808000},
    {"yellow", 0xFFFF00},  {"navy", 0x000080},   {"blue", 0x0000FF}, {"teal", 0x008080},
    {"aqua", 0x00FFFF},    {"orange", 0xFFA500},
};

[[noreturn]] void wrong(const std::string& name, const std::string& value, const std::string& wanted) {
    throw Failure(kExitUsage, name + " " + value + ": " + wanted);
}

/// A whole number or nothing.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

void parseSize(const std::string& text, Options& options) {
    const size_t x = text.find('x');
    std::optional<int> width;
    std::optional<int> height;
    if (x != std::string::npos) {
        width = parseNumber<int>(std::string_view(text).substr(0, x));
        height = parseNumber<int>(std::string_view(text).substr(x + 1));
    }
    if (!width || !height || *width < 1 || *height < 1 || *width > kLargestSide || *height > kLargestSide)
        wrong("--size", text, "give width and height in pixels, each 1 to 65536, such as --size 1280x720");
    options.width = *width;
    options.height = *height;
}

template <typename Triple>
std::optional<Triple> parseTriple(const std::string& name, const std::string& text) {
    if (text.empty())
        return std::nullopt;
    Triple triple;
    std::string_view rest(text);
    for (int i = 0; i < 3; ++i) {
        const size_t comma = i < 2 ? rest.find(',') : rest.size();
        const std::optional<double> number =
            comma == std::string_view::npos ? std::nullopt : parseNumber<double>(rest.substr(0, comma));
        if (!number || !std::isfinite(*number))
            wrong(name, text, "give three numbers with commas between, such as " + name + " 0,1.5,-4");
        triple[i] = *number;
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    return triple;
}

/// How progress is shown; a bar where somebody sees it, unless told.
Progress::Mode parseProgress(const std::string& text, bool quiet) {
    const bool seen = isatty(STDERR_FILENO) != 0;
    if (text != "bar" && text != "plain" && text != "none" && !text.empty())
        wrong("--progress", text, "give bar, plain or none");
    if (quiet || text == "none" || (text.empty() && !seen))
        return Progress::Mode::Silent;
    return text == "plain" ? Progress::Mode::Plain : Progress::Mode::Bar;
}

Shading parseShading(const std::string& name, const std::string& text) {
    if (text == "fixed")
        return Shading::Fixed;
    if (text == "glsl")
        return Shading::Glsl;
    if (text == "cg")
        return Shading::Cg;
    wrong(name, text, "give fixed, glsl or cg");
}

CgRequest::Value parseCgValue(const std::string& text) {
    const char* const kWanted = "give NAME= and 1 to 4 numbers, or the 16 of a matrix, such as "
                                "--cg-set bodyColor=1,0.5,0";
    const size_t sign = text.find('=');
    if (sign == 0 || sign == std::string::npos)
        wrong("--cg-set", text, kWanted);
    CgRequest::Value value{text.substr(0, sign), {}};
    for (const std::string& number : CLI::detail::split(text.substr(sign + 1), ',')) {
        const std::optional<float> parsed = parseNumber<float>(number);
        if (!parsed)
            wrong("--cg-set", text, kWanted);
        value.numbers.push_back(*parsed);
    }
    if (value.numbers.empty() || (value.numbers.size() > 4 && value.numbers.size() != 16))
        wrong("--cg-set", text, kWanted);
    return value;
}

ParticleKind parseParticles(const std::string& text) {
    if (text == "points")
        return ParticleKind::Points;
    if (text == "multi")
        return ParticleKind::Multi;
    if (text == "sprites")
        return ParticleKind::Sprites;
    if (text == "streaks")
        return ParticleKind::Streaks;
    wrong("--particles", text, "give points, multi, sprites or streaks");
}

GLRoad parseRoad(const std::string& text) {
    if (text == "auto")
        return GLRoad::Auto;
    if (text == "x11")
        return GLRoad::X11;
    if (text == "egl")
        return GLRoad::Egl;
    wrong("--display", text, "give auto, x11 or egl");
}

float parsePointSize(const std::string& text) {
    const std::optional<float> size = parseNumber<float>(text);
    if (!size || !(*size >= 0.1F && *size <= 64.0F))
        wrong("--point-size", text, "give pixels, 0.1 to 64");
    return *size;
}

ToneMap parseToneMap(const std::string& text) {
    if (text != "none" && text != "soft")
        wrong("--tone-map", text, "give none or soft");
    return text == "soft" ? ToneMap::Soft : ToneMap::Cut;
}

std::optional<Sky> parseSky(const std::string& text) {
    if (text == "none")
        return std::nullopt;
    std::optional<Sky> sky = Sky::named(text);
    if (!sky)
        wrong("--sky", text, "give one of none, " + Sky::names(", "));
    return sky;
}

std::optional<double> parseFieldOfView(const std::string& text) {
    if (text.empty())
        return std::nullopt;
    const std::optional<double> degrees = parseNumber<double>(text);
    if (!degrees || !(*degrees > 0.0 && *degrees < 180.0))
        wrong("--fov", text, "give the vertical angle in degrees, above 0 and below 180");
    return degrees;
}

/// How many letters lie between two words.
size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

[[noreturn]] void unknownSwitch(const CLI::App& app, const std::string& given) {
    const std::string name = given.substr(0, given.find('='));
    std::string nearest;
    size_t distance = name.size();
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& longName : option->get_lnames()) {
            const size_t candidate = editDistance(name, "--" + longName);
            if (candidate < distance) {
                distance = candidate;
                nearest = "--" + longName;
            }
        }
    }
    const std::string hint = nearest.empty() ? "" : "; did you mean " + nearest + "?";
    throw Failure(kExitUsage, "unknown switch " + name + hint + " (--help lists all)");
}

/// A switch with its values as on the command line, a space before it; nothing where it wasn't given.
std::string asGiven(const std::string& name, const CLI::Option& option) {
    if (option.count() == 0)
        return "";
    if (option.get_items_expected_max() == 0)
        return " " + name;
    if (option.get_delimiter() != '\0')
        return " " + name + " " + CLI::detail::join(option.results(), ",");
    std::string text;
    for (const std::string& value : option.results())
        text.append(" ").append(name).append(value.starts_with('-') ? "=" : " ").append(value);
    return text;
}

/// A whole number of a switch.
int parseCount(const std::string& name, const std::string& text, int least, int most) {
    const std::optional<int> number = parseNumber<int>(text);
    if (!number || *number < least || *number > most)
        wrong(name, text,
              "give a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    return *number;
}

void checkParticles(const Options& options) {
    if (options.demo && !options.models.empty())
        throw Failure(kExitUsage,
                      "--demo shows a scene of its own; leave " + options.models.front() + " or it out");
    if (options.demo && options.turntable > 0)
        throw Failure(kExitUsage, "--turntable: the fountain never stands still; give --frames N");
    if (options.frames > 0 && !options.demo)
        throw Failure(kExitUsage, "--frames: models don't move; give --demo particles, or --turntable N");
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
        throw Failure(kExitUsage, "--cg and --shader: each takes the place of all materials; give one");
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

void checkTogether(const Options& options) {
    if (options.quiet && options.verbose)
        throw Failure(kExitUsage, "-q and -v: give one of them, not both");
    if (options.glInfo)
        return;
    if (options.models.empty() && !options.demo)
        throw Failure(kExitUsage, "no model given; try orloview MODEL (--help tells more)");
    checkParticles(options);
    if (options.json && !options.info)
        throw Failure(kExitUsage, "--json: it goes with --info");
    if (options.info)
        return;
    if (!options.output.empty() && !formatOf(options.output))
        throw Failure(kExitUsage, "-o " + options.output +
                                      ": no picture format has this suffix; give a name ending in " +
                                      kPictureFormats);
    if (!options.depth.empty() && !isDepthFile(options.depth))
        throw Failure(kExitUsage,
                      "--depth " + options.depth + ": give a name ending in .pfm (distances) or .png");
    checkOwnShader(options);
    if (options.shadows && options.shading == Shading::Fixed)
        throw Failure(kExitUsage, "--shadows: the materials' shaders draw them; leave --shading fixed out");
    if (options.glRoad == GLRoad::Egl && options.sampling.pbuffer)
        throw Failure(kExitUsage,
                      "--display egl: pbuffers are on an X display; leave --offscreen pbuffer out");
    if (options.glRoad == GLRoad::Egl && !options.writes() && !options.compare && !options.glInfo)
        throw Failure(kExitUsage, "--display egl: a window needs an X display; give -o picture.png");
    if ((options.cull || options.shadows) && options.sampling.pbuffer)
        throw Failure(kExitUsage,
                      "--offscreen pbuffer: what --cull and --shadows need lives in another context; "
                      "leave them or it out");
    if (options.compare && options.shading)
        throw Failure(kExitUsage, "--compare draws with both; leave --shading out");
    if (options.turntable > 0 && (options.output.empty() || options.output == "-"))
        throw Failure(kExitUsage,
                      "--turntable: give -o and a name, such as -o turn.png, for turn_001.png and so on");
    if (!options.dumpShaders.empty() && options.shading == Shading::Fixed)
        throw Failure(kExitUsage,
                      "--dump-shaders: there are none with --shading fixed; leave one of them out");
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

std::optional<std::array<float, 4>> parseColor(const std::string& text) {
    const auto fromBytes = [](unsigned long rgba) {
        std::array<float, 4> color{};
        for (size_t channel = 0; channel < 4; ++channel)
            color[channel] = static_cast<float>((rgba >> (24 - 8 * channel)) & 0xFFU) / 255.0F;
        return color;
    };
    if (text == "transparent")
        return std::array<float, 4>{0.0F, 0.0F, 0.0F, 0.0F};
    for (const NamedColor& named : kNamedColors) {
        if (text == named.name)
            return fromBytes((static_cast<unsigned long>(named.rgb) << 8) | 0xFFU);
    }
    if (text.empty() || text[0] != '#')
        return std::nullopt;
    std::string digits = text.substr(1);
    if (digits.size() == 3)
        digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
    if (digits.size() == 6)
        digits += "ff";
    unsigned long rgba = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), rgba, 16);
    if (digits.size() != 8 || error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return fromBytes(rgba);
}

CommandLine parseCommandLine(int argc, const char* const* argv) {
    CommandLine line;
    Options& options = line.options;
    std::string size;
    std::string samples;
    std::string tile;
    std::string turntable;
    std::string offscreen;
    std::string display = "auto";
    std::string eye;
    std::string target;
    std::string up;
    std::string fov;
    std::string camera;
    std::string background;
    std::string progress;
    std::string shading;
    std::string sky = "studio";
    std::string toneMap;
    std::vector<std::string> compare;
    CgRequest cg;
    std::vector<std::string> cgValues;
    std::string particles;
    std::string pointSize;
    std::string demo;
    std::string frames;
    bool noLights = false;
    bool noCulling = false;

    CLI::App app(
        "Shows 3D models, drawn through OrloGL, in a window or writes a picture of them: several models "
        "make one scene. H in the window lists its keys.",
        "orloview");
    app.footer(kFooter);
    app.allow_extras();
    app.set_help_flag("-h,--help", "Print this help");
    app.set_version_flag("--version", "orloview " ORLOGL_VERSION, "Print the version");
    app.add_option(
           "models", options.models,
           "Model files: glTF 2.0 (.gltf, .glb), OBJ, PLY, STL and others; tables of points (.csv, .txt)")
        ->type_name("MODEL...");
    app.add_option(
           "-o,--output", options.output,
           "Write a picture here and open no window: .png, .jpg, .bmp, .tga, .ppm, or .pfm for linear "
           "floats; - for PNG to standard output")
        ->type_name("FILE");
    app.add_option("--size", size, "Size of the picture or window in pixels, 1280x720 unless given")
        ->type_name("WxH");
    app.add_option("--samples", samples, "Average a pixel from N x N samples, 1 to 8; 2 unless given")
        ->type_name("N");
    app.add_option("--tile", tile, "Draw the picture in squares of N pixels; chosen by its size unless given")
        ->type_name("N");
    app.add_option("--turntable", turntable,
                   "Write N pictures of one way round the model: FILE_001 and so on")
        ->type_name("N");
    app.add_option("--depth", options.depth,
                   "Write the distance along the view of each pixel: floats (.pfm) or 16 bits of grey (.png)")
        ->type_name("FILE");
    app.add_option(
           "--cube-map", options.cubeMap,
           "Write what is seen from --eye, or from the middle of the scene, to the six sides of a cube")
        ->type_name("FOLDER");
    app.add_option("--offscreen", offscreen, "What pictures are drawn in; fbo unless given")
        ->type_name("fbo|pbuffer");
    app.add_option("--display", display,
                   "How pictures reach OpenGL: through an X display, or through EGL without one; auto takes "
                   "what is there")
        ->type_name("auto|x11|egl");
    app.add_option("--eye", eye, "Where the eye is")->type_name("X,Y,Z");
    app.add_option("--target", target, "What the eye looks at")->type_name("X,Y,Z");
    app.add_option("--up", up, "Which way is up, 0,1,0 unless given")->type_name("X,Y,Z");
    app.add_option("--fov", fov, "Vertical angle of view, 35 unless given")->type_name("DEGREES");
    app.add_option("--camera", camera, "Look through a camera of the file")->type_name("NAME|INDEX");
    app.add_flag("--orthographic", options.orthographic,
                 "Draw without perspective, as large as at the target with it");
    app.add_option("--background", background, "A name, #RRGGBB, #RRGGBBAA, or transparent")
        ->type_name("COLOUR");
    app.add_option("--shading", shading,
                   "Draw materials by OpenGL's own functions or by shaders; shaders unless given")
        ->type_name("fixed|glsl|cg");
    app.add_option("--sky", sky, "What shines from all round, with shaders: studio unless given")
        ->type_name("none|" + Sky::names("|"));
    app.add_option(
           "--tone-map", toneMap,
           "Cut off what is too bright, or draw the bright end together; soft for what shaders light, "
           "unless given")
        ->type_name("none|soft");
    app.add_option("--compare", compare, "Print how far two shadings' pictures are apart")
        ->type_name("SHADING SHADING")
        ->expected(2);
    app.add_option(
           "--shader", options.shader,
           "Draw with a GLSL shader of your own in the place of all materials: NAME.vert and NAME.frag")
        ->type_name("NAME");
    app.add_option("--cg", cg.name,
                   "Draw with a Cg shader of those that lie beside the viewer in the place of all materials")
        ->type_name("NAME");
    app.add_option("--cg-option", cg.options,
                   "With --cg: a switch of the Cg compiler, such as --cg-option=-DBANDS=3")
        ->type_name("SWITCH")
        ->allow_extra_args(false);
    app.add_option("--cg-set", cgValues, "With --cg: set a parameter, such as --cg-set bodyColor=1,0.5,0")
        ->type_name("NAME=NUMBERS")
        ->allow_extra_args(false);
    app.add_option("--dump-shaders", options.dumpShaders, "Write the sources of the materials' shaders")
        ->type_name("FOLDER");
    app.add_option(
           "--particles", particles,
           "What the points of models are drawn as: points, clouds of points (multi), squares that face "
           "the eye (sprites), lines along their motion (streaks)")
        ->type_name("points|multi|sprites|streaks");
    app.add_option("--sprite-images", options.spriteImages,
                   "Pictures of the sprites, by their textureNumber; a soft spot unless given")
        ->type_name("FILE,FILE...")
        ->delimiter(',')
        ->allow_extra_args(false);
    app.add_option("--point-size", pointSize, "Size of points and width of streaks, 3 unless given")
        ->type_name("PIXELS");
    app.add_flag("--lit", options.lit, "Light particles");
    app.add_option("--demo", demo, "Show a fountain in the wind in the place of models")
        ->type_name("particles");
    app.add_option("--frames", frames, "Write N pictures of the demo, 30 a second: FILE_001 and so on")
        ->type_name("N");
    app.add_flag("--wireframe", options.wireframe, "Draw edges only");
    app.add_flag("--no-lights", noLights, "Draw colours as they are, unlit");
    app.add_flag("--shadows", options.shadows, "Let the main light cast shadows, with shaders");
    app.add_flag("--no-culling", noCulling, "Draw triangles from behind too");
    app.add_flag("--cull", options.cull,
                 "Don't draw groups that are outside the view or hidden behind others");
    app.add_flag("--grid", options.grid, "Draw a grid under the model");
    app.add_flag("--axes", options.axes, "Draw the axes of the world: x red, y green, z blue");
    app.add_flag("--stats", options.stats,
                 "Print what was drawn and uploaded, frame by frame; in a window, show it");
    app.add_flag("--info", options.info, "Print what the models hold; needs no display");
    app.add_flag("--json", options.json, "With --info: as JSON");
    app.add_flag("--gl-info", options.glInfo, "Print OpenGL's version, capabilities and limits");
    app.add_option("--progress", progress,
                   "How to show progress; a bar on a terminal, else nothing, unless given")
        ->type_name("bar|plain|none");
    app.add_flag("-q,--quiet", options.quiet, "No warnings, no progress");
    app.add_flag("-v,--verbose", options.verbose, "Say what is being done");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        line.printAndStop = app.help();
        return line;
    } catch (const CLI::CallForVersion&) {
        line.printAndStop = "orloview " ORLOGL_VERSION "\n";
        return line;
    } catch (const CLI::ParseError& error) {
        throw Failure(kExitUsage, std::string(error.what()) + " (--help lists all switches)");
    }
    const std::vector<std::string> extras = app.remaining();
    if (!extras.empty())
        unknownSwitch(app, extras.front());

    if (app.count("--size") != 0)
        parseSize(size, options);
    const auto given = [&app](const char* name, const std::string& value) {
        if (app.count(name) != 0 && value.empty())
            wrong(name, "''", "give a value");
        return value;
    };
    if (app.count("--samples") != 0)
        options.sampling.samples = parseCount("--samples", samples, 1, 8);
    if (app.count("--tile") != 0)
        options.sampling.tile = parseCount("--tile", tile, 16, 16384);
    if (app.count("--turntable") != 0)
        options.turntable = parseCount("--turntable", turntable, 1, 100000);
    if (app.count("--particles") != 0)
        options.particles = parseParticles(particles);
    if (app.count("--point-size") != 0)
        options.pointSize = parsePointSize(pointSize);
    if (app.count("--demo") != 0 && demo != "particles")
        wrong("--demo", demo, "give particles");
    options.demo = app.count("--demo") != 0;
    if (options.demo && !options.particles)
        options.particles = ParticleKind::Sprites;
    if (app.count("--frames") != 0)
        options.frames = parseCount("--frames", frames, 1, 100000);
    if (app.count("--offscreen") != 0 && offscreen != "fbo" && offscreen != "pbuffer")
        wrong("--offscreen", offscreen, "give fbo or pbuffer");
    options.sampling.pbuffer = offscreen == "pbuffer";
    options.glRoad = parseRoad(display);
    if (options.sampling.pbuffer && options.glRoad == GLRoad::Auto)
        options.glRoad = GLRoad::X11; // where pbuffers are
    if (app.count("--shading") != 0)
        options.shading = parseShading("--shading", shading);
    options.sky = parseSky(sky);
    for (const char* name :
         {"--shading", "--sky", "--tone-map", "--shader", "--cg", "--cg-option", "--cg-set", "--shadows",
          "--cull", "--particles", "--sprite-images", "--point-size", "--lit"})
        options.shadingSwitches += asGiven(name, *app.get_option(name));
    for (const std::string& value : cgValues)
        cg.values.push_back(parseCgValue(value));
    if (app.count("--cg") != 0) {
        given("--cg", cg.name);
        options.cg = cg;
    } else if (!cg.options.empty() || !cg.values.empty()) {
        throw Failure(kExitUsage, "--cg-option and --cg-set: they are of a Cg shader; give --cg NAME");
    }
    if (compare.size() == 2)
        options.compare =
            std::array{parseShading("--compare", compare[0]), parseShading("--compare", compare[1])};
    if (app.count("--tone-map") != 0)
        options.toneMap = parseToneMap(toneMap);
    options.progress = parseProgress(progress, options.quiet);
    options.lights = !noLights;
    options.culling = !noCulling;
    options.eye = parseTriple<koLinear::Point>("--eye", given("--eye", eye));
    options.target = parseTriple<koLinear::Point>("--target", given("--target", target));
    options.up = parseTriple<koLinear::Vector>("--up", given("--up", up));
    options.fieldOfView = parseFieldOfView(given("--fov", fov));
    if (app.count("--camera") != 0)
        options.camera = given("--camera", camera);
    if (app.count("--background") != 0) {
        const auto color = parseColor(background);
        if (!color)
            wrong("--background", background,
                  "give a name such as white, #RRGGBB, #RRGGBBAA, or transparent");
        options.background = *color;
    }
    if (app.count("--output") != 0)
        given("-o", options.output);
    given("--depth", options.depth);
    given("--cube-map", options.cubeMap);
    checkTogether(options);
    return line;
}

} // namespace orloview
