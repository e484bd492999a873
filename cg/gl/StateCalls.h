#pragma once

#include "OpenGL.h"

namespace orlocg {

// The entry points that states of effects are set by. All of OpenGL 2.0, which whoever has separate programs
// has too.
#define CG_STATE_CALLS(CALL)                                                                                 \
    CALL(glAlphaFunc)                                                                                        \
    CALL(glBlendFunc)                                                                                        \
    CALL(glClearColor)                                                                                       \
    CALL(glClearDepth)                                                                                       \
    CALL(glClearStencil)                                                                                     \
    CALL(glClipPlane)                                                                                        \
    CALL(glColorMask)                                                                                        \
    CALL(glCullFace)                                                                                         \
    CALL(glDepthFunc)                                                                                        \
    CALL(glDepthMask)                                                                                        \
    CALL(glDepthRange)                                                                                       \
    CALL(glDisable)                                                                                          \
    CALL(glEnable)                                                                                           \
    CALL(glFogfv)                                                                                            \
    CALL(glFogi)                                                                                             \
    CALL(glFrontFace)                                                                                        \
    CALL(glGetFloatv)                                                                                        \
    CALL(glGetIntegerv)                                                                                      \
    CALL(glIsEnabled)                                                                                        \
    CALL(glLightModelfv)                                                                                     \
    CALL(glLightModeli)                                                                                      \
    CALL(glLightfv)                                                                                          \
    CALL(glLineStipple)                                                                                      \
    CALL(glLineWidth)                                                                                        \
    CALL(glLoadMatrixd)                                                                                      \
    CALL(glLogicOp)                                                                                          \
    CALL(glMaterialfv)                                                                                       \
    CALL(glMatrixMode)                                                                                       \
    CALL(glPointSize)                                                                                        \
    CALL(glPolygonMode)                                                                                      \
    CALL(glPolygonOffset)                                                                                    \
    CALL(glScissor)                                                                                          \
    CALL(glShadeModel)                                                                                       \
    CALL(glStencilFunc)                                                                                      \
    CALL(glStencilMask)                                                                                      \
    CALL(glStencilOp)                                                                                        \
    CALL(glTexEnvfv)                                                                                         \
    CALL(glTexEnvi)                                                                                          \
    CALL(glTexParameterf)                                                                                    \
    CALL(glTexParameterfv)                                                                                   \
    CALL(glTexParameteri)
#define CG_LATER_STATE_CALLS(CALL)                                                                           \
    CALL(PFNGLBLENDCOLORPROC, glBlendColor)                                                                  \
    CALL(PFNGLBLENDEQUATIONPROC, glBlendEquation)                                                            \
    CALL(PFNGLBLENDEQUATIONSEPARATEPROC, glBlendEquationSeparate)                                            \
    CALL(PFNGLBLENDFUNCSEPARATEPROC, glBlendFuncSeparate)                                                    \
    CALL(PFNGLPOINTPARAMETERFPROC, glPointParameterf)                                                        \
    CALL(PFNGLPOINTPARAMETERFVPROC, glPointParameterfv)                                                      \
    CALL(PFNGLSAMPLECOVERAGEPROC, glSampleCoverage)                                                          \
    CALL(PFNGLSTENCILFUNCSEPARATEPROC, glStencilFuncSeparate)                                                \
    CALL(PFNGLSTENCILMASKSEPARATEPROC, glStencilMaskSeparate)                                                \
    CALL(PFNGLSTENCILOPSEPARATEPROC, glStencilOpSeparate)

struct StateCalls {
#define CG_MEMBER(name) decltype(&::name) name;
#define CG_LATER_MEMBER(type, name) type name;
    CG_STATE_CALLS(CG_MEMBER)
    CG_LATER_STATE_CALLS(CG_LATER_MEMBER)
#undef CG_MEMBER
#undef CG_LATER_MEMBER

    bool isComplete;
};

/// Found when they are first asked for.
const StateCalls& stateCalls();

} // namespace orlocg
