#include "GroupBench.h"
#include "NullGL.h"
#include "ParticleBench.h"
#include "ShaderBench.h"

#include <dlfcn.h>

// What the library adds to calls into a GL that does nothing. Run it through bench/run, which makes a table.

namespace {

/// Where what was looked up by hand goes.
void keep(void* address) {
    static void* volatile slot;
    slot = address;
    static_cast<void>(slot);
}

void benchWrapper() {
    constexpr int kCalls = 1000;
    measure("1,000 wrapper calls/library", [] {
        for (int i = 0; i < kCalls; ++i)
            table().glBindBufferARB(GL_ARRAY_BUFFER_ARB, static_cast<GLuint>(i));
    });
    measure("1,000 wrapper calls/by hand", [] {
        for (int i = 0; i < kCalls; ++i)
            table().fglBindBufferARB(GL_ARRAY_BUFFER_ARB, static_cast<GLuint>(i));
    });
}

/// The OpenGL 1.1 names, which populate looks up with dlsym.
constexpr const char* kCoreNames[] = {
#define ENTRY_CORE(ret, name, ...) #name,
#include "gl/GLEntryPoints.inc"
};

void benchPopulate() {
    std::vector<std::string> asked;
    nullGLLookups = &asked;
    table().populate();
    nullGLLookups = nullptr;

    measure("populate/library", [] { table().populate(); });
    measure("populate/by hand", [&] {
        void* library = dlopen("libGL.so", RTLD_LAZY);
        for (const char* name : kCoreNames)
            keep(dlsym(library, name));
        for (const std::string& name : asked) {
            const auto* text = reinterpret_cast<const GLubyte*>(name.c_str());
            keep(reinterpret_cast<void*>(glXGetProcAddressARB(text)));
        }
    });
}

} // namespace

int main() {
    GLFunctionTable table;
    table.populate();
    GLFunctionTable::fpGlobalFunctionTable = &table;

    measure("nothing/by hand", [] {});
    benchWrapper();
    benchPopulate();
    benchBindShader();
    benchParticles();
    benchDrawGroup(1, "drawGroup, 1 group");
    benchDrawGroup(1'000, "drawGroup, 1,000 groups");
    benchDrawGroup(10'000, "drawGroup, 10,000 groups");
    benchDrawGroup(100'000, "drawGroup, 100,000 groups");
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
}
