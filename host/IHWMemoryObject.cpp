#include "orlohost/IHWMemoryObject.h"

uint32_t IHWMemoryObject::fsMemoryUsage = 0;

IHWMemoryObject::~IHWMemoryObject() = default;
