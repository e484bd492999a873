// orloview, the reference viewer: reads models, draws them through the library, in a window or to a picture.

#include "WritePictures.h"
#include "base/Confinement.h"
#include "base/ExitCode.h"
#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/LargePages.h"
#include "base/Say.h"
#include "draw/Fountain.h"
#include "import/Format.h"
#include "import/Importer.h"
#include "info/Describe.h"
#include "info/GLInfo.h"
#include "load/LoadModels.h"
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
#include <utility>
#include <vector>

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

Loaded load(const Options& options, Progress& progress) {
    if (options.demo)
        return {Fountain().scene()};
    progress.begin(Progress::Stage::Read);
    const auto sayBesideProgress = [&progress](const std::string& line) {
        progress.clear();
        say(line);
    };
    const auto startOpenGL = [&options] {
        if (!options.info) // no process is made after this one
            GLSession::startAhead(options.glRoad);
    };
    Loaded loaded = loadModels(options, {progress.report(), sayBesideProgress, startOpenGL});
    progress.clear();
    return loaded;
}

void readPiped(Options& options) {
    if (std::find(options.models.begin(), options.models.end(), "-") == options.models.end())
        return;
    PipedModel piped;
    try {
        piped.bytes = readStandardInput();
    } catch (const ImportError& error) {
        piped.fault = error.what();
    }
    options.piped = std::make_shared<PipedModel>(std::move(piped));
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
    const bool isInWindow = !options.info && !options.compare && !options.writes();
    if (!isInWindow)
        preferLargePages();
    if (!options.info) {
        PictureSource::startDecoders(options.limits);
        loadSky(options);
    }
    if (const std::string open = whatIsNotConfined(); options.verbose && !open.empty())
        say("this kernel can't confine who reads the models in " + open);
    readPiped(options);
    if (isInWindow)
        startReaders(options.piped ? options.piped->bytes : std::vector<std::uint8_t>());
    Progress progress(options.progress, stderr);
    if (isInWindow) {
        showInWindow(options, progress);
        return kExitDone;
    }
    Loaded loaded = load(options, progress);
    Poser poser = poserFor(options, loaded.scene);
    if (options.info) {
        progress.finish();
        poser.pose(options.time.value_or(0.0));
        loaded.scene.measure();
        print(options.json ? describeJson(loaded.scene) : describe(loaded.scene));
        return loaded.complete ? kExitDone : kExitIncomplete;
    }
    prepareForDrawing(options, loaded.scene);
    if (options.compare)
        print(compareShadings(options, poser, progress));
    if (options.compare && !options.writes())
        return loaded.complete ? kExitDone : kExitIncomplete;
    return writePictures(options, poser, loaded.complete, progress);
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
