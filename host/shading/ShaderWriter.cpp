#include "ShaderWriter.h"

#include "Snippets.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace koShadingDag {

namespace {

constexpr std::array<std::string_view, 4> kTypes = {"float", "vec2", "vec3", "vec3"};

/// The shortest number that reads as this float, with a point.
std::string literal(float value) {
    char text[32];
    const std::string number(text, std::to_chars(text, text + sizeof text, value).ptr);
    return number.find_first_of(".en") == std::string::npos ? number + ".0" : number;
}

std::string literal(ValueType type, const std::array<float, 3>& value) {
    if (type == kFloat)
        return literal(value[0]);
    std::string text(kTypes[type]);
    text += '(' + literal(value[0]);
    const uint32_t components = componentsOf(type);
    const bool isGrey = components == 3 && value[0] == value[1] && value[1] == value[2];
    for (uint32_t i = 1; i < components && !isGrey; ++i)
        text += ", " + literal(value[i]);
    return text + ')';
}

/// A name, a member of one, or a number: what needs no name of its own.
bool isShort(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](unsigned char c) { return std::isalnum(c) || c == '_' || c == '.'; });
}

/// Inputs that say something of what others bring in.
struct Dependent {
    std::string_view input;
    std::array<std::string_view, 2> of;
};
constexpr Dependent kDependents[] = {{"clearcoatRoughness", {"clearcoat"}},
                                     {"clearcoatNormal", {"clearcoat"}},
                                     {"sheenRoughness", {"sheenColor"}},
                                     {"anisotropyRotation", {"anisotropy"}},
                                     {"anisotropyTangent", {"anisotropy"}},
                                     {"iridescenceIor", {"iridescence"}},
                                     {"iridescenceThickness", {"iridescence"}},
                                     {"diffuseTransmissionColor", {"diffuseTransmission"}},
                                     {"thickness", {"transmission", "diffuseTransmission"}},
                                     {"attenuationColor", {"transmission", "diffuseTransmission"}},
                                     {"attenuationDistance", {"transmission", "diffuseTransmission"}},
                                     {"dispersion", {"transmission"}}};

bool isFed(const ShadingNodeSpec& node, std::string_view name) {
    const auto& input = node.inputs()[static_cast<size_t>(indexOf(nodeInfo(node.kind()).inputs, name))];
    return input.fSource || input.fIsSet;
}

bool endsWithNumberFrom(std::string_view name, int32_t limit) {
    const char last = name.back();
    return last >= '0' && last <= '9' && last - '0' >= limit;
}

} // namespace

ShaderWriter::ShaderWriter(const Network& network, const std::vector<LightSpec>& lights,
                           ShadingLanguage language)
    : fNetwork(network), fLights(lights), fLanguage(language), fRoot(network.members().back().node) {}

// ---- Which nodes and inputs matter

bool ShaderWriter::needsOpacity(const ShadingNodeSpec& node) const {
    constexpr uint32_t kOpacityOutput = 1;
    const auto settings = nodeInfo(node.kind()).settings;
    const int alphaMode = indexOf(settings, "alphaMode");
    return fUsedOutputs.contains({&node, kOpacityOutput}) ||
           (&node == fRoot && node.settings()[static_cast<size_t>(alphaMode)] != kOpaque);
}

bool ShaderWriter::needsInput(const ShadingNodeSpec& node, std::string_view name) const {
    const NodeInfo& info = nodeInfo(node.kind());
    if (node.kind() == kRamp && name != "value")
        return !endsWithNumberFrom(name, node.settings()[0]);
    if (info.isSurface && name == "opacity")
        return needsOpacity(node);
    if (name == "alphaCutoff")
        return &node == fRoot && node.settings()[0] == kMask;
    for (const auto& [dependent, whats] : kDependents) {
        if (name == dependent)
            return isFed(node, whats[0]) || (!whats[1].empty() && isFed(node, whats[1]));
    }
    if (name == "occlusion") // it keeps off what comes from all round
        return hasSky() || hasLight(LightSpec::kAmbient);
    if (node.kind() == kNormalMap && name == "uv")
        return node.settings()[0] < 0;
    if (node.kind() == kFileTexture)
        return node.texture() != nullptr;
    return true;
}

void ShaderWriter::markUsed() {
    fUsedOutputs.insert({fRoot, 0});
    const auto& members = fNetwork.members();
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        const ShadingNodeSpec& node = *member->node;
        const auto firstUse = fUsedOutputs.lower_bound({&node, 0});
        if (firstUse == fUsedOutputs.end() || firstUse->first != &node)
            continue;
        const auto infos = nodeInfo(node.kind()).inputs;
        for (size_t i = 0; i < infos.size(); ++i) {
            const ShadingNodeSpec::Input& input = node.inputs()[i];
            if (input.fSource && needsInput(node, infos[i].name))
                fUsedOutputs.insert({input.fSource.get(), input.fOutput});
        }
    }
}

ShaderParts ShaderWriter::writeMaterial() {
    markUsed();
    for (const Network::Member& member : fNetwork.members()) {
        const auto firstUse = fUsedOutputs.lower_bound({member.node, 0});
        if (firstUse == fUsedOutputs.end() || firstUse->first != member.node)
            continue;
        fNow = {member.node, &nodeInfo(member.node->kind()), member.name};
        const bool hasMembers = !fNow.info->outputs[0].member.empty();
        const std::string_view type = hasMembers ? "vec4" : kTypes[fNow.info->resultType];
        fResults[member.node] = declare(type, member.name, writeNode());
    }
    writeColor(fResults[fRoot]);
    fParts.body = fGeometry + fLightCode + fBody;
    return std::move(fParts);
}

void ShaderWriter::writeColor(const std::string& result) {
    const OutputInfo& output = fNow.info->outputs[0];
    const std::string color = filled("$$", result, output.member);
    const int32_t alphaMode = fNow.info->isSurface ? setting("alphaMode") : kOpaque;
    if (alphaMode == kMask)
        statement(filled("if ($.a < $)\n        discard", result, in("alphaCutoff")));
    if (alphaMode == kBlend)
        statement(filled("gl_FragColor = vec4($ * $.a, $.a)", color, result, result));
    else if (output.type == kFloat)
        statement(filled("gl_FragColor = vec4(vec3($), 1.0)", color));
    else if (output.type == kVector2)
        statement(filled("gl_FragColor = vec4($, 0.0, 1.0)", color));
    else
        statement(filled("gl_FragColor = vec4($, $)", color, fAlpha));
}

// ---- What nodes are made of

const ShadingNodeSpec::Input& ShaderWriter::input(std::string_view name) const {
    return fNow.node->inputs()[static_cast<size_t>(indexOf(fNow.info->inputs, name))];
}

bool ShaderWriter::isNeutral(std::string_view name) const {
    return !isFed(*fNow.node, name);
}

std::string ShaderWriter::in(std::string_view name) {
    const InputInfo& info = fNow.info->inputs[static_cast<size_t>(indexOf(fNow.info->inputs, name))];
    const ShadingNodeSpec::Input& fed = input(name);
    if (fed.fSource) {
        const OutputInfo& output = nodeInfo(fed.fSource->kind()).outputs[fed.fOutput];
        const bool isSplat = output.type == kFloat && info.type == kColor;
        return filled(isSplat ? "vec3($$)" : "$$", fResults[fed.fSource.get()], output.member);
    }
    if (fed.fIsSet)
        return uniform(kTypes[info.type], filled("$_$", fNow.name, name));
    if (name == "uv")
        return uvSet(0);
    return literal(info.type, info.fallback);
}

std::string ShaderWriter::inNormal(std::string_view name) {
    return isNeutral(name) ? normal() : in(name);
}

int32_t ShaderWriter::setting(std::string_view name) const {
    return fNow.node->settings()[static_cast<size_t>(indexOf(fNow.info->settings, name))];
}

// ---- What a shader is made of

void ShaderWriter::use(std::string_view snippetName) {
    if (hasLight(LightSpec::kSkyMap) && snippetName == "skyDiffuseLight")
        snippetName = "skyMapDiffuseLight";
    else if (hasLight(LightSpec::kSkyMap) && snippetName == "skyReflectedLight")
        snippetName = "skyMapReflectedLight";
    auto& snippets = fParts.snippets;
    if (std::find(snippets.begin(), snippets.end(), snippetName) != snippets.end())
        return;
    std::string_view needs = snippet(snippetName).needs;
    while (!needs.empty()) {
        const size_t end = std::min(needs.find(' '), needs.size());
        use(needs.substr(0, end));
        needs.remove_prefix(std::min(end + 1, needs.size()));
    }
    snippets.push_back(snippet(snippetName).name);
}

std::string ShaderWriter::uniform(std::string_view type, const std::string& name) {
    if (fDeclared.insert(name).second)
        fParts.uniforms.push_back(filled("uniform $ $;\n", type, name));
    return name;
}

std::string ShaderWriter::uvSet(int set) {
    fParts.uvSets.insert(set);
    return "uv" + std::to_string(set);
}

std::string ShaderWriter::tangents(int set) {
    fParts.tangentSets.insert(set);
    return filled("eyeTangent$, eyeBitangent$", std::to_string(set), std::to_string(set));
}

std::string ShaderWriter::position() {
    fParts.takesPosition = true;
    return "eyePosition";
}

std::string ShaderWriter::normal() {
    if (fDeclared.insert("normal").second) {
        fParts.takesNormal = true;
        fParts.takesSide = true;
        fGeometry += "    vec3 normal = normalize(gl_FrontFacing ? eyeNormal : -eyeNormal);\n";
    }
    return "normal";
}

/// 1 in front, -1 behind.
std::string ShaderWriter::outward() {
    fParts.takesSide = true;
    return "gl_FrontFacing ? 1.0 : -1.0";
}

std::string ShaderWriter::view() {
    if (fDeclared.insert("view").second) {
        position();
        fGeometry += "    bool isOrthographic = gl_ProjectionMatrix[2][3] == 0.0;\n"
                     "    vec3 view = isOrthographic ? vec3(0.0, 0.0, 1.0) : normalize(-eyePosition);\n";
    }
    return "view";
}

std::string ShaderWriter::transformed(const std::string& matrix, const std::string& vector) const {
    return filled(fLanguage == ShadingLanguage::Cg ? "mul($, $)" : "$ * $", matrix, vector);
}

std::string ShaderWriter::declare(std::string_view type, const std::string& name, const std::string& value) {
    if (isShort(value))
        return value;
    statement(filled("$ $ = $", type, name, value));
    return name;
}

void ShaderWriter::statement(const std::string& text) {
    fBody += filled("    $;\n", text);
}

// ---- Lights

void ShaderWriter::useLights() {
    if (fHasLights)
        return;
    fHasLights = true;
    for (size_t i = 0; i < fLights.size(); ++i)
        writeLight(fLights[i], filled("light$", std::to_string(i)),
                   filled("gl_LightSource[$]", std::to_string(i)));
}

void ShaderWriter::writeLight(const LightSpec& spec, const std::string& light, const std::string& gl) {
    if (spec.fType == LightSpec::kSky || spec.fType == LightSpec::kSkyMap) {
        for (const char* table : {"skyDiffuse", "skyReflection", "skyResponse"})
            uniform("sampler2D", table);
        uniform("vec3", "skyUp");
        if (spec.fType == LightSpec::kSkyMap) {
            uniform("vec3", "skyRight");
            uniform("vec3", "skyBack");
        }
        return;
    }
    if (spec.fType == LightSpec::kAmbient) {
        fLightCode += filled("    vec3 $Color = $.ambient.rgb;\n", light, gl);
        return;
    }
    position();
    if (spec.fType == LightSpec::kDirectional) {
        fLightCode += filled("    vec3 $Direction = normalize($.position.xyz);\n", light, gl);
        fLightCode += filled("    vec3 $Color = $.diffuse.rgb", light, gl);
    } else {
        writePlacedLight(spec, light, gl);
    }
    if (spec.fCastsShadow) {
        use("unshadowed");
        fLightCode += filled(" *\n        unshadowed($, $)", uniform("sampler2DShadow", light + "ShadowMap"),
                             transformed(uniform("mat4", light + "ShadowMatrix"), "vec4(eyePosition, 1.0)"));
    }
    fLightCode += ";\n";
}

/// A light that stands somewhere.
void ShaderWriter::writePlacedLight(const LightSpec& spec, const std::string& light, const std::string& gl) {
    use("attenuated");
    fLightCode += filled("    vec3 $Path = $.position.xyz - eyePosition;\n", light, gl);
    fLightCode += filled("    float $Distance = length($Path);\n", light, light);
    fLightCode += filled("    vec3 $Direction = $Path / $Distance;\n", light, light, light);
    fLightCode += filled("    vec3 $Losses = vec3($.constantAttenuation, $.linearAttenuation, "
                         "$.quadraticAttenuation);\n",
                         light, gl, gl, gl);
    fLightCode +=
        filled("    vec3 $Color = attenuated($.diffuse.rgb, $Losses, $Distance)", light, gl, light, light);
    if (spec.fHasRange) {
        use("rangeWindow");
        fLightCode +=
            filled(" *\n        rangeWindow($Distance * $)", light, uniform("float", light + "InverseRange"));
    }
    if (spec.fType != LightSpec::kSpot)
        return;
    const char* const cone = spec.fHasInnerCone ? "fadedCone" : "spotCone";
    use(cone);
    fLightCode +=
        filled(" *\n        $(dot(-$Direction, normalize($.spotDirection)), $.spotCosCutoff, $)", cone, light,
               gl, gl, spec.fHasInnerCone ? uniform("float", light + "InnerCosine") : gl + ".spotExponent");
}

std::vector<std::string> ShaderWriter::overLights(std::string_view lobe) const {
    std::vector<std::string> terms;
    for (size_t i = 0; i < fLights.size(); ++i) {
        if (fLights[i].fType >= LightSpec::kAmbient)
            continue;
        const std::string light = filled("light$", std::to_string(i));
        std::string& term = terms.emplace_back(light + "Color * ");
        for (const char c : lobe)
            c == '#' ? (term += light) += "Direction" : term += c;
    }
    return terms;
}

void ShaderWriter::addAmbientLights(std::vector<std::string>& terms, std::string_view response) const {
    for (size_t i = 0; i < fLights.size(); ++i) {
        if (fLights[i].fType == LightSpec::kAmbient)
            terms.push_back(filled("light$Color$", std::to_string(i), response));
    }
}

bool ShaderWriter::hasLight(LightSpec::Type type) const {
    return std::any_of(fLights.begin(), fLights.end(),
                       [type](const LightSpec& light) { return light.fType == type; });
}

// ---- Nodes

std::string ShaderWriter::writeNode() {
    switch (fNow.node->kind()) {
    case kTexCoord:
        return texCoord();
    case kVertexColor:
        fParts.takesColor = true;
        return "gl_Color";
    case kFileTexture:
        return fileTexture();
    case kRamp:
        return ramp();
    case kNoise:
        use("noise");
        return filled("noise($ * $, $)", in("uv"), in("scale"), std::to_string(setting("octaves")));
    case kChecker:
        use("isFirstOfChecker");
        return filled("isFirstOfChecker($ * $) ? $ : $", in("uv"), in("scale"), in("colorA"), in("colorB"));
    case kBumpMap:
        use("bumped");
        return filled("bumped($, $, $ * $, $)", normal(), position(), in("height"), in("strength"),
                      outward());
    case kNormalMap:
        return normalMap();
    case kMultiply:
        if (isNeutral("a") || isNeutral("b"))
            return in(isNeutral("a") ? "b" : "a");
        return filled("$ * $", in("a"), in("b"));
    case kMix:
        return filled("mix($, $, $)", in("a"), in("b"), in("weight"));
    case kBlinnPhong:
        return blinnPhong();
    case kMetallicRoughness:
        return metallicRoughness();
    case kSpecularGlossiness:
        return specularGlossiness();
    case kUnlit:
        return filled("vec4($, $)", in("color"), surfaceAlpha());
    case kLambert:
    case kNodeKindCount:
        break;
    }
    return lambert();
}

std::string ShaderWriter::texCoord() {
    std::string uv = uvSet(setting("set"));
    if (!isNeutral("rotation")) {
        use("placed");
        return filled("placed($, $, $, $)", uv, in("offset"), in("scale"), in("rotation"));
    }
    if (!isNeutral("scale"))
        uv = filled("$ * $", uv, in("scale"));
    return isNeutral("offset") ? uv : filled("$ + $", uv, in("offset"));
}

std::string ShaderWriter::fileTexture() {
    if (!fNow.node->texture())
        return "vec4(1.0)";
    return filled("texture2D($, $)", uniform("sampler2D", fNow.name + "_image"), in("uv"));
}

std::string ShaderWriter::normalMap() {
    const bool hasTangents = setting("tangentSet") >= 0;
    use(hasTangents ? "turnedNormal" : "mappedNormal");
    const std::string frame =
        hasTangents ? tangents(setting("tangentSet")) : filled("$, $", position(), in("uv"));
    return filled("$($, $, $, $, $)", hasTangents ? "turnedNormal" : "mappedNormal", normal(), frame,
                  in("color"), in("strength"), outward());
}

std::string ShaderWriter::ramp() {
    const std::string value = declare("float", fNow.name + "Value", in("value"));
    const int32_t interpolation = setting("interpolation");
    statement(filled("vec3 $ = $", fNow.name, in("color0")));
    for (int i = 1; i < setting("stops"); ++i) {
        const std::string stop = std::to_string(i);
        const std::string position = in(filled("position$", stop));
        std::string share = filled("step($, $)", position, value);
        if (interpolation != kStep) {
            use("between");
            share =
                filled("between($, $, $)", value, in(filled("position$", std::to_string(i - 1))), position);
        }
        if (interpolation == kSmooth) {
            use("smoothed");
            share = filled("smoothed($)", share);
        }
        statement(filled("$ = mix($, $, $)", fNow.name, fNow.name, in(filled("color$", stop)), share));
    }
    return fNow.name;
}

std::string ShaderWriter::surfaceAlpha() {
    return needsOpacity(*fNow.node) ? in("opacity") : "1.0";
}

std::string ShaderWriter::emission() {
    return isNeutral("emission") ? "" : " + " + in("emission");
}

std::string ShaderWriter::lambert() {
    useLights();
    const std::string n = inNormal("normal");
    std::vector<std::string> light = overLights(filled("max(dot($, #), 0.0)", n));
    addAmbientLights(light, "");
    if (hasSky()) {
        use("skyDiffuseLight");
        light.push_back(filled("skyDiffuseLight($)", n));
    }
    const std::string sum = declare("vec3", fNow.name + "Light", joined(light));
    return filled("vec4($ * $$, $)", in("color"), sum, emission(), surfaceAlpha());
}

std::string ShaderWriter::blinnPhong() {
    use("blinnPhongLobe");
    const std::string n = inNormal("normal");
    const std::string diffuse = lambert();
    const std::string shininess = declare("float", fNow.name + "Shininess", in("shininess"));
    std::vector<std::string> gloss = overLights(filled("blinnPhongLobe($, $, #, $)", n, view(), shininess));
    if (hasSky()) {
        use("skyReflectedLight");
        gloss.push_back(filled("skyReflectedLight($, view, pow(2.0 / ($ + 2.0), 0.25))", n, shininess));
    }
    const std::string sum = declare("vec3", fNow.name + "Gloss", joined(gloss));
    return filled("$ + vec4($ * $, 0.0)", diffuse, in("specularColor"), sum);
}

std::string ShaderWriter::metallicRoughness() {
    const std::string base = declare("vec3", fNow.name + "Base", in("baseColor"));
    const std::string metallic = declare("float", fNow.name + "Metallic", in("metallic"));
    if (isLayered())
        return layered(base, metallic);
    const std::string diffuse =
        declare("vec3", fNow.name + "Diffuse", filled("$ * (1.0 - $)", base, metallic));
    const std::string f0 = declare("vec3", fNow.name + "F0", filled("mix(vec3(0.04), $, $)", base, metallic));
    return microfacets(diffuse, f0, in("roughness"));
}

std::string ShaderWriter::specularGlossiness() {
    const std::string f0 = declare("vec3", fNow.name + "F0", in("specular"));
    const std::string diffuse =
        declare("vec3", fNow.name + "Diffuse",
                filled("$ * (1.0 - max($.r, max($.g, $.b)))", in("diffuse"), f0, f0, f0));
    return microfacets(diffuse, f0, filled("1.0 - $", in("glossiness")));
}

std::string ShaderWriter::microfacets(const std::string& diffuse, const std::string& f0,
                                      const std::string& roughness) {
    useLights();
    use("microfacetLight");
    const std::string n = inNormal("normal");
    const std::string rough = declare("float", fNow.name + "Roughness", roughness);
    std::string color = declare(
        "vec3", fNow.name + "Light",
        joined(overLights(filled("microfacetLight($, $, #, $, $, $)", n, view(), diffuse, f0, rough))));

    std::vector<std::string> around;
    if (hasSky()) {
        use("skyLight");
        around.push_back(filled("skyLight($, view, $, $, $)", n, diffuse, f0, rough));
    }
    addAmbientLights(around, filled(" * mix($, vec3(1.0), $)", diffuse, f0));
    std::string occlusion;
    color += occludedSum(around, occlusion);
    color += emission();
    if (fNow.node->kind() == kMetallicRoughness && !isNeutral("clearcoat"))
        color = withCoat(declare("vec3", fNow.name + "Body", color), occlusion);
    return filled("vec4($, $)", color, surfaceAlpha());
}

/// What near things leave of what comes from all round, as a factor.
std::string ShaderWriter::nearOcclusion() {
    const bool isOccluded =
        std::any_of(fLights.begin(), fLights.end(), [](const LightSpec& light) { return light.fIsOccluded; });
    if (!isOccluded)
        return "";
    if (fDeclared.insert("nearOcclusion").second) {
        uniform("sampler2D", "occlusionMap");
        const std::string place =
            transformed(uniform("mat4", "occlusionMatrix"), filled("vec4($, 1.0)", position()));
        fGeometry += filled(
            "    vec4 occlusionPlace = $;\n"
            "    float nearOcclusion = texture2D(occlusionMap, occlusionPlace.xy / occlusionPlace.w).r;\n",
            place);
    }
    return " * nearOcclusion";
}

/// What comes from all round, to be added, with what keeps it off; that as a factor for others too.
std::string ShaderWriter::occludedSum(const std::vector<std::string>& around, std::string& occlusion) {
    if (around.empty())
        return "";
    if (!isNeutral("occlusion"))
        occlusion = " * " + declare("float", fNow.name + "Occlusion", in("occlusion"));
    occlusion += nearOcclusion();
    const bool needsBrackets = around.size() > 1 && !occlusion.empty();
    return " + " + declare("vec3", fNow.name + "Ambient",
                           filled(needsBrackets ? "($)$" : "$$", joined(around), occlusion));
}

/// A colourless layer of refractive index 1.5 over all that is below.
std::string ShaderWriter::withCoat(const std::string& color, const std::string& occlusion) {
    use("coatLight");
    use("coatFresnel");
    const std::string n = inNormal("clearcoatNormal");
    const std::string rough = declare("float", fNow.name + "CoatRoughness", in("clearcoatRoughness"));
    std::vector<std::string> light = overLights(filled("coatLight($, view, #, $)", n, rough));
    if (hasSky()) {
        use("coatSkyLight");
        light.push_back(filled("coatSkyLight($, view, $)$", n, rough, occlusion));
    }
    const std::string coat = declare("vec3", fNow.name + "Coat", joined(light));
    return filled("mix($, $, $ * coatFresnel($, view))", color, coat, in("clearcoat"), n);
}

} // namespace koShadingDag
