#pragma once

#include "orlohost/Export.h"
#include "orlohost/IHWMemoryObject.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// What a host draws: a GeometryLogicalGroup of data streams (GeometryData) and index records
// (GeometryDataIndex) that join their elements to triangles, strips or quads.
//
//     GeometryLogicalGroup group;
//     group.addStream(GeometryData::kPosition, 3, {0, 0, 0, 1, 0, 0, 0, 1, 0});
//     group.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});

/// Where streams, records and groups lie: side by side in the order of their making, so that drawing many
/// groups reads on in memory. From the heap they would lie among their elements, a page or more apart, and a
/// scene of ten thousand groups would wait for memory at each of them. What is given back is used again by
/// later ones.
class ORLOHOST_API PooledGeometry {
public:
    static void* operator new(size_t size);                          ///< from the pool
    static void operator delete(void* memory, size_t size);          ///< back to the pool
    static void* operator new(size_t, void* place) { return place; } ///< the placement form, hidden otherwise
};

/// A stream of data: one element per vertex.
///
/// Keeps the elements that it is made with as a vector; others stay where they are as long as the stream is
/// drawn. Owns its hanger (the buffer object that a renderer made of it) and deletes it.
class ORLOHOST_API GeometryData : public PooledGeometry {
public:
    /// What the elements mean. A renderer that is asked to substitute reads kSubstituteNormal wherever a
    /// routing names kNormal: smooth-shaded and faceted normals, say, of the same group.
    enum DataType : uint32_t {
        kNone = 0,
        kPosition = 1,
        kNormal = 2,
        kTexCoord = 3,
        kColor = 4,
        kTangent = 5,
        kBinormal = 6,
        kGeneric = 7,
        kSubstituteNormal = 14,
    };

    /// The type of a component. Only kFloat streams are drawn.
    enum ElementType : uint32_t { kFloat = 0, kDouble = 1, kInt32 = 2, kUint8 = 3 };

    GeometryData() = default;

    /// A stream of floats over memory of the caller, which has to outlive it.
    GeometryData(DataType type, uint32_t componentsPerElement, const float* data, uint32_t elementCount)
        : fDataType(type), fComponentsPerElement(componentsPerElement), fElementCount(elementCount),
          fData(data) {}

    /// A stream that keeps its elements itself; a torn one at the end doesn't count.
    GeometryData(DataType type, uint32_t componentsPerElement, std::vector<float> values);
    ~GeometryData();

    GeometryData(const GeometryData&) = delete;
    GeometryData& operator=(const GeometryData&) = delete;

    /// Bytes of a component of that type; 0 for a value that is none.
    static uint32_t elementTypeSize(uint32_t elementType);

    /// Hands `hanger` over to the stream. The one before it is not deleted: deleteHanger first.
    void setHanger(IHWMemoryObject* hanger) { fHanger = hanger; }

    /// Deletes the hanger. Call it too when the elements have changed: the next drawing uploads them anew.
    void deleteHanger();

    // The first three decide what is drawn once the elements are uploaded, and are looked at on each drawing:
    // side by side, so that it is one look.
    DataType fDataType = kNone;         ///< what the elements are
    uint32_t fComponentsPerElement = 0; ///< 1 to 4

    /// What a renderer hangs on the stream, owned by it: a buffer object. Goes with the stream.
    IHWMemoryObject* fHanger = nullptr;

    ElementType fElementType = kFloat; ///< of what number
    uint32_t fElementCount = 0;        ///< as many as the group has vertices
    const void* fData = nullptr;       ///< the first element; they lie without gaps

    /// The elements that the stream keeps itself.
    std::vector<float> fKept;
};

/// An index record: a run of indices and the kind of primitive that they make.
///
/// Records may come in a block that shares one index store: each has the block's size as its allocated count
/// and knows its start in it, and the first one, at start 0, points at the whole store, which has a word to
/// spare behind its end. A record for itself has as many indices allocated as it uses.
///
/// Keeps indices that it is made with as a vector. Does not own the hanger: several records may share one, so
/// the group that owns the records deletes them (GeometryLogicalGroup::deleteHangers).
class GeometryDataIndex : public PooledGeometry {
public:
    /// The kinds of primitive. A record of type 0 draws nothing.
    enum PrimitiveType : uint32_t { kNothing = 0, kTriangles = 5, kTriangleStrip = 6, kQuads = 8 };

    GeometryDataIndex() = default;

    /// A record over memory of the caller, which has to outlive it.
    GeometryDataIndex(uint32_t primitiveType, const uint32_t* indices, uint32_t indexCount)
        : fPrimitiveType(primitiveType), fIndexCount(indexCount), fIndices(indices),
          fAllocatedCount(indexCount) {}

    /// A record by itself that keeps its indices.
    GeometryDataIndex(uint32_t primitiveType, std::vector<uint32_t> indices);

    GeometryDataIndex(const GeometryDataIndex&) = delete;
    GeometryDataIndex& operator=(const GeometryDataIndex&) = delete;

    /// For renderers: hangs a buffer object on the record, which owns it from then on.
    void setHanger(IHWMemoryObject* hanger) { fHanger = hanger; }

    uint32_t fPrimitiveType = kNothing; ///< a PrimitiveType
    uint32_t fIndexCount = 0;           ///< of all its primitives

    /// What a renderer hangs on the record, owned by it.
    IHWMemoryObject* fHanger = nullptr;
    const uint32_t* fIndices = nullptr; ///< into the streams

    /// Indices allocated for the block that the record belongs to; fIndexCount for a record by itself.
    uint32_t fAllocatedCount = 0;

    /// Where in its block the record's first index is.
    uint32_t fStart = 0;

    /// The one stream that the record indexes, where each stream of a group has index records of its own;
    /// null (the usual case) where the same indices serve all streams.
    const GeometryData* fStream = nullptr;

    /// The indices that the record keeps itself, for all of its block where it is the first of one.
    std::vector<uint32_t> fKept;
};

/// Walks the elements of a stream in the order of an index record.
///
///     for (it.reset(&record, nullptr); !it.done(); it.advance())
///         use(it.current());
///
/// Past the end, and where an index lies outside the stream, the element is (0, 0, 0, 1).
class ORLOHOST_API GeometryDataIterator {
public:
    /// Back to the first index of `record`, into `stream`, or into the record's own stream when that is null.
    void reset(const GeometryDataIndex* record, const GeometryData* stream);

    /// The element of the stream that the index names.
    const float* current() const;
    void advance() { ++fPosition; } ///< to the next index

    /// Whether all indices are through.
    bool done() const { return !fRecord || fPosition >= fRecord->fIndexCount; }

private:
    const GeometryDataIndex* fRecord = nullptr;
    const GeometryData* fStream = nullptr;
    uint32_t fPosition = 0;
};

/// What is drawn with one call: data streams and the index records into them.
///
/// Owns its streams, its records and every hanger on them. Hangers may be GL objects: end the group, or call
/// deleteHangers, while a context that shares them is current. Records of a block: one block per group, added
/// before other records.
class ORLOHOST_API GeometryLogicalGroup : public PooledGeometry {
public:
    GeometryLogicalGroup() = default;
    ~GeometryLogicalGroup();

    GeometryLogicalGroup(const GeometryLogicalGroup&) = delete;
    GeometryLogicalGroup& operator=(const GeometryLogicalGroup&) = delete;

    /// Adds a stream that keeps `values`, `componentsPerElement` floats per element.
    GeometryData& addStream(GeometryData::DataType type, uint32_t componentsPerElement,
                            std::vector<float> values);

    /// Adds a stream over memory of the caller.
    GeometryData& addStream(std::unique_ptr<GeometryData> stream);

    /// Adds a record that keeps `indices`.
    GeometryDataIndex& addIndexRecord(uint32_t primitiveType, std::vector<uint32_t> indices);

    /// Adds a record over memory of the caller.
    GeometryDataIndex& addIndexRecord(std::unique_ptr<GeometryDataIndex> record);

    /// Adds a record for each list, all of them sharing one block (see GeometryDataIndex and
    /// HWEnvironment::orlo_block_allocate_strips).
    void addIndexBlock(uint32_t primitiveType, const std::vector<std::vector<uint32_t>>& lists);

    /// The stream number `index` among those of that type. Where there is none: the first of that type if
    /// `orFirst`, else null.
    GeometryData* geometryDataPtr(GeometryData::DataType type, int32_t index, bool orFirst) const {
        GeometryData* first = nullptr;
        for (const auto& stream : fStreams) {
            if (stream->fDataType != type)
                continue;
            if (index-- == 0)
                return stream.get();
            if (!first)
                first = stream.get();
        }
        return orFirst ? first : nullptr;
    }

    size_t streamCount() const { return fStreams.size(); } ///< of all types

    /// Number i in the order of adding, not checked.
    GeometryData* stream(size_t i) const { return fStreams[i].get(); }

    size_t indexRecordCount() const { return fIndexRecords.size(); } ///< also those of one block

    /// Number i in the order of adding, not checked.
    GeometryDataIndex* indexRecord(size_t i) const { return fIndexRecords[i].get(); }

    /// Deletes what renderers hung on streams and records, a shared hanger once. The next drawing makes new
    /// ones.
    void deleteHangers();

    /// What a renderer remembers of how it drew the group. It is the renderer's alone: the group only keeps
    /// it, and ends it before its hangers and when a stream or a record joins.
    std::unique_ptr<IHWMemoryObject> fDrawPlan;

private:
    std::vector<std::unique_ptr<GeometryData>> fStreams;
    std::vector<std::unique_ptr<GeometryDataIndex>> fIndexRecords;
};
