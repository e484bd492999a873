#include "Particles.h"

#include "particle/GLParticleSpriteDraw.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <random>
#include <utility>

/// In the place of the host's, which need not know what a negative number means.
const ParticleData::Data* ParticleData::getData(int32_t index) const {
    EXPECT_GE(index, 0);
    return index < 0 ? nullptr : &fData[static_cast<size_t>(index)];
}

namespace {

/// Five sprites in a row, seen by default from (0, 0, 10) with y up; two textures.
class ParticleSprites : public ParticleTest {
protected:
    ParticleSprites() {
        koLinear::Point eye(0, 0, 10);
        koLinear::Vector ups[] = {{0, 2, 0}, {1 + 0x1p-23, 0, 0}}; // the second's first is true as a bool
        fDrawer.setCamPositionOS(eye);
        fDrawer.setCamUpVectorOS(ups[0]);
        EXPECT_FALSE(fDrawer.fOpacityOnly) << "which stands behind the vector";
    }

    static Calls corner(double x, double y, double z = 0) { return {call("glVertex3dv", Values{x, y, z})}; }
    static Calls square(double halfX, double halfY) {
        return corner(-halfX, -halfY) + corner(halfX, -halfY) + corner(halfX, halfY) + corner(-halfX, halfY);
    }

    static Calls quad(const Calls& c) { return Calls{call("glBegin", GL_QUADS)} + c + Calls{call("glEnd")}; }

    Calls spriteAt(float x, float y, float z) {
        clearRecorded();
        fDrawer.drawGLQuadAt(0, x, y, z);
        return made();
    }
    Calls textured(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) {
        return only({"glBindTexture", "glMultiTexCoord2f"}, drawn(fDrawer, placement, textures));
    }

    static Calls only(const std::vector<std::string>& names, const Calls& calls) {
        Calls some;
        for (const std::string& one : calls) {
            if (std::ranges::count(names, one.substr(0, one.find('('))) > 0)
                some.push_back(one);
        }
        return some;
    }

    static Calls bound(GLuint name) { return {call("glBindTexture", GL_TEXTURE_2D, name)}; }

    const Particles fRow = makeRow(5);
    GLParticleSpriteDraw fDrawer{*fRow};
    const Shared<GLTexture2D> fFirst = makeShared<GLTexture2D>();
    const Shared<GLTexture2D> fSecond = makeShared<GLTexture2D>();
    std::vector<IHWTexture*> fTextures{fFirst.get(), fSecond.get()};
    IHWTexPlacement fPlacement;
    const Calls fCoordinates{
        call("glMultiTexCoord2f", GL_TEXTURE0, 0, 0), call("glMultiTexCoord2f", GL_TEXTURE0, 1, 0),
        call("glMultiTexCoord2f", GL_TEXTURE0, 1, 1), call("glMultiTexCoord2f", GL_TEXTURE0, 0, 1)};
};

TEST_F(ParticleSprites, faceTheViewerScaledThenTwisted) {
    koLinear::Point eyes[] = {{5, 0, 0}, {10, 20, 10}};
    koLinear::Vector ups[] = {{0, 0, 2}, {0, 2, 0}};
    fDrawer.setCamPositionOS(eyes[0]);
    fDrawer.setCamUpVectorOS(ups[0]);
    EXPECT_EQ(spriteAt(0, 0, 0), quad(corner(0, -0.5, -0.5) + corner(0, 0.5, -0.5) + corner(0, 0.5, 0.5) +
                                      corner(0, -0.5, 0.5)));
    fDrawer.setCamUpVectorOS(ups[1]);
    fDrawer.setCamPositionOS(eyes[1]);
    fDrawer.fCurrentScaleX = 10;
    fDrawer.fCurrentScaleY = 5;
    fDrawer.fCurrentTwist = 36.869898F; // a cosine of 4/5 and a sine of 3/5
    EXPECT_EQ(spriteAt(10, 20, 3),
              quad(corner(7.5, 15, 3) + corner(15.5, 21, 3) + corner(12.5, 25, 3) + corner(4.5, 19, 3)));
}

/// Zeros among the numbers leave some without a direction. The transcript has but six digits.
TEST_F(ParticleSprites, standToTheBitWhereTheHostsMatricesPutThem) {
    static std::vector<uint64_t> bits;
    const auto keep = [](const GLdouble* v) {
        std::transform(v, v + 3, std::back_inserter(bits), std::bit_cast<uint64_t, double>);
    };
    GLFunctionTable::fpGlobalFunctionTable->fglVertex3dv = keep;
    std::mt19937 random;
    const auto number = [&] {
        constexpr float kScales[] = {0.0F, -0.0F, 1e-9F, 0.1F, 1.0F, 1e9F};
        return kScales[random() % 6] * static_cast<float>(random() % 1000);
    };
    for (int n = 0; n < 2000; ++n) {
        float place[3];
        for (float* told : {fDrawer.fCameraPosition, fDrawer.fCameraUp, place})
            std::generate_n(told, 3, number);
        const auto& [eyeX, eyeY, eyeZ] = fDrawer.fCameraPosition;
        const auto& [x, y, z] = place;
        const koLinear::VectorFlt toCamera(eyeX - x, eyeY - y, eyeZ - z);
        const koLinear::VectorFlt cameraUp(fDrawer.fCameraUp[0], fDrawer.fCameraUp[1], fDrawer.fCameraUp[2]);
        koLinear::VectorFlt right = cross(cameraUp, toCamera);
        koLinear::VectorFlt up = cross(toCamera, right);
        right.normalize();
        up.normalize();
        koLinear::AffineMatrix matrix(right[0], right[1], right[2], up[0], up[1], up[2], 0, 0, 1, x, y, z);
        matrix.rotateZ((fDrawer.fCurrentTwist = number()) * 3.141592653589793 / 180.0);
        matrix.scale(fDrawer.fCurrentScaleX = number(), fDrawer.fCurrentScaleY = number(), 1);
        bits.clear();
        for (const auto& [s, t] : {std::pair(-0.5, -0.5), {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}})
            keep(matrix.transform(koLinear::Point(s, t, 0)).data());
        const std::vector<uint64_t> expected = std::exchange(bits, {});
        fDrawer.drawGLQuadAt(0, x, y, z);
        ASSERT_EQ(bits, expected) << n;
    }
}

TEST_F(ParticleSprites, keepWhatNewDataDoNotTell) {
    fRow->addData("scaleX", {1, 2, 3, 4, 6});
    fRow->addData("scaleY", {1, 2, 3, 4, 8});
    fRow->addData("twist", {10, 20, 30, 40, 50});
    drawn(fDrawer);
    EXPECT_EQ(fDrawer.fCurrentTwist, 50);
    fDrawer.fCurrentTwist = 0;
    delete fDrawer.fIterator;
    fDrawer.fIterator = nullptr;
    fDrawer.setData(*makeParticles({0, 0, 0}));
    EXPECT_EQ(drawn(fDrawer), color(kWhite) + quad(square(3, 4)) + color(1, 1, 1, 1));
    fDrawer.fReverseWinding = 7;
    fDrawer.fLit = true;
    const Calls corners = square(3, 4);
    EXPECT_EQ(spriteAt(0, 0, 0),
              Calls{call("glNormal3fv", Values{0, 0, 1})} + quad(Calls(corners.rbegin(), corners.rend())));
}

TEST_F(ParticleSprites, haveColorsAsTheyAreTold) {
    const Particles pair = makeRow(2);
    pair->fObjectColor = {0, 1, 0, 0.25F};
    pair->fOpacity = 0.5F;
    pair->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    GLParticleSpriteDraw drawer(*pair);
    drawer.fOpacityGain = 0.5F;
    const auto colors = [&](bool opacityOnly, bool lit, bool ignored) {
        drawer.fOpacityOnly = opacityOnly;
        drawer.fLit = lit;
        drawer.fIgnoreParticleColors = ignored;
        return only({"glColor4f", "glColor4fv", "glMaterialfv"}, drawn(drawer));
    };
    const Values own{0, 1, 0, 0.25};
    const Values faint{1, 1, 1, 0.25};
    const Values half{1, 1, 1, 0.5};
    const Calls white = color(1, 1, 1, 1);
    EXPECT_EQ(colors(false, false, false), color(own) + color(kRed) + color(kGreen) + white);
    EXPECT_EQ(colors(true, true, false), material(own) + material(kRed) + material(kGreen) + white);
    EXPECT_EQ(colors(true, true, true), material(faint) + material(half) + material(faint) + white);
    EXPECT_EQ(colors(true, false, true), color(faint) + color(half) + color(faint) + white);
    EXPECT_EQ(colors(false, false, true), white);
}

TEST_F(ParticleSprites, standOnSamplesWithAllElseOfTheirParticles) {
    const Particles pair = makeParticles({0, 0, 0, 0, 0, 2, 0, 0, 4, 0, 0, 6}, 2);
    pair->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    pair->addData("scaleX", {2, 4});
    pair->fFilter = {3, 0, 4};
    pair->fFilterEnabled = true;
    fDrawer.setData(*pair);
    delete fDrawer.fIterator;
    fDrawer.setIterator(*new ParticleDataIterator(*pair, nullptr, 0));
    fDrawer.fIterator->advance();
    const Calls far = corner(-2, -0.5, 6) + corner(2, -0.5, 6) + corner(2, 0.5, 6) + corner(-2, 0.5, 6);
    EXPECT_EQ(drawn(fDrawer), color(kWhite) + color(kGreen) + quad(far) + color(kRed) + quad(square(1, 0.5)) +
                                  color(1, 1, 1, 1));
    EXPECT_EQ(fDrawer.fIterator->counter(), 1U) << "the host's iterator stands where it stood";
    EXPECT_EQ(fDrawer.fIterator->filter(), nullptr);
}

TEST_F(ParticleSprites, cycleToTheLastTextureWhichAllTheOthersHave) {
    fDrawer.fTextureCycling = true;
    EXPECT_EQ(textured(&fPlacement, &fTextures), Calls{}) << "without textureNumber";
    EXPECT_TRUE(fDrawer.fTextureCycling) << "lowered for the call only";
    const Calls five = fCoordinates + fCoordinates + fCoordinates + fCoordinates + fCoordinates;
    EXPECT_EQ(textured(nullptr, &fTextures), five) << "for the caller's texture";
    EXPECT_EQ(textured(&fPlacement, nullptr), five);

    fRow->addData("textureNumber", {1, 1, 1, 1, 0}); // the numbers themselves pick nothing
    const Calls second = bound(2) + fCoordinates;
    EXPECT_EQ(textured(&fPlacement, &fTextures), bound(1) + fCoordinates + second + second + second + second);
    EXPECT_TRUE(!fDrawer.fTextures && !fDrawer.fPlacement && fDrawer.fTextureCycling);
    EXPECT_FALSE(fDrawer.applyTextureCycling(0)) << "the draw is over";
    fTextures[1] = nullptr;
    EXPECT_EQ(textured(&fPlacement, &fTextures), bound(1) + fCoordinates) << "a null texture has none";
    fDrawer.fTextureCycling = false;
    EXPECT_EQ(textured(&fPlacement, &fTextures), Calls{});

    fDrawer.fTextureCycling = true;
    fDrawer.fReverseWinding = 1;
    fDrawer.fTextureNumberData = nullptr;
    EXPECT_EQ(only({"glMultiTexCoord2f"}, spriteAt(0, 0, 0)),
              Calls(fCoordinates.rbegin(), fCoordinates.rend()));
    gl().fExtEnabled[kCapMultitexture] = false;
    EXPECT_EQ(spriteAt(0, 0, 0)[1], call("glTexCoord2f", 0.0, 1.0));
}

TEST_F(ParticleSprites, setTheirTextureUpFromItsPlacement) {
    fPlacement.fRepeat[0] = 2;
    fPlacement.fOffset[1] = 0.25F;
    fPlacement.fWrapModes[1] = IHWTexUsage::kClampToBorder;
    fPlacement.fMagFilter = IHWTexUsage::kNearest;
    fPlacement.fGenModes[0] = IHWTexUsage::kGenObjectLinear;
    fPlacement.fBorderColor = {1, 0, 0, 1};
    fDrawer.fTextures = &fTextures;
    fDrawer.fPlacement = &fPlacement;
    GLTexUsage::fsMaxAnisotropy = 8;
    const auto applied = [&](unsigned index, bool succeeds = true) {
        clearRecorded();
        EXPECT_EQ(fDrawer.applyTextureCycling(index), succeeds);
        return made();
    };
    const auto boundTo = [&](GLenum target) {
        clearRecorded();
        fFirst->bind();
        for (const GLenum other : {GL_TEXTURE_CUBE_MAP, GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D})
            gl().glDisable(other);
        gl().glEnable(target);
        GLTexUsage::setWrapMode(target, IHWTexUsage::kRepeat, IHWTexUsage::kClampToBorder);
        GLTexUsage::setMinMagFilter(target, IHWTexUsage::kLinear, IHWTexUsage::kNearest);
        GLTexUsage::setTexGenMode(target, fPlacement.fGenModes);
        GLTexUsage::setBorderColor(target, {1, 0, 0, 1});
        GLTexUsage::setFilterAnisotropic(target, false);
        return made();
    };
    clearRecorded();
    GLTexUsage::setTransform(fPlacement.fOffset, fPlacement.fRepeat, 0);
    const Calls matrix = made();
    EXPECT_EQ(applied(0), matrix + boundTo(GL_TEXTURE_2D));
    fFirst->fTextureType = IHWTexture::kTextureCubeMap;
    EXPECT_EQ(applied(0), matrix + boundTo(GL_TEXTURE_CUBE_MAP));
    fPlacement.fMatrix[3][0] = 1e-9;
    EXPECT_EQ(applied(9)[1],
              call("glLoadMatrixd", Values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1e-9, 0, 0, 1}));
    fPlacement.fMatrix[3][0] = 1e-11;
    fTextures[1] = nullptr;
    EXPECT_EQ(applied(9, false), matrix) << "and nothing more";
    fTextures.clear();
    EXPECT_EQ(applied(0, false), Calls{});
}

} // namespace
