#include "particle/GLParticleDrawBase.h"

#include "gl/GLFunctionTable.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

koLinear::VectorFlt vectorOf(const float* v) {
    return {v[0], v[1], v[2]};
}

void setColumn(float* column, const koLinear::VectorFlt& v, float fourth) {
    std::copy_n(v.data(), 3, column);
    column[3] = fourth;
}

} // namespace

GLParticleDrawBase::GLParticleDrawBase() {
    initRandom3();
}

GLParticleDrawBase::GLParticleDrawBase(const ParticleData& data)
    : fParticleData(const_cast<ParticleData*>(&data)), // counting references changes no particle
      fIterator(new (std::nothrow) ParticleDataIterator(data, nullptr, 0)) {
    fParticleData->ref();
    initRandom3();
}

GLParticleDrawBase::~GLParticleDrawBase() {
    if (fParticleData)
        fParticleData->unref();
    delete fIterator;
    fAlignmentInfo = nullptr;
    fReserved = 0;
}

void GLParticleDrawBase::setData(const ParticleData& data) {
    if (fParticleData == &data)
        return;
    if (fParticleData) {
        const bool dies = fParticleData->refCount() == 1;
        if (dies && fIterator && &fIterator->data() == fParticleData) {
            delete fIterator;
            fIterator = nullptr;
        }
        fParticleData->unref();
    }
    fParticleData = const_cast<ParticleData*>(&data);
    fParticleData->ref();
}

void GLParticleDrawBase::setIterator(const ParticleDataIterator& iterator) {
    fIterator = const_cast<ParticleDataIterator*>(&iterator);
}

AlignmentInfo* GLParticleDrawBase::createAlignmentInfo(const koLinear::Point& camPos,
                                                       const koLinear::Vector& camUp,
                                                       const koLinear::ProjMatrix& a,
                                                       const koLinear::ProjMatrix& b) {
    koLinear::ProjMatrix toObject;
    toObject.preMult(a);
    toObject.preMult(b);

    koLinear::HPoint position = toObject.transform(koLinear::HPoint(camPos));
    if (position[3] != 0.0 && position[3] != 1.0) {
        for (int i = 0; i < 3; ++i)
            position[i] /= position[3];
    }
    const koLinear::Vector up = koLinear::AffineMatrix(toObject).transform(camUp);

    delete fAlignmentInfo;
    fAlignmentInfo = new (std::nothrow) AlignmentInfo{};
    if (!fAlignmentInfo)
        return nullptr;
    for (int i = 0; i < 3; ++i) {
        fAlignmentInfo->fCameraPosition[i] = static_cast<float>(position[i]);
        fAlignmentInfo->fCameraUp[i] = static_cast<float>(up[i]);
    }
    fAlignmentInfo->fTwist = 0.0F;
    fAlignmentInfo->fScaleX = 1.0F;
    fAlignmentInfo->fScaleY = 1.0F;
    fAlignmentInfo->fReserved = 1.0F;
    return fAlignmentInfo;
}

bool GLParticleDrawBase::setAlignTwist(float degrees) {
    if (fAlignmentInfo)
        fAlignmentInfo->fTwist = degrees;
    return fAlignmentInfo;
}

bool GLParticleDrawBase::setAlignScaleX(float scale) {
    if (fAlignmentInfo)
        fAlignmentInfo->fScaleX = scale;
    return fAlignmentInfo;
}

bool GLParticleDrawBase::setAlignScaleY(float scale) {
    if (fAlignmentInfo)
        fAlignmentInfo->fScaleY = scale;
    return fAlignmentInfo;
}

bool GLParticleDrawBase::alignToCamera(float* position, float* axis, float** columns) const {
    if (!columns || !fAlignmentInfo)
        return false;
    const float* camera = fAlignmentInfo->fCameraPosition;
    const koLinear::VectorFlt toCamera(camera[0] - position[0], camera[1] - position[1],
                                       camera[2] - position[2]);
    const koLinear::VectorFlt right = cross(vectorOf(fAlignmentInfo->fCameraUp), toCamera);
    setColumn(columns[0], right, 0.0F);
    setColumn(columns[1], cross(toCamera, right), 0.0F);
    setColumn(columns[2], vectorOf(axis), 0.0F);
    setColumn(columns[3], vectorOf(position), 1.0F);
    return true;
}

bool GLParticleDrawBase::alignToYZ(float* axis, float** columns) const {
    if (!columns || !fAlignmentInfo)
        return false;
    const koLinear::VectorFlt right = cross(vectorOf(fAlignmentInfo->fCameraUp), vectorOf(axis));
    setColumn(columns[0], right, 0.0F);
    setColumn(columns[1], cross(vectorOf(axis), right), 0.0F);
    setColumn(columns[2], vectorOf(axis), 0.0F);
    setColumn(columns[3], {}, 1.0F);
    return true;
}

void GLParticleDrawBase::setMaterialProperties(float shininess, koColor::Color& ambient,
                                               koColor::Color& diffuse, koColor::Color& emission,
                                               koColor::Color& specular) {
    fShininess = shininess;
    fAmbient = ambient;
    fDiffuse = diffuse;
    fEmission = emission;
    fSpecular = specular;
}

void GLParticleDrawBase::applyMaterialProperties() const {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, fShininess);
    gl->glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, fAmbient.data());
    gl->glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, fEmission.data());
    gl->glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, fSpecular.data());
    gl->glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, fDiffuse.data());
}

int GLParticleDrawBase::setObjectSeed(const char* name) {
    // Oddity: the first character weighs nothing: names that differ in it alone share their offsets, and
    // pictures of existing scenes count on that.
    const size_t length = name ? std::strlen(name) : 0;
    fSeed = 0;
    for (size_t i = 0; i < length; ++i)
        fSeed += static_cast<uint32_t>(i) * static_cast<unsigned char>(name[i]);
    return static_cast<int>(length);
}
