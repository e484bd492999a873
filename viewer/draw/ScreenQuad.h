#pragma once

#include <geometry/GLRouting.h>
#include <orlohost/GeometryData.h>

namespace orloview {

/// The corners of the viewport, -1 to 1 each way as positions, for a vertex shader that leaves them there.
///
/// Needs a current context of the share group to be drawn and destroyed.
class ScreenQuad {
public:
    ScreenQuad() {
        fGroup.addStream(GeometryData::kPosition, 2, {-1, -1, 1, -1, 1, 1, -1, 1});
        fGroup.addIndexRecord(GeometryDataIndex::kQuads, {0, 1, 2, 3});
        fRouting.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
    }

    /// By the program that is current.
    void draw() { fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, false); }

private:
    GeometryLogicalGroup fGroup;
    GLRouting fRouting;
};

} // namespace orloview
