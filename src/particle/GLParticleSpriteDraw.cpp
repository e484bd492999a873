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

/// Coordinates x, y and z, and a fourth number that nobody reads.
using Floats = __m128;

/// Two numbers at once, with the very results that each has alone.
using Pair = __m128d;

Floats floats(float x, float y, float z) {
    return _mm_setr_ps(x, y, z, z);
}

koLinear::VectorFlt vectorOf(Floats v) {
    float numbers[4];
    _mm_storeu_ps(numbers, v);
    return {numbers[0], numbers[1], numbers[2]};
}

/// y, z, x.
Floats shifted(Floats v) {
    return _mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(v), _MM_SHUFFLE(3, 0, 2, 1)));
}

/// To the bit what koLinear's is.
Floats cross(Floats a, Floats b) {
    return shifted(a * shifted(b) - shifted(a) * b);
}

/// x and y.
Pair firstTwo(Floats v) {
    return _mm_cvtps_pd(v);
}

/// z and the number behind it.
Pair lastTwo(Floats v) {
    return firstTwo(_mm_movehl_ps(v, v));
}

Pair both(double value) {
    return _mm_set1_pd(value);
}

Pair lower(Pair a, Pair b) {
    return _mm_unpacklo_pd(a, b);
}

Pair upper(Pair a, Pair b) {
    return _mm_unpackhi_pd(a, b);
}

Pair swapped(Pair v) {
    return _mm_shuffle_pd(v, v, 1);
}

koLinear::VectorFlt normalized(koLinear::VectorFlt v) {
    v.normalize();
    return v;
}

/// Where right and up are for the eye: their coordinates x, then y, then z.
struct Axes {
    Pair coordinates[3];
};

/// One unit long, to the bit as normalize makes them, but both at once.
Axes axesOf(Floats toCamera, Floats cameraUp) {
    const Floats right = cross(cameraUp, toCamera);
    const Floats up = cross(toCamera, right);
    const Floats xy = _mm_unpacklo_ps(right, up);
    const Pair x = firstTwo(xy);
    const Pair y = lastTwo(xy);
    const Pair z = firstTwo(_mm_unpackhi_ps(right, up));
    const Pair square = x * x + y * y + z * z;
    // Where the right one is zero or not finite, the other, a product of it, isn't ordinary either.
    const double upSquare = _mm_cvtsd_f64(upper(square, square));
    if (upSquare > 0.0 && upSquare <= kLargest) {
        const Pair inverse = both(1.0) / _mm_sqrt_pd(square);
        const auto rounded = [](Pair value) { return _mm_cvtps_pd(_mm_cvtpd_ps(value)); };
        return {{rounded(x * inverse), rounded(y * inverse), rounded(z * inverse)}};
    }
    const koLinear::VectorFlt r = normalized(vectorOf(right));
    const koLinear::VectorFlt u = normalized(vectorOf(up));
    return {{_mm_setr_pd(r[0], u[0]), _mm_setr_pd(r[1], u[1]), _mm_setr_pd(r[2], u[2])}};
}

/// What the matrix of the base (right, up and place), turned and scaled, makes of the corners of the unit
/// square, to the bit: halves are exact, opposite corners differ by signs alone, and the third coordinate of
/// all corners is 0.
Quad makeQuad(const Axes& axes, Floats place, double cosine, double sine, double scaleX, double scaleY) {
    const Pair sines = _mm_setr_pd(sine, -sine);
    const Pair scales = 0.5 * _mm_setr_pd(scaleX, scaleY);
    Pair halves[3]; // along the square's x, and along its y
    for (int i = 0; i < 3; ++i) {
        const Pair axis = axes.coordinates[i];
        halves[i] = (both(cosine) * axis + sines * swapped(axis)) * scales;
    }
    const Floats middle = place + _mm_setzero_ps(); // never -0, as after the matrix's sum
    const Pair xyAlongX = lower(halves[0], halves[1]);
    const Pair xyAlongY = upper(halves[0], halves[1]);
    const Pair xySum = xyAlongX + xyAlongY;
    const Pair xyDifference = xyAlongX - xyAlongY;
    const Pair zSumAndDifference =
        lower(halves[2], halves[2]) + _mm_xor_pd(upper(halves[2], halves[2]), _mm_setr_pd(0.0, -0.0));
    const Pair xy = firstTwo(middle);
    const Pair zOfCB = lastTwo(middle) + zSumAndDifference;
    const Pair zOfAD = lastTwo(middle) - zSumAndDifference;

    Quad quad;
    auto& [a, b, c, d] = quad.corners;
    _mm_storeu_pd(a, xy - xySum);
    _mm_storel_pd(a + 2, zOfAD);
    _mm_storeu_pd(b, xy + xyDifference);
    _mm_storeh_pd(b + 2, zOfCB);
    _mm_storeu_pd(c, xy + xySum);
    _mm_storel_pd(c + 2, zOfCB);
    _mm_storeu_pd(d, xy - xyDifference);
    _mm_storeh_pd(d + 2, zOfAD);
    return quad;
}

void sendQuad(const GLFunctionTable& gl, const Quad& quad, bool reverse) {
    const auto& [a, b, c, d] = quad.corners;
    gl.glBegin(GL_QUADS);
    if (reverse) {
        gl.glVertex3dv(d);
        gl.glVertex3dv(c);
        gl.glVertex3dv(b);
        gl.glVertex3dv(a);
    } else {
        gl.glVertex3dv(a);
        gl.glVertex3dv(b);
        gl.glVertex3dv(c);
        gl.glVertex3dv(d);
    }
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
    const Floats place = floats(x, y, z);
    const Floats toCamera = floats(fCameraPosition[0], fCameraPosition[1], fCameraPosition[2]) - place;
    if (fLit)
        gl.glNormal3fv(normalized(vectorOf(toCamera)).data());

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
    const Axes axes = axesOf(toCamera, floats(fCameraUp[0], fCameraUp[1], fCameraUp[2]));
    const Quad quad = makeQuad(axes, place, fCosine, fSine, fCurrentScaleX, fCurrentScaleY);

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
