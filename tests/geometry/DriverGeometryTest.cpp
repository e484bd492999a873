#include "DriverTest.h"

#include "geometry/GLRouting.h"

#include <orlohost/HWEnvironment.h>

#include <optional>

namespace {

constexpr auto kTriangles = GeometryDataIndex::kTriangles;
constexpr auto kStrip = GeometryDataIndex::kTriangleStrip;
constexpr auto kQuads = GeometryDataIndex::kQuads;

/// Three cells of 8 x 8 pixels side by side.
class DriverGeometry : public DriverTest {
protected:
    void TearDown() override {
        fGroup.reset();
        EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 0U);
        DriverTest::TearDown();
    }

    /// A group of the four corners of each cell, counter-clockwise, and of a record or a block.
    void makeGroup(uint32_t type, const std::vector<std::vector<uint32_t>>& indices) {
        fGroup.emplace();
        fGroup->addStream(GeometryData::kPosition, 2,
                          {0, 0, 1, 0, 1, 1, 0, 1, 1, 0, 2, 0, 2, 1, 1, 1, 2, 0, 3, 0, 3, 1, 2, 1});
        if (indices.size() > 1)
            fGroup->addIndexBlock(type, indices);
        else
            fGroup->addIndexRecord(type, indices[0]);
    }

    /// The picture of the group: of each cell the lower right and the upper left, 1 where it is drawn.
    std::string drawn(koUtil::BitField* visible = nullptr, unsigned* list = nullptr,
                      unsigned* prepared = nullptr, unsigned count = 0) {
        const DrawTarget target(gl(), 24, 8);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        fRouting.drawGroup(&*fGroup, visible, list, prepared, count, false);
        std::string picture;
        for (const int x : {6, 1, 14, 9, 22, 17})
            picture += readPixel(x, x % 8 == 6 ? 1 : 6)[0] == 255 ? '1' : '0';
        return picture;
    }

    GLRouting fRouting;
    std::optional<GeometryLogicalGroup> fGroup;
};

TEST_F(DriverGeometry, landsWhereItBelongsByEveryRoad) {
    gl().glOrtho(0, 3, 0, 1, -1, 1);
    fRouting.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
    koUtil::BitField visible;
    visible.set(0);
    visible.set(2);
    unsigned list[] = {1, 2, 77};
    unsigned prepared[] = {4, 5, 6, 7};
    for (unsigned road = 0; road < 8; ++road) {
        SCOPED_TRACE(road);
        GLRouting::fsUseObjectsForData = (road & 1U) != 0;
        GLRouting::fsUseObjectsForIndexing = (road & 2U) != 0;
        HWEnvironment::orlo_block_allocate_strips = (road & 4U) != 0;
        makeGroup(kStrip, {{0, 1, 3, 2}, {4, 5, 7, 6}, {8, 9, 11, 10}});
        EXPECT_EQ(drawn() + drawn(), "111111111111");
        makeGroup(kTriangles, {{0, 1, 2, 4, 5, 6, 8, 9, 10}});
        EXPECT_EQ(drawn() + drawn(), "101010101010");
        // What hangs there by now must not get in the way. Each subset exchanges the switches.
        EXPECT_EQ(drawn(&visible) + drawn(nullptr, list), "100010001010");
        makeGroup(kQuads, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
        EXPECT_EQ(drawn(&visible) + drawn(&visible, list), "110011001100");
        const bool indexing = std::exchange(GLRouting::fsUseObjectsForIndexing, false);
        EXPECT_EQ(drawn(nullptr, nullptr, prepared, 4), "001100");
        GLRouting::fsUseObjectsForIndexing = indexing;
        if (gl().usable(kCapNVPrimitiveRestart)) {
            // The extension knows a client state alone: glEnable is an error on Mesa, on others it may not
            // be.
            gl().glEnableClientState(GL_PRIMITIVE_RESTART_NV);
            GLRouting::fsUsePrimitiveRestart = true;
            makeGroup(kStrip, {{0, 1, 3, 2, ~0U, 8, 9, 11, 10}});
            EXPECT_EQ(drawn(), "110011");
            GLRouting::fsUsePrimitiveRestart = false;
            gl().glDisableClientState(GL_PRIMITIVE_RESTART_NV);
            pendingErrors();
        }
    }
}

} // namespace
