#include "CgTest.h"

#include "../cg/EntryPointNames.h"

#include "FakeLoader.h"

#include <algorithm>
#include <cstdlib>

namespace {

struct Pointer {
    const char* name;
    void* (*value)();
};

#define CG_CORE(name) {#name, [] { return reinterpret_cast<void*>(F_##name); }},
#define CG_GL(name) CG_CORE(name)
const Pointer kPointers[] = {
#include "shader/CgEntryPoints.inc"
};

size_t countOfFilled() {
    return static_cast<size_t>(std::count_if(std::begin(kPointers), std::end(kPointers),
                                             [](const Pointer& pointer) { return pointer.value(); }));
}

const std::string kOpenCore = call("dlopen", "libCg.so", 1);
const std::string kOpenBinding = call("dlopen", "libCgGL.so", 1);

/// The calls of a whole loading.
Calls loading() {
    Calls calls{kOpenCore};
    for (const char* name : kCoreNames)
        calls.push_back(call("dlsym", name));
    calls.push_back(kOpenBinding);
    for (const char* name : kBindingNames)
        calls.push_back(call("dlsym", name));
    return calls;
}

class CgLoader : public CgTest {
protected:
    CgLoader() { resetLoader(); }
};

TEST_F(CgLoader, opensBothByTheirBareNamesAndPointsEachAtItsOwn) {
    static_assert(std::size(kCoreNames) == 48 && std::size(kBindingNames) == 72);
    setenv("ORLO_LOCATION", "/nowhere", 1);
    std::map<std::string, int> places;
    for (const Pointer& pointer : kPointers) {
        EXPECT_EQ(pointer.value(), nullptr);
        replacedSymbols()[pointer.name] = &places[pointer.name];
    }
    EXPECT_TRUE(init_explicit_Cg());
    EXPECT_EQ(loaderCalls(), loading());
    for (const Pointer& pointer : kPointers)
        EXPECT_EQ(pointer.value(), &places[pointer.name]) << pointer.name;
    resetLoader();
    EXPECT_TRUE(init_explicit_Cg());
    EXPECT_EQ(loaderCalls(), Calls{}) << "once is enough";
}

TEST_F(CgLoader, triesAgainUntilBothAreThere) {
    missingLibraries() = {"libCg.so", "libCgGL.so"};
    EXPECT_FALSE(init_explicit_Cg());
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), nullptr);
    EXPECT_EQ(loaderCalls(), (Calls{kOpenCore, kOpenCore}));
    EXPECT_EQ(countOfFilled(), 0u);
    missingLibraries() = {"libCgGL.so"};
    EXPECT_FALSE(init_explicit_Cg());
    EXPECT_EQ(countOfFilled(), 48u);
    resetLoader();
    EXPECT_TRUE(init_explicit_Cg());
    EXPECT_EQ(loaderCalls(), loading());
    EXPECT_EQ(recorded(), Calls{}) << "nobody made a context";
}

TEST_F(CgLoader, givesAContextToWhoAsksNextWhereANameIsMissing) {
    missingSymbols() = {"cgGLGetTextureEnum"};
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), nullptr) << "the first to ask gets none";
    EXPECT_EQ(countOfFilled(), 119u);
    delete CGcontextSingleton::sCgContext;
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), context()) << "the next goes on with what is there";
}

TEST_F(CgLoader, aFileMayBeTheFirstUseOfAProcess) {
    CGManager::CGShader shader{nullptr, nullptr, CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    EXPECT_TRUE(shader.loadVertexProgram("v.cg", nullptr));
}

TEST_F(CgLoader, aSourceMayBeTheFirstUseOfAProcess) {
    CGManager::CGShader shader{nullptr, nullptr, CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    shader.loadFragmentProgramFromString("fragments");
    EXPECT_EQ(shader.getFragmentProgram(), program(1));
}

TEST_F(CgLoader, managersDoNothingThroughMissingEntryPoints) {
    missingLibraries() = {"libCg.so"};
    CGManager manager(CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1);
    EXPECT_STREQ(manager.vertexProfileString(), "Unknown");
    CGManager::CGShader shader{handle<CGprogram>(1), nullptr, CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    shader.enable();
    EXPECT_EQ(shader.getParameterIndex(CGManager::kVertexProgram, "gain"), 0xFFFFFFFF);
    EXPECT_EQ(printed([&] { EXPECT_FALSE(shader.loadFragmentProgram("f.cg", nullptr)); }),
              "Fragment program failed to compile:\nf.cg\n");
    koShadingDag::ShadingNodeSpec node(koShadingDag::kUnlit);
    EXPECT_EQ(manager.bindKOSLShader(node, "k", nullptr)->getVertexProgram(), nullptr);
    shader.destroy();
    EXPECT_EQ(recorded(), Calls{});
}

} // namespace
