#include "DoubleTest.h"

#include "gl/GLUtility.h"

#include <iostream>

namespace {

class Utility : public DoubleTest {
protected:
    static std::string printed(const char* label, std::deque<GLenum> pending) {
        script().errors = std::move(pending);
        testing::internal::CaptureStderr();
        EXPECT_EQ(GLUtility::printErrors(label), 0u);
        std::cerr.flush();
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(Utility, putsCodesIntoWordsAndRemembersTheLast) {
    const std::pair<GLenum, const char*> kCases[] = {{0x500, "invalid enumerant"},
                                                     {0x501, "invalid value"},
                                                     {0x502, "invalid operation"},
                                                     {0x503, "stack overflow"},
                                                     {0x504, "stack underflow"},
                                                     {0x505, "out of memory"},
                                                     {0x4FF, nullptr},
                                                     {0x506, nullptr},
                                                     {0xFFFFFFFF, nullptr},
                                                     {0, nullptr}};
    EXPECT_EQ(GLUtility::errorString(), nullptr);
    for (const auto& [code, words] : kCases)
        if (code != 0)
            script().errors.push_back(code);
    for (const auto& [code, words] : kCases) {
        EXPECT_STREQ(GLUtility::gluErrorString(code), code == 0 ? "no error" : words) << code;
        EXPECT_EQ(GLUtility::error(), code != 0);
        EXPECT_EQ(GLUtility::fsLastGLError, code) << "one at a time";
        EXPECT_STREQ(GLUtility::errorString(), words) << "not \"no error\"";
    }
    clearRecorded();
    GLUtility::assertNoError();
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(Utility, printsEveryPendingErrorUpToAnUnknownCode) {
    EXPECT_EQ(printed("bind", {GL_INVALID_OPERATION}), "bind:1282 is invalid operation\n");
    EXPECT_EQ(printed(nullptr, {GL_STACK_OVERFLOW, GL_INVALID_ENUM}),
              "1283 is stack overflow\n1280 is invalid enumerant\n");
    EXPECT_EQ(printed("draw", {0x1234, GL_INVALID_ENUM}), "draw:4660 is ");
    EXPECT_TRUE(std::cerr.fail()) << "silenced";
    EXPECT_TRUE(script().errors.empty()) << "the draining goes on";
    std::cerr.clear();
    EXPECT_EQ(printed("draw", {GL_INVALID_ENUM}), "draw:1280 is invalid enumerant\n");
    EXPECT_EQ(GLUtility::fsLastGLError, 0u) << "printing keeps nothing";
}

} // namespace
