#include "DriverTest.h"

#include "geometry/GLRouting.h"

#include <orlohost/HWEnvironment.h>

#include <optional>

namespace {

/// Three cells of 8 x 8 pixels side by side.
class DriverGeometry : public DriverTest {
protected:
    void TearDown() override {
        fGroup.reset();
        EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 0U);
        DriverTest::TearDown();
    }

    /// A group of the four corners of each cell, counter-clockwise, and of a block of records.
    void makeGroup(uint32_t type, const std::vector<std::vector<uint32_t>>& indices) {
        fGroup.emplace();
        fGroup->addStream(GeometryData::kPosition, 2,
                          {0, 0, 1, 0, 1, 1, 0, 1, 1, 0, 2, 0, 2, 1, 1, 1, 2, 0, 3, 0, 3, 1, 2, 1});
        fGroup->addIndexBlock(type, indices);
    }

    /// The picture of the group: of each cell the lower right and the upper left, 1 where it is drawn.
    std::string drawn(koUtil::BitField* visible = nullptr) {
        const DrawTarget target(gl(), 24, 8);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        fRouting.drawGroup(&*fGroup, visible, nullptr, nullptr, 0, false);
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
    for (unsigned road = 0; road < 8; ++road) {
        SCOPED_TRACE(road);
        GLRouting::fsUseObjectsForData = (road & 1U) != 0;
        GLRouting::fsUseObjectsForIndexing = (road & 2U) != 0;
        HWEnvironment::orlo_block_allocate_strips = (road & 4U) != 0;
        makeGroup(GeometryDataIndex::kTriangleStrip, {{0, 1, 3, 2}, {4, 5, 7, 6}, {8, 9, 11, 10}});
        EXPECT_EQ(drawn() + drawn(), "111111111111");
        makeGroup(GeometryDataIndex::kQuads, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
        EXPECT_EQ(drawn() + drawn(), "111111111111");
        makeGroup(GeometryDataIndex::kTriangles, {{0, 1, 2, 4, 5, 6, 8, 9, 10}});
        EXPECT_EQ(drawn() + drawn(), "101010101010");
        // What hangs there by now must not get in the way. Each subset exchanges the switches.
        EXPECT_EQ(drawn(&visible) + drawn(&visible), "100010100010");
    }
}

} // namespace
