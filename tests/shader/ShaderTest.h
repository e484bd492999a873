#pragma once

#include "DoubleTest.h"

#include <set>
#include <string>

/// On a GL that compiles and links what it is told to.
class ShaderTest : public DoubleTest {
protected:
    ShaderTest() {
        script().answers["glGetObjectParameterivARB"] = [this](const std::vector<Argument>& arguments) {
            const auto question = static_cast<GLenum>(arguments[1].integer());
            *static_cast<GLint*>(arguments[2].pointer()) = fRefused.contains(question) ? 0 : 1;
            return uint64_t{0};
        };
    }

    /// The lines that `act` prints on standard output.
    template <typename Act>
    static std::string printed(Act act) {
        testing::internal::CaptureStdout();
        act();
        return testing::internal::GetCapturedStdout();
    }

    void withoutShaderObjects() { gl().fExtEnabled[kCapShaderObjects] = false; }

    /// GL_OBJECT_COMPILE_STATUS_ARB, GL_OBJECT_LINK_STATUS_ARB.
    std::set<GLenum> fRefused;
};

constexpr double shaderName(int n) {
    return nthName(NameKind::ShaderObject, n);
}
