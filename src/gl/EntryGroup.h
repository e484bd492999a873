#pragma once

/// The groups of GLEntryPoints.inc: what is resolved together, under one condition.
enum class EntryGroup {
    Core11,
    DrawRangeElements,
    Texture3D,
    Multitexture,
    MultiDraw,
    ShaderObjects,
    BlendEquation,
    PointParameters,
    VertexBufferObject,
    Programs,
    ATIFragmentShader,
    CompiledVertexArray,
    SecondaryColor,
    EXTVertexShader,
    NVVertexProgram,
    NVRegisterCombiners,
    NVOcclusionQuery,
    NVPrimitiveRestart,
    OcclusionQuery,
    ColorBufferFloat,
    FramebufferObject,
    FramebufferMultisample,
    TextureArray,
    NVTransformFeedback,
    EXTTransformFeedback,
    NeverFilled
};
