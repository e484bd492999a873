#pragma once

// The names that start-up looks up, by group, in order. Typed out here once more, not taken from the
// library's table: what is wrong there shows against this.

/// OpenGL 1.1, by dlsym.
inline constexpr const char* kCore11 =
    "glAccum glAlphaFunc glAreTexturesResident glArrayElement glBegin glBindTexture glBitmap glBlendFunc "
    "glCallList glCallLists glClear glClearAccum glClearColor glClearDepth glClearIndex glClearStencil "
    "glClipPlane glColor3b glColor3bv glColor3d glColor3dv glColor3f glColor3fv glColor3i glColor3iv "
    "glColor3s glColor3sv glColor3ub glColor3ubv glColor3ui glColor3uiv glColor3us glColor3usv glColor4b "
    "glColor4bv glColor4d glColor4dv glColor4f glColor4fv glColor4i glColor4iv glColor4s glColor4sv "
    "glColor4ub glColor4ubv glColor4ui glColor4uiv glColor4us glColor4usv glColorMask glColorMaterial "
    "glColorPointer glCopyPixels glCopyTexImage1D glCopyTexImage2D glCopyTexSubImage1D glCopyTexSubImage2D "
    "glCullFace glDeleteLists glDeleteTextures glDepthFunc glDepthMask glDepthRange glDisable "
    "glDisableClientState glDrawArrays glDrawBuffer glDrawElements glDrawPixels glEdgeFlag "
    "glEdgeFlagPointer glEdgeFlagv glEnable glEnableClientState glEnd glEndList glEvalCoord1d "
    "glEvalCoord1dv glEvalCoord1f glEvalCoord1fv glEvalCoord2d glEvalCoord2dv glEvalCoord2f glEvalCoord2fv "
    "glEvalMesh1 glEvalMesh2 glEvalPoint1 glEvalPoint2 glFeedbackBuffer glFinish glFlush glFogf glFogfv "
    "glFogi glFogiv glFrontFace glFrustum glGenLists glGenTextures glGetBooleanv glGetClipPlane "
    "glGetDoublev glGetError glGetFloatv glGetIntegerv glGetLightfv glGetLightiv glGetMapdv glGetMapfv "
    "glGetMapiv glGetMaterialfv glGetMaterialiv glGetPixelMapfv glGetPixelMapuiv glGetPixelMapusv "
    "glGetPointerv glGetPolygonStipple glGetString glGetTexEnvfv glGetTexEnviv glGetTexGendv glGetTexGenfv "
    "glGetTexGeniv glGetTexImage glGetTexLevelParameterfv glGetTexLevelParameteriv glGetTexParameterfv "
    "glGetTexParameteriv glHint glIndexMask glIndexPointer glIndexd glIndexdv glIndexf glIndexfv glIndexi "
    "glIndexiv glIndexs glIndexsv glIndexub glIndexubv glInitNames glInterleavedArrays glIsEnabled "
    "glIsList glIsTexture glLightModelf glLightModelfv glLightModeli glLightModeliv glLightf glLightfv "
    "glLighti glLightiv glLineStipple glLineWidth glListBase glLoadIdentity glLoadMatrixd glLoadMatrixf "
    "glLoadName glLogicOp glMap1d glMap1f glMap2d glMap2f glMapGrid1d glMapGrid1f glMapGrid2d glMapGrid2f "
    "glMaterialf glMaterialfv glMateriali glMaterialiv glMatrixMode glMultMatrixd glMultMatrixf glNewList "
    "glNormal3b glNormal3bv glNormal3d glNormal3dv glNormal3f glNormal3fv glNormal3i glNormal3iv "
    "glNormal3s glNormal3sv glNormalPointer glOrtho glPassThrough glPixelMapfv glPixelMapuiv glPixelMapusv "
    "glPixelStoref glPixelStorei glPixelTransferf glPixelTransferi glPixelZoom glPointSize glPolygonMode "
    "glPolygonOffset glPolygonStipple glPopAttrib glPopClientAttrib glPopMatrix glPopName "
    "glPrioritizeTextures glPushAttrib glPushClientAttrib glPushMatrix glPushName glRasterPos2d "
    "glRasterPos2dv glRasterPos2f glRasterPos2fv glRasterPos2i glRasterPos2iv glRasterPos2s glRasterPos2sv "
    "glRasterPos3d glRasterPos3dv glRasterPos3f glRasterPos3fv glRasterPos3i glRasterPos3iv glRasterPos3s "
    "glRasterPos3sv glRasterPos4d glRasterPos4dv glRasterPos4f glRasterPos4fv glRasterPos4i glRasterPos4iv "
    "glRasterPos4s glRasterPos4sv glReadBuffer glReadPixels glRectd glRectdv glRectf glRectfv glRecti "
    "glRectiv glRects glRectsv glRenderMode glRotated glRotatef glScaled glScalef glScissor glSelectBuffer "
    "glShadeModel glStencilFunc glStencilMask glStencilOp glTexCoord1d glTexCoord1dv glTexCoord1f "
    "glTexCoord1fv glTexCoord1i glTexCoord1iv glTexCoord1s glTexCoord1sv glTexCoord2d glTexCoord2dv "
    "glTexCoord2f glTexCoord2fv glTexCoord2i glTexCoord2iv glTexCoord2s glTexCoord2sv glTexCoord3d "
    "glTexCoord3dv glTexCoord3f glTexCoord3fv glTexCoord3i glTexCoord3iv glTexCoord3s glTexCoord3sv "
    "glTexCoord4d glTexCoord4dv glTexCoord4f glTexCoord4fv glTexCoord4i glTexCoord4iv glTexCoord4s "
    "glTexCoord4sv glTexCoordPointer glTexEnvf glTexEnvfv glTexEnvi glTexEnviv glTexGend glTexGendv "
    "glTexGenf glTexGenfv glTexGeni glTexGeniv glTexImage1D glTexImage2D glTexParameterf glTexParameterfv "
    "glTexParameteri glTexParameteriv glTexSubImage1D glTexSubImage2D glTranslated glTranslatef glVertex2d "
    "glVertex2dv glVertex2f glVertex2fv glVertex2i glVertex2iv glVertex2s glVertex2sv glVertex3d "
    "glVertex3dv glVertex3f glVertex3fv glVertex3i glVertex3iv glVertex3s glVertex3sv glVertex4d "
    "glVertex4dv glVertex4f glVertex4fv glVertex4i glVertex4iv glVertex4s glVertex4sv glVertexPointer "
    "glViewport";

inline constexpr const char* kDrawRangeElements = "glDrawRangeElements";

inline constexpr const char* kTexture3D = "glTexImage3D glTexSubImage3D glCopyTexSubImage3D";

/// The suffixed names at every level.
inline constexpr const char* kSecondaryColor =
    "glSecondaryColor3bEXT glSecondaryColor3bvEXT glSecondaryColor3dEXT glSecondaryColor3dvEXT "
    "glSecondaryColor3fEXT glSecondaryColor3fvEXT glSecondaryColor3iEXT glSecondaryColor3ivEXT "
    "glSecondaryColor3sEXT glSecondaryColor3svEXT glSecondaryColor3ubEXT glSecondaryColor3ubvEXT "
    "glSecondaryColor3uiEXT glSecondaryColor3uivEXT glSecondaryColor3usEXT glSecondaryColor3usvEXT "
    "glSecondaryColorPointerEXT";

inline constexpr const char* kPointParameters = "glPointParameterfARB glPointParameterfvARB";

inline constexpr const char* kCompiledVertexArray = "glLockArraysEXT glUnlockArraysEXT";

inline constexpr const char* kATIFragmentShader =
    "glGenFragmentShadersATI glBindFragmentShaderATI glDeleteFragmentShaderATI glBeginFragmentShaderATI "
    "glEndFragmentShaderATI glPassTexCoordATI glSampleMapATI glColorFragmentOp1ATI glColorFragmentOp2ATI "
    "glColorFragmentOp3ATI glAlphaFragmentOp1ATI glAlphaFragmentOp2ATI glAlphaFragmentOp3ATI "
    "glSetFragmentShaderConstantATI";

inline constexpr const char* kEXTVertexShader =
    "glBeginVertexShaderEXT glEndVertexShaderEXT glBindVertexShaderEXT glGenVertexShadersEXT "
    "glDeleteVertexShaderEXT glShaderOp1EXT glShaderOp2EXT glShaderOp3EXT glSwizzleEXT glWriteMaskEXT "
    "glInsertComponentEXT glExtractComponentEXT glGenSymbolsEXT glSetInvariantEXT glSetLocalConstantEXT "
    "glVariantbvEXT glVariantsvEXT glVariantivEXT glVariantfvEXT glVariantdvEXT glVariantubvEXT "
    "glVariantusvEXT glVariantuivEXT glVariantPointerEXT glEnableVariantClientStateEXT "
    "glDisableVariantClientStateEXT glBindLightParameterEXT glBindMaterialParameterEXT "
    "glBindTexGenParameterEXT glBindTextureUnitParameterEXT glBindParameterEXT glIsVariantEnabledEXT "
    "glGetVariantBooleanvEXT glGetVariantIntegervEXT glGetVariantFloatvEXT glGetVariantPointervEXT "
    "glGetInvariantBooleanvEXT glGetInvariantIntegervEXT glGetInvariantFloatvEXT "
    "glGetLocalConstantBooleanvEXT glGetLocalConstantIntegervEXT glGetLocalConstantFloatvEXT";

/// The first is asked for twice.
inline constexpr const char* kRegisterCombiners =
    "glCombinerParameterfvNV glCombinerParameterfvNV glCombinerParameterfNV glCombinerParameterivNV "
    "glCombinerParameteriNV glCombinerInputNV glCombinerOutputNV glFinalCombinerInputNV "
    "glGetCombinerInputParameterfvNV glGetCombinerInputParameterivNV glGetCombinerOutputParameterfvNV "
    "glGetCombinerOutputParameterivNV glGetFinalCombinerInputParameterfvNV "
    "glGetFinalCombinerInputParameterivNV";

inline constexpr const char* kNVVertexProgram =
    "glBindProgramNV glDeleteProgramsNV glExecuteProgramNV glGenProgramsNV glAreProgramsResidentNV "
    "glRequestResidentProgramsNV glGetProgramParameterfvNV glGetProgramParameterdvNV glGetProgramivNV "
    "glGetProgramStringNV glGetTrackMatrixivNV glGetVertexAttribdvNV glGetVertexAttribfvNV "
    "glGetVertexAttribivNV glGetVertexAttribPointervNV glIsProgramNV glLoadProgramNV "
    "glProgramParameter4fNV glProgramParameter4dNV glProgramParameter4dvNV glProgramParameter4fvNV "
    "glProgramParameters4dvNV glProgramParameters4fvNV glTrackMatrixNV glVertexAttribPointerNV "
    "glVertexAttrib1sNV glVertexAttrib1fNV glVertexAttrib1dNV glVertexAttrib2sNV glVertexAttrib2fNV "
    "glVertexAttrib2dNV glVertexAttrib3sNV glVertexAttrib3fNV glVertexAttrib3dNV glVertexAttrib4sNV "
    "glVertexAttrib4fNV glVertexAttrib4dNV glVertexAttrib4ubNV glVertexAttrib1svNV glVertexAttrib1fvNV "
    "glVertexAttrib1dvNV glVertexAttrib2svNV glVertexAttrib2fvNV glVertexAttrib2dvNV glVertexAttrib3svNV "
    "glVertexAttrib3fvNV glVertexAttrib3dvNV glVertexAttrib4svNV glVertexAttrib4fvNV glVertexAttrib4dvNV "
    "glVertexAttrib4ubvNV glVertexAttribs1svNV glVertexAttribs1fvNV glVertexAttribs1dvNV "
    "glVertexAttribs2svNV glVertexAttribs2fvNV glVertexAttribs2dvNV glVertexAttribs3svNV "
    "glVertexAttribs3fvNV glVertexAttribs3dvNV glVertexAttribs4svNV glVertexAttribs4fvNV "
    "glVertexAttribs4dvNV glVertexAttribs4ubvNV";

inline constexpr const char* kBlendEquation = "glBlendEquationEXT";

inline constexpr const char* kFramebufferObject =
    "glIsRenderbufferEXT glBindRenderbufferEXT glDeleteRenderbuffersEXT glGenRenderbuffersEXT "
    "glRenderbufferStorageEXT glGetRenderbufferParameterivEXT glIsFramebufferEXT glBindFramebufferEXT "
    "glDeleteFramebuffersEXT glGenFramebuffersEXT glCheckFramebufferStatusEXT glFramebufferTexture1DEXT "
    "glFramebufferTexture2DEXT glFramebufferTexture3DEXT glFramebufferRenderbufferEXT "
    "glGetFramebufferAttachmentParameterivEXT glGenerateMipmapEXT glBlitFramebufferEXT";

inline constexpr const char* kFramebufferMultisample = "glRenderbufferStorageMultisampleEXT";

/// Without a suffix; the probing before and after is told in the tests.
inline constexpr const char* kMultitexture =
    "glMultiTexCoord1d glMultiTexCoord1dv glMultiTexCoord1f glMultiTexCoord1fv glMultiTexCoord1i "
    "glMultiTexCoord1iv glMultiTexCoord1s glMultiTexCoord1sv glMultiTexCoord2d glMultiTexCoord2dv "
    "glMultiTexCoord2f glMultiTexCoord2fv glMultiTexCoord2i glMultiTexCoord2iv glMultiTexCoord2s "
    "glMultiTexCoord2sv glMultiTexCoord3d glMultiTexCoord3dv glMultiTexCoord3f glMultiTexCoord3fv "
    "glMultiTexCoord3i glMultiTexCoord3iv glMultiTexCoord3s glMultiTexCoord3sv glMultiTexCoord4d "
    "glMultiTexCoord4dv glMultiTexCoord4f glMultiTexCoord4fv glMultiTexCoord4i glMultiTexCoord4iv "
    "glMultiTexCoord4s glMultiTexCoord4sv glActiveTexture glClientActiveTexture";

inline constexpr const char* kMultiDraw = "glMultiDrawArraysEXT glMultiDrawElementsEXT";

inline constexpr const char* kPrograms =
    "glVertexAttrib1sARB glVertexAttrib1fARB glVertexAttrib1dARB glVertexAttrib2sARB glVertexAttrib2fARB "
    "glVertexAttrib2dARB glVertexAttrib3sARB glVertexAttrib3fARB glVertexAttrib3dARB glVertexAttrib4sARB "
    "glVertexAttrib4fARB glVertexAttrib4dARB glVertexAttrib4NubARB glVertexAttrib1svARB "
    "glVertexAttrib1fvARB glVertexAttrib1dvARB glVertexAttrib2svARB glVertexAttrib2fvARB "
    "glVertexAttrib2dvARB glVertexAttrib3svARB glVertexAttrib3fvARB glVertexAttrib3dvARB "
    "glVertexAttrib4bvARB glVertexAttrib4svARB glVertexAttrib4ivARB glVertexAttrib4ubvARB "
    "glVertexAttrib4usvARB glVertexAttrib4uivARB glVertexAttrib4fvARB glVertexAttrib4dvARB "
    "glVertexAttrib4NbvARB glVertexAttrib4NsvARB glVertexAttrib4NivARB glVertexAttrib4NubvARB "
    "glVertexAttrib4NusvARB glVertexAttrib4NuivARB glVertexAttribPointerARB glEnableVertexAttribArrayARB "
    "glDisableVertexAttribArrayARB glProgramStringARB glBindProgramARB glDeleteProgramsARB "
    "glGenProgramsARB glProgramEnvParameter4dARB glProgramEnvParameter4dvARB glProgramEnvParameter4fARB "
    "glProgramEnvParameter4fvARB glProgramLocalParameter4dARB glProgramLocalParameter4dvARB "
    "glProgramLocalParameter4fARB glProgramLocalParameter4fvARB glGetProgramEnvParameterdvARB "
    "glGetProgramEnvParameterfvARB glGetProgramLocalParameterdvARB glGetProgramLocalParameterfvARB "
    "glGetProgramivARB glGetProgramStringARB glGetVertexAttribdvARB glGetVertexAttribfvARB "
    "glGetVertexAttribivARB glGetVertexAttribPointervARB glIsProgramARB";

inline constexpr const char* kOcclusionQuery =
    "glGenQueriesARB glDeleteQueriesARB glIsQueryARB glBeginQueryARB glEndQueryARB glGetQueryivARB "
    "glGetQueryObjectivARB glGetQueryObjectuivARB";

inline constexpr const char* kNVOcclusionQuery =
    "glGenOcclusionQueriesNV glDeleteOcclusionQueriesNV glIsOcclusionQueryNV glBeginOcclusionQueryNV "
    "glEndOcclusionQueryNV glGetOcclusionQueryivNV glGetOcclusionQueryuivNV";

inline constexpr const char* kVertexBufferObject =
    "glBindBufferARB glDeleteBuffersARB glGenBuffersARB glIsBufferARB glBufferDataARB glBufferSubDataARB "
    "glGetBufferSubDataARB glMapBufferARB glUnmapBufferARB glGetBufferParameterivARB "
    "glGetBufferPointervARB";

inline constexpr const char* kColorBufferFloat = "glClampColorARB";

inline constexpr const char* kShaderObjects =
    "glDeleteObjectARB glGetHandleARB glDetachObjectARB glCreateShaderObjectARB glShaderSourceARB "
    "glCompileShaderARB glCreateProgramObjectARB glAttachObjectARB glLinkProgramARB glUseProgramObjectARB "
    "glValidateProgramARB glUniform1fARB glUniform2fARB glUniform3fARB glUniform4fARB glUniform1iARB "
    "glUniform2iARB glUniform3iARB glUniform4iARB glUniform1fvARB glUniform2fvARB glUniform3fvARB "
    "glUniform4fvARB glUniform1ivARB glUniform2ivARB glUniform3ivARB glUniform4ivARB glUniformMatrix2fvARB "
    "glUniformMatrix3fvARB glUniformMatrix4fvARB glGetObjectParameterfvARB glGetObjectParameterivARB "
    "glGetInfoLogARB glGetAttachedObjectsARB glGetUniformLocationARB glGetActiveUniformARB "
    "glGetUniformfvARB glGetUniformivARB glGetShaderSourceARB glBindAttribLocationARB glGetActiveAttribARB "
    "glGetAttribLocationARB";

inline constexpr const char* kPrimitiveRestart = "glPrimitiveRestartNV glPrimitiveRestartIndexNV";

inline constexpr const char* kTextureArray = "glFramebufferTextureLayerEXT";

inline constexpr const char* kNVTransformFeedback =
    "glActiveVaryingNV glBeginTransformFeedbackNV glBindBufferBaseNV glBindBufferOffsetNV "
    "glBindBufferRangeNV glEndTransformFeedbackNV glGetActiveVaryingNV glGetTransformFeedbackVaryingNV "
    "glGetVaryingLocationNV glTransformFeedbackAttribsNV glTransformFeedbackVaryingsNV";

inline constexpr const char* kEXTTransformFeedback =
    "glBeginTransformFeedbackEXT glBindBufferBaseEXT glBindBufferOffsetEXT glBindBufferRangeEXT "
    "glEndTransformFeedbackEXT glGetTransformFeedbackVaryingEXT glTransformFeedbackVaryingsEXT";

/// Always, and last.
inline constexpr const char* kGlx =
    "glXQueryExtensionsString glXQueryVersion glXChooseVisual glXCreateContext glXDestroyContext "
    "glXMakeCurrent glXSwapBuffers glXGetConfig glXGetCurrentContext glXGetCurrentDrawable "
    "glXGetCurrentDisplay glXWaitGL glXWaitX glXDestroyPbuffer glXChooseFBConfig glXGetFBConfigAttrib "
    "glXGetFBConfigs glXGetVisualFromFBConfig glXCreateWindow glXDestroyWindow glXCreatePbuffer "
    "glXQueryDrawable glXCreateNewContext glXMakeContextCurrent glXGetCurrentReadDrawable glXQueryContext "
    "glXSelectEvent glXGetSelectedEvent glXCreateGLXPbufferSGIX glXCreateContextWithConfigSGIX "
    "glXChooseFBConfigSGIX glXGetVisualFromFBConfigSGIX";
