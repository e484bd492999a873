#pragma once

#include "orlohost/Export.h"

#include <cstdint>

/// Something that a renderer keeps in hardware memory on behalf of a record of the host: a "hanger".
///
/// A renderer derives from it, hangs an instance on the record, and finds it there the next time. The record
/// (or the group that owns the record) deletes it with itself; a virtual destructor is all it needs to know.
class ORLOHOST_API IHWMemoryObject {
public:
    IHWMemoryObject() = default;
    virtual ~IHWMemoryObject();

    IHWMemoryObject(const IHWMemoryObject&) = delete;
    IHWMemoryObject& operator=(const IHWMemoryObject&) = delete;

    /// Bytes that all hardware memory objects hold together, kept up to date by those objects. Wraps at 32
    /// bits.
    static uint32_t fsMemoryUsage;
};
