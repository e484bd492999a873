#pragma once

#include "orlohost/Export.h"

#include <cstdint>

namespace koSharedObject {

/// A heap object that its users keep alive by counting references.
///
/// The count starts at 0: the first user takes a reference too. The unref that brings the count back to 0
/// deletes the object. Not for the stack, and not thread-safe: one thread owns the GL context and all of
/// these.
class ORLOHOST_API SharedObject {
public:
    SharedObject() = default;
    SharedObject(const SharedObject&) = delete;
    SharedObject& operator=(const SharedObject&) = delete;

    virtual void ref();   ///< counts one more owner
    virtual void unref(); ///< counts one less, and deletes the object with the last

    /// References held at the moment.
    int32_t refCount() const { return fRefCount; }

    virtual ~SharedObject();

private:
    int32_t fRefCount = 0;
};

} // namespace koSharedObject
