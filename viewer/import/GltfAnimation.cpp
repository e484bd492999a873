#include "import/GltfAnimation.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "base/ImportError.h"

namespace orloview {

namespace {

/// What a word of the file stands for; `what` names it in the error.
template <typename T, size_t kCount>
T meaning(const std::string& word, const std::array<std::pair<std::string_view, T>, kCount>& words,
          const char* what) {
    const auto known =
        std::find_if(words.begin(), words.end(), [&](const auto& each) { return each.first == word; });
    if (known == words.end())
        throw ImportError(std::string(what) + " '" + word + "' is unknown");
    return known->second;
}

constexpr std::array<std::pair<std::string_view, Track::Path>, 4> kPaths{
    {{"translation", Track::Path::Translation},
     {"rotation", Track::Path::Rotation},
     {"scale", Track::Path::Scale},
     {"weights", Track::Path::Weights}}};
constexpr std::array<std::pair<std::string_view, Track::Interpolation>, 3> kInterpolations{
    {{"LINEAR", Track::Interpolation::Linear},
     {"STEP", Track::Interpolation::Step},
     {"CUBICSPLINE", Track::Interpolation::Cubic}}};

/// How many morph targets the mesh of a node has.
size_t targetCount(const GltfObject& root, const GltfObject& node) {
    const std::vector<GltfObject> meshes = root.objects("meshes");
    const int mesh = node.reference("mesh", meshes.size());
    const std::vector<GltfObject> primitives =
        mesh < 0 ? std::vector<GltfObject>() : meshes[static_cast<size_t>(mesh)].objects("primitives");
    return primitives.empty() ? 0 : primitives.front().objects("targets").size();
}

class AnimationParser {
public:
    AnimationParser(const GltfObject& root, GltfData& data)
        : fRoot(root), fData(data), fNodes(root.objects("nodes")) {}

    Track track(const GltfObject& channel, const std::vector<GltfObject>& samplers) {
        const GltfObject target = channel.object("target");
        Track track;
        track.node = target.reference("node", fNodes.size());
        track.path = meaning(target.text("path"), kPaths, "its path");
        const GltfObject& node = fNodes[static_cast<size_t>(track.node)];
        if (track.path != Track::Path::Weights && node.has("matrix"))
            throw ImportError("its node has a matrix, which has no parts to move");
        const int number = channel.reference("sampler", samplers.size());
        if (number < 0)
            throw ImportError("it has no sampler");
        const GltfObject& sampler = samplers[static_cast<size_t>(number)];
        track.interpolation =
            meaning(sampler.text("interpolation", "LINEAR"), kInterpolations, "its interpolation");
        track.times = floats(sampler, "input");
        track.values = floats(sampler, "output");
        if (track.times.empty())
            throw ImportError("it has no keys");
        if (!isPlayable(track) || !fitsTargets(track, node))
            throw ImportError("its keys are out of order, not finite, or not as many as its times");
        return track;
    }

private:
    std::vector<float> floats(const GltfObject& sampler, const char* key) {
        const int accessor = sampler.reference(key, fData.accessorCount());
        if (accessor < 0)
            throw ImportError(sampler.place() + " has no " + key);
        return fData.floats(accessor);
    }

    bool fitsTargets(const Track& track, const GltfObject& node) const {
        const size_t parts = track.interpolation == Track::Interpolation::Cubic ? 3 : 1;
        return track.path != Track::Path::Weights || track.valuesPerKey() == parts * targetCount(fRoot, node);
    }

    const GltfObject& fRoot;
    GltfData& fData;
    std::vector<GltfObject> fNodes;
};

} // namespace

std::vector<Animation> readGltfAnimations(const GltfObject& root, GltfData& data, Warnings& warnings) {
    AnimationParser parser(root, data);
    std::vector<Animation> animations;
    for (const GltfObject& source : root.objects("animations")) {
        Animation& animation = animations.emplace_back();
        animation.name = source.text("name");
        const std::vector<GltfObject> samplers = source.objects("samplers");
        for (const GltfObject& channel : source.objects("channels")) {
            if (!channel.object("target").has("node")) // what moves is said by an extension, if at all
                continue;
            try {
                Track track = parser.track(channel, samplers);
                animation.seconds = std::max(animation.seconds, double{track.times.back()});
                animation.tracks.push_back(std::move(track));
            } catch (const ImportError& error) {
                const std::string name = animation.name.empty() ? source.place() : "'" + animation.name + "'";
                warnings.add(channel.place().substr(source.place().size() + 1) + " of the animation " + name,
                             std::string("not played: ") + error.what());
            }
        }
    }
    return animations;
}

} // namespace orloview
