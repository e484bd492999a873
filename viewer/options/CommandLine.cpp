#include "options/CommandLine.h"

#include "base/ExitCode.h"
#include "base/Text.h"
#include "options/Values.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <numeric>
#include <unistd.h>
#include <utility>

namespace orloview {

namespace {

const char* const kFooter = R"(
Examples:
  orloview model.glb
  orloview model.glb -o picture.png
  orloview part1.obj part2.stl -o - --size 1920x1080 --background white > both.png
  orloview room.gltf -o view.png --camera Entrance
  orloview bunny.ply -o side.png --eye 3,1,0 --target 0,0.1,0 --fov 30
  orloview model.glb --info --json
  unzip -p models.zip chair.glb | orloview - -o chair.png
  orloview cloud.csv --particles sprites --sprite-images smoke.png,spark.png
  orloview fox.glb -o run.png --animation Run --frames 48 --fps 24
  orloview --demo particles -o drops.png --frames 60

Files:
  ~/.config/orloview/config  switches, each on a line; one on the command line goes before (--grid=false: none)

Exit codes:
  0   the picture is written, the window closed, or what was asked for is printed
  1   a switch or its value is wrong
  2   no model could be read, or nothing in it can be drawn
  3   the picture is written, but some input was left out (each is named)
  4   no display, or no OpenGL that can do it
  5   the picture could not be written (an older one is untouched)
  70  a fault of orloview itself
)";

constexpr std::array<Choice<bool>, 2> kOffscreen = {{{"fbo", false}, {"pbuffer", true}}};
constexpr std::array<Choice<GLRoad>, 3> kRoads = {
    {{"auto", GLRoad::Auto}, {"x11", GLRoad::X11}, {"egl", GLRoad::Egl}}};
constexpr std::array<Choice<Shading>, 3> kShadings = {
    {{"fixed", Shading::Fixed}, {"glsl", Shading::Glsl}, {"cg", Shading::Cg}}};
constexpr std::array<Choice<ToneMap>, 2> kToneMaps = {{{"none", ToneMap::Cut}, {"soft", ToneMap::Soft}}};
constexpr double kIsometric = 35.26438968; // the arc tangent of the root of one half
constexpr std::array<Choice<Direction>, 7> kDirections = {{{"front", {0.0, 0.0}},
                                                           {"back", {180.0, 0.0}},
                                                           {"left", {-90.0, 0.0}},
                                                           {"right", {90.0, 0.0}},
                                                           {"top", {0.0, 90.0}},
                                                           {"bottom", {0.0, -90.0}},
                                                           {"iso", {45.0, kIsometric}}}};
constexpr std::array<Choice<ParticleKind>, 4> kParticles = {{{"points", ParticleKind::Points},
                                                             {"multi", ParticleKind::Multi},
                                                             {"sprites", ParticleKind::Sprites},
                                                             {"streaks", ParticleKind::Streaks}}};
constexpr std::array<Choice<bool>, 1> kDemos = {{{"particles", true}}};
constexpr std::array<Choice<Progress::Mode>, 3> kProgress = {
    {{"bar", Progress::Mode::Bar}, {"plain", Progress::Mode::Plain}, {"none", Progress::Mode::Silent}}};

/// How many letters are wrong, missing, too many or, two of them, the wrong way round.
size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::vector<size_t>> rows(a.size() + 1, std::vector<size_t>(b.size() + 1));
    std::iota(rows[0].begin(), rows[0].end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        rows[i][0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replaced = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            rows[i][j] = std::min({replaced, rows[i - 1][j] + 1, rows[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
        }
    }
    return rows.back().back();
}

/// The switch that a mistyped one was meant to be: nearly all its letters are there, or its beginning is.
std::string nearestSwitch(const CLI::App& app, const std::string& given) {
    constexpr size_t kLettersPerMistake = 3;
    constexpr size_t kShortestBeginning = 3;
    std::string nearest;
    size_t distance = std::max<size_t>(given.size() / kLettersPerMistake, 1) + 1;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            const bool isBegun = given.size() >= kShortestBeginning && name.starts_with(given);
            const size_t candidate = isBegun ? 1 : editDistance(given, name);
            if (candidate < distance) {
                distance = candidate;
                nearest = "--" + name;
            }
        }
    }
    return nearest;
}

[[noreturn]] void unknownSwitch(const CLI::App& app, const std::string& given) {
    const std::string name = given.substr(0, given.find('='));
    const std::string nearest = name.starts_with("--") ? nearestSwitch(app, name.substr(2)) : std::string();
    const std::string hint = nearest.empty() ? "" : "; did you mean " + nearest + "?";
    throw Failure(kExitUsage, "unknown switch " + name + hint + " (--help lists all)");
}

/// A switch that was given too often, or with too few or too many words. The parser's own line begins with
/// its name.
[[noreturn]] void wrongCount(const CLI::App& app, const std::string& line) {
    const std::string name = line.substr(0, line.find_first_of(": "));
    const CLI::Option* option = app.get_option_no_throw(name);
    if (!option)
        throw Failure(kExitUsage, line + " (--help lists all switches)");
    if (option->get_items_expected_max() == 1 && option->count() > 1)
        throw Failure(kExitUsage,
                      name + ": it is given " + std::to_string(option->count()) + " times; give it once");
    throw Failure(kExitUsage, name + ": give it as " + name + " " + option->get_type_name());
}

/// A switch with its values as a shell takes them, a space before it; nothing where it wasn't given.
std::string asGiven(const std::string& name, const CLI::Option& option) {
    if (option.count() == 0)
        return "";
    if (option.get_items_expected_max() == 0)
        return option.as<bool>() ? " " + name : "";
    if (option.get_delimiter() != '\0')
        return " " + name + " " + shellWord(CLI::detail::join(option.results(), ","));
    std::string text;
    for (const std::string& value : option.results())
        text.append(" ").append(name).append(value.starts_with('-') ? "=" : " ").append(shellWord(value));
    return text;
}

/// The switches, each in one place: its name, what it takes, what it does.
class Switches {
public:
    explicit Switches(Options& options) : fOptions(options) {
        fApp.footer(kFooter);
        fApp.allow_extras();
        fApp.set_help_flag("-h,--help", "Print this help");
        fApp.set_version_flag("--version", "orloview " ORLOVIEW_VERSION, "Print the version");
        addFiles();
        addView();
        addShading();
        addParticles();
        addDrawing();
        addTelling();
    }

    /// What to print instead of going on, or nothing.
    std::string parse(std::vector<std::string> words) {
        std::reverse(words.begin(), words.end()); // as the parser takes them
        try {
            fApp.parse(std::move(words));
        } catch (const CLI::CallForHelp&) {
            return fApp.help();
        } catch (const CLI::CallForVersion&) {
            return "orloview " ORLOVIEW_VERSION "\n";
        } catch (const CLI::ArgumentMismatch& error) {
            wrongCount(fApp, error.what());
        } catch (const CLI::ParseError& error) {
            throw Failure(kExitUsage, std::string(error.what()) + " (--help lists all switches)");
        }
        std::vector<std::string> extras = fApp.remaining();
        std::erase(extras, "--"); // behind which names of files may begin with a dash
        if (!extras.empty())
            unknownSwitch(fApp, extras.front());
        for (const char* name :
             {"--variant", "--shading", "--sky", "--sky-rotation", "--tone-map", "--shader", "--cg", "--cgfx",
              "--technique", "--cg-option", "--cg-set", "--shadows", "--cull", "--particles",
              "--sprite-images", "--point-size", "--lit"})
            fOptions.shadingSwitches += asGiven(name, *fApp.get_option(name));
        return {};
    }

    /// Whether the last line that was parsed has the switch that `word` begins with.
    bool has(const std::string& word) const {
        const CLI::Option* option = fApp.get_option_no_throw(word.substr(0, word.find('=')));
        return option && option->count() > 0;
    }

    /// Of --cg-option, --cg-set and --technique, without which --cg and --cgfx have none.
    CgRequest& cg() { return fCg; }

    /// The file of --cgfx; empty: it isn't given.
    const std::string& effect() const { return fEffect; }

private:
    /// A switch with one word, which `take` gets; an empty one is refused. `names` may begin with a short
    /// one.
    CLI::Option* word(const std::string& names, const std::string& type, const std::string& help,
                      const std::function<void(const std::string&)>& take) {
        const std::string name = names.substr(names.find("--"));
        return fApp
            .add_option_function<std::string>(
                names,
                [name, take](const std::string& text) {
                    if (text.empty())
                        wrong(name, "''", "give a value");
                    take(text);
                },
                help)
            ->type_name(type);
    }

    CLI::Option* word(const std::string& names, const std::string& type, const std::string& help,
                      std::string& place) {
        return word(names, type, help, [&place](const std::string& text) { place = text; });
    }

    /// A switch with one of a few words.
    template <typename T, size_t kCount, typename Place>
    void choice(const std::string& name, const std::array<Choice<T>, kCount>& choices,
                const std::string& help, Place& place) {
        word(name, wordsOf(choices), help,
             [name, &choices, &place](const std::string& text) { place = oneOf(name, text, choices); });
    }

    void count(const std::string& name, int least, int most, const std::string& help, int& place) {
        word(name, "N", help,
             [=, &place](const std::string& text) { place = parseCount(name, text, least, most); });
    }

    void look(const Direction& direction) {
        fOptions.direction = direction;
        fOptions.hasDirection = true;
    }

    template <typename Triple>
    void triple(const std::string& name, const std::string& help, std::optional<Triple>& place) {
        word(name, "X,Y,Z", help,
             [name, &place](const std::string& text) { place = parseTriple<Triple>(name, text); });
    }

    void addFiles();
    void addView();
    void addShading();
    void addParticles();
    void addDrawing();
    void addTelling();

    Options& fOptions;
    CgRequest fCg;
    std::string fEffect;
    CLI::App fApp{
        "Shows 3D models, drawn through OrloGL, in a window or writes a picture of them: several models "
        "make one scene. H in the window lists its keys.",
        "orloview"};
};

void Switches::addFiles() {
    fApp.add_option(
            "models", fOptions.models,
            "Model files: glTF 2.0 (.gltf, .glb), OBJ, PLY, STL and others; tables of points (.csv, .txt); - "
            "for one from standard input")
        ->type_name("MODEL...");
    word("--format", "SUFFIX",
         "What comes through standard input, such as glb; needed where its first bytes don't tell",
         [this](const std::string& text) { fOptions.format = text.starts_with('.') ? text : "." + text; });
    word("--limit-memory", "N(M|G)",
         "What reading one model or picture may take: 2G, or in proportion to a large file, unless given",
         [this](const std::string& text) { fOptions.limits.memoryBytes = parseMemory(text); });
    word("--limit-time", "SECONDS",
         "How long reading one model or picture may compute: 30, or in proportion to a large file, unless "
         "given",
         [this](const std::string& text) {
             fOptions.limits.seconds = static_cast<unsigned>(parseCount("--limit-time", text, 1, 1000000));
         });
    fApp.add_flag("--allow-outside", fOptions.limits.allowOutside,
                  "Let models name files outside their folder and the one above");
    word(
        "-o,--output", "FILE",
        "Write a picture here and open no window: .png, .jpg, .bmp, .tga, .ppm, or .pfm for linear floats; - "
        "for PNG to standard output",
        fOptions.output);
    word("--size", "WxH", "Size of the picture or window in pixels, 1280x720 unless given",
         [this](const std::string& text) {
             const PixelSize size = parseSize(text);
             fOptions.width = size.width;
             fOptions.height = size.height;
         });
    count("--samples", 1, 8, "Average a pixel from N x N samples, 1 to 8; 2 unless given",
          fOptions.sampling.samples);
    count("--tile", 16, 16384, "Draw the picture in squares of N pixels; chosen by its size unless given",
          fOptions.sampling.tile);
    count("--turntable", 1, 100000, "Write N pictures of one way round the model: FILE_001 and so on",
          fOptions.turntable);
    word("--only", "I/N",
         "Write the I-th of N equal parts alone: of the pictures of a series, or of a picture's bands, as "
         "FILE_I_of_N",
         [this](const std::string& text) { fOptions.only = parseShare(text); });
    count("--join", 1, 100000, "Put the N parts of a picture together that --only wrote for -o FILE",
          fOptions.join);
    word("--depth", "FILE",
         "Write the distance along the view of each pixel: floats (.pfm) or 16 bits of grey (.png)",
         fOptions.depth);
    word("--cube-map", "FOLDER",
         "Write what is seen from --eye, or from the middle of the scene, to the six sides of a cube",
         fOptions.cubeMap);
    choice("--offscreen", kOffscreen, "What pictures are drawn in; fbo unless given",
           fOptions.sampling.pbuffer);
    choice("--display", kRoads,
           "How pictures reach OpenGL: through an X display, or through EGL without one; auto takes what is "
           "there",
           fOptions.glRoad);
}

void Switches::addView() {
    word("--view", wordsOf(kDirections),
         "From where the eye looks at the whole model: a side, or iso, which shows three alike; from 30 "
         "degrees right of the front and 20 above unless given",
         [this](const std::string& text) { look(oneOf("--view", text, kDirections)); });
    word("--azimuth", "DEGREES", "How far right of the front the eye is", [this](const std::string& text) {
        look({parseAngle("--azimuth", text, 360.0), fOptions.direction.elevation});
    });
    word("--elevation", "DEGREES", "How far above the front the eye is, -90 to 90",
         [this](const std::string& text) {
             look({fOptions.direction.azimuth, parseAngle("--elevation", text, 90.0)});
         });
    triple("--eye", "Where the eye is", fOptions.eye);
    triple("--target", "What the eye looks at", fOptions.target);
    triple("--up", "Which way is up, 0,1,0 unless given", fOptions.up);
    word("--fov", "DEGREES", "Vertical angle of view, 35 unless given",
         [this](const std::string& text) { fOptions.fieldOfView = parseFieldOfView(text); });
    word("--camera", "NAME|INDEX", "Look through a camera of the file",
         [this](const std::string& text) { fOptions.camera = text; });
    word("--variant", "NAME", "Draw the materials of a variant of the file; --info lists them",
         [this](const std::string& text) { fOptions.variant = text; });
    word("--animation", "NAME|INDEX", "Show this animation of the file, the first unless given",
         [this](const std::string& text) { fOptions.animation = text; });
    word("--time", "SECONDS",
         "When to show what moves, 0 unless given; behind its end an animation begins again; a window then "
         "opens at rest",
         [this](const std::string& text) { fOptions.time = parseTime(text); });
    count("--frames", 1, 100000, "Write N pictures of what moves, from --time on: FILE_001 and so on",
          fOptions.frames);
    word("--fps", "N", "How many of them make a second, 30 unless given; in a window, a step of its keys",
         [this](const std::string& text) { fOptions.framesPerSecond = parseRate(text); });
    fApp.add_flag("--orthographic", fOptions.orthographic,
                  "Draw without perspective, as large as at the target with it");
    word("--background", "COLOUR", "A name, #RRGGBB, #RRGGBBAA, or transparent",
         [this](const std::string& text) {
             const auto color = parseColor(text);
             if (!color)
                 wrong("--background", text, "give a name such as white, #RRGGBB, #RRGGBBAA, or transparent");
             fOptions.background = *color;
         });
}

void Switches::addShading() {
    choice("--shading", kShadings,
           "Draw materials by OpenGL's own functions or by shaders; shaders unless given", fOptions.shading);
    word("--sky", "none|" + Sky::names("|") + "|FILE",
         "What shines from all round, with shaders: studio unless given, or a picture of all that is seen "
         "from a place, twice as wide as high, .hdr or .exr",
         [this](const std::string& text) {
             fOptions.skyFile = isSkyFile(text) ? text : "";
             fOptions.sky = isSkyFile(text) ? std::nullopt : parseSky(text);
         });
    word("--sky-rotation", "DEGREES", "Turn the picture of the sky to the right",
         [this](const std::string& text) {
             fOptions.skyRotation = parseAngle("--sky-rotation", text, 360.0);
         });
    fApp.add_flag("--show-sky", fOptions.showSky, "Show the sky behind the model, with shaders");
    word("--exposure", "EV", "Double all light that many times; halve it where below 0",
         [this](const std::string& text) { fOptions.exposure = parseExposure(text); });
    choice("--tone-map", kToneMaps,
           "Cut off what is too bright, or draw the bright end together; soft for what shaders light, unless "
           "given",
           fOptions.toneMap);
    fApp.add_option_function<std::vector<std::string>>(
            "--compare",
            [this](const std::vector<std::string>& words) {
                fOptions.compare = {oneOf("--compare", words[0], kShadings),
                                    oneOf("--compare", words[1], kShadings)};
            },
            "Print how far two shadings' pictures are apart")
        ->type_name("SHADING SHADING")
        ->expected(2);
    word("--shader", "NAME",
         "Draw with a GLSL shader of your own in the place of all materials: NAME.vert and NAME.frag",
         fOptions.shader);
    word("--cg", "NAME",
         "Draw with a Cg shader in the place of all materials: one of those that lie beside the viewer, or a "
         "path: "
         "NAME_vertex.cg and NAME_fragment.cg",
         fCg.name);
    word("--cgfx", "FILE",
         "Draw with an effect of Cg in the place of all materials: a file of techniques and passes", fEffect);
    word("--technique", "NAME",
         "With --cgfx: the technique that is tried first, the file's first unless given", fCg.technique);
    fApp.add_option("--cg-option", fCg.options,
                    "With --cg or --cgfx: a switch of the Cg compiler, such as --cg-option=-DBANDS=3")
        ->type_name("SWITCH")
        ->allow_extra_args(false);
    fApp.add_option_function<std::vector<std::string>>(
            "--cg-set",
            [this](const std::vector<std::string>& values) {
                for (const std::string& value : values)
                    fCg.values.push_back(parseCgValue(value));
            },
            "With --cg or --cgfx: set a parameter, such as --cg-set bodyColor=1,0.5,0")
        ->type_name("NAME=NUMBERS")
        ->allow_extra_args(false);
    word("--dump-shaders", "FOLDER", "Write the sources of the materials' shaders", fOptions.dumpShaders);
}

void Switches::addParticles() {
    choice(
        "--particles", kParticles,
        "What the points of models are drawn as: points, clouds of points (multi), squares that face the eye "
        "(sprites), lines along their motion (streaks)",
        fOptions.particles);
    fApp.add_option("--sprite-images", fOptions.spriteImages,
                    "Pictures of the sprites, by their textureNumber; a soft spot unless given")
        ->type_name("FILE,FILE...")
        ->delimiter(',')
        ->allow_extra_args(false);
    word("--point-size", "PIXELS", "Size of points and width of streaks, 3 unless given",
         [this](const std::string& text) { fOptions.pointSize = parsePointSize(text); });
    fApp.add_flag("--lit", fOptions.lit, "Light particles");
    choice("--demo", kDemos, "Show a fountain in the wind in the place of models", fOptions.demo);
}

void Switches::addDrawing() {
    fApp.add_flag("--wireframe", fOptions.wireframe, "Draw edges only");
    fApp.add_flag("--edges", fOptions.edges, "Draw the edges of triangles over what is drawn");
    word("--clip", "AXIS,PLACE", "Leave out what lies beyond a place of an axis, such as y,1.5",
         [this](const std::string& text) { fOptions.clip = parseClip(text); });
    word("--part", "NAME|INDEX", "Draw a line round a part of the file",
         [this](const std::string& text) { fOptions.part = text; });
    word("--measure", "X,Y,Z,X,Y,Z", "Draw a line between two points; in a window, with their distance",
         [this](const std::string& text) { fOptions.measure = parsePoints(text); });
    fApp.add_flag_callback(
        "--no-lights", [this] { fOptions.lights = false; }, "Draw colours as they are, unlit");
    fApp.add_flag("--shadows", fOptions.shadows, "Let the main light cast shadows, with shaders");
    fApp.add_flag_callback(
        "--no-culling", [this] { fOptions.culling = false; }, "Draw triangles from behind too");
    fApp.add_flag("--cull", fOptions.cull,
                  "Don't draw groups that are outside the view or hidden behind others");
    fApp.add_flag("--grid", fOptions.grid, "Draw a grid under the model");
    fApp.add_flag("--ground", fOptions.ground,
                  "Show the soft shade where the model stands, on a ground that shows nothing else");
    fApp.add_flag("--ao", fOptions.ambientOcclusion,
                  "Let near surfaces keep off what comes from all round (ambient occlusion), with shaders");
    fApp.add_flag("--axes", fOptions.axes, "Draw the axes of the world: x red, y green, z blue");
}

void Switches::addTelling() {
    fApp.add_flag("--stats", fOptions.stats,
                  "Print what was drawn and uploaded, frame by frame; in a window, show it");
    fApp.add_flag("--tree", fOptions.showTree, "In a window, show the tree of the scene");
    fApp.add_flag("--warnings", fOptions.showWarnings, "In a window, show what was left out of the file");
    fApp.add_flag("--exposure-slider", fOptions.showExposure, "In a window, show a slider for the exposure");
    fApp.add_flag("--info", fOptions.info, "Print what the models hold; needs no display");
    fApp.add_flag("--json", fOptions.json, "With --info: as JSON");
    fApp.add_flag("--list-formats", fOptions.listFormats, "Print which models are read, by their suffixes");
    fApp.add_flag("--gl-info", fOptions.glInfo, "Print OpenGL's version, capabilities and limits");
    word("--gl-log", "FILE", "Write each call to OpenGL with its time and error, and at the end a summary",
         fOptions.glLog);
    fApp.add_flag(
        "--gl-debug", fOptions.glDebug,
        "Name objects and passes for debuggers of frames, and print what the driver says (KHR_debug)");
    choice("--progress", kProgress, "How to show progress; a bar on a terminal, else nothing, unless given",
           fOptions.progress);
    fApp.add_flag("-q,--quiet", fOptions.quiet, "No warnings, no progress");
    fApp.add_flag("-v,--verbose", fOptions.verbose, "Say what is being done");
}

/// A line of the file of switches, as a shell would part it.
std::vector<std::string> wordsOfLine(const std::string& line) {
    std::vector<std::string> words = CLI::detail::split_up(line);
    for (std::string& word : words)
        CLI::detail::remove_quotes(word);
    return words;
}

/// The switches of the user's file, but those that the command line has: these take their place. Each line is
/// tried alone, so that what is wrong is told with its number.
std::vector<std::string> switchesOfFile(const std::string& path, const std::vector<std::string>& given) {
    std::ifstream file(path);
    std::vector<std::string> all;
    if (!file)
        return all;
    Options ignored;
    Switches onLine(ignored);
    onLine.parse(given);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        const std::vector<std::string> words = wordsOfLine(line);
        if (words.empty() || words.front().starts_with('#'))
            continue;
        const std::string place = path + ":" + std::to_string(number) + ": ";
        Options alone;
        try {
            Switches(alone).parse(words);
        } catch (const Failure& failure) {
            throw Failure(failure.code(), place + failure.what());
        }
        if (!alone.models.empty())
            throw Failure(kExitUsage, place + alone.models.front() + ": a line is a switch, such as --grid");
        if (!onLine.has(words.front()))
            all.insert(all.end(), words.begin(), words.end());
    }
    return all;
}

/// Where desktops keep what a user likes; empty: nowhere.
std::string fileOfSwitches() {
    const auto place = [](const char* variable, const char* below) -> std::string {
        const char* folder = std::getenv(variable);
        return folder && *folder ? std::string(folder) + below : std::string();
    };
    const std::string file = place("XDG_CONFIG_HOME", "/orloview/config");
    return file.empty() ? place("HOME", "/.config/orloview/config") : file;
}

/// What one switch makes of another.
void settle(Options& options, CgRequest cg, const std::string& effect) {
    if (options.quiet)
        options.progress = Progress::Mode::Silent;
    if (options.demo && !options.particles)
        options.particles = ParticleKind::Sprites;
    if (options.sampling.pbuffer && options.glRoad == GLRoad::Auto)
        options.glRoad = GLRoad::X11; // where pbuffers are
    if (!cg.name.empty() && !effect.empty())
        throw Failure(kExitUsage, "--cg and --cgfx: each takes the place of all materials; give one");
    if (effect.empty() && !cg.technique.empty())
        throw Failure(kExitUsage, "--technique: it is of an effect; give --cgfx FILE");
    cg.isEffect = !effect.empty();
    if (cg.isEffect)
        cg.name = effect;
    if (!cg.name.empty())
        options.cg = std::move(cg);
    else if (!cg.options.empty() || !cg.values.empty())
        throw Failure(kExitUsage,
                      "--cg-option and --cg-set: they are of a Cg shader; give --cg NAME or --cgfx FILE");
}

} // namespace

CommandLine parseCommandLine(int argc, const char* const* argv) {
    CommandLine line;
    Options& options = line.options;
    options.sky = Sky::named("studio");
    options.progress = isatty(STDERR_FILENO) != 0 ? Progress::Mode::Bar : Progress::Mode::Silent;
    const std::vector<std::string> given(argv + std::min(argc, 1), argv + argc);
    std::vector<std::string> words = switchesOfFile(fileOfSwitches(), given);
    words.insert(words.end(), given.begin(), given.end());
    Switches switches(options);
    line.printAndStop = switches.parse(std::move(words));
    if (line.printAndStop.empty()) {
        settle(options, switches.cg(), switches.effect());
        checkTogether(options);
    }
    return line;
}

} // namespace orloview
