// orloview, the reference viewer: reads models, draws them through the library, in a window or to a picture.

#include "WritePictures.h"
#include "base/Confinement.h"
#include "base/ExitCode.h"
#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/Say.h"
#include "base/Text.h"
#include "draw/Fountain.h"
#include "import/Format.h"
#include "import/Importer.h"
#include "info/Describe.h"
#include "info/GLInfo.h"
#include "options/CommandLine.h"
#include "output/OutputFile.h"
#include "output/Share.h"
#include "session/GLSession.h"
#include "texture/PictureSource.h"
#include "texture/SkyPicture.h"
#include "window/ViewerWindow.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <memory>

#include <orlohost/HWEnvironment.h>

namespace orloview {

namespace {

/// A stream that the caller has closed leaves its number to the next file: the connection to the display
/// would take it, and get the picture. What reads or writes here fails, so nothing is lost unnoticed.
void occupyClosedStreams() {
    for (const int stream : {0, 1, 2}) {
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", stream == 0 ? O_WRONLY : O_RDONLY) != stream)
            std::_Exit(kExitOurFault);
    }
}

/// Prints what was asked for.
void print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) != 0)
        throw Failure(kExitNotWritten,
                      "standard output took no more; check where it leads and the space left");
}

/// Tells the library where the viewer's files are, from where its program is.
void setPlace() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    HWEnvironment::orlo_path = (program.parent_path().parent_path() / "share" / "orlogl").c_str();
}

struct Loaded {
    Scene scene;
    bool complete = true;
};

ImportResult importFrom(const std::string& path, const Options& options, const ProgressReport& report,
                        const std::function<void()>& meanwhile) {
    if (path != "-")
        return importModel(path, options.limits, report, meanwhile);
    try {
        return importModel("stdin" + options.format, options.limits, report, meanwhile, readStandardInput());
    } catch (const ImportError& error) {
        return {{}, error.what()};
    }
}

/// Every model that can be read, in one scene; each that can't gets its line.
Loaded loadModels(const Options& options, Progress& progress) {
    Loaded loaded;
    bool any = false;
    if (const std::string open = whatIsNotConfined(); options.verbose && !open.empty())
        say("this kernel can't confine who reads the models in " + open);
    progress.begin(Progress::Stage::Read);
    for (size_t i = 0; i < options.models.size(); ++i) {
        const std::string& path = options.models[i];
        progress.clear();
        if (options.verbose)
            say("reading " + path);
        const auto report = [&](double done) {
            progress.update((static_cast<double>(i) + done) / static_cast<double>(options.models.size()));
        };
        const bool isLast = i + 1 == options.models.size();
        ImportResult result = importFrom(path, options, report, [&] {
            if (isLast && !options.info) // no process is made after this one
                GLSession::startAhead(options.writes() || options.compare ? options.glRoad : GLRoad::X11);
        });
        progress.clear();
        if (!result && options.models.size() == 1)
            throw Failure(kExitNoInput, path + ": " + result.error);
        if (!result) {
            say(path + ": " + result.error);
            loaded.complete = false;
            continue;
        }
        for (const std::string& warning : result.scene.warnings) {
            loaded.complete = false;
            if (!options.quiet)
                say(std::string(path).append(": warning: ").append(warning));
        }
        for (Image& image : result.scene.images)
            image.model = path;
        if (any)
            loaded.scene.append(std::move(result.scene));
        else
            loaded.scene = std::move(result.scene);
        any = true;
    }
    if (!any)
        throw Failure(kExitNoInput, "no model could be read; nothing is written");
    return loaded;
}

void loadSky(Options& options) {
    if (options.skyFile.empty())
        return;
    const auto picture = std::make_shared<SkyPicture>(readSkyPicture(options.skyFile, options.limits));
    options.skyPicture = picture;
    if (!picture->isWhole() && !options.quiet)
        say("--sky " + options.skyFile + ": warning: it is " + std::to_string(picture->fileWidth) + " x " +
            std::to_string(picture->fileHeight) + " pixels, not twice as wide as high; it is stretched");
}

/// What materials send out of themselves; the lights and the sky are exposed where they are made.
void expose(Scene& scene, float factor) {
    for (Material& material : scene.materials) {
        for (int channel = 0; channel < 3; ++channel)
            material.emissive[channel] *= factor;
    }
}

void showVariant(const std::string& name, Scene& scene) {
    if (scene.show(name))
        return;
    if (scene.variants.empty())
        throw Failure(kExitUsage, "--variant " + name + ": the model has no variants; leave --variant out");
    std::string known;
    for (const Variant& variant : scene.variants)
        known += (known.empty() ? "" : ", ") + printable(variant.name);
    throw Failure(kExitUsage, "--variant " + name + ": the model has no such variant; it has " + known);
}

/// Whatever the outputs are called.
void spareInputs(const Options& options, const Scene& scene) {
    for (const std::vector<std::string>& files : {options.models, options.spriteImages, scene.files})
        std::for_each(files.begin(), files.end(), OutputFile::spare);
    for (const Image& image : scene.images)
        OutputFile::spare(image.path);
    OutputFile::spare(options.skyFile);
    for (const char* suffix : {".vert", ".frag"})
        OutputFile::spare(options.shader + suffix);
}

int showGLInfo(const Options& options) {
    const std::unique_ptr<GLSession> gl = GLSession::forPictures(options.glRoad, options.glWatch());
    print(describeGL());
    return kExitDone;
}

int run(int argc, const char* const* argv) {
    CommandLine line = parseCommandLine(argc, argv);
    if (!line.printAndStop.empty()) {
        print(line.printAndStop);
        return kExitDone;
    }
    Options& options = line.options;
    if (options.listFormats) {
        print(listModelFormats());
        return kExitDone;
    }
    if (options.join > 0) {
        joinParts(options.output, options.join);
        return kExitDone;
    }
    if (!options.format.empty() && !readsSuffix(options.format))
        throw Failure(kExitUsage,
                      "--format " + options.format +
                          ": no models with this suffix are read; --list-formats lists which are");
    setPlace();
    if (options.glInfo)
        return showGLInfo(options);
    if (!options.info) {
        PictureSource::startDecoders(options.limits);
        loadSky(options);
    }
    Progress progress(options.progress, stderr);
    Loaded loaded = options.demo ? Loaded{Fountain().scene()} : loadModels(options, progress);
    if (options.variant)
        showVariant(*options.variant, loaded.scene);
    if (options.info) {
        progress.finish();
        print(options.json ? describeJson(loaded.scene) : describe(loaded.scene));
        return loaded.complete ? kExitDone : kExitIncomplete;
    }
    if (loaded.scene.instances.empty() || loaded.scene.bounds().empty())
        throw Failure(kExitNoInput, options.subject() + ": nothing in it can be drawn");
    expose(loaded.scene, options.exposure);
    spareInputs(options, loaded.scene);
    if (options.compare)
        print(compareShadings(options, loaded.scene, progress));
    if (options.compare && !options.writes())
        return loaded.complete ? kExitDone : kExitIncomplete;
    if (options.writes())
        return writePictures(options, loaded.scene, loaded.complete, progress);
    showInWindow(options, loaded.scene, progress);
    return kExitDone;
}

/// With what goes wrong told.
int runAndTell(int argc, const char* const* argv) {
    try {
        return run(argc, argv);
    } catch (const Failure& failure) {
        say(failure.what());
        return failure.code();
    } catch (const std::bad_alloc&) {
        say("there is not enough memory; try a smaller --size or a smaller model");
        return kExitOurFault;
    } catch (const std::exception&) {
        say("an unexpected fault of the viewer; please report it with the command and the model");
        return kExitOurFault;
    }
}

} // namespace

} // namespace orloview

int main(int argc, char** argv) {
    orloview::occupyClosedStreams();
    for (const int signal : {SIGXFSZ, SIGPIPE}) // the write that can't be done fails, as on a full disk
        std::signal(signal, SIG_IGN);
    const int code = orloview::runAndTell(argc, argv);
    if (!orloview::GLSession::isStartingAhead())
        return code;
    std::fflush(nullptr);
    std::_Exit(code);
}
