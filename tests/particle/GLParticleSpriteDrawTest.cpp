#include "Particles.h"

#include "particle/GLParticleSpriteDraw.h"

#include <array>
#include <bit>
#include <cmath>
#include <random>

/// In the place of the host's, which need not know what a negative number means.
const ParticleData::Data* ParticleData::getData(int32_t index) const {
    EXPECT_GE(index, 0);
    return index < 0 ? nullptr : &fData[static_cast<size_t>(index)];
}

namespace {

/// Binds by a name of the test's.
class FakeTexture : public IHWTexture {
public:
    FakeTexture(GLuint name, TextureType type) : fName(name) { fTextureType = type; }

    bool bind() override {
        GLFunctionTable::fpGlobalFunctionTable->glBindTexture(GL_TEXTURE_2D, fName);
        return true;
    }

private:
    GLuint fName;
};

/// Five sprites in a row, seen by default from (0, 0, 10) with y up.
class ParticleSprites : public ParticleTest {
protected:
    ParticleSprites() : fRow(makeRow(5)), fDrawer(*fRow) {
        koLinear::Point eye(0, 0, 10);
        koLinear::Vector up(0, 2, 0);
        fDrawer.setCamPositionOS(eye);
        fDrawer.setCamUpVectorOS(up);
    }

    /// One sprite at the origin; `coordinates`: before each corner its texture coordinates, on this unit.
    static Calls square(double halfX, double halfY, std::optional<GLenum> unit = {}, bool reverse = false) {
        struct Corner {
            Values place;
            double s, t;
        };
        const Corner corners[] = {{{-halfX, -halfY, 0}, 0, 0},
                                  {{halfX, -halfY, 0}, 1, 0},
                                  {{halfX, halfY, 0}, 1, 1},
                                  {{-halfX, halfY, 0}, 0, 1}};
        Calls calls{call("glBegin", GL_QUADS)};
        for (int i = 0; i < 4; ++i) {
            const Corner& corner = corners[reverse ? 3 - i : i];
            if (unit)
                calls.push_back(call("glMultiTexCoord2f", *unit, corner.s, corner.t));
            calls.push_back(call("glVertex3dv", corner.place));
        }
        calls.push_back(call("glEnd"));
        return calls;
    }

    Calls spriteAt0(unsigned index = 0) {
        clearRecorded();
        fDrawer.drawGLQuadAt(index, 0, 0, 0);
        return recorded();
    }

    /// The calls of a name in a draw, in order.
    static Calls only(const Calls& calls, const std::string& name) {
        Calls some;
        std::ranges::copy_if(calls, std::back_inserter(some),
                             [&](const std::string& one) { return one.starts_with(name + "("); });
        return some;
    }

    Particles fRow;
    GLParticleSpriteDraw fDrawer;
};

TEST_F(ParticleSprites, facesTheViewer) {
    EXPECT_EQ(spriteAt0(), square(0.5, 0.5));
    fDrawer.fReverseWinding = 7;
    EXPECT_EQ(spriteAt0(), square(0.5, 0.5, {}, true));
    fDrawer.fReverseWinding = 0;
    fDrawer.fLit = true;
    Calls lit = square(0.5, 0.5);
    lit.insert(lit.begin(), call("glNormal3fv", Values{0, 0, 1}));
    EXPECT_EQ(spriteAt0(), lit);
    // From x the square stands on its edge, as seen from z.
    fDrawer.fLit = false;
    koLinear::Point eye(5, 0, 0);
    fDrawer.setCamPositionOS(eye);
    EXPECT_EQ(only(spriteAt0(), "glVertex3dv"),
              (Calls{call("glVertex3dv", Values{0, -0.5, 0.5}), call("glVertex3dv", Values{0, -0.5, -0.5}),
                     call("glVertex3dv", Values{0, 0.5, -0.5}), call("glVertex3dv", Values{0, 0.5, 0.5})}));
    // At the eye there is no direction: everything falls together.
    eye = {0, 0, 0};
    fDrawer.setCamPositionOS(eye);
    EXPECT_EQ(only(spriteAt0(), "glVertex3dv"), Calls(4, call("glVertex3dv", Values{0, 0, 0})));
}

/// The corners by the host's matrices, the long way.
std::array<std::array<double, 3>, 4> cornersByMatrices(const float (&eye)[3], const float (&upward)[3],
                                                       const float (&place)[3], float twist, float scaleX,
                                                       float scaleY) {
    using koLinear::VectorFlt;
    const VectorFlt d(eye[0] - place[0], eye[1] - place[1], eye[2] - place[2]);
    VectorFlt right = cross(VectorFlt(upward[0], upward[1], upward[2]), d);
    VectorFlt up = cross(d, right);
    right.normalize();
    up.normalize();
    koLinear::AffineMatrix matrix(right[0], right[1], right[2], up[0], up[1], up[2], 0, 0, 1, place[0],
                                  place[1], place[2]);
    matrix.rotateZ(twist * 3.141592653589793 / 180);
    matrix.scale(scaleX, scaleY, 1);
    std::array<std::array<double, 3>, 4> corners{};
    constexpr double kUnit[4][2] = {{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}};
    for (size_t i = 0; i < 4; ++i) {
        const koLinear::Point p = matrix.transform(koLinear::Point(kUnit[i][0], kUnit[i][1], 0));
        corners[i] = {p[0], p[1], p[2]};
    }
    return corners;
}

TEST_F(ParticleSprites, equalsTheMatricesToTheBit) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> number(-20, 20);
    std::vector<std::array<double, 3>> sent;
    script().answers["glVertex3dv"] = [&](const std::vector<Argument>& arguments) {
        const auto* v = static_cast<const double*>(arguments[0].pointer());
        sent.push_back({v[0], v[1], v[2]});
        return 0;
    };
    int different = 0;
    for (int i = 0; i < 2000; ++i) {
        float eye[3];
        float up[3];
        float place[3];
        for (int k = 0; k < 3; ++k) { // zeros of both signs among them
            eye[k] = i % 3 ? number(random) : 0.0F;
            up[k] = i % 5 ? number(random) : (k == 1 ? 1.0F : 0.0F);
            place[k] = i % 7 ? number(random) : -0.0F;
        }
        fDrawer.fCurrentTwist = i % 2 ? number(random) * 20 : fDrawer.fCurrentTwist;
        fDrawer.fCurrentScaleX = i % 11 ? number(random) : 0.0F;
        fDrawer.fCurrentScaleY = number(random);
        std::ranges::copy(eye, fDrawer.fCameraPosition);
        std::ranges::copy(up, fDrawer.fCameraUp);
        sent.clear();
        fDrawer.drawGLQuadAt(0, place[0], place[1], place[2]);
        const auto expected = cornersByMatrices(eye, up, place, fDrawer.fCurrentTwist, fDrawer.fCurrentScaleX,
                                                fDrawer.fCurrentScaleY);
        ASSERT_EQ(sent.size(), 4U);
        for (size_t corner = 0; corner < 4; ++corner) {
            for (size_t k = 0; k < 3; ++k)
                different +=
                    std::bit_cast<uint64_t>(expected[corner][k]) != std::bit_cast<uint64_t>(sent[corner][k]);
        }
    }
    EXPECT_EQ(different, 0);
}

TEST_F(ParticleSprites, scalesThenTwists) {
    fRow->addData("scaleX", {4, 1, 1, 1, 1});
    fRow->addData("scaleY", {2, 2, 2, 2, 2});
    fRow->addData("twist", {90, 0, 0, 0, 0});
    const Calls vertices = only(drawn(fDrawer), "glVertex3dv");
    ASSERT_EQ(vertices.size(), 20U);
    // Four wide and two high, then a quarter turn counter-clockwise: the lower left corner goes to the lower
    // right.
    const double tiny = 2 * std::cos(90.0F * 3.141592653589793 / 180.0); // the cosine that is not quite 0
    EXPECT_EQ(vertices[0], call("glVertex3dv", Values{1 - tiny, -2 - tiny / 2, 0}));
}

TEST_F(ParticleSprites, carriesOverWhatIsMissing) {
    fRow->addData("scaleX", {1, 2, 3, 4, 6});
    fRow->addData("twist", {10, 20, 30, 40, 0});
    fDrawer.fCurrentScaleY = 8;
    drawn(fDrawer);
    EXPECT_EQ(fDrawer.fCurrentScaleX, 6);
    EXPECT_EQ(fDrawer.fCurrentScaleY, 8);
    const Particles bare = makeParticles({0, 0, 0});
    fDrawer.setData(*bare);
    delete fDrawer.fIterator;
    fDrawer.fIterator = nullptr;
    Calls expected = square(3, 4);
    expected.insert(expected.begin(), call("glColor4fv", Values{1, 1, 1, 1}));
    expected.push_back(call("glColor4f", 1.0, 1.0, 1.0, 1.0));
    EXPECT_EQ(drawn(fDrawer), expected);
}

TEST_F(ParticleSprites, colorsWhatItIsTold) {
    const Particles pair = makeRow(2);
    pair->fObjectColor = {0, 1, 0, 0.25F};
    pair->fOpacity = 0.5F;
    pair->setColors({1, 0, 0, 1, 0, 0, 1, 0.5F});
    GLParticleSpriteDraw drawer(*pair);
    const auto colors = [&] {
        Calls calls;
        for (const std::string& one : drawn(drawer)) {
            if (one.starts_with("glColor") || one.starts_with("glMaterial"))
                calls.push_back(one);
        }
        return calls;
    };
    const auto color = [](const Values& c) { return call("glColor4fv", c); };
    const auto material = [](const Values& c) { return call("glMaterialfv", GL_FRONT, GL_DIFFUSE, c); };
    const std::string last = call("glColor4f", 1.0, 1.0, 1.0, 1.0);
    EXPECT_EQ(colors(), (Calls{color({0, 1, 0, 0.25}), color({1, 0, 0, 1}), color({0, 0, 1, 0.5}), last}));
    drawer.fOpacityOnly = true;
    EXPECT_EQ(colors(), (Calls{color({0, 1, 0, 0.25}), color({1, 0, 0, 1}), color({0, 0, 1, 0.5}), last}));
    drawer.fLit = true;
    EXPECT_EQ(colors(),
              (Calls{material({0, 1, 0, 0.25}), material({1, 0, 0, 1}), material({0, 0, 1, 0.5}), last}));
    drawer.fIgnoreParticleColors = true;
    drawer.fOpacityGain = 0.5F;
    EXPECT_EQ(colors(),
              (Calls{material({1, 1, 1, 0.25}), material({1, 1, 1, 0.5}), material({1, 1, 1, 0.25}), last}));
    drawer.fLit = false;
    EXPECT_EQ(colors(), (Calls{color({1, 1, 1, 0.25}), color({1, 1, 1, 0.5}), color({1, 1, 1, 0.25}), last}));
    drawer.fOpacityOnly = false;
    EXPECT_EQ(colors(), Calls{last});
}

TEST_F(ParticleSprites, takesPlacesOfSamplesAndAllElseOfTheirParticles) {
    const Particles pair = makeParticles({0, 0, 0, 0, 0, 2, 0, 0, 4, 0, 0, 6}, 2);
    pair->setColors({1, 0, 0, 1, 0, 0, 1, 1});
    pair->addData("scaleX", {2, 4});
    pair->fFilter = {3, 0, 4};
    pair->fFilterEnabled = true;
    fDrawer.setData(*pair);
    delete fDrawer.fIterator;
    fDrawer.setIterator(*new ParticleDataIterator(*pair, nullptr, 0));
    fDrawer.fIterator->advance();
    const Calls calls = drawn(fDrawer);
    const Calls vertices = only(calls, "glVertex3dv");
    ASSERT_EQ(vertices.size(), 8U);
    EXPECT_EQ(vertices[0], call("glVertex3dv", Values{-2, -0.5, 6}));
    EXPECT_EQ(vertices[4], call("glVertex3dv", Values{-1, -0.5, 0}));
    EXPECT_EQ(only(calls, "glColor4fv")[1], call("glColor4fv", Values{0, 0, 1, 1}));
    EXPECT_EQ(fDrawer.fIterator->counter(), 1U) << "the host's iterator stands where it stood";
    EXPECT_EQ(fDrawer.fIterator->filter(), nullptr);
}

class CyclingSprites : public ParticleSprites {
protected:
    CyclingSprites() {
        for (const auto& [name, type] :
             {std::pair(71U, IHWTexture::kTexture2D), {72U, IHWTexture::kTexture2D}})
            add(name, type);
        fDrawer.fTextureCycling = true;
    }
    ~CyclingSprites() override {
        for (IHWTexture* texture : fTextures) {
            if (texture)
                texture->unref();
        }
    }

    void add(GLuint name, IHWTexture::TextureType type) {
        fTextures.push_back(new FakeTexture(name, type));
        fTextures.back()->ref();
    }

    Calls binds(const Calls& calls) { return only(calls, "glBindTexture"); }
    Calls coordinates(const Calls& calls) { return only(calls, "glMultiTexCoord2f"); }

    static std::string bound(GLuint name) { return call("glBindTexture", GL_TEXTURE_2D, name); }

    std::vector<IHWTexture*> fTextures;
    IHWTexPlacement fPlacement;
};

TEST_F(CyclingSprites, givesTheLastTextureToAllThatHaveNone) {
    fRow->addData("textureNumber", {1, 1, 1, 1, 0}); // the numbers themselves pick nothing
    const Calls calls = drawn(fDrawer, &fPlacement, &fTextures);
    EXPECT_EQ(binds(calls), (Calls{bound(71), bound(72), bound(72), bound(72), bound(72)}));
    EXPECT_EQ(coordinates(calls).size(), 20U);
    EXPECT_EQ(fDrawer.fTextures, nullptr);
    EXPECT_EQ(fDrawer.fPlacement, nullptr);
    EXPECT_TRUE(fDrawer.fTextureCycling);
    EXPECT_FALSE(fDrawer.applyTextureCycling(0)) << "the draw is over";

    fTextures[1]->unref();
    fTextures[1] = nullptr;
    EXPECT_EQ(coordinates(drawn(fDrawer, &fPlacement, &fTextures)).size(), 4U) << "a null texture has none";
}

TEST_F(CyclingSprites, setsTheTextureUpFromItsPlacement) {
    fPlacement.fRepeat[0] = 2;
    fPlacement.fOffset[1] = 0.25F;
    fPlacement.fWrapModes[1] = IHWTexUsage::kClampToEdge;
    fPlacement.fMagFilter = IHWTexUsage::kNearest;
    fPlacement.fGenModes[0] = IHWTexUsage::kGenObjectLinear;
    fPlacement.fBorderColor = {1, 0, 0, 1};
    script().values[0x84FF] = {8};
    fDrawer.fTextures = &fTextures;
    fDrawer.fPlacement = &fPlacement;
    EXPECT_TRUE(fDrawer.applyTextureCycling(0));
    const auto parameter = [](GLenum name, GLint value) {
        return call("glTexParameteri", GL_TEXTURE_2D, name, value);
    };
    Calls calls = recorded();
    const auto planes =
        std::ranges::find(calls, call("glTexGeni", GL_S, GL_TEXTURE_GEN_MODE, GL_OBJECT_LINEAR));
    ASSERT_NE(planes, calls.end());
    const Calls start = {call("glMatrixMode", GL_TEXTURE),
                         call("glLoadIdentity"),
                         call("glScalef", 2.0, 1.0, 1.0),
                         call("glTranslatef", -0.0, -0.25, 0.0),
                         call("glMatrixMode", GL_MODELVIEW),
                         bound(71),
                         call("glDisable", GL_TEXTURE_CUBE_MAP),
                         call("glDisable", GL_TEXTURE_1D),
                         call("glDisable", GL_TEXTURE_2D),
                         call("glDisable", GL_TEXTURE_3D),
                         call("glEnable", GL_TEXTURE_2D),
                         parameter(GL_TEXTURE_WRAP_S, GL_REPEAT),
                         parameter(GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE),
                         parameter(GL_TEXTURE_MIN_FILTER, GL_LINEAR),
                         parameter(GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                         call("glDisable", GL_TEXTURE_CUBE_MAP)};
    EXPECT_EQ(Calls(calls.begin(), calls.begin() + static_cast<long>(start.size())), start);
    EXPECT_EQ(
        Calls(calls.end() - 3, calls.end()),
        (Calls{call("glTexParameterfv", GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, Values{1, 0, 0, 1}),
               call("glGetFloatv", 0x84FF, kOut), call("glTexParameterf", GL_TEXTURE_2D, 0x84FE, 1.0)}));

    fPlacement.fMatrix[3][0] = 1e-9;
    clearRecorded();
    EXPECT_TRUE(fDrawer.applyTextureCycling(9));
    EXPECT_EQ(recorded()[1],
              call("glLoadMatrixd", Values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1e-9, 0, 0, 1}));
    fPlacement.fMatrix[3][0] = 1e-11;
    clearRecorded();
    EXPECT_TRUE(fDrawer.applyTextureCycling(9));
    EXPECT_EQ(recorded()[1], call("glLoadIdentity"));

    fTextures.push_back(nullptr);
    clearRecorded();
    EXPECT_FALSE(fDrawer.applyTextureCycling(2));
    EXPECT_EQ(recorded().size(), 5U) << "the matrix, and nothing more";
    fTextures.pop_back();

    std::vector<IHWTexture*> empty;
    fDrawer.fTextures = &empty;
    clearRecorded();
    EXPECT_FALSE(fDrawer.applyTextureCycling(0));
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(CyclingSprites, enablesTheTargetOfEachType) {
    fDrawer.fTextures = &fTextures;
    fDrawer.fPlacement = &fPlacement;
    const std::pair<int, GLenum> targets[] = {
        {0, 0}, {1, GL_TEXTURE_1D}, {2, GL_TEXTURE_2D}, {3, 0x84F5}, {4, 0x806F}, {5, 0x8513}, {6, 0}};
    for (const auto& [type, target] : targets) {
        fTextures[0]->fTextureType = static_cast<IHWTexture::TextureType>(type);
        clearRecorded();
        EXPECT_TRUE(fDrawer.applyTextureCycling(0));
        EXPECT_EQ(only(recorded(), "glEnable").front(), call("glEnable", target));
        EXPECT_THAT(recorded(),
                    testing::Contains(call("glTexParameteri", target, GL_TEXTURE_WRAP_S, GL_REPEAT)));
    }
}

TEST_F(CyclingSprites, givesCoordinatesOnlyWhereThereIsATexture) {
    const Calls without = drawn(fDrawer, &fPlacement, &fTextures);
    EXPECT_EQ(binds(without), Calls{}) << "without textureNumber";
    EXPECT_EQ(coordinates(without), Calls{});
    EXPECT_TRUE(fDrawer.fTextureCycling) << "lowered for the call only";
    EXPECT_EQ(fDrawer.fTextures, nullptr);

    // Without textures or a placement, the texture is the caller's.
    for (const bool hasTextures : {false, true}) {
        const Calls callers =
            drawn(fDrawer, hasTextures ? nullptr : &fPlacement, hasTextures ? &fTextures : nullptr);
        EXPECT_EQ(binds(callers), Calls{});
        EXPECT_EQ(coordinates(callers).size(), 20U);
    }
    EXPECT_EQ(spriteAt0(), square(0.5, 0.5, GL_TEXTURE0));
    fDrawer.fReverseWinding = 1;
    EXPECT_EQ(spriteAt0(), square(0.5, 0.5, GL_TEXTURE0, true));
    gl().fExtEnabled[kCapMultitexture] = false;
    EXPECT_EQ(only(spriteAt0(), "glTexCoord2f").front(), call("glTexCoord2f", 0.0, 1.0));

    fDrawer.fTextureCycling = false;
    fRow->addData("textureNumber", {0, 0, 0, 0, 0});
    const Calls off = drawn(fDrawer, &fPlacement, &fTextures);
    EXPECT_EQ(binds(off), Calls{});
    EXPECT_EQ(only(off, "glTexCoord2f"), Calls{});
}

} // namespace
