#include "DriverTest.h"

namespace {

class DriverStartup : public DriverTest {};

TEST_F(DriverStartup, theRemedyWorksAfterEachPopulation) {
    const auto activeUnit = [&] {
        GLint unit = 0;
        gl().glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        return unit;
    };
    gl().populate(); // under a vendor-neutral library the inert set is back, under others a live one may be
    EXPECT_TRUE(gl().ensureLiveMultitexture());
    EXPECT_EQ(activeUnit(), GL_TEXTURE0) << "left as it was";
    gl().glActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(activeUnit(), GL_TEXTURE1);
}

} // namespace
