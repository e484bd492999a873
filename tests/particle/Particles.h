#pragma once

#include "DoubleTest.h"

#include "orlohost/HWInterfaces.h"
#include "orlohost/ParticleData.h"

using Particles = Shared<ParticleData>;

/// Drawers on the double, where the current colour is (0.25, 0.5, 0.75, 0.5).
class ParticleTest : public DoubleTest {
protected:
    ParticleTest() { script().values[GL_CURRENT_COLOR] = {0.25, 0.5, 0.75, 0.5}; }

    static Particles makeParticles(std::vector<float> positions, uint32_t samples = 1) {
        Particles particles = makeShared<ParticleData>();
        EXPECT_TRUE(particles->setPositions(std::move(positions), samples));
        return particles;
    }
    /// `count` particles at (0, 0, 0), (1, 0, 0), (2, 0, 0) ..., or samples of so many each.
    static Particles makeRow(int count, uint32_t samples = 1) {
        std::vector<float> positions;
        for (int i = 0; i < count; ++i)
            positions.insert(positions.end(), {static_cast<float>(i), 0.0F, 0.0F});
        return makeParticles(std::move(positions), samples);
    }

    template <typename Drawer>
    static Calls drawn(Drawer& drawer, IHWTexPlacement* placement = nullptr,
                       std::vector<IHWTexture*>* textures = nullptr) {
        clearRecorded();
        drawer.draw(placement, textures);
        return made();
    }

    static Calls color(const Values& c) { return {call("glColor4fv", c)}; }
    static Calls color(double r, double g, double b, double a) { return {call("glColor4f", r, g, b, a)}; }
    static Calls material(const Values& c) { return {call("glMaterialfv", GL_FRONT, GL_DIFFUSE, c)}; }
    static Calls normal(double x, double y, double z) { return {call("glNormal3f", x, y, z)}; }
    static Calls vertex(double x, double y = 0, double z = 0) {
        return {call("glVertex3fv", Values{x, y, z})};
    }

    const Values kWhite{1, 1, 1, 1};
    const Values kRed{1, 0, 0, 1};
    const Values kGreen{0, 1, 0, 0.5};
};
