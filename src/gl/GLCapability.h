#pragma once

#include <cstdint>

/// Every capability and its index. A value that no start-up sets (the unassigned ones, and
/// kCapTextureCubeMap, which hosts may set themselves) reads as absent.
#define ORLO_CAPABILITIES(CAPABILITY)                                                                        \
    CAPABILITY(kCapUnassigned0, 0)                                                                           \
    CAPABILITY(kCapDrawRangeElements, 1)                                                                     \
    CAPABILITY(kCapUnassigned2, 2)                                                                           \
    CAPABILITY(kCapRescaleNormal, 3)                                                                         \
    CAPABILITY(kCapSeparateSpecularColor, 4)                                                                 \
    CAPABILITY(kCapTexture3D, 5)                                                                             \
    CAPABILITY(kCapTextureEdgeClamp, 6)                                                                      \
    CAPABILITY(kCapTextureCubeMap, 7)                                                                        \
    CAPABILITY(kCapMultitexture, 8)                                                                          \
    CAPABILITY(kCapUnassigned9, 9)                                                                           \
    CAPABILITY(kCapUnassigned10, 10)                                                                         \
    CAPABILITY(kCapUnassigned11, 11)                                                                         \
    CAPABILITY(kCapUnassigned12, 12)                                                                         \
    CAPABILITY(kCapTextureEnvCombine, 13)                                                                    \
    CAPABILITY(kCapUnassigned14, 14)                                                                         \
    CAPABILITY(kCapUnassigned15, 15)                                                                         \
    CAPABILITY(kCapUnassigned16, 16)                                                                         \
    CAPABILITY(kCapMultiDrawArrays, 17)                                                                      \
    CAPABILITY(kCapTextureNonPowerOfTwo, 18)                                                                 \
    CAPABILITY(kCapTextureRectangle, 19)                                                                     \
    CAPABILITY(kCapUnassigned20, 20)                                                                         \
    CAPABILITY(kCapUnassigned21, 21)                                                                         \
    CAPABILITY(kCapUnassigned22, 22)                                                                         \
    CAPABILITY(kCapBlendSubtract, 23)                                                                        \
    CAPABILITY(kCapUnassigned24, 24)                                                                         \
    CAPABILITY(kCapUnassigned25, 25)                                                                         \
    CAPABILITY(kCapUnassigned26, 26)                                                                         \
    CAPABILITY(kCapUnassigned27, 27)                                                                         \
    CAPABILITY(kCapUnassigned28, 28)                                                                         \
    CAPABILITY(kCapUnassigned29, 29)                                                                         \
    CAPABILITY(kCapPointParameters, 30)                                                                      \
    CAPABILITY(kCapUnassigned31, 31)                                                                         \
    CAPABILITY(kCapDepthTexture, 32)                                                                         \
    CAPABILITY(kCapShadow, 33)                                                                               \
    CAPABILITY(kCapShadowAmbient, 34)                                                                        \
    CAPABILITY(kCapSGIXDepthTexture, 35)                                                                     \
    CAPABILITY(kCapSGIXShadow, 36)                                                                           \
    CAPABILITY(kCapTexgenReflection, 37)                                                                     \
    CAPABILITY(kCapARBVertexProgram, 38)                                                                     \
    CAPABILITY(kCapARBFragmentProgram, 39)                                                                   \
    CAPABILITY(kCapOcclusionQuery, 40)                                                                       \
    CAPABILITY(kCapVertexBufferObject, 41)                                                                   \
    CAPABILITY(kCapHalfFloatPixel, 42)                                                                       \
    CAPABILITY(kCapTextureFloat, 43)                                                                         \
    CAPABILITY(kCapColorBufferFloat, 44)                                                                     \
    CAPABILITY(kCapFragmentProgramShadow, 45)                                                                \
    CAPABILITY(kCapUnassigned46, 46)                                                                         \
    CAPABILITY(kCapNVFloatBuffer, 47)                                                                        \
    CAPABILITY(kCapShaderObjects, 48)                                                                        \
    CAPABILITY(kCapCompiledVertexArray, 49)                                                                  \
    CAPABILITY(kCapUnassigned50, 50)                                                                         \
    CAPABILITY(kCapSecondaryColor, 51)                                                                       \
    CAPABILITY(kCapUnassigned52, 52)                                                                         \
    CAPABILITY(kCapUnassigned53, 53)                                                                         \
    CAPABILITY(kCapEXTVertexShader, 54)                                                                      \
    CAPABILITY(kCapTextureFilterAnisotropic, 55)                                                             \
    CAPABILITY(kCapTextureCompressionS3TC, 56)                                                               \
    CAPABILITY(kCapEXTTransformFeedback, 57)                                                                 \
    CAPABILITY(kCapATIFragmentShader, 58)                                                                    \
    CAPABILITY(kCapATIMeminfo, 59)                                                                           \
    CAPABILITY(kCapUnassigned60, 60)                                                                         \
    CAPABILITY(kCapNVRegisterCombiners, 61)                                                                  \
    CAPABILITY(kCapNVTextureShader, 62)                                                                      \
    CAPABILITY(kCapUnassigned63, 63)                                                                         \
    CAPABILITY(kCapNVVertexProgram, 64)                                                                      \
    CAPABILITY(kCapNVFragmentProgram, 65)                                                                    \
    CAPABILITY(kCapNVOcclusionQuery, 66)                                                                     \
    CAPABILITY(kCapNVPrimitiveRestart, 67)                                                                   \
    CAPABILITY(kCapNVTransformFeedback, 68)                                                                  \
    CAPABILITY(kCapNVXGpuMemoryInfo, 69)                                                                     \
    CAPABILITY(kCapGenerateMipmap, 70)                                                                       \
    CAPABILITY(kCapFramebufferObject, 71)                                                                    \
    CAPABILITY(kCapPackedDepthStencil, 72)                                                                   \
    CAPABILITY(kCapFramebufferMultisample, 73)                                                               \
    CAPABILITY(kCapTextureArray, 74)                                                                         \
    CAPABILITY(kCapUnassigned75, 75)                                                                         \
    CAPABILITY(kCapUnassigned76, 76)                                                                         \
    CAPABILITY(kCapUnassigned77, 77)                                                                         \
    CAPABILITY(kCapUnassigned78, 78)                                                                         \
    CAPABILITY(kCapUnassigned79, 79)                                                                         \
    CAPABILITY(kCapUnassigned80, 80)                                                                         \
    CAPABILITY(kCapUnassigned81, 81)                                                                         \
    CAPABILITY(kCapGLXPbuffer, 82)                                                                           \
    CAPABILITY(kCapGLXFBConfig, 83)                                                                          \
    CAPABILITY(kCapGLXNewContext, 84)                                                                        \
    CAPABILITY(kCapGLXWindow, 85)                                                                            \
    CAPABILITY(kCapGLXDestroyPbuffer, 86)                                                                    \
    CAPABILITY(kCapSGIXPbuffer, 87)                                                                          \
    CAPABILITY(kCapSGIXChooseFBConfig, 88)                                                                   \
    CAPABILITY(kCapSGIXContextWithConfig, 89)                                                                \
    CAPABILITY(kCapSGIXVisualFromFBConfig, 90)

/// What an implementation of OpenGL may offer beyond version 1.1.
///
/// The values index GLFunctionTable::fExtSupported (found at start-up) and GLFunctionTable::fExtEnabled (the
/// host's veto). A capability is usable when both are true; GLFunctionTable::usable tests the pair.
enum GLCapability : uint32_t {
#define ORLO_CAPABILITY(name, index) name = (index),
    ORLO_CAPABILITIES(ORLO_CAPABILITY)
#undef ORLO_CAPABILITY
};

/// How many capabilities there are: the size of both flag arrays.
inline constexpr uint32_t kCapabilityCount = 91;
static_assert(kCapSGIXVisualFromFBConfig == kCapabilityCount - 1);
