#pragma once

#include "DoubleTest.h"

#include <set>
#include <string>

constexpr double shaderName(int n) {
    return nthName(NameKind::ShaderObject, n);
}

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

    // What is called for the n-th shader object.
    static Calls sent(int n, const std::string& source) {
        return {
            call("glShaderSourceARB", shaderName(n), 1, "{\"" + source + "\"}", Values{1.0 * source.size()})};
    }
    static Calls compiled(int n) { return {call("glCompileShaderARB", shaderName(n)), asked(n, 0x8B81)}; }
    static Calls linked(int n) { return {call("glLinkProgramARB", shaderName(n)), asked(n, 0x8B82)}; }
    static std::string asked(int n, GLenum what) {
        return call("glGetObjectParameterivARB", shaderName(n), what, kOut);
    }
    static Calls attached(int program, int n) {
        return {call("glAttachObjectARB", shaderName(program), shaderName(n))};
    }
    static Calls used(int n) { return {call("glUseProgramObjectARB", shaderName(n))}; }
    static Calls deleted(int n) { return {call("glDeleteObjectARB", shaderName(n))}; }
    static Calls noneUsed() { return {call("glUseProgramObjectARB", 0)}; }

    void withoutShaderObjects() { gl().fExtEnabled[kCapShaderObjects] = false; }

    /// GL_OBJECT_COMPILE_STATUS_ARB, GL_OBJECT_LINK_STATUS_ARB.
    std::set<GLenum> fRefused;
};
