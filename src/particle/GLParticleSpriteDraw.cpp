#include "particle/GLParticleSpriteDraw.h"

#include "gl/GLFunctionTable.h"
#include "particle/ParticleWalk.h"
#include "texture/GLTexUsage.h"
#include "texture/TextureTargets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <emmintrin.h>

namespace {

/// The four corners in the order A, B, C, D, counter-clockwise from the lower left.
struct Quad {
    double corners[4][3];

    static constexpr float kCoordinates[4][2] = {{0.0F, 0.0F}, {1.0F, 0.0F}, {1.0F, 1.0F}, {0.0F, 1.0F}};
};

constexpr double kLargest = std::numeric_limits<double>::max();

/// Two coordinates at once, with the very results that each has alone.
using Pair = __m128d;

Pair pair(float first, float second) {
    return _mm_set_pd(second, first);
}

Pair splat(double value) {
    return _mm_set1_pd(value);
}

Pair roundedToFloats(Pair value) {
    return _mm_cvtps_pd(_mm_cvtpd_ps(value));
}

koLinear::VectorFlt normalized(koLinear::VectorFlt v) {
    v.normalize();
    return v;
}

/// Two directions: the first two coordinates of each, and the third.
struct Axes {
    Pair xs[2];
    Pair ys[2];
};

/// The directions of right and up, with the very results of normalize, but both at once.
Axes axesOf(const koLinear::VectorFlt& right, const koLinear::VectorFlt& up) {
    const Pair coordinates[3] = {pair(right[0], up[0]), pair(right[1], up[1]), pair(right[2], up[2])};
    const Pair square =
        coordinates[0] * coordinates[0] + coordinates[1] * coordinates[1] + coordinates[2] * coordinates[2];
    Pair scaled[3];
    if (_mm_movemask_pd(
            _mm_and_pd(_mm_cmpgt_pd(square, _mm_setzero_pd()), _mm_cmple_pd(square, splat(kLargest)))) == 3) {
        const Pair inverse = splat(1.0) / _mm_sqrt_pd(square);
        for (int i = 0; i < 3; ++i)
            scaled[i] = roundedToFloats(coordinates[i] * inverse);
    } else {
        const koLinear::VectorFlt x = normalized(right);
        const koLinear::VectorFlt y = normalized(up);
        for (int i = 0; i < 3; ++i)
            scaled[i] = pair(x[i], y[i]);
    }
    return {{_mm_unpacklo_pd(scaled[0], scaled[1]), scaled[2]},
            {_mm_unpackhi_pd(scaled[0], scaled[1]), _mm_unpackhi_pd(scaled[2], scaled[2])}};
}

void store(double* corner, Pair first, Pair third) {
    _mm_storeu_pd(corner, first);
    _mm_store_sd(corner + 2, third);
}

/// What the matrix of the base (right, up and place), turned and scaled, makes of the corners of the unit
/// square, to the bit: halves are exact, opposite corners differ by signs alone, and the third coordinate of
/// all corners is 0.
Quad makeQuad(const Axes& axes, const float* place, double cosine, double sine, double scaleX,
              double scaleY) {
    const auto& [xs, ys] = axes;
    const Pair places[2] = {pair(place[0], place[1]), pair(place[2], 0.0F)};
    Pair corners[4][2];
    for (int i = 0; i < 2; ++i) {
        const Pair halfX = 0.5 * ((cosine * xs[i] + sine * ys[i]) * scaleX);
        const Pair halfY = 0.5 * ((cosine * ys[i] - sine * xs[i]) * scaleY);
        const Pair sum = halfX + halfY;
        const Pair difference = halfX - halfY;
        const Pair middle = places[i] + 0.0; // never -0, as after the matrix's sum
        corners[0][i] = -sum + middle;
        corners[1][i] = difference + middle;
        corners[2][i] = sum + middle;
        corners[3][i] = -difference + middle;
    }
    Quad quad;
    for (int corner = 0; corner < 4; ++corner)
        store(quad.corners[corner], corners[corner][0], corners[corner][1]);
    return quad;
}

void sendQuad(const GLFunctionTable& gl, const Quad& quad, bool reverse) {
    gl.glBegin(GL_QUADS);
    for (int i = 0; i < 4; ++i)
        gl.glVertex3dv(quad.corners[reverse ? 3 - i : i]);
    gl.glEnd();
}

void sendTexturedQuad(GLFunctionTable& gl, const Quad& quad, bool reverse) {
    const bool multitexture = gl.usable(kCapMultitexture);
    gl.glBegin(GL_QUADS);
    for (int i = 0; i < 4; ++i) {
        const int corner = reverse ? 3 - i : i;
        const float* st = Quad::kCoordinates[corner];
        if (multitexture)
            gl.glMultiTexCoord2f(GL_TEXTURE0, st[0], st[1]);
        else
            gl.glTexCoord2f(st[0], st[1]);
        gl.glVertex3dv(quad.corners[corner]);
    }
    gl.glEnd();
}

void setTextureMatrix(IHWTexPlacement& placement) {
    if (koLinear::equivalent(placement.fMatrix, koLinear::ProjMatrix(), 1e-10))
        GLTexUsage::setTransform(placement.fOffset, placement.fRepeat, placement.fRotation);
    else
        GLTexUsage::setTransform(placement.fMatrix);
}

void setTextureUsage(GLenum target, IHWTexPlacement& placement) {
    GLTexUsage::setWrapMode(target, placement.fWrapModes[0], placement.fWrapModes[1]);
    GLTexUsage::setMinMagFilter(target, placement.fMinFilter, placement.fMagFilter);
    GLTexUsage::setTexGenMode(target, placement.fGenModes);
    GLTexUsage::setBorderColor(target, placement.fBorderColor);
    GLTexUsage::setFilterAnisotropic(target, placement.fAnisotropic);
}

const float* findValues(const ParticleData& data, const char* name) {
    const int32_t index = data.getDataIndex(name);
    const ParticleData::Data* found = index < 0 ? nullptr : data.getData(index);
    return found ? found->fValues.data() : nullptr;
}

} // namespace

void GLParticleSpriteDraw::setCamPositionOS(koLinear::Point& position) {
    for (int i = 0; i < 3; ++i)
        fCameraPosition[i] = static_cast<float>(position[i]);
}

void GLParticleSpriteDraw::setCamUpVectorOS(koLinear::Vector& up) {
    for (int i = 0; i < 3; ++i)
        fCameraUp[i] = static_cast<float>(up[i]);
}

void GLParticleSpriteDraw::draw(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) {
    if (!fParticleData)
        return;
    const ParticleWalk walk = ParticleWalk::of(*this);
    findNamedData(*walk.data);
    const bool wasCycling = fTextureCycling;
    const bool cycles = fTextureCycling && placement && textures;
    fTextureNumberData = cycles ? fTextureNumber : nullptr;
    if (cycles) {
        fTextureCycling = fTextureNumberData != nullptr;
        fPlacement = fTextureCycling ? placement : nullptr;
        fTextures = fTextureCycling ? textures : nullptr;
    }

    const koColor::Color object = fParticleData->fObjectColor;
    const float gain = fOpacityGain;
    const bool sendsColors = !fIgnoreParticleColors;
    const bool sendsOpacity = fIgnoreParticleColors && fOpacityOnly;
    const auto sendColorOf = [&](const float* color) {
        if (sendsColors)
            sendColor({color[0], color[1], color[2], color[3]});
        else if (sendsOpacity)
            sendColor({1.0F, 1.0F, 1.0F, gain * color[3]});
    };
    const float whole[4] = {object[0], object[1], object[2],
                            sendsColors ? object[3] : fParticleData->fOpacity};
    sendColorOf(whole);

    walk.forEach(
        [&](uint32_t particle, const float* position) {
            if (walk.colors)
                sendColorOf(walk.colors + size_t{particle} * 4);
            drawGLQuadAt(particle, position[0], position[1], position[2]);
        },
        [](uint32_t, uint32_t, const float*) {});
    GLFunctionTable::fpGlobalFunctionTable->glColor4f(1.0F, 1.0F, 1.0F, 1.0F);

    if (cycles) {
        fPlacement = nullptr;
        fTextures = nullptr;
    }
    fTextureCycling = wasCycling;
}

bool GLParticleSpriteDraw::applyTextureCycling(unsigned int index) {
    if (!fTextures || fTextures->empty() || !fPlacement)
        return false;
    // The particle's number picks the texture, not its "textureNumber": hosts sort their lists by it.
    IHWTexture* texture = (*fTextures)[std::min<size_t>(index, fTextures->size() - 1)];
    setTextureMatrix(*fPlacement);
    if (!texture)
        return false;
    texture->bind();
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const GLenum target = textureTarget(texture->fTextureType);
    for (const GLenum other : {GL_TEXTURE_CUBE_MAP, GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D})
        gl.glDisable(other);
    gl.glEnable(target);
    setTextureUsage(target, *fPlacement);
    return true;
}

void GLParticleSpriteDraw::drawGLQuadAt(unsigned int index, float x, float y, float z) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const koLinear::VectorFlt toCamera(fCameraPosition[0] - x, fCameraPosition[1] - y,
                                       fCameraPosition[2] - z);
    const koLinear::VectorFlt right = cross({fCameraUp[0], fCameraUp[1], fCameraUp[2]}, toCamera);
    const koLinear::VectorFlt up = cross(toCamera, right);
    if (fLit)
        gl.glNormal3fv(normalized(toCamera).data());

    if (fScaleX)
        fCurrentScaleX = fScaleX[index];
    if (fScaleY)
        fCurrentScaleY = fScaleY[index];
    if (fTwist)
        fCurrentTwist = fTwist[index];
    if (fCurrentTwist != fTurnedBy) {
        const double angle = fCurrentTwist * 3.141592653589793 / 180.0;
        fCosine = std::cos(angle);
        fSine = std::sin(angle);
        fTurnedBy = fCurrentTwist;
    }
    const float place[3] = {x, y, z};
    const Quad quad = makeQuad(axesOf(right, up), place, fCosine, fSine, fCurrentScaleX, fCurrentScaleY);

    const bool isBound = fTextureCycling && fTextureNumberData && applyTextureCycling(index);
    if (fTextureCycling && (isBound || !fTextureNumberData))
        sendTexturedQuad(gl, quad, fReverseWinding != 0);
    else
        sendQuad(gl, quad, fReverseWinding != 0);
}

void GLParticleSpriteDraw::findNamedData(const ParticleData& data) {
    fTwist = findValues(data, "twist");
    fTextureNumber = findValues(data, "textureNumber");
    fScaleX = findValues(data, "scaleX");
    fScaleY = findValues(data, "scaleY");
}

void GLParticleSpriteDraw::sendColor(const koColor::Color& color) const {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    if (fLit)
        gl.glMaterialfv(GL_FRONT, GL_DIFFUSE, color.data());
    else
        gl.glColor4fv(color.data());
}
