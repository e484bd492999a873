#include "orlohost/HWInterfaces.h"

IBaseResource::~IBaseResource() = default;

bool IBaseResource::lock(LockingMode, bool) {
    return true;
}

void IBaseResource::unlock(LockingMode) {}

bool IBaseResource::isLocked(LockingMode) const {
    return false;
}

IBaseResource* IBaseResource::duplicate(bool, bool) {
    return nullptr;
}

IBaseResource* IBaseResource::duplicateInternal(bool) {
    return nullptr;
}

IHWTexture::~IHWTexture() = default;

bool IHWTexture::bind() {
    return false;
}

void IHWTexture::unbind() {}

void IHWTexture::generateMipMaps() {}

void IHWTexture::setImportance(unsigned int) {}

IHWTexPlacement::~IHWTexPlacement() = default;

IHWCamera::~IHWCamera() = default;

void IHWCamera::bind() {}

IHWLight::~IHWLight() = default;
