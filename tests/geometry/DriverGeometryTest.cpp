#include "DriverTest.h"

#include "geometry/GLRouting.h"

#include <orlohost/HWEnvironment.h>

#include <optional>

namespace {

constexpr auto kTriangles = GeometryDataIndex::kTriangles;
constexpr auto kStrip = GeometryDataIndex::kTriangleStrip;
constexpr auto kQuads = GeometryDataIndex::kQuads;

/// Three cells of 8 x 8 pixels side by side, a red, a green and a blue one.
class DriverGeometry : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        gl().glOrtho(0, 3, 0, 1, -1, 1);
        fRouting.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
        fRouting.fSlots[GLRouting::kColor] = {GLRouting::kFromGeometry, {}, GeometryData::kColor, 0};
    }

    void TearDown() override {
        HWEnvironment::orlo_block_allocate_strips = false;
        fGroup.reset();
        EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 0U);
        DriverTest::TearDown();
    }

    /// A group of the four corners of each cell, counter-clockwise, and of a record or a block.
    void makeGroup(uint32_t type, const std::vector<std::vector<uint32_t>>& indices) {
        const std::vector<float> corners = {0, 0, 1, 0, 1, 1, 0, 1, 1, 0, 2, 0,
                                            2, 1, 1, 1, 2, 0, 3, 0, 3, 1, 2, 1};
        std::vector<float> colors;
        for (size_t i = 0; i < 36; ++i)
            colors.push_back(i / 12 == i % 3 ? 1 : 0);
        fGroup.emplace();
        fGroup->addStream(GeometryData::kPosition, 2, corners);
        fGroup->addStream(GeometryData::kColor, 3, colors);
        if (indices.size() > 1)
            fGroup->addIndexBlock(type, indices);
        else
            fGroup->addIndexRecord(type, indices[0]);
    }

    /// The picture of the group: the colours at the lower right and at the upper left of each cell.
    std::string drawn(koUtil::BitField* visible = nullptr, unsigned* list = nullptr,
                      unsigned* prepared = nullptr, unsigned count = 0) {
        const DrawTarget target(gl(), 24, 8);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        fRouting.drawGroup(&*fGroup, visible, list, prepared, count, false);
        std::string picture;
        for (const int x : {6, 1, 14, 9, 22, 17}) {
            const Pixel p = readPixel(x, x % 8 == 6 ? 1 : 6);
            picture += p[0] == 255 ? 'r' : p[1] == 255 ? 'g' : p[2] == 255 ? 'b' : '.';
        }
        return picture;
    }

    GLRouting fRouting;
    std::optional<GeometryLogicalGroup> fGroup;
};

TEST_F(DriverGeometry, landsWhereItBelongsByEveryRoad) {
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
        EXPECT_EQ(drawn() + drawn(), "rrggbbrrggbb");
        makeGroup(kTriangles, {{0, 1, 2, 4, 5, 6, 8, 9, 10}});
        EXPECT_EQ(drawn() + drawn(), "r.g.b.r.g.b.");
        // What hangs there by now must not get in the way. Each subset exchanges the switches.
        EXPECT_EQ(drawn(&visible) + drawn(nullptr, list), "r...b...g.b.");
        makeGroup(kQuads, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}});
        EXPECT_EQ(drawn(&visible) + drawn(&visible, list), "rr..bb..gg..");
        GLRouting::fsUseObjectsForIndexing = false;
        EXPECT_EQ(drawn() + drawn(nullptr, nullptr, prepared, 4), "rrggbb..gg..");
    }
}

TEST_F(DriverGeometry, restartsStrips) {
    if (!gl().usable(kCapNVPrimitiveRestart))
        GTEST_SKIP() << "this driver doesn't offer primitive restart";
    GLRouting::fsUsePrimitiveRestart = GLRouting::fsUseObjectsForIndexing = true;
    makeGroup(kStrip, {{0, 1, 3, 2, ~0U, 4, 5, 7, 6, ~0U, 8, 9, 11, 10}});
    // The extension knows a client state alone: glEnable is an error on Mesa, on others it may not be.
    gl().glEnableClientState(GL_PRIMITIVE_RESTART_NV);
    EXPECT_EQ(drawn(), "rrggbb");
    gl().glDisableClientState(GL_PRIMITIVE_RESTART_NV);
    pendingErrors();
}

} // namespace
