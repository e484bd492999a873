#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <orlohost/ShadingNodeSpec.h>

#include <string>

using namespace koShadingDag;
using Node = std::shared_ptr<ShadingNodeSpec>;
using testing::HasSubstr;
using testing::Not;

namespace {

Node node(NodeKind kind) {
    return std::make_shared<ShadingNodeSpec>(kind);
}

std::string connected(ShadingNodeSpec& to, const char* input, const Node& from, const char* output) {
    return to.connect(input, from, output).asChar();
}

std::string fragmentOf(const ShadingNodeSpec& material, const std::vector<LightSpec>& lights = {}) {
    koString::CString vertex;
    koString::CString fragment;
    compileMaterialToGlsl(material, &lights, vertex, fragment);
    return fragment.asChar();
}

std::string keyOf(const ShadingNodeSpec& material, const std::vector<LightSpec>& lights = {}) {
    return material.networkKey(&lights).asChar();
}

IHWTexture* const kTexture = reinterpret_cast<IHWTexture*>(8); // only handed through

TEST(ShadingNetwork, saysWhatCannotBeConnected) {
    const Node mix = node(kMix);
    const Node texture = node(kFileTexture);
    EXPECT_EQ(connected(*mix, "c", texture, "color"), "mix has no input 'c'; its inputs: a, b, weight");
    EXPECT_EQ(connected(*mix, "a", texture, "colour"),
              "fileTexture has no output 'colour'; its outputs: color, alpha, red, green, blue");
    EXPECT_EQ(connected(*mix, "weight", texture, "color"),
              "fileTexture.color can't feed mix.weight: it is a color, not a float");
    EXPECT_THAT(connected(*mix, "a", nullptr, "color"), HasSubstr("mix.a: there is no node"));
    EXPECT_EQ(connected(*mix, "a", texture, "alpha"), "") << "as grey";

    const Node ramp = node(kRamp);
    const Node noise = node(kNoise);
    EXPECT_EQ(connected(*ramp, "color0", mix, "color"), "");
    EXPECT_EQ(connected(*ramp, "value", noise, "value"), "");
    EXPECT_EQ(connected(*mix, "b", ramp, "color"),
              "ramp.color can't feed mix.b: the network would go in a circle");
    EXPECT_EQ(connected(*mix, "b", mix, "color"),
              "mix.color can't feed mix.b: the network would go in a circle");
    ramp->disconnect("color0");
    EXPECT_EQ(connected(*mix, "b", ramp, "color"), "");
}

TEST(ShadingNetwork, takesOnlyValuesThatFit) {
    ShadingNodeSpec material(kMetallicRoughness);
    EXPECT_TRUE(material.setValue("baseColor", koColor::Color(1, 0, 0)) &&
                material.setValue("emission", 0.5F) && material.setValue("roughness", 0.5F));
    EXPECT_FALSE(material.setValue("roughness", koColor::Color(1, 0, 0)) ||
                 material.setValue("normal", 0.5F) || material.setValue("baseColor", 1.0F, 2.0F) ||
                 material.setValue("nothing", 1.0F));
    EXPECT_FALSE(material.setSetting("nothing", 0));
    for (const auto& [kind, name, least, most] : {std::tuple(kMetallicRoughness, "alphaMode", 0, 2),
                                                  {kTexCoord, "set", 0, 7},
                                                  {kNoise, "octaves", 1, 8},
                                                  {kRamp, "stops", 2, 8},
                                                  {kRamp, "interpolation", 0, 2}}) {
        ShadingNodeSpec spec(kind);
        EXPECT_TRUE(spec.setSetting(name, least) && spec.setSetting(name, most)) << name;
        EXPECT_FALSE(spec.setSetting(name, least - 1) || spec.setSetting(name, most + 1)) << name;
    }
    EXPECT_EQ(ShadingNodeSpec(static_cast<NodeKind>(99)).kind(), kLambert);
}

TEST(ShadingNetwork, equalKeysMeanEqualSources) {
    // Whatever changes the sources changes the key.
    const std::vector<LightSpec> one(1);
    std::vector<std::pair<std::string, std::string>> seen;
    const auto expectNew = [&](const ShadingNodeSpec& material, const std::vector<LightSpec>& lights) {
        const std::pair made(keyOf(material, lights), fragmentOf(material, lights));
        for (const auto& [key, source] : seen) {
            EXPECT_NE(key, made.first);
            EXPECT_NE(source, made.second);
        }
        seen.push_back(made);
    };
    const Node texture = node(kFileTexture);
    const Node uv = node(kTexCoord);
    ShadingNodeSpec lambert;
    expectNew(lambert, {});
    expectNew(lambert, one);
    for (const LightSpec& light :
         {LightSpec{LightSpec::kSpot}, LightSpec{LightSpec::kDirectional}, LightSpec{LightSpec::kAmbient},
          LightSpec{LightSpec::kSky}, LightSpec{LightSpec::kSkyMap}, LightSpec{LightSpec::kPoint, true},
          LightSpec{LightSpec::kSpot, false, true}, LightSpec{LightSpec::kPoint, false, false, true}})
        expectNew(lambert, {light});
    lambert.setSetting("alphaMode", kBlend);
    expectNew(lambert, one);
    ASSERT_EQ(connected(lambert, "color", texture, "color"), "");
    expectNew(lambert, one);
    texture->setTexture(kTexture, {});
    expectNew(lambert, one);
    ASSERT_EQ(connected(*texture, "uv", uv, "uv"), "");
    uv->setSetting("set", 3);
    expectNew(lambert, one);
    ASSERT_EQ(connected(lambert, "color", texture, "alpha"), "");
    expectNew(lambert, one);
    uv->setValue("rotation", 1.0F);
    expectNew(lambert, one);
    lambert.setValue("emission", 1.0F);
    expectNew(lambert, one);
    lambert.setValue("emission", 2.0F);
    EXPECT_EQ(std::pair(keyOf(lambert, one), fragmentOf(lambert, one)), seen.back()) << "values are uniforms";
    lambert.unsetValue("emission");
    EXPECT_EQ(keyOf(lambert, one), seen[seen.size() - 2].first);
}

TEST(ShadingNetwork, writesNothingTwiceAndNothingUnused) {
    const Node texture = node(kFileTexture);
    texture->setTexture(kTexture, {});
    const Node noise = node(kNoise);
    const Node ramp = node(kRamp);
    ASSERT_EQ(connected(*ramp, "color5", noise, "value"), ""); // beyond its two stops
    ShadingNodeSpec material(kMetallicRoughness);
    for (const char* input : {"baseColor", "emission"})
        ASSERT_EQ(connected(material, input, texture, "color"), "");
    ASSERT_EQ(connected(material, "roughness", texture, "green"), "");
    ASSERT_EQ(connected(material, "opacity", noise, "value"), ""); // it is opaque
    const std::string source = fragmentOf(material, {{LightSpec::kPoint}, {LightSpec::kPoint}});
    for (const char* once : {"texture2D(", "gl_LightSource[1].position"}) {
        EXPECT_THAT(source, HasSubstr(once));
        EXPECT_EQ(source.find(once), source.rfind(once));
    }
    EXPECT_THAT(source, Not(HasSubstr("noise")));
    EXPECT_THAT(source, Not(HasSubstr("opacity")));
    EXPECT_THAT(fragmentOf(*ramp), Not(HasSubstr("noise")));

    ShadingNodeSpec occluded(kMetallicRoughness);
    ASSERT_EQ(connected(occluded, "occlusion", noise, "value"), "");
    EXPECT_THAT(fragmentOf(occluded, {{LightSpec::kPoint}}), Not(HasSubstr("noise")))
        << "nothing comes from around";
    EXPECT_THAT(fragmentOf(occluded, {{LightSpec::kSky}}), HasSubstr("noise"));
}

TEST(ShadingNetwork, listsWhatARendererFeeds) {
    const Node texture = node(kFileTexture);
    texture->setTexture(kTexture, {});
    ShadingNodeSpec material(kLambert);
    ASSERT_EQ(connected(material, "color", texture, "color"), "");
    material.setValue("color", 0.5F); // the connection feeds it
    material.setValue("emission", koColor::Color(1, 2, 3));
    ASSERT_EQ(material.uniforms().size(), 1u);
    const ShadingNodeSpec::Uniform emission = material.uniforms()[0];
    EXPECT_STREQ(emission.fName.asChar(), "lambert1_emission");
    EXPECT_EQ(std::pair(emission.fComponents, emission.fValues[2]), std::pair(3U, 3.0F));
    ASSERT_EQ(material.samplers().size(), 1u);
    EXPECT_STREQ(material.samplers()[0].fName.asChar(), "fileTexture1_image");
    EXPECT_EQ(material.samplers()[0].fTexture, kTexture);
}

TEST(ShadingNetwork, refusesWhatIsTooLargeAndSurvivesIt) {
    Node chain = node(kMultiply);
    for (int i = 0; i < 4096; ++i) {
        const Node next = node(kMultiply);
        ASSERT_EQ(connected(*next, "a", chain, "color"), "");
        chain = next;
    }
    EXPECT_EQ(fragmentOf(*chain), "#version 120\n#error the network has 4097 nodes, more than 4096\n");
    ShadingNodeSpec lambert;
    EXPECT_EQ(fragmentOf(lambert, std::vector<LightSpec>(9)),
              "#version 120\n#error light 8 has no GL light: there are 8\n");
    std::vector<LightSpec> eight(8);
    eight.push_back({LightSpec::kSky});
    EXPECT_THAT(fragmentOf(lambert, eight), Not(HasSubstr("#error")));
}

} // namespace
