#include "load/LoadModels.h"

#include "base/ExitCode.h"
#include "base/Text.h"
#include "import/Importer.h"
#include "options/Values.h"
#include "output/OutputFile.h"

#include <algorithm>
#include <utility>

namespace orloview {

namespace {

ImportResult importFrom(const std::string& path, const Options& options, const ProgressReport& report,
                        const std::function<void()>& meanwhile) {
    if (path != "-")
        return importModel(path, options.limits, report, meanwhile);
    if (!options.piped->fault.empty())
        return {{}, options.piped->fault};
    return importModel("stdin" + options.format, options.limits, report, meanwhile, options.piped->bytes);
}

/// Takes a model that could be read into the scene.
void add(Scene&& scene, const std::string& path, Loaded& loaded, bool isFirst) {
    for (Image& image : scene.images)
        image.model = path;
    if (isFirst)
        loaded.scene = std::move(scene);
    else
        loaded.scene.append(std::move(scene));
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

/// What moves is asked for of a model in which nothing does.
void checkMoves(const Options& options, const Poser& poser) {
    const bool hasEffect = options.cg && options.cg->isEffect; // which may go by the time itself
    if (options.demo || hasEffect || poser.moves())
        return;
    for (const auto& [isGiven, name] :
         {std::pair{options.time.has_value(), "--time"}, {options.frames > 0, "--frames"}})
        if (isGiven)
            throw Failure(kExitUsage, std::string(name) + ": nothing in " + options.subject() +
                                          " moves; leave " + name + " out, or give --turntable N");
}

/// What materials send out of themselves; the lights and the sky are exposed where they are made.
void expose(Scene& scene, float factor) {
    for (Material& material : scene.materials) {
        for (int channel = 0; channel < 3; ++channel)
            material.emissive[channel] *= factor;
    }
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

} // namespace

Loaded loadModels(const Options& options, const LoadWatch& watch) {
    const auto say = [&watch](const std::string& line) {
        if (watch.tell)
            watch.tell(line);
    };
    Loaded loaded;
    const size_t count = options.models.size();
    bool any = false;
    for (size_t i = 0; i < count; ++i) {
        const std::string& path = options.models[i];
        if (options.verbose)
            say("reading " + path);
        const auto report = [&](double done) {
            tell(watch.report, static_cast<double>(i) + done, static_cast<double>(count));
        };
        ImportResult result =
            importFrom(path, options, report, i + 1 == count ? watch.meanwhile : std::function<void()>());
        if (!result && count == 1)
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
        add(std::move(result.scene), path, loaded, !std::exchange(any, true));
    }
    if (!any)
        throw Failure(kExitNoInput, "no model could be read; nothing is written");
    if (options.variant)
        showVariant(*options.variant, loaded.scene);
    return loaded;
}

Poser poserFor(const Options& options, Scene& scene) {
    Poser poser(scene, options.animation ? indexOf("animation", *options.animation, scene.animations) : 0);
    checkMoves(options, poser);
    return poser;
}

void prepareForDrawing(const Options& options, Scene& scene) {
    if (scene.instances.empty() || scene.bounds().empty())
        throw Failure(kExitNoInput, options.subject() + ": nothing in it can be drawn");
    expose(scene, options.exposure);
    spareInputs(options, scene);
}

} // namespace orloview
