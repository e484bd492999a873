#pragma once

#include "GroupBench.h"

#include <Cg/cgGL.h>

#include <dlfcn.h>

/// Binding Cg programs whose parameters haven't changed, two in turn, against putting GL programs of one
/// stage into a pipeline.
inline void benchBindCgProgram() {
    constexpr int kBinds = 1000;
    const CGcontext context = cgCreateContext();
    CGprogram programs[2] = {};
    for (int i = 0; i < 2; ++i) {
        const char* source =
            i ? "float4 main(uniform float4 k) : COLOR { return k; }" : "float4 main() : COLOR { return 1; }";
        programs[i] = cgCreateProgram(context, CG_SOURCE, source, CG_PROFILE_ARBFP1, "main", nullptr);
        cgGLLoadProgram(programs[i]);
    }
    cgGLBindProgram(programs[0]);
    cgGLEnableProfile(CG_PROFILE_ARBFP1);
    measure("1,000 Cg programs bound/library", [&] {
        for (int i = 0; i < kBinds; ++i)
            cgGLBindProgram(programs[i & 1]);
    });
    cgGLDisableProfile(CG_PROFILE_ARBFP1);

    using AskByName = void* (*)(const GLubyte*);
    const auto ask =
        reinterpret_cast<AskByName>(dlsym(dlopen("libGL.so.1", RTLD_LAZY), "glXGetProcAddressARB"));
    const auto find = [&](const char* name) { return ask(reinterpret_cast<const GLubyte*>(name)); };
    const auto createShaderProgramv =
        reinterpret_cast<PFNGLCREATESHADERPROGRAMVPROC>(find("glCreateShaderProgramv"));
    const auto genPipelines = reinterpret_cast<PFNGLGENPROGRAMPIPELINESPROC>(find("glGenProgramPipelines"));
    const auto bindPipeline = reinterpret_cast<PFNGLBINDPROGRAMPIPELINEPROC>(find("glBindProgramPipeline"));
    const auto useStages = reinterpret_cast<PFNGLUSEPROGRAMSTAGESPROC>(find("glUseProgramStages"));
    GLuint names[2] = {};
    GLuint pipeline = 0;
    for (int i = 0; i < 2; ++i) {
        const char* source = cgGetProgramString(programs[i], CG_COMPILED_PROGRAM);
        names[i] = createShaderProgramv(GL_FRAGMENT_SHADER, 1, &source);
    }
    genPipelines(1, &pipeline);
    bindPipeline(pipeline);
    measure("1,000 Cg programs bound/by hand", [&] {
        for (int i = 0; i < kBinds; ++i)
            useStages(pipeline, GL_FRAGMENT_SHADER_BIT, names[i & 1]);
    });
    bindPipeline(0);
    cgDestroyContext(context);
}
