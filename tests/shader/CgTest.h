#pragma once

#include "ShaderTest.h"

#include "shader/CGManager.h"

#include <functional>

/// On recording Cg libraries that have every parameter asked for, 0xaa.
class CgTest : public ShaderTest {
protected:
    CgTest() {
        script().answers["cgCreateContext"] = [this](const auto&) {
            return reinterpret_cast<uint64_t>(context(++fContexts));
        };
        const auto create = [this](const auto& arguments) {
            const std::string text = static_cast<const char*>(arguments[2].pointer());
            return fRefuses(text) ? uint64_t{0} : reinterpret_cast<uint64_t>(program(++fPrograms));
        };
        script().answers["cgCreateProgram"] = create;
        script().answers["cgCreateProgramFromFile"] = create;
        script().answers["cgGetNamedParameter"] = [](const auto&) { return uint64_t{0xAA}; };
    }

    // The n-th of each.
    static CGcontext context(uint64_t n = 1) { return reinterpret_cast<CGcontext>(0xC0 + n); }
    static CGprogram program(uint64_t n) { return reinterpret_cast<CGprogram>(0x100 + n); }

    ~CgTest() override { delete CGcontextSingleton::sCgContext; }

    /// Whether a source, or a file of that path, doesn't compile.
    std::function<bool(const std::string&)> fRefuses = [](const std::string&) { return false; };

    uint64_t fContexts = 0;
    uint64_t fPrograms = 0;
};
