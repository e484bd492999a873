#include "import/GltfExtensions.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/ImportError.h"

namespace orloview {

namespace {

using nlohmann::json;

enum class Standing {
    Understood, ///< drawn; or whoever reads it says where it can't be
    LooksOnly,  ///< the model has its shape without it
    Needed,     ///< the model hasn't, where the file requires it
    Invisible   ///< nothing of it shows in a picture
};

struct Extension {
    std::string_view name; ///< '*' stands for any letters
    Standing standing;
    std::string_view lack = {}; ///< of a picture without it; empty: what its name says
};

/// All that is known of extensions; the first line that fits a name counts.
constexpr std::array kExtensions{
    Extension{"EXT_mesh_gpu_instancing", Standing::Understood},
    Extension{"EXT_meshopt_compression", Standing::Understood},
    Extension{"EXT_texture_webp", Standing::Understood},
    Extension{"KHR_draco_mesh_compression", Standing::Understood},
    Extension{"KHR_lights_punctual", Standing::Understood},
    Extension{"KHR_materials_anisotropy", Standing::Understood},
    Extension{"KHR_materials_clearcoat", Standing::Understood},
    Extension{"KHR_materials_diffuse_transmission", Standing::Understood},
    Extension{"KHR_materials_dispersion", Standing::Understood},
    Extension{"KHR_materials_emissive_strength", Standing::Understood},
    Extension{"KHR_materials_ior", Standing::Understood},
    Extension{"KHR_materials_iridescence", Standing::Understood},
    Extension{"KHR_materials_pbrSpecularGlossiness", Standing::Understood},
    Extension{"KHR_materials_sheen", Standing::Understood},
    Extension{"KHR_materials_specular", Standing::Understood},
    Extension{"KHR_materials_transmission", Standing::Understood},
    Extension{"KHR_materials_unlit", Standing::Understood},
    Extension{"KHR_materials_variants", Standing::Understood},
    Extension{"KHR_materials_volume", Standing::Understood},
    Extension{"KHR_mesh_quantization", Standing::Understood},
    Extension{"KHR_meshopt_compression", Standing::Understood},
    Extension{"KHR_node_visibility", Standing::Understood},
    Extension{"KHR_texture_transform", Standing::Understood},
    // Textures that have nothing but such a picture are named one by one.
    Extension{"KHR_texture_basisu", Standing::Understood},
    Extension{"MSFT_texture_dds", Standing::Understood},
    // What the nodes themselves name is the finest.
    Extension{"MSFT_lod", Standing::Understood},

    Extension{"*_materials_*", Standing::LooksOnly}, Extension{"*_lights_*", Standing::LooksOnly},
    Extension{"*_texture_*", Standing::LooksOnly},
    Extension{"KHR_animation_pointer", Standing::LooksOnly, "some of its animations"},

    Extension{"CESIUM_RTC", Standing::Needed, "its place on the globe"},
    Extension{"KHR_gaussian_splatting*", Standing::Needed, "the shape of its splats"},

    Extension{"*_xmp*", Standing::Invisible}, Extension{"*metadata*", Standing::Invisible},
    Extension{"*_features", Standing::Invisible}, // numbers of things, for look-ups
    Extension{"*_audio*", Standing::Invisible}, Extension{"*_physics*", Standing::Invisible},
    Extension{"*_collider", Standing::Invisible},
    Extension{"KHR_implicit_shapes", Standing::Invisible}, // of collisions
    Extension{"KHR_interactivity", Standing::Invisible},
    Extension{"*_node_hoverability", Standing::Invisible},
    Extension{"*_node_selectability", Standing::Invisible},
    Extension{"EXT_mesh_manifold", Standing::Invisible}, // the same triangles once more
    Extension{"GODOT_single_root", Standing::Invisible},
    Extension{"MSFT_packing_*", Standing::Invisible}, // the same textures once more
};

/// Whether the name is the pattern, with any letters in the place of each '*'.
bool fits(std::string_view name, std::string_view pattern) {
    const size_t star = pattern.find('*');
    if (star == pattern.npos)
        return name == pattern;
    if (name.substr(0, star) != pattern.substr(0, star))
        return false;
    for (size_t skipped = star; skipped <= name.size(); ++skipped)
        if (fits(name.substr(skipped), pattern.substr(star + 1)))
            return true;
    return false;
}

Extension lookUp(std::string_view name) {
    const auto* const found = std::find_if(kExtensions.begin(), kExtensions.end(),
                                           [&](const Extension& known) { return fits(name, known.name); });
    return found == kExtensions.end() ? Extension{name, Standing::Needed} : *found;
}

/// The extensions that some object carries, also those that the file forgot to declare. What applications
/// keep for themselves isn't looked at, nor the two long lists of numbers' places: whoever reads these finds
/// what they carry.
void collectCarried(const json& document, std::set<std::string>& names) {
    std::vector<const json*> open{&document};
    const auto enter = [&open](const json& value) {
        if (value.is_structured())
            open.push_back(&value);
    };
    while (!open.empty()) {
        const json& value = *open.back();
        open.pop_back();
        const auto* const list = value.get_ptr<const json::array_t*>();
        if (list && !list->empty() && list->front().is_structured()) // numbers are many
            std::for_each(list->begin(), list->end(), enter);
        if (const auto* const object = value.get_ptr<const json::object_t*>())
            for (const auto& [key, item] : *object) {
                if (key == "extensions" && item.is_object())
                    for (const auto& [name, carried] : item.get_ref<const json::object_t&>())
                        names.insert(name);
                if (key != "extras" && key != "accessors" && key != "bufferViews")
                    enter(item);
            }
    }
}

} // namespace

void checkRequiredExtensions(const GltfObject& root) {
    for (const std::string& name : root.texts("extensionsRequired"))
        if (lookUp(name).standing == Standing::Needed)
            throw ImportError("the file needs the extension " + name +
                              ", which this program doesn't know; export the model without it");
}

void warnOfExtensions(const json& document, Warnings& warnings) {
    const GltfObject root(document, "");
    std::set<std::string> names;
    for (const char* list : {"extensionsUsed", "extensionsRequired"})
        for (const std::string& name : root.texts(list))
            names.insert(name);
    collectCarried(document, names);
    for (const std::string& name : names) {
        const Extension known = lookUp(name);
        if (known.standing == Standing::LooksOnly || known.standing == Standing::Needed)
            warnings.add("the extension " + name,
                         "not understood; the model is drawn without " +
                             (known.lack.empty() ? "what " + name + " adds" : std::string(known.lack)));
    }
}

} // namespace orloview
