#include "DriverTest.h"

namespace {

class DriverStartup : public DriverTest {
protected:
    GLint number(GLenum name) {
        GLint value = 0;
        gl().glGetIntegerv(name, &value);
        return value;
    }
};

TEST_F(DriverStartup, theRemedyWorksAfterEachPopulation) {
    gl().populate(); // under a vendor-neutral library the inert set is back, under others a live one may be
    EXPECT_TRUE(gl().ensureLiveMultitexture());
    EXPECT_EQ(number(GL_ACTIVE_TEXTURE), GL_TEXTURE0) << "left as it was";
    gl().glActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(number(GL_ACTIVE_TEXTURE), GL_TEXTURE1);
    gl().glMultiTexCoord2f(GL_TEXTURE1, 0.25f, 0.5f);
    GLfloat coordinates[4] = {};
    gl().glGetFloatv(GL_CURRENT_TEXTURE_COORDS, coordinates);
    EXPECT_THAT(coordinates, testing::ElementsAre(0.25f, 0.5f, 0, 1));
}

} // namespace
