#include <gtest/gtest.h>

#include "gl/GLFunctionTable.h"

namespace {

TEST(Extension, isAWordOfTheList) {
    const struct {
        const char* list;
        const char* name;
        bool found;
    } kCases[] = {
        {"GL_EXT_texture3D", "GL_EXT_texture", false},
        {"GL_EXT_texture3D GL_EXT_texture", "GL_EXT_texture", true},
        {"GL_A GL_B GL_C", "GL_B", true},
        {"GL_A GL_B GL_C", "GL_D", false},
        {"GL_A  GL_B ", "GL_B", true},
        {"XGL_A", "GL_A", false},
        {"GL_A", "GL_AB", false},
        {"", "GL_A", false},
        {"GL_A", "", false},
        {"GL_A GL_B", "GL_A GL_B", false},
        {"GL_A GL_B", "GL_A ", false},
        {nullptr, "GL_A", false},
        {"GL_A", nullptr, false},
        // What begins right behind a rejected occurrence needs no blank before it.
        {"GL_AGL_A GL_B", "GL_A", true},
        {"GL_AGL_A", "GL_A", true},
        {"XGL_AGL_A", "GL_A", true},
        {"XGL_AxGL_A", "GL_A", false},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(isExtensionSupported(reinterpret_cast<const unsigned char*>(c.list), c.name), c.found)
            << (c.list ? c.list : "null") << " / " << (c.name ? c.name : "null");
    }
}

} // namespace
