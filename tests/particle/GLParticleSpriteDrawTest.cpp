#include "Particles.h"

#include "particle/GLParticleSpriteDraw.h"
#include "texture/GLTexture2D.h"

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
        koLinear::Vector up(0, 2, 0);
        fDrawer.setCamPositionOS(eye);
        fDrawer.setCamUpVectorOS(up);
    }

    static Calls corner(double x, double y, double z = 0) { return {call("glVertex3dv", Values{x, y, z})}; }
    /// One sprite at the origin, half as large as 1.
    static Calls square(double halfX, double halfY) {
        return Calls{call("glBegin", GL_QUADS)} + corner(-halfX, -halfY) + corner(halfX, -halfY) +
               corner(halfX, halfY) + corner(-halfX, halfY) + Calls{call("glEnd")};
    }

    Calls spriteAt(float x, float y, float z) {
        clearRecorded();
        fDrawer.drawGLQuadAt(0, x, y, z);
        return made();
    }
    Calls textured(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) {
        return only({"glBindTexture", "glMultiTexCoord2f"}, drawn(fDrawer, placement, textures));
    }

    /// The calls of some names, in order.
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
    koLinear::Point right(5, 0, 0);
    fDrawer.setCamPositionOS(right);
    EXPECT_EQ(only({"glVertex3dv"}, spriteAt(0, 0, 0)),
              corner(0, -0.5, 0.5) + corner(0, -0.5, -0.5) + corner(0, 0.5, -0.5) + corner(0, 0.5, 0.5));
    koLinear::Point above(10, 20, 10);
    fDrawer.setCamPositionOS(above);
    fDrawer.fCurrentScaleX = 10;
    fDrawer.fCurrentScaleY = 5;
    fDrawer.fCurrentTwist = 36.869898F; // a cosine of 4/5 and a sine of 3/5
    EXPECT_EQ(only({"glVertex3dv"}, spriteAt(10, 20, 3)),
              corner(7.5, 15, 3) + corner(15.5, 21, 3) + corner(12.5, 25, 3) + corner(4.5, 19, 3));
    koLinear::Point within(0, 0, 0);
    fDrawer.setCamPositionOS(within);
    const Calls flat = corner(0, 0) + corner(0, 0) + corner(0, 0) + corner(0, 0);
    EXPECT_EQ(only({"glVertex3dv"}, spriteAt(-0.0F, 0, 0)), flat) << "no direction";
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
    EXPECT_EQ(drawn(fDrawer), color(kWhite) + square(3, 4) + color(1, 1, 1, 1));
    fDrawer.fReverseWinding = 7;
    fDrawer.fLit = true;
    Calls reversed = square(3, 4);
    std::reverse(reversed.begin() + 1, reversed.end() - 1);
    EXPECT_EQ(spriteAt(0, 0, 0), Calls{call("glNormal3fv", Values{0, 0, 1})} + reversed);
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
    const Calls drawnCorners = only({"glColor4fv", "glVertex3dv"}, drawn(fDrawer));
    EXPECT_EQ(drawnCorners, color(kWhite) + color(kGreen) + corner(-2, -0.5, 6) + corner(2, -0.5, 6) +
                                corner(2, 0.5, 6) + corner(-2, 0.5, 6) + color(kRed) +
                                only({"glVertex3dv"}, square(1, 0.5)));
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
    fPlacement.fWrapModes[1] = IHWTexUsage::kClampToEdge;
    fPlacement.fMagFilter = IHWTexUsage::kNearest;
    fPlacement.fGenModes[0] = IHWTexUsage::kGenObjectLinear;
    fPlacement.fBorderColor = {1, 0, 0, 1};
    fDrawer.fTextures = &fTextures;
    fDrawer.fPlacement = &fPlacement;
    const auto applied = [&](unsigned index, bool succeeds = true) {
        clearRecorded();
        EXPECT_EQ(fDrawer.applyTextureCycling(index), succeeds);
        return made();
    };
    const auto set = [](GLenum name, GLint value) {
        return call("glTexParameteri", GL_TEXTURE_2D, name, value);
    };
    script().values[0x84FF] = {8};
    const Calls matrix{call("glMatrixMode", GL_TEXTURE), call("glLoadIdentity"),
                       call("glScalef", 2.0, 1.0, 1.0), call("glTranslatef", -0.0, -0.25, 0.0),
                       call("glMatrixMode", GL_MODELVIEW)};
    EXPECT_EQ(
        applied(0),
        (matrix + bound(1) +
         Calls{call("glDisable", GL_TEXTURE_CUBE_MAP), call("glDisable", GL_TEXTURE_1D),
               call("glDisable", GL_TEXTURE_2D), call("glDisable", GL_TEXTURE_3D),
               call("glEnable", GL_TEXTURE_2D), set(GL_TEXTURE_WRAP_S, GL_REPEAT),
               set(GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE), set(GL_TEXTURE_MIN_FILTER, GL_LINEAR),
               set(GL_TEXTURE_MAG_FILTER, GL_NEAREST), call("glDisable", GL_TEXTURE_CUBE_MAP),
               call("glEnable", GL_TEXTURE_GEN_S),
               call("glTexGeni", GL_S, GL_TEXTURE_GEN_MODE, GL_OBJECT_LINEAR),
               call("glDisable", GL_TEXTURE_GEN_T), call("glDisable", GL_TEXTURE_GEN_R),
               call("glDisable", GL_TEXTURE_GEN_Q),
               call("glTexParameterfv", GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, Values{1, 0, 0, 1}),
               call("glGetFloatv", 0x84FF, kOut), call("glTexParameterf", GL_TEXTURE_2D, 0x84FE, 1.0)}));

    fFirst->fTextureType = IHWTexture::kTextureCubeMap;
    EXPECT_THAT(applied(0),
                testing::IsSupersetOf({call("glEnable", 0x8513),
                                       call("glTexParameteri", 0x8513, GL_TEXTURE_WRAP_S, GL_REPEAT)}));
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
