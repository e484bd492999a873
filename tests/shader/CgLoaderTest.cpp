#include "CgTest.h"

#include "../cg/EntryPointNames.h"

#include "FakeLoader.h"

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

long countOfFilled() {
    return std::ranges::count_if(kPointers, [](const Pointer& pointer) { return pointer.value(); });
}

const std::string kOpenCore = call("dlopen", "libCg.so", 1);

class CgLoader : public CgTest {
protected:
    CgLoader() { resetLoader(); }
};

TEST_F(CgLoader, opensBothByTheirBareNamesAndPointsEachAtItsOwn) {
    static_assert(std::size(kCoreNames) == 48 && std::size(kBindingNames) == 72);
    setenv("ORLO_LOCATION", "/nowhere", 1);
    loader().missing = {"libCg.so", "libCgGL.so"};
    EXPECT_FALSE(init_explicit_Cg());
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), nullptr);
    EXPECT_EQ(loader().calls, (Calls{kOpenCore, kOpenCore})) << "tried again";
    EXPECT_EQ(countOfFilled(), 0);
    loader().missing = {"libCgGL.so"};
    EXPECT_FALSE(init_explicit_Cg());
    EXPECT_EQ(countOfFilled(), 48);

    resetLoader();
    std::map<std::string, int> places;
    for (const Pointer& pointer : kPointers)
        loader().replaced[pointer.name] = &places[pointer.name];
    Calls all{kOpenCore};
    for (const char* name : kCoreNames)
        all.push_back(call("dlsym", name));
    all.push_back(call("dlopen", "libCgGL.so", 1));
    for (const char* name : kBindingNames)
        all.push_back(call("dlsym", name));
    EXPECT_TRUE(init_explicit_Cg() && init_explicit_Cg());
    EXPECT_EQ(loader().calls, all) << "once is enough";
    for (const Pointer& pointer : kPointers)
        EXPECT_EQ(pointer.value(), &places[pointer.name]) << pointer.name;
    EXPECT_EQ(recorded(), Calls{}) << "nobody made a context";
}

TEST_F(CgLoader, givesAContextToWhoAsksNextWhereANameIsMissing) {
    loader().missing = {"cgGLGetTextureEnum"};
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), nullptr) << "the first to ask gets none";
    EXPECT_EQ(countOfFilled(), 119);
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
    loader().missing = {"libCg.so"};
    CGManager manager(CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1);
    EXPECT_STREQ(manager.vertexProfileString(), "Unknown");
    CGManager::CGShader shader{program(1), nullptr, CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
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
