#include "orlohost/GeometryData.h"

#include <algorithm>
#include <memory_resource>
#include <utility>

namespace {

/// Never ended: groups of static storage may outlive any other object.
std::pmr::memory_resource& pool() {
#ifdef __SANITIZE_ADDRESS__
    return *std::pmr::new_delete_resource(); // who reads what is gone is to be caught
#else
    static auto* resource = new std::pmr::synchronized_pool_resource({.max_blocks_per_chunk = 1024});
    return *resource;
#endif
}

} // namespace

void* PooledGeometry::operator new(size_t size) {
    return pool().allocate(size);
}

void PooledGeometry::operator delete(void* memory, size_t size) {
    pool().deallocate(memory, size);
}

GeometryData::GeometryData(DataType type, uint32_t componentsPerElement, std::vector<float> values)
    : fDataType(type), fComponentsPerElement(componentsPerElement), fKept(std::move(values)) {
    fData = fKept.data();
    if (componentsPerElement != 0)
        fElementCount = static_cast<uint32_t>(fKept.size() / componentsPerElement);
}

GeometryData::~GeometryData() {
    deleteHanger();
}

uint32_t GeometryData::elementTypeSize(uint32_t elementType) {
    switch (elementType) {
    case kFloat:
    case kInt32:
        return 4;
    case kDouble:
        return 8;
    case kUint8:
        return 1;
    default:
        return 0;
    }
}

void GeometryData::deleteHanger() {
    delete std::exchange(fHanger, nullptr);
}

GeometryDataIndex::GeometryDataIndex(uint32_t primitiveType, std::vector<uint32_t> indices)
    : fPrimitiveType(primitiveType), fIndexCount(static_cast<uint32_t>(indices.size())),
      fAllocatedCount(fIndexCount), fKept(std::move(indices)) {
    fIndices = fKept.data();
}

void GeometryDataIterator::reset(const GeometryDataIndex* record, const GeometryData* stream) {
    fRecord = record;
    fStream = stream || !record ? stream : record->fStream;
    fPosition = 0;
}

const float* GeometryDataIterator::current() const {
    static constexpr float kNoElement[4] = {0.0F, 0.0F, 0.0F, 1.0F};
    if (done() || !fStream || fStream->fElementType != GeometryData::kFloat)
        return kNoElement;
    const uint32_t index = fRecord->fIndices[fPosition];
    if (index >= fStream->fElementCount)
        return kNoElement;
    return static_cast<const float*>(fStream->fData) + size_t{index} * fStream->fComponentsPerElement;
}

GeometryLogicalGroup::~GeometryLogicalGroup() {
    deleteHangers();
}

GeometryData& GeometryLogicalGroup::addStream(GeometryData::DataType type, uint32_t componentsPerElement,
                                              std::vector<float> values) {
    return addStream(std::make_unique<GeometryData>(type, componentsPerElement, std::move(values)));
}

GeometryData& GeometryLogicalGroup::addStream(std::unique_ptr<GeometryData> stream) {
    fDrawPlan.reset();
    return *fStreams.emplace_back(std::move(stream));
}

GeometryDataIndex& GeometryLogicalGroup::addIndexRecord(uint32_t primitiveType,
                                                        std::vector<uint32_t> indices) {
    return addIndexRecord(std::make_unique<GeometryDataIndex>(primitiveType, std::move(indices)));
}

GeometryDataIndex& GeometryLogicalGroup::addIndexRecord(std::unique_ptr<GeometryDataIndex> record) {
    fDrawPlan.reset();
    return *fIndexRecords.emplace_back(std::move(record));
}

void GeometryLogicalGroup::addIndexBlock(uint32_t primitiveType,
                                         const std::vector<std::vector<uint32_t>>& lists) {
    std::vector<uint32_t> block;
    for (const auto& list : lists)
        block.insert(block.end(), list.begin(), list.end());
    const auto allocated = static_cast<uint32_t>(block.size());
    block.push_back(0); // The upload of a block takes one word more than is allocated.

    // The first record keeps the store that all of them point into.
    auto first = std::make_unique<GeometryDataIndex>(primitiveType, std::move(block));
    const uint32_t* store = first->fIndices;
    uint32_t start = 0;
    for (const auto& list : lists) {
        GeometryDataIndex& record = addIndexRecord(
            first ? std::move(first) : std::make_unique<GeometryDataIndex>(primitiveType, store + start, 0));
        record.fIndexCount = static_cast<uint32_t>(list.size());
        record.fAllocatedCount = allocated;
        record.fStart = start;
        start += record.fIndexCount;
    }
}

void GeometryLogicalGroup::deleteHangers() {
    fDrawPlan.reset();
    std::vector<IHWMemoryObject*> hangers;
    for (const auto& record : fIndexRecords)
        hangers.push_back(std::exchange(record->fHanger, nullptr));
    std::sort(hangers.begin(), hangers.end());
    hangers.erase(std::unique(hangers.begin(), hangers.end()), hangers.end());
    for (IHWMemoryObject* hanger : hangers)
        delete hanger;
    for (const auto& stream : fStreams)
        stream->deleteHanger();
}
