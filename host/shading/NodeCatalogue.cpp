#include "NodeCatalogue.h"

namespace koShadingDag {

namespace {

constexpr int32_t kMostUvSets = 8;
constexpr int32_t kMostOctaves = 8;
constexpr int32_t kMostStops = 8;
constexpr std::array<float, 3> kWhite{1.0F, 1.0F, 1.0F};

// ---- where it comes from

constexpr InputInfo kTexCoordInputs[] = {
    {"offset", kVector2}, {"scale", kVector2, {1.0F, 1.0F}}, {"rotation", kFloat}};
constexpr OutputInfo kTexCoordOutputs[] = {{"uv", kVector2, ""}, {"u", kFloat, ".x"}, {"v", kFloat, ".y"}};
constexpr SettingInfo kTexCoordSettings[] = {{"set", 0, 0, kMostUvSets - 1}};

constexpr OutputInfo kColorAndAlpha[] = {{"color", kColor, ".rgb"}, {"alpha", kFloat, ".a"}};

constexpr InputInfo kUvInput[] = {{"uv", kVector2}};
constexpr OutputInfo kTextureOutputs[] = {{"color", kColor, ".rgb"},
                                          {"alpha", kFloat, ".a"},
                                          {"red", kFloat, ".r"},
                                          {"green", kFloat, ".g"},
                                          {"blue", kFloat, ".b"}};

constexpr InputInfo kRampInputs[] = {{"value", kFloat},
                                     {"color0", kColor},
                                     {"color1", kColor, kWhite},
                                     {"color2", kColor},
                                     {"color3", kColor, kWhite},
                                     {"color4", kColor},
                                     {"color5", kColor, kWhite},
                                     {"color6", kColor},
                                     {"color7", kColor, kWhite},
                                     {"position0", kFloat, {0.0F}},
                                     {"position1", kFloat, {1.0F}},
                                     {"position2", kFloat, {2.0F}},
                                     {"position3", kFloat, {3.0F}},
                                     {"position4", kFloat, {4.0F}},
                                     {"position5", kFloat, {5.0F}},
                                     {"position6", kFloat, {6.0F}},
                                     {"position7", kFloat, {7.0F}}};
constexpr SettingInfo kRampSettings[] = {{"stops", 2, 2, kMostStops},
                                         {"interpolation", kLinear, kLinear, kStep}};
constexpr OutputInfo kColorOutput[] = {{"color", kColor, ""}};

constexpr InputInfo kNoiseInputs[] = {{"uv", kVector2}, {"scale", kFloat, {8.0F}}};
constexpr SettingInfo kNoiseSettings[] = {{"octaves", 1, 1, kMostOctaves}};
constexpr OutputInfo kValueOutput[] = {{"value", kFloat, ""}};

constexpr InputInfo kCheckerInputs[] = {
    {"uv", kVector2}, {"scale", kFloat, {8.0F}}, {"colorA", kColor, kWhite}, {"colorB", kColor}};

// ---- what changes it

constexpr InputInfo kBumpInputs[] = {{"height", kFloat}, {"strength", kFloat, {1.0F}}};
constexpr OutputInfo kNormalOutput[] = {{"normal", kNormal, ""}};
constexpr InputInfo kNormalMapInputs[] = {
    {"color", kColor, {0.5F, 0.5F, 1.0F}}, {"uv", kVector2}, {"strength", kFloat, {1.0F}}};
constexpr SettingInfo kNormalMapSettings[] = {{"tangentSet", -1, -1, kMostUvSets - 1}};

constexpr InputInfo kMultiplyInputs[] = {{"a", kColor, kWhite}, {"b", kColor, kWhite}};
constexpr InputInfo kMixInputs[] = {{"a", kColor}, {"b", kColor, kWhite}, {"weight", kFloat, {0.5F}}};
constexpr OutputInfo kMathOutputs[] = {
    {"color", kColor, ""}, {"red", kFloat, ".r"}, {"green", kFloat, ".g"}, {"blue", kFloat, ".b"}};

// ---- surfaces

constexpr OutputInfo kSurfaceOutputs[] = {{"color", kColor, ".rgb"}, {"opacity", kFloat, ".a"}};
constexpr SettingInfo kSurfaceSettings[] = {{"alphaMode", kOpaque, kOpaque, kBlend}};

constexpr InputInfo kLambertInputs[] = {{"color", kColor, {0.8F, 0.8F, 0.8F}},
                                        {"normal", kNormal},
                                        {"emission", kColor},
                                        {"opacity", kFloat, {1.0F}},
                                        {"alphaCutoff", kFloat, {0.5F}}};

constexpr InputInfo kBlinnPhongInputs[] = {{"color", kColor, {0.8F, 0.8F, 0.8F}},
                                           {"normal", kNormal},
                                           {"emission", kColor},
                                           {"opacity", kFloat, {1.0F}},
                                           {"alphaCutoff", kFloat, {0.5F}},
                                           {"specularColor", kColor, {0.2F, 0.2F, 0.2F}},
                                           {"shininess", kFloat, {32.0F}}};

constexpr InputInfo kMetallicRoughnessInputs[] = {{"baseColor", kColor, kWhite},
                                                  {"normal", kNormal},
                                                  {"emission", kColor},
                                                  {"opacity", kFloat, {1.0F}},
                                                  {"alphaCutoff", kFloat, {0.5F}},
                                                  {"metallic", kFloat, {1.0F}},
                                                  {"roughness", kFloat, {1.0F}},
                                                  {"occlusion", kFloat, {1.0F}},
                                                  {"clearcoat", kFloat, {0.0F}},
                                                  {"clearcoatRoughness", kFloat, {0.0F}},
                                                  {"clearcoatNormal", kNormal},
                                                  {"ior", kFloat, {1.5F}},
                                                  {"specular", kFloat, {1.0F}},
                                                  {"specularColor", kColor, kWhite},
                                                  {"sheenColor", kColor},
                                                  {"sheenRoughness", kFloat},
                                                  {"anisotropy", kFloat},
                                                  {"anisotropyRotation", kFloat},
                                                  {"anisotropyTangent", kNormal},
                                                  {"iridescence", kFloat},
                                                  {"iridescenceIor", kFloat, {1.3F}},
                                                  {"iridescenceThickness", kFloat, {400.0F}},
                                                  {"transmission", kFloat},
                                                  {"diffuseTransmission", kFloat},
                                                  {"diffuseTransmissionColor", kColor, kWhite},
                                                  {"thickness", kFloat},
                                                  {"attenuationColor", kColor, kWhite},
                                                  {"attenuationDistance", kFloat, {1.0F}},
                                                  {"dispersion", kFloat}};

constexpr InputInfo kSpecularGlossinessInputs[] = {{"diffuse", kColor, kWhite},
                                                   {"normal", kNormal},
                                                   {"emission", kColor},
                                                   {"opacity", kFloat, {1.0F}},
                                                   {"alphaCutoff", kFloat, {0.5F}},
                                                   {"specular", kColor, kWhite},
                                                   {"glossiness", kFloat, {1.0F}},
                                                   {"occlusion", kFloat, {1.0F}}};

constexpr InputInfo kUnlitInputs[] = {
    {"color", kColor, kWhite}, {"opacity", kFloat, {1.0F}}, {"alphaCutoff", kFloat, {0.5F}}};

/// By NodeKind.
constexpr std::array<NodeInfo, kNodeKindCount> kNodes = {{
    {"texCoord", kVector2, kTexCoordInputs, kTexCoordOutputs, kTexCoordSettings},
    {"vertexColor", kColor, {}, kColorAndAlpha, {}},
    {"fileTexture", kColor, kUvInput, kTextureOutputs, {}},
    {"ramp", kColor, kRampInputs, kColorOutput, kRampSettings},
    {"noise", kFloat, kNoiseInputs, kValueOutput, kNoiseSettings},
    {"checker", kColor, kCheckerInputs, kColorOutput, {}},
    {"bumpMap", kNormal, kBumpInputs, kNormalOutput, {}},
    {"normalMap", kNormal, kNormalMapInputs, kNormalOutput, kNormalMapSettings},
    {"multiply", kColor, kMultiplyInputs, kMathOutputs, {}},
    {"mix", kColor, kMixInputs, kMathOutputs, {}},
    {"lambert", kColor, kLambertInputs, kSurfaceOutputs, kSurfaceSettings, true},
    {"blinnPhong", kColor, kBlinnPhongInputs, kSurfaceOutputs, kSurfaceSettings, true},
    {"metallicRoughness", kColor, kMetallicRoughnessInputs, kSurfaceOutputs, kSurfaceSettings, true},
    {"specularGlossiness", kColor, kSpecularGlossinessInputs, kSurfaceOutputs, kSurfaceSettings, true},
    {"unlit", kColor, kUnlitInputs, kSurfaceOutputs, kSurfaceSettings, true},
}};

} // namespace

const NodeInfo& nodeInfo(NodeKind kind) {
    return kNodes[kind];
}

} // namespace koShadingDag
