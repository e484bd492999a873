#pragma once

#include "GroupBench.h"

#include "shader/GlslManager.h"

/// Binding the shader of a textured material under four lights that was compiled long ago, against making its
/// program current. What is bound changes every time, as from material to material.
inline void benchBindShader() {
    using namespace koShadingDag;
    ShadingNodeSpec materials[2] = {ShadingNodeSpec(kMetallicRoughness), ShadingNodeSpec(kMetallicRoughness)};
    const std::vector<LightSpec> lights = {
        {LightSpec::kDirectional}, {LightSpec::kDirectional}, {LightSpec::kDirectional}, {LightSpec::kSky}};
    const GlslManager manager;
    koString::CString keys[2];
    GLhandleARB programs[2] = {};
    for (int i = 0; i < 2; ++i) {
        materials[i].setValue("roughness", 0.5F);
        if (i == 1)
            materials[i].setValue("metallic", 0.5F);
        keys[i] = materials[i].networkKey(&lights);
        programs[i] = manager.bindKOSLShader(materials[i], keys[i], &lights)->fProgram;
    }
    constexpr int kBinds = 1000;
    measure("1,000 cached shaders bound/library", [&] {
        for (int i = 0; i < kBinds; ++i)
            manager.bindKOSLShader(materials[i & 1], keys[i & 1], &lights);
    });
    measure("1,000 cached shaders bound/by hand", [&] {
        for (int i = 0; i < kBinds; ++i)
            table().fglUseProgramObjectARB(programs[i & 1]);
    });
}
