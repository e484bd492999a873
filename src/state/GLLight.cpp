#include "state/GLLight.h"

#include "gl/GLFunctionTable.h"
#include "state/GLCamera.h"
#include "texture/GLTexture2D.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>

int32_t GLLight::fsNumInstances_GLLight = 0;

namespace {

struct Placement {
    float position[4];
    float spotDirection[4];
};

/// Where a light of each type stands in its own frame, indexed by IHWLight::LightType.
constexpr std::array<Placement, 4> kPlacements = {{
    {{0.0F, 0.0F, 0.0F, 1.0F}, {0.0F, 0.0F, -1.0F, 0.0F}},
    {{0.0F, 0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 0.0F, 0.0F}},
    {{0.0F, 0.0F, 0.0F, 1.0F}, {0.0F, 0.0F, 0.0F, 0.0F}},
    {{0.0F, 0.0F, 0.0F, 1.0F}, {0.0F, 0.0F, 0.0F, 0.0F}},
}};

void release(IGLTexture*& texture) {
    if (texture)
        texture->unref();
    texture = nullptr;
}

} // namespace

GLLight::GLLight() {
    ++fsNumInstances_GLLight;
}

GLLight::~GLLight() {
    GLLight::removeShadowMaps();
    GLLight::removeTextures();
    GLLight::removeProjector();
    --fsNumInstances_GLLight;
}

void GLLight::setLightType(LightType type) {
    fLightType = type;
    if (type >= kPlacements.size())
        return;
    std::copy_n(kPlacements[type].position, 4, fPosition);
    std::copy_n(kPlacements[type].spotDirection, 4, fSpotDirection);
}

void GLLight::releaseLightResources() {
    removeShadowMaps();
}

void GLLight::addProjector(unsigned int count) {
    removeProjector();
    try {
        fProjectors.reserve(count);
    } catch (const std::exception&) { // more than there is memory for, or than a vector can hold
        return;
    }
    for (unsigned int i = 0; i < count; ++i) {
        auto* projector = new (std::nothrow) GLCamera;
        if (!projector)
            return;
        projector->fIsProjector = true;
        fProjectors.push_back(projector);
    }
}

void GLLight::removeProjector() {
    for (IHWCamera* projector : fProjectors)
        delete projector;
    fProjectors.clear();
}

void GLLight::bind(unsigned short unit) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const GLenum light = GL_LIGHT0 + unit;
    gl->glLightfv(light, GL_AMBIENT, fAmbientColor.data());
    gl->glLightfv(light, GL_DIFFUSE, fDiffuseColor.data());
    gl->glLightfv(light, GL_SPECULAR, fSpecularColor.data());
    gl->glLightf(light, GL_CONSTANT_ATTENUATION, fConstantAttenuation);
    gl->glLightf(light, GL_LINEAR_ATTENUATION, fLinearAttenuation);
    gl->glLightf(light, GL_QUADRATIC_ATTENUATION, fFurtherAttenuationTerms[0] + fFurtherAttenuationTerms[1]);
    gl->glPushMatrix();
    gl->glMultMatrixd(fLightTransform.data());
    gl->glLightfv(light, GL_POSITION, fPosition);
    if (fLightType != kLightSpot) {
        gl->glLightf(light, GL_SPOT_CUTOFF, 180.0F);
        gl->glLightf(light, GL_SPOT_EXPONENT, 0.0F);
    } else {
        gl->glLightf(light, GL_SPOT_CUTOFF, fSpotCutoffAngle);
        gl->glLightf(light, GL_SPOT_EXPONENT, fSpotExponent);
        gl->glLightfv(light, GL_SPOT_DIRECTION, fSpotDirection);
    }
    gl->glEnable(light);
    gl->glPopMatrix();
}

void GLLight::unbind(unsigned short unit) {
    GLFunctionTable::fpGlobalFunctionTable->glDisable(GL_LIGHT0 + unit);
}

void GLLight::allocateShadowMap(RasterFormat format) {
    auto* shadowMap = new (std::nothrow) GLTexture2D(format, false);
    if (!shadowMap)
        return;
    shadowMap->ref();
    try {
        fShadowMaps.push_back(shadowMap);
    } catch (const std::bad_alloc&) {
        shadowMap->unref();
    }
}

void GLLight::removeShadowMaps() {
    for (GLTexture2D* shadowMap : fShadowMaps) {
        if (shadowMap)
            shadowMap->unref();
    }
    fShadowMaps.clear();
}

void GLLight::removeTextures() {
    release(fFirstTexture);
    release(fSecondTexture);
}
