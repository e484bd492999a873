#include "geometry/DrawPlan.h"

#include <emmintrin.h>

#include <algorithm>
#include <new>
#include <utility>

namespace {

constexpr size_t kMostTexCoords = 4;

/// Comparing more streams than these costs as much as finding the right ones.
constexpr size_t kMostCompared = 32;

#ifdef ORLOGL_TRAP_HOOKS
constexpr bool kSkipsWrappers = false;
#else
constexpr bool kSkipsWrappers = true;
#endif

// Sixteen bytes are compared at once.
static_assert(offsetof(GeometryData, fDataType) == 0 && offsetof(GeometryData, fHanger) == 8);
static_assert(offsetof(GeometryDataIndex, fPrimitiveType) == 0 && offsetof(GeometryDataIndex, fHanger) == 8);

/// All bits of each word of `now` that is as in `planned`, which is aligned.
__m128i compare(__m128i now, const void* planned) {
    return _mm_cmpeq_epi32(now, *static_cast<const __m128i*>(planned));
}

__m128i sixteenBytesAt(const void* memory) {
    return _mm_loadu_si128(static_cast<const __m128i*>(memory));
}

bool isWhole(__m128i same) {
    return _mm_movemask_epi8(same) == 0xFFFF;
}

} // namespace

// As GLRouting draws such a group, step by step: setArrays, drawWholeRecord, unsetArrays.
template <bool kNormals, bool kColors, size_t kTexCoords>
void DrawPlan::drawShape(GLRouting& routing, const GLFunctionTable& gl, const DrawPlan& plan) {
    constexpr size_t kFirstTexCoord = 1 + kNormals + kColors;
    constexpr size_t kCount = kFirstTexCoord + kTexCoords;
    const Array* arrays = plan.arrays();

    GeometryDataIndex* record = plan.fRecord;
    __m128i same = compare(sixteenBytesAt(record), &plan.fRecordHead);
    same = _mm_and_si128(same, compare(sixteenBytesAt(routing.fLayout.data()), &plan.fLayout));
    for (size_t i = 0; i < kCount; ++i)
        same = _mm_and_si128(same, compare(sixteenBytesAt(arrays[i].fStream), &arrays[i].fHead));
    if (!isWhole(same) || record->fAllocatedCount != plan.fRecordHead.fWhat[1] ||
        gl.fMaxTextureUnits < plan.fUnits)
        return routing.drawByOtherPlan();
    // Read together, that they be written as one word.
    const uint32_t type = record->fPrimitiveType;
    const uint32_t indexCount = record->fIndexCount;
    routing.fIndexRecord = record;
    routing.fPrimitiveType = type;
    routing.fIndexCount = indexCount;

    const auto components = [&](size_t i) { return static_cast<GLint>(arrays[i].fHead.fWhat[1]); };
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, arrays[0].fBufferName);
    gl.fglEnableClientState(GL_VERTEX_ARRAY);
    gl.fglVertexPointer(components(0), GL_FLOAT, 0, nullptr);
    if constexpr (kNormals) {
        gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, arrays[1].fBufferName);
        gl.fglEnableClientState(GL_NORMAL_ARRAY);
        gl.fglNormalPointer(GL_FLOAT, 0, nullptr);
    }
    if constexpr (kColors) {
        gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, arrays[1 + kNormals].fBufferName);
        gl.fglEnableClientState(GL_COLOR_ARRAY);
        gl.fglColorPointer(components(1 + kNormals), GL_FLOAT, 0, nullptr);
    }
    for (size_t i = kFirstTexCoord; i < kCount; ++i) {
        gl.fglClientActiveTexture(arrays[i].fUnit);
        gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, arrays[i].fBufferName);
        gl.fglEnableClientState(GL_TEXTURE_COORD_ARRAY);
        gl.fglTexCoordPointer(components(i), GL_FLOAT, 0, nullptr);
    }

    gl.fglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, plan.fIndexBufferName);
    gl.fglDrawElements(plan.fMode, static_cast<GLsizei>(plan.fRecordHead.fWhat[1]), GL_UNSIGNED_INT, nullptr);
    gl.fglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);

    const auto disable = [&](size_t i, GLenum array) {
        gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, arrays[i].fBufferName);
        if (array == GL_TEXTURE_COORD_ARRAY)
            gl.fglClientActiveTexture(arrays[i].fUnit);
        gl.fglDisableClientState(array);
        gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    };
    disable(0, GL_VERTEX_ARRAY);
    if constexpr (kNormals)
        disable(1, GL_NORMAL_ARRAY);
    if constexpr (kColors)
        disable(1 + kNormals, GL_COLOR_ARRAY);
    for (size_t i = kFirstTexCoord; i < kCount; ++i)
        disable(i, GL_TEXTURE_COORD_ARRAY);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    gl.fglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    gl.fglClientActiveTexture(GL_TEXTURE0_ARB);
}

/// For groups whose arrays aren't the first of their streams.
void DrawPlan::drawWatching(GLRouting& routing, const GLFunctionTable& gl, const DrawPlan& plan) {
    const Array* arrays = plan.arrays();
    __m128i same = _mm_set1_epi32(-1);
    for (size_t i = plan.fArrayCount; i < plan.fComparedCount; ++i)
        same = _mm_and_si128(same, compare(sixteenBytesAt(arrays[i].fStream), &arrays[i].fHead));
    if (!isWhole(same))
        return routing.drawByOtherPlan();
    plan.fDrawShape(routing, gl, plan);
}

template <size_t... kShapes>
DrawPlan::Draw DrawPlan::drawOfShape(size_t shape, std::index_sequence<kShapes...> /*shapes*/) {
    static constexpr Draw kDraws[] = {drawShape<(kShapes & 1) != 0, (kShapes & 2) != 0, kShapes / 4>...};
    return kDraws[shape];
}

/// Null for a layout without positions or with more texture coordinates than planned for.
DrawPlan::Draw DrawPlan::drawOf(const GLRouting& routing) {
    const auto& layout = routing.fLayout;
    const auto isUsed = [](uint8_t slot) { return slot != 0; };
    const auto texCoords = std::count_if(layout.begin() + GLRouting::kTexCoord0, layout.end(), isUsed);
    if (layout[GLRouting::kPosition] == 0 || texCoords > static_cast<ptrdiff_t>(kMostTexCoords))
        return nullptr;
    const size_t shape = size_t{isUsed(layout[GLRouting::kNormal])} +
                         size_t{isUsed(layout[GLRouting::kColor])} * 2 + static_cast<size_t>(texCoords) * 4;
    return drawOfShape(shape, std::make_index_sequence<4 * (kMostTexCoords + 1)>());
}

std::unique_ptr<DrawPlan> DrawPlan::make(const GLFunctionTable& gl, const GLRouting& routing) {
    const Draw draw = drawOf(routing);
    if (!draw)
        return nullptr;
    const auto used = std::ranges::count_if(routing.fLayout, [](uint8_t slot) { return slot != 0; });
    const size_t room = std::max(static_cast<size_t>(used), routing.fGroup->streamCount());
    if (room > kMostCompared)
        return nullptr;
    void* place = placeWith(room);
    if (!place)
        return nullptr;
    std::unique_ptr<DrawPlan> plan(new (place) DrawPlan(routing, draw, room));
    plan->planArrays(routing);
    if (plan->fUnits > gl.fMaxTextureUnits || !plan->watchOthers(*routing.fGroup))
        return nullptr;
    if (plan->fComparedCount != plan->fArrayCount)
        plan->fDraw = drawWatching;
    plan->planRecord(*routing.fGroup);
    return plan;
}

/// From the pool where the streams lie, so that drawing reads on in memory. Apart, since GCC takes the pool's
/// operators for others than those of plans.
[[gnu::noinline]] void* DrawPlan::placeWith(size_t room) {
    try {
        return PooledGeometry::operator new(sizeWith(room));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void DrawPlan::operator delete(DrawPlan* plan, std::destroying_delete_t /*tag*/) {
    const size_t size = sizeWith(plan->fRoom);
    plan->~DrawPlan();
    PooledGeometry::operator delete(plan, size);
}

DrawPlan::DrawPlan(const GLRouting& routing, Draw draw, size_t room)
    : fDraw(draw), fDrawShape(draw), fRoom(static_cast<uint8_t>(room)), fLayout(routing.fLayout) {}

DrawPlan::~DrawPlan() {
    if (fRecord)
        linkObjects(nullptr);
}

DrawPlan::Head DrawPlan::headOf(const GeometryData& stream) {
    return {{stream.fDataType, stream.fComponentsPerElement}, stream.fHanger};
}

bool DrawPlan::isPlannable(const GLRouting& routing) {
    const GeometryLogicalGroup& group = *routing.fGroup;
    const auto isOurs = [&group](IHWMemoryObject* hanger, GLObject::DataType type) {
        const GLObject* object = GLObject::from(hanger);
        return object && object->fBufferName != 0 && object->fDataType == type &&
               (!object->fPlannedIn || object->fPlannedIn == &group);
    };
    const GeometryDataIndex& record = *group.indexRecord(0);
    if (!kSkipsWrappers || !isOurs(record.fHanger, GLObject::kIndexData) || record.fIndexCount == 0 ||
        record.fAllocatedCount != record.fIndexCount || !GLRouting::primitiveMode(record.fPrimitiveType))
        return false;
    for (uint32_t i = GLRouting::kPosition; i <= GLRouting::kTexCoord7; ++i) {
        if (routing.fLayout[i] == 0)
            continue;
        const GLRouting::Slot& slot = routing.fSlots[i];
        const GeometryData* stream = group.geometryDataPtr(slot.fDataType, slot.fIndex, false);
        if (!stream || !isOurs(stream->fHanger, GLObject::kVertexData))
            return false;
    }
    return true;
}

void DrawPlan::planArrays(const GLRouting& routing) {
    for (uint32_t i = GLRouting::kPosition; i <= GLRouting::kTexCoord7; ++i) {
        if (fLayout[i] == 0)
            continue;
        const GLRouting::Slot& slot = routing.fSlots[i];
        const GeometryData* stream = routing.fGroup->geometryDataPtr(slot.fDataType, slot.fIndex, false);
        new (arrays() + fArrayCount++)
            Array{headOf(*stream), stream, bufferNameOf(stream->fHanger), GLRouting::fsInterpolantEnums[i]};
        // With fewer, slots would be left out or not be undone.
        if (i >= GLRouting::kTexCoord0)
            fUnits = static_cast<uint8_t>(i - GLRouting::kTexCoord0 + 1);
    }
}

/// The streams before the last of the planned ones: were they of another kind, a slot might find them first.
bool DrawPlan::watchOthers(const GeometryLogicalGroup& group) {
    fComparedCount = fArrayCount;
    const auto isPlanned = [this](const GeometryData* stream) {
        return std::any_of(arrays(), arrays() + fArrayCount,
                           [stream](const Array& array) { return array.fStream == stream; });
    };
    size_t end = group.streamCount();
    while (end > 0 && !isPlanned(group.stream(end - 1)))
        --end;
    for (size_t i = 0; i < end; ++i) {
        const GeometryData* stream = group.stream(i);
        if (isPlanned(stream))
            continue;
        if (fComparedCount == fRoom)
            return false;
        new (arrays() + fComparedCount++) Array{headOf(*stream), stream, 0, 0};
    }
    return true;
}

/// The last step: from here on the buffer objects know of the plan.
void DrawPlan::planRecord(GeometryLogicalGroup& group) {
    fRecord = group.indexRecord(0);
    fRecordHead = {{fRecord->fPrimitiveType, fRecord->fIndexCount}, fRecord->fHanger};
    fIndexBufferName = bufferNameOf(fRecord->fHanger);
    fMode = *GLRouting::primitiveMode(fRecord->fPrimitiveType);
    linkObjects(&group);
}

GLuint DrawPlan::bufferNameOf(IHWMemoryObject* hanger) {
    return static_cast<const GLObject*>(hanger)->fBufferName;
}

void DrawPlan::linkObjects(GeometryLogicalGroup* group) {
    for (uint32_t i = 0; i < fArrayCount; ++i)
        static_cast<GLObject*>(arrays()[i].fHead.fHanger)->fPlannedIn = group;
    static_cast<GLObject*>(fRecordHead.fHanger)->fPlannedIn = group;
}
