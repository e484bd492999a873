#pragma once

// GoogleTest first: Xlib's macros None, Bool and True break its headers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeX.h"
#include "RecordingGL.h"

#include "gl/GLFunctionTable.h"

#include "orlohost/koSharedObject.h"

#include <memory>

struct Unref {
    void operator()(koSharedObject::SharedObject* object) const { object->unref(); }
};
template <typename T>
using Shared = std::unique_ptr<T, Unref>;

/// A new object with one reference on it.
template <typename T, typename... Arguments>
Shared<T> makeShared(Arguments&&... arguments) {
    Shared<T> object(new T(std::forward<Arguments>(arguments)...));
    object->ref();
    return object;
}

/// A test on the recording GL with a filled global table: version 2.1, every extension that the library
/// knows, all 8 texture units. The record is empty when the test begins.
class DoubleTest : public testing::Test {
protected:
    DoubleTest() {
        resetRecording();
        script().extensions = kEveryExtension;
        fTable.populate();
        clearRecorded();
        GLFunctionTable::fpGlobalFunctionTable = &fTable;
    }
    ~DoubleTest() override { GLFunctionTable::fpGlobalFunctionTable = nullptr; }

    GLFunctionTable& gl() { return fTable; }

    static Calls made() {
        Calls calls = recorded();
        clearRecorded();
        return calls;
    }

    static constexpr const char* kEveryExtension =
        "GL_ARB_multisample GL_EXT_texture_filter_anisotropic GL_ARB_shadow_ambient GL_SGIX_depth_texture "
        "GL_SGIX_shadow GL_EXT_blend_subtract GL_EXT_compiled_vertex_array GL_ATI_fragment_shader "
        "GL_EXT_vertex_shader GL_NV_texture_shader GL_NV_register_combiners GL_NV_vertex_program "
        "GL_NV_fragment_program GL_EXT_framebuffer_object GL_EXT_packed_depth_stencil GL_ARB_vertex_program "
        "GL_ARB_fragment_program GL_ARB_fragment_program_shadow GL_HP_occlusion_test GL_NV_occlusion_query "
        "GL_ARB_texture_float GL_ARB_half_float_pixel GL_ARB_color_buffer_float GL_NV_float_buffer "
        "GL_NV_primitive_restart GL_EXT_texture_array GL_EXT_texture_compression_s3tc "
        "GL_NV_transform_feedback GL_EXT_transform_feedback GL_NVX_gpu_memory_info GL_ATI_meminfo";

private:
    GLFunctionTable fTable;
};
