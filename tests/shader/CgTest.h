#pragma once

#include "ShaderTest.h"

#include "shader/CGManager.h"

#include <functional>

/// A made-up handle.
template <typename Handle>
Handle handle(uint64_t number) {
    return reinterpret_cast<Handle>(number);
}

/// On recording Cg libraries whose contexts are 0xc1 and on, programs 0x101 and on, and that have every
/// parameter asked for, 0xaa.
class CgTest : public ShaderTest {
protected:
    CgTest() {
        script().answers["cgCreateContext"] = [this](const auto&) { return uint64_t{0xC0} + ++fContexts; };
        const auto create = [this](const auto& arguments) {
            const std::string text = static_cast<const char*>(arguments[2].pointer());
            return fRefuses(text) ? uint64_t{0} : 0x100 + static_cast<uint64_t>(++fPrograms);
        };
        script().answers["cgCreateProgram"] = create;
        script().answers["cgCreateProgramFromFile"] = create;
        script().answers["cgGetNamedParameter"] = [](const auto&) { return uint64_t{0xAA}; };
    }

    ~CgTest() override { delete CGcontextSingleton::sCgContext; }

    static CGcontext context(uint64_t n = 1) { return handle<CGcontext>(0xC0 + n); }
    static CGprogram program(uint64_t n) { return handle<CGprogram>(0x100 + n); }
    static CGparameter parameter() { return handle<CGparameter>(0xAA); }

    /// Whether a source, or a file of that path, doesn't compile.
    std::function<bool(const std::string&)> fRefuses = [](const std::string&) { return false; };

    unsigned fContexts = 0;
    int fPrograms = 0;
};
