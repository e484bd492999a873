#pragma once

#include "GroupBench.h"

#include "shader/CGManager.h"

#include <dlfcn.h>
#include <filesystem>
#include <fstream>

#include <Cg/cgGL.h>
#include <orlohost/HWEnvironment.h>

/// GL's calls for programs of one stage, which the table doesn't have.
struct PipelineCalls {
    PFNGLCREATESHADERPROGRAMVPROC createShaderProgramv;
    PFNGLGENPROGRAMPIPELINESPROC genPipelines;
    PFNGLBINDPROGRAMPIPELINEPROC bindPipeline;
    PFNGLUSEPROGRAMSTAGESPROC useStages;

    PipelineCalls() {
        find(createShaderProgramv, "glCreateShaderProgramv");
        find(genPipelines, "glGenProgramPipelines");
        find(bindPipeline, "glBindProgramPipeline");
        find(useStages, "glUseProgramStages");
    }

private:
    template <typename Function>
    static void find(Function& function, const char* name) {
        using AskByName = void* (*)(const GLubyte*);
        static const auto ask =
            reinterpret_cast<AskByName>(dlsym(dlopen("libGL.so.1", RTLD_LAZY), "glXGetProcAddressARB"));
        function = reinterpret_cast<Function>(ask(reinterpret_cast<const GLubyte*>(name)));
    }
};

/// Binding Cg programs whose parameters haven't changed, two in turn, against putting GL programs of one
/// stage into a pipeline.
inline void benchBindCgProgram() {
    constexpr int kBinds = 1000;
    const CGcontext context = cgCreateContext();
    CGprogram programs[2] = {};
    for (int i = 0; i < 2; ++i) {
        const char* source =
            i ? "float4 main(uniform float4 k) : COLOR { return k; }" : "float4 main() : COLOR { return 1; }";
        programs[i] = cgCreateProgram(context, CG_SOURCE, source, CG_PROFILE_GLSLF, "main", nullptr);
        cgGLLoadProgram(programs[i]);
    }
    cgGLBindProgram(programs[0]);
    cgGLEnableProfile(CG_PROFILE_GLSLF);
    measure("1,000 Cg programs bound/library", [&] {
        for (int i = 0; i < kBinds; ++i)
            cgGLBindProgram(programs[i & 1]);
    });
    cgGLDisableProfile(CG_PROFILE_GLSLF);

    const PipelineCalls gl;
    GLuint names[2] = {};
    GLuint pipeline = 0;
    for (int i = 0; i < 2; ++i) {
        const char* source = cgGetProgramString(programs[i], CG_COMPILED_PROGRAM);
        names[i] = gl.createShaderProgramv(GL_FRAGMENT_SHADER, 1, &source);
    }
    gl.genPipelines(1, &pipeline);
    gl.bindPipeline(pipeline);
    measure("1,000 Cg programs bound/by hand", [&] {
        for (int i = 0; i < kBinds; ++i)
            gl.useStages(pipeline, GL_FRAGMENT_SHADER_BIT, names[i & 1]);
    });
    gl.bindPipeline(0);
    cgDestroyContext(context);
}

/// Binding shaders of both stages, two in turn: by name, and as a host that keeps them.
inline void benchBindCgShader() {
    constexpr int kBinds = 1000;
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "orlobench";
    std::filesystem::create_directories(folder / "bin" / "Cg");
    HWEnvironment::orlo_path = folder.c_str();
    const auto write = [&](const char* name, const char* text) {
        std::ofstream(folder / "bin" / "Cg" / name) << text;
    };
    write("bench_vertex.cg",
          "void main(float4 p : POSITION, float4 c : COLOR, out float4 o : COLOR) { o = c * SCALE; }");
    write("bench_fragment.cg",
          "float4 main(float4 c : COLOR, uniform float4 k) : COLOR { return c * k * SCALE; }");

    CGManager manager(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF);
    const std::vector<koString::CString> options[2] = {{"-DSCALE=0.5"}, {"-DSCALE=0.25"}};
    CGManager::CGShader shaders[2] = {};
    for (int i = 0; i < 2; ++i)
        shaders[i] = manager.bindShader("bench", options[i], options[i]);
    measure("1,000 Cg shaders bound by name/library", [&] {
        for (int i = 0; i < kBinds; ++i)
            manager.bindShader("bench", options[i & 1], options[i & 1]);
    });
    measure("1,000 kept Cg shaders enabled/library", [&] {
        for (int i = 0; i < kBinds; ++i)
            shaders[i & 1].enable();
    });
    shaders[0].disable();

    const PipelineCalls gl;
    GLuint names[2][2] = {};
    GLuint pipeline = 0;
    for (int i = 0; i < 2; ++i) {
        const char* vertices = F_cgGetProgramString(shaders[i].getVertexProgram(), CG_COMPILED_PROGRAM);
        names[i][0] = gl.createShaderProgramv(GL_VERTEX_SHADER, 1, &vertices);
        const char* fragments = F_cgGetProgramString(shaders[i].getFragmentProgram(), CG_COMPILED_PROGRAM);
        names[i][1] = gl.createShaderProgramv(GL_FRAGMENT_SHADER, 1, &fragments);
    }
    gl.genPipelines(1, &pipeline);
    gl.bindPipeline(pipeline);
    for (const char* name :
         {"1,000 Cg shaders bound by name/by hand", "1,000 kept Cg shaders enabled/by hand"}) {
        measure(name, [&] {
            for (int i = 0; i < kBinds; ++i) {
                gl.useStages(pipeline, GL_VERTEX_SHADER_BIT, names[i & 1][0]);
                gl.useStages(pipeline, GL_FRAGMENT_SHADER_BIT, names[i & 1][1]);
            }
        });
    }
    gl.bindPipeline(0);
    std::filesystem::remove_all(folder);
}
