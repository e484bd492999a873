#include "ShaderWriter.h"

#include <algorithm>
#include <array>

namespace koShadingDag {

/// What a surface is made of so far, as expressions.
struct ShaderWriter::Layers {
    std::string normal;
    std::string mirror; ///< the normal that the sky is mirrored by
    std::string roughness;
    std::string f0;       ///< what it reflects looked at along the normal
    std::string f90;      ///< and along the surface
    std::string lobe;     ///< of its facets; # stands for the light's direction
    std::string diffuse;  ///< what it scatters back
    std::string through;  ///< what it scatters on
    std::string entering; ///< the share that isn't reflected
    std::string clear;    ///< the share of what enters that goes straight through
    std::string path;     ///< how far light goes in it; empty: it is thin
    std::string losses;   ///< what is left of light behind that; empty: all of it
};

bool ShaderWriter::isLayered() const {
    constexpr std::array<std::string_view, 8> kInputs = {
        "ior",        "specular",    "specularColor", "sheenColor",
        "anisotropy", "iridescence", "transmission",  "diffuseTransmission"};
    return !std::all_of(kInputs.begin(), kInputs.end(),
                        [this](std::string_view name) { return isNeutral(name); });
}

std::string ShaderWriter::layered(const std::string& base, const std::string& metallic) {
    useLights();
    Layers layers;
    layers.normal = declare("vec3", fNow.name + "Normal", inNormal("normal"));
    layers.mirror = layers.normal;
    layers.roughness = declare("float", fNow.name + "Roughness", in("roughness"));
    view();
    addReflection(layers, base, metallic);
    addFilm(layers);
    addLobe(layers);
    addThickness(layers);
    addBody(layers, base, metallic);
    layers.entering = declare("float", fNow.name + "Entering", entering(layers));

    std::string occlusion;
    std::string color = layeredLight(layers, occlusion);
    const std::string tint = filled("$ * (1.0 - $)", base, metallic);
    if (!isNeutral("transmission"))
        color = withBehind(layers, color, tint);
    if (!isNeutral("sheenColor"))
        color = withSheen(layers, declare("vec3", fNow.name + "Bare", color), occlusion);
    color += emission();
    if (!isNeutral("clearcoat"))
        color = withCoat(declare("vec3", fNow.name + "Body", color), occlusion);
    return filled("vec4($, $)", color, surfaceAlpha());
}

/// What is reflected, metals and the rest mixed.
void ShaderWriter::addReflection(Layers& layers, const std::string& base, const std::string& metallic) {
    std::string plain = "vec3(0.04)";
    if (!isNeutral("ior")) {
        use("f0OfIor");
        plain = filled("vec3(f0OfIor($))", in("ior"));
    }
    if (!isNeutral("specularColor"))
        plain = filled("min($ * $, 1.0)", plain, in("specularColor"));
    layers.f90 = "vec3(1.0)";
    if (!isNeutral("specular")) {
        const std::string strength = declare("float", fNow.name + "Specular", in("specular"));
        plain = filled("$ * $", plain, strength);
        layers.f90 = filled("vec3(mix($, 1.0, $))", strength, metallic);
    }
    layers.f0 = declare("vec3", fNow.name + "F0", filled("mix($, $, $)", plain, base, metallic));
}

/// A film whose thickness is that of waves of light. It takes the angle into account itself.
void ShaderWriter::addFilm(Layers& layers) {
    if (isNeutral("iridescence"))
        return;
    use("thinFilm");
    const std::string film = declare("vec3", fNow.name + "Film",
                                     filled("thinFilm(abs(dot($, view)), $, $, $)", layers.normal,
                                            in("iridescenceIor"), in("iridescenceThickness"), layers.f0));
    const std::string share = declare("float", fNow.name + "FilmShare", in("iridescence"));
    const auto covered = [&](const std::string& below) { return filled("mix($, $, $)", below, film, share); };
    layers.f90 = declare("vec3", fNow.name + "FilmF90", covered(layers.f90));
    layers.f0 = declare("vec3", fNow.name + "FilmF0", covered(layers.f0));
}

void ShaderWriter::addLobe(Layers& layers) {
    if (isNeutral("anisotropy")) {
        use("coatLight");
        layers.lobe = filled("coatLight($, view, #, $)", layers.normal, layers.roughness);
        return;
    }
    use("surfaceTangent");
    use("anisotropicLobe");
    std::string tangent;
    if (isNeutral("anisotropyTangent")) {
        use("mappedNormal");
        tangent = filled("mappedNormal($, $, $, vec3(1.0, 0.5, 0.5), 1.0, $)", normal(), position(), uvSet(0),
                         outward());
    } else {
        tangent = in("anisotropyTangent");
    }
    const std::string along =
        declare("vec3", fNow.name + "Along",
                filled("surfaceTangent($, $, $)", layers.normal, tangent, in("anisotropyRotation")));
    const std::string strength = declare("float", fNow.name + "Anisotropy", in("anisotropy"));
    layers.lobe =
        filled("anisotropicLobe($, view, #, $, $, $)", layers.normal, along, layers.roughness, strength);
    if (!hasSky())
        return;
    use("bentNormal");
    layers.mirror =
        declare("vec3", fNow.name + "Mirror",
                filled("bentNormal($, view, $, $, $)", layers.normal, along, layers.roughness, strength));
}

/// The thickness is given in the space of the mesh.
void ShaderWriter::addThickness(Layers& layers) {
    const bool goesIn = !isNeutral("transmission") || !isNeutral("diffuseTransmission");
    if (!goesIn || isNeutral("thickness"))
        return;
    const std::string scale = transformed("gl_ModelViewMatrix", "vec4(1.0, 0.0, 0.0, 0.0)");
    layers.path = declare("float", fNow.name + "Path", filled("$ * length(($).xyz)", in("thickness"), scale));
    if (isNeutral("attenuationColor"))
        return;
    layers.losses = declare("vec3", fNow.name + "Losses",
                            filled("pow(max($, vec3(1e-6)), vec3($ / $))", in("attenuationColor"),
                                   layers.path, in("attenuationDistance")));
}

void ShaderWriter::addBody(Layers& layers, const std::string& base, const std::string& metallic) {
    std::string diffuse = filled("$ * (1.0 - $)", base, metallic);
    layers.through = "vec3(0.0)";
    if (!isNeutral("diffuseTransmission")) {
        const std::string share = declare("float", fNow.name + "Scattered", in("diffuseTransmission"));
        layers.through = filled("$ * ($ * (1.0 - $))", in("diffuseTransmissionColor"), share, metallic);
        if (!layers.losses.empty())
            layers.through += " * " + layers.losses;
        diffuse += filled(" * (1.0 - $)", share);
    }
    if (!isNeutral("transmission")) {
        layers.clear = declare("float", fNow.name + "Clear", in("transmission"));
        const std::string rest = filled(" * (1.0 - $)", layers.clear);
        layers.through += isNeutral("diffuseTransmission") ? "" : rest;
        diffuse += rest;
    }
    layers.diffuse = declare("vec3", fNow.name + "Diffuse", diffuse);
    if (!isNeutral("diffuseTransmission"))
        layers.through = declare("vec3", fNow.name + "Through", layers.through);
}

/// The share of light from all round that gets in.
std::string ShaderWriter::entering(const Layers& layers) {
    if (hasSky()) {
        use("enteringFromSky");
        return filled("enteringFromSky($, view, $, $, $)", layers.normal, layers.f0, layers.f90,
                      layers.roughness);
    }
    use("entering");
    return filled("entering($, view, $, $)", layers.normal, layers.f0, layers.f90);
}

std::string ShaderWriter::layeredLight(const Layers& layers, std::string& occlusion) {
    use("layeredLight");
    std::string color = declare(
        "vec3", fNow.name + "Light",
        joined(overLights(filled("layeredLight($, view, #, $, $, $, $, $)", layers.normal, layers.diffuse,
                                 layers.through, layers.f0, layers.f90, layers.lobe))));
    std::vector<std::string> around;
    if (hasSky()) {
        use("layeredSkyLight");
        around.push_back(filled("layeredSkyLight($, $, view, $, $, $, $, $, $)", layers.normal, layers.mirror,
                                layers.diffuse, layers.through, layers.f0, layers.f90, layers.roughness,
                                layers.entering));
    }
    addAmbientLights(around,
                     filled(" * mix($ + $, vec3(1.0), $)", layers.diffuse, layers.through, layers.f0));
    return color + occludedSum(around, occlusion);
}

/// What stands behind, seen through the surface.
std::string ShaderWriter::withBehind(const Layers& layers, const std::string& color,
                                     const std::string& tint) {
    use("behindLight");
    const std::string behind = fNow.name + "Behind";
    if (isNeutral("dispersion") || layers.path.empty()) {
        declare("vec4", behind, behindThrough(layers, in("ior")));
    } else {
        use("spreadIor");
        const std::string iors =
            declare("vec3", fNow.name + "Iors", filled("spreadIor($, $)", in("ior"), in("dispersion")));
        declare("vec4", behind, behindThrough(layers, iors + ".g"));
        for (const char* channel : {".r", ".b"})
            statement(filled("$$ = $$", behind, channel, behindThrough(layers, iors + channel), channel));
    }
    const std::string seen =
        declare("float", fNow.name + "Seen", filled("$ * $", layers.clear, layers.entering));
    if (fNow.node == fRoot)
        fAlpha = filled("1.0 - $ * (1.0 - $.a)", seen, behind);
    const std::string left = layers.losses.empty() ? "" : " * " + layers.losses;
    return filled("$ + $ * ($$) * $.rgb", color, seen, tint, left, behind);
}

std::string ShaderWriter::behindThrough(const Layers& layers, const std::string& ior) {
    std::string exit = position();
    if (!layers.path.empty())
        exit += filled(" + refract(-view, $, 1.0 / max($, 1.0)) * $", layers.normal, ior, layers.path);
    uniform("sampler2D", "behind");
    const std::string place = transformed(uniform("mat4", "behindMatrix"), filled("vec4($, 1.0)", exit));
    return filled("behindLight($, $, $)", place, layers.roughness, ior);
}

/// Fibres that stand on all that is below, and keep from it what they scatter.
std::string ShaderWriter::withSheen(const Layers& layers, const std::string& color,
                                    const std::string& occlusion) {
    use("sheenLight");
    use("sheenResponse");
    uniform("sampler2D", "skyResponse");
    const std::string sheen = declare("vec3", fNow.name + "SheenColor", in("sheenColor"));
    const std::string rough = declare("float", fNow.name + "SheenRoughness", in("sheenRoughness"));
    const std::string response = declare("float", fNow.name + "SheenResponse",
                                         filled("sheenResponse($, view, $)", layers.normal, rough));
    std::vector<std::string> light = overLights(filled("sheenLight($, view, #, $)", layers.normal, rough));
    if (hasSky()) {
        use("skyDiffuseLight");
        light.push_back(filled("$ * skyDiffuseLight($)$", response, layers.normal, occlusion));
    }
    addAmbientLights(light, " * " + response + occlusion);
    use("largest");
    return filled("$ * (1.0 - largest($) * $) +\n        $ * ($)", color, sheen, response, sheen,
                  joined(light));
}

} // namespace koShadingDag
