#include "orlohost/koSharedObject.h"

namespace koSharedObject {

SharedObject::~SharedObject() = default;

void SharedObject::ref() {
    ++fRefCount;
}

void SharedObject::unref() {
    if (--fRefCount <= 0)
        delete this;
}

} // namespace koSharedObject
