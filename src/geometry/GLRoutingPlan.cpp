#include "geometry/DrawPlan.h"
#include "geometry/GLRouting.h"
#include "gl/GLFunctionTable.h"

#include <memory>
#include <utility>

// Drawing a group by the plan of an earlier drawing, and making one where there is none.

uint64_t GLRouting::fsSlotChanges = 0;

namespace {

DrawPlan* firstPlan(const GeometryLogicalGroup& group) {
    return static_cast<DrawPlan*>(group.fDrawPlan.get());
}

void putFirst(GeometryLogicalGroup& group, std::unique_ptr<DrawPlan> plan) {
    plan->fNext.reset(static_cast<DrawPlan*>(group.fDrawPlan.release()));
    group.fDrawPlan = std::move(plan);
}

} // namespace

/// What plans don't look at: buffer objects and multitexture in use, nothing switched on besides, and nothing
/// left bound or routed by the host that drawing would take back.
[[gnu::always_inline]] inline bool GLRouting::allIsOrdinary(const GLFunctionTable& gl) {
    // Not && and ||: these would be a jump each.
    const bool has = gl.fExtSupported[kCapMultitexture] & gl.fExtEnabled[kCapMultitexture] &
                     gl.fExtSupported[kCapVertexBufferObject] & gl.fExtEnabled[kCapVertexBufferObject] &
                     fsUseObjectsForData & fsUseObjectsForIndexing & GLObject::fsSupported;
    const uint32_t more =
        GLObject::fsBoundCount | fsUsePrimitiveRestart | fsUseDrawRangeElements | fsHostHasRouted;
    return has && more == 0;
}

// Its common road is a leaf that ends in a jump to the plan's own function.
void GLRouting::drawGroup(GeometryLogicalGroup* group, koUtil::BitField* visible, unsigned* primitiveList,
                          unsigned* preparedIndices, unsigned preparedCount, bool substitute) {
    fGroup = group;
    if (!group)
        return;
    if (visible || primitiveList || preparedIndices || substitute)
        return drawUnplanned(group, visible, primitiveList, preparedIndices, preparedCount, substitute);
    const auto* plan = static_cast<const DrawPlan*>(group->fDrawPlan.get());
    if (!plan)
        return drawAndPlan();
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    if (!allIsOrdinary(gl))
        return drawWhole();
    if (fSlotsRead != fsSlotChanges)
        return drawByLayout();
    plan->draw(*this, gl);
}

// Apart, so that drawGroup needs neither a frame nor registers for them.

[[gnu::noinline]] void GLRouting::drawWhole() {
    drawUnplanned(fGroup, nullptr, nullptr, nullptr, 0, false);
}

[[gnu::noinline]] void GLRouting::drawByLayout() {
    readSlots();
    firstPlan(*fGroup)->draw(*this, *GLFunctionTable::fpGlobalFunctionTable);
}

void GLRouting::drawByOtherPlan() {
    DrawPlan* before = firstPlan(*fGroup);
    if (before->hasLayoutOf(*this)) {
        fGroup->fDrawPlan.reset(); // it is out of date, and so may the others be
        return drawAndPlan();
    }
    while (before->fNext && !before->fNext->hasLayoutOf(*this))
        before = before->fNext.get();
    if (!before->fNext)
        return drawAndPlan();
    // To the front: what has been drawn is likely to be drawn the next time.
    auto plan = std::move(before->fNext);
    before->fNext = std::move(plan->fNext);
    putFirst(*fGroup, std::move(plan));
    firstPlan(*fGroup)->draw(*this, *GLFunctionTable::fpGlobalFunctionTable);
}

[[gnu::noinline]] void GLRouting::drawAndPlan() {
    constexpr int kMostPlans = 4;
    drawWhole();
    if (fGroup->indexRecordCount() != 1 || fGroup->streamCount() == 0)
        return;
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    if (!allIsOrdinary(gl))
        return;
    if (fSlotsRead != fsSlotChanges)
        readSlots();
    // Groups that are never planned come as far as this on each drawing.
    if (!DrawPlan::isPlannable(*this))
        return;
    int count = 0;
    for (const DrawPlan* other = firstPlan(*fGroup); other; other = other->fNext.get())
        ++count;
    if (count == kMostPlans)
        fGroup->fDrawPlan.reset();
    if (auto plan = DrawPlan::make(gl, *this))
        putFirst(*fGroup, std::move(plan));
}

void GLRouting::readSlots() {
    fSlotsRead = fsSlotChanges;
    fLayout = {};
    for (uint32_t i = 0; i < kInterpolantCount; ++i) {
        const Slot& slot = fSlots[i];
        if (slot.fMode == kUnused)
            continue;
        const bool fits = slot.fMode == kFromGeometry && i <= kTexCoord7 && slot.fDataType < 31 &&
                          slot.fIndex >= 0 && slot.fIndex < 8;
        if (!fits) {
            fLayout = {};
            return;
        }
        fLayout[i] = static_cast<uint8_t>((slot.fDataType << 3 | static_cast<uint32_t>(slot.fIndex)) + 1);
    }
}
