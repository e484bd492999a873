#pragma once

// OrloGL in one include.
//
// What the library does not do: it opens no display and no window of the host's, starts no thread, takes no
// lock, installs no X error handler, loads no file but shaders (Cg and GLSL) and the libraries of GL, GLU and
// Cg, keeps no scene. The host does; the library draws.
//
// The table (GLFunctionTable::fpGlobalFunctionTable) is null until the start-up. What a header says needs the
// table crashes before it; all else answers with its failure.
//
// The road of a frame:
//  1. once: GLStartupContext, which finds GL and fills the table; then
//  GLFunctionTable::ensureLiveMultitexture
//  2. once per target: GLFrameBuffer::createOffscreen, or createInWindowPortably
//  3. GLFrameBuffer::makeCurrent, then the viewport
//  4. GLPassState::applyGL
//  5. GLCamera::bind
//  6. GLLighting::bind for each light
//  7. textures and shaders bound
//  8. GLRouting::drawGroup for each geometry group, GLParticleDrawBase::draw for each particle object
//  9. GLFrameBuffer::swapBuffers, or readColorBuffer into a PixelArray2D

#include "framebuffer/GLFrameBuffer.h"
#include "geometry/GLObject.h"
#include "geometry/GLOcclusionQuery.h"
#include "geometry/GLRouting.h"
#include "gl/GLCallLog.h"
#include "gl/GLCapability.h"
#include "gl/GLDebugOutput.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLShaderCompiler.h"
#include "gl/GLStartupContext.h"
#include "gl/GLUtility.h"
#include "gl/LibraryVersion.h"
#include "particle/GLParticleCloudDraw.h"
#include "particle/GLParticleDrawBase.h"
#include "particle/GLParticleMultiPointDraw.h"
#include "particle/GLParticlePointDraw.h"
#include "particle/GLParticleSphereDraw.h"
#include "particle/GLParticleSpriteDraw.h"
#include "particle/GLParticleStreakDraw.h"
#include "shader/CGManager.h"
#include "shader/CGcontextSingleton.h"
#include "shader/CgEntryPoints.h"
#include "shader/GL2ProgramObject.h"
#include "shader/GL2Shader.h"
#include "shader/GlslManager.h"
#include "shader/GlslShader.h"
#include "state/GLCamera.h"
#include "state/GLLight.h"
#include "state/GLLighting.h"
#include "state/GLPassState.h"
#include "texture/GLAttenuationLightMap.h"
#include "texture/GLNormalCubeMap.h"
#include "texture/GLSpotLightMap.h"
#include "texture/GLTexUnitState.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture1D.h"
#include "texture/GLTexture2D.h"
#include "texture/GLTexture3D.h"
#include "texture/GLTextureCache.h"
#include "texture/GLTextureCubeMap.h"
#include "texture/IGLTexture.h"
#include "texture/TextureManager.h"
