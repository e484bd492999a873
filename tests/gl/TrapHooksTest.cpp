// The trap hooks. Built twice: once against the library, whose members only forward, once with its wrappers
// compiled in with ORLOGL_TRAP_HOOKS.

#include "DoubleTest.h"

namespace {

const std::string kRead = call("glGetError");

class TrapHooks : public DoubleTest {};

TEST_F(TrapHooks, readOnePendingErrorButNotBetweenBeginAndEnd) {
    script().errors = {3, 4, 5, 6, 7, 8};
    EXPECT_EQ(gl().TrapBefore(), 3u);
    EXPECT_EQ(gl().TrapAfter(), 4u);
    EXPECT_EQ(gl().TrapBefore_PossiblyBeginEnd(), 5u);
    EXPECT_EQ(gl().TrapAfter_PossiblyBeginEnd(), 6u);
    gl().fInBeginEnd = true;
    EXPECT_EQ(gl().TrapBefore_PossiblyBeginEnd() + gl().TrapAfter_PossiblyBeginEnd(), 0u);
    EXPECT_EQ(gl().TrapBefore(), 7u) << "the plain forms read all the same";
    EXPECT_EQ(gl().TrapAfter(), 8u);
    EXPECT_EQ(recorded(), Calls(6, kRead));
}

TEST_F(TrapHooks, askForThePositionOfAProgramError) {
    const std::string kPosition = call("glGetIntegerv", 0x864B, kOut);
    GLint preset = 0;
    script().answers["glGetIntegerv"] = [&preset](const std::vector<Argument>& arguments) {
        preset = *static_cast<GLint*>(arguments[1].pointer());
        return 0;
    };
    for (GLenum error : {GL_NO_ERROR, GL_INVALID_VALUE, GL_OUT_OF_MEMORY}) {
        script().errors = {error};
        gl().TrapAfterLoadProgramNV();
    }
    EXPECT_EQ(made(), (Calls{kRead, kRead, kRead}));
    script().errors = {GL_INVALID_OPERATION};
    gl().TrapAfterLoadProgramNV();
    EXPECT_EQ(recorded(), (Calls{kRead, kPosition}));
    EXPECT_EQ(preset, -2);
}

#ifdef ORLOGL_TRAP_HOOKS

TEST_F(TrapHooks, standAroundEveryWrapperThatIsLegal) {
    script().framebufferStatus = 0x1234;
    EXPECT_EQ(gl().glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT), 0x1234u) << "the result comes through";
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 3);
    EXPECT_EQ(made(), (Calls{kRead, call("glCheckFramebufferStatusEXT", GL_FRAMEBUFFER_EXT), kRead, kRead,
                             call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 3), kRead}));
    const float values[] = {1, 2, 3, 4};
    const auto vertexCalls = [&] {
        gl().glMultiTexCoord2f(GL_TEXTURE1, 1, 2);
        gl().glVertexAttrib4fv(3, values);
        gl().glSecondaryColor3fEXT(1, 2, 3);
        return made();
    };
    const Calls plain = {call("glMultiTexCoord2f", GL_TEXTURE1, 1, 2),
                         call("glVertexAttrib4fvARB", 3, Values{1, 2, 3, 4}),
                         call("glSecondaryColor3fEXT", 1, 2, 3)};
    EXPECT_EQ(vertexCalls(), (Calls{kRead, plain[0], kRead, kRead, plain[1], kRead, kRead, plain[2], kRead}));
    gl().fInBeginEnd = true;
    EXPECT_EQ(vertexCalls(), plain);
    gl().glVertexAttribPointer(1, 4, GL_FLOAT, 0, 16, nullptr);
    EXPECT_EQ(made().size(), 3u) << "not legal there, so trapped there";
}

TEST_F(TrapHooks, followAProgramLoad) {
    const GLubyte program[] = "!!VP1.0 END";
    script().errors = {GL_NO_ERROR, GL_INVALID_OPERATION};
    gl().glLoadProgramNV(GL_VERTEX_PROGRAM_NV, 1, 11, program);
    EXPECT_EQ(recorded(), (Calls{kRead, call("glLoadProgramNV", GL_VERTEX_PROGRAM_NV, 1, 11, program), kRead,
                                 call("glGetIntegerv", 0x864B, kOut)}));
}

#else

TEST_F(TrapHooks, areCalledByNoWrapper) {
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 3);
    const GLubyte program[] = "!!VP1.0 END";
    gl().glLoadProgramNV(GL_VERTEX_PROGRAM_NV, 1, 11, program);
    EXPECT_EQ(recorded(), (Calls{call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 3),
                                 call("glLoadProgramNV", GL_VERTEX_PROGRAM_NV, 1, 11, program)}));
}

#endif

} // namespace
