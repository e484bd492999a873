#include "texture/GLNormalCubeMap.h"

#include "gl/GLFunctionTable.h"
#include "texture/TexelBuffer.h"

#include "orlohost/koLinear.h"

#include <array>
#include <cmath>
#include <cstring>

namespace {

using Vector = koLinear::VectorFlt;

Vector unitVector(int face, float s, float t) {
    const Vector sides[] = {{1.0F, -t, -s}, {-1.0F, -t, s}, {s, 1.0F, t},
                            {s, -1.0F, -t}, {s, -t, 1.0F},  {-s, -t, -1.0F}};
    const Vector& v = sides[face];
    const float scale = 1.0F / std::sqrt(dot(v, v));
    return {v[0] * scale, v[1] * scale, v[2] * scale};
}

float centerOf(int texel, int size) {
    return 2.0F * (static_cast<float>(texel) + 0.5F) / static_cast<float>(size) - 1.0F;
}

/// Calls `store` with the unit vector of each texel of a face, row by row.
template <typename Store>
void forEachTexel(int face, int size, Store store) {
    for (int j = 0; j < size; ++j) {
        for (int i = 0; i < size; ++i)
            store(unitVector(face, centerOf(i, size), centerOf(j, size)));
    }
}

void fillRGB(int face, int size, uint8_t* out) {
    forEachTexel(face, size, [&](const Vector& v) {
        for (int axis = 0; axis < 3; ++axis)
            *out++ = static_cast<uint8_t>(std::lround((v[axis] + 1.0F) * 0.5F * 255.0F));
    });
}

void fillHILO(int face, int size, uint8_t* out) {
    forEachTexel(face, size, [&](const Vector& v) {
        const std::array<uint16_t, 2> xy = {static_cast<uint16_t>(v[0] * 32767.0F + 32768.0F),
                                            static_cast<uint16_t>(v[1] * 32767.0F + 32768.0F)};
        std::memcpy(out, xy.data(), sizeof xy);
        out += sizeof xy;
    });
}

} // namespace

int32_t GLNormalCubeMap::fsNumInstances_GLNormalCubeMap = 0;

GLNormalCubeMap::GLNormalCubeMap(int size, bool rgb) : GLTextureCubeMap(kRasterRGB8) {
    bind();
    makeNormalizeVectorCubeMap(size, rgb);
    ++fsNumInstances_GLNormalCubeMap;
}

GLNormalCubeMap::~GLNormalCubeMap() {
    --fsNumInstances_GLNormalCubeMap;
}

void makeNormalizeVectorCubeMap(int size, bool rgb) {
    const std::unique_ptr<uint8_t[]> texels = makeTexelBuffer(size, size, rgb ? 3 : 4);
    if (!texels)
        return;
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    for (int face = 0; face < 6; ++face) {
        const GLenum target = GL_TEXTURE_CUBE_MAP_POSITIVE_X + face;
        if (rgb) {
            fillRGB(face, size, texels.get());
            gl->glTexImage2D(target, 0, GL_RGB8, size, size, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.get());
        } else {
            fillHILO(face, size, texels.get());
            gl->glTexImage2D(target, 0, GL_SIGNED_HILO_NV, size, size, 0, GL_HILO_NV, GL_UNSIGNED_SHORT,
                             texels.get());
        }
    }
}
