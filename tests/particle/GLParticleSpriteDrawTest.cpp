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
    ParticleSprites() : fRow(makeRow(5)), fDrawer(*fRow) {
        koLinear::Point eye(0, 0, 10);
        koLinear::Vector up(0, 2, 0);
        fDrawer.setCamPositionOS(eye);
        fDrawer.setCamUpVectorOS(up);
        clearRecorded();
    }

    /// One sprite at the origin; `coordinates`: before each corner its texture coordinates.
    static Calls square(double halfX, double halfY, bool coordinates = false, bool reverse = false) {
        const double signs[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
        Calls calls{call("glBegin", GL_QUADS)};
        for (int i = 0; i < 4; ++i) {
            const auto& [x, y] = signs[reverse ? 3 - i : i];
            if (coordinates)
                calls.push_back(call("glMultiTexCoord2f", GL_TEXTURE0, x > 0 ? 1 : 0, y > 0 ? 1 : 0));
            calls.push_back(call("glVertex3dv", Values{x * halfX, y * halfY, 0}));
        }
        return calls + Calls{call("glEnd")};
    }

    Calls spriteAt0() {
        fDrawer.drawGLQuadAt(0, 0, 0, 0);
        return made();
    }

    /// The calls of some names in a draw, in order.
    static Calls only(const Calls& calls, const std::vector<std::string>& names) {
        Calls some;
        for (const std::string& one : calls) {
            if (std::ranges::count(names, one.substr(0, one.find('('))) > 0)
                some.push_back(one);
        }
        return some;
    }

    static std::string bound(GLuint name) { return call("glBindTexture", GL_TEXTURE_2D, name); }

    Particles fRow;
    GLParticleSpriteDraw fDrawer;
    const Shared<GLTexture2D> fFirst = makeShared<GLTexture2D>();
    const Shared<GLTexture2D> fSecond = makeShared<GLTexture2D>();
    std::vector<IHWTexture*> fTextures{fFirst.get(), fSecond.get()};
    IHWTexPlacement fPlacement;
};

TEST_F(ParticleSprites, facesTheViewerScaledThenTwisted) {
    const auto corners = [this](koLinear::Point eye, float x, float y, float z) {
        fDrawer.setCamPositionOS(eye);
        fDrawer.drawGLQuadAt(0, x, y, z);
        return only(made(), {"glVertex3dv"});
    };
    const auto at = [](double x, double y, double z) { return Calls{call("glVertex3dv", Values{x, y, z})}; };
    EXPECT_EQ(corners({5, 0, 0}, 0, 0, 0),
              at(0, -0.5, 0.5) + at(0, -0.5, -0.5) + at(0, 0.5, -0.5) + at(0, 0.5, 0.5));
    fDrawer.fCurrentScaleX = 10;
    fDrawer.fCurrentScaleY = 5;
    fDrawer.fCurrentTwist = 36.869898F; // a cosine of 4/5 and a sine of 3/5
    EXPECT_EQ(corners({10, 20, 10}, 10, 20, 3),
              at(7.5, 15, 3) + at(15.5, 21, 3) + at(12.5, 25, 3) + at(4.5, 19, 3));
    EXPECT_EQ(corners({0, 0, 0}, -0.0F, 0, 0), at(0, 0, 0) + at(0, 0, 0) + at(0, 0, 0) + at(0, 0, 0))
        << "no direction";
}

TEST_F(ParticleSprites, carriesOverWhatIsMissing) {
    fRow->addData("scaleX", {1, 2, 3, 4, 6});
    fRow->addData("scaleY", {1, 2, 3, 4, 8});
    fRow->addData("twist", {10, 20, 30, 40, 50});
    drawn(fDrawer);
    EXPECT_EQ(fDrawer.fCurrentTwist, 50);
    fDrawer.fCurrentTwist = 0;
    delete fDrawer.fIterator;
    fDrawer.fIterator = nullptr;
    fDrawer.setData(*makeParticles({0, 0, 0}));
    EXPECT_EQ(drawn(fDrawer), color(Values{1, 1, 1, 1}) + square(3, 4) + color(1, 1, 1, 1));
    fDrawer.fReverseWinding = 7;
    fDrawer.fLit = true;
    EXPECT_EQ(spriteAt0(), Calls{call("glNormal3fv", Values{0, 0, 1})} + square(3, 4, false, true));
}

TEST_F(ParticleSprites, colorsWhatItIsTold) {
    const Particles pair = makeRow(2);
    pair->fObjectColor = {0, 1, 0, 0.25F};
    pair->fOpacity = 0.5F;
    pair->setColors({1, 0, 0, 1, 0, 0, 1, 0.5F});
    GLParticleSpriteDraw drawer(*pair);
    drawer.fOpacityGain = 0.5F;
    const auto colors = [&](bool opacityOnly, bool lit, bool ignored) {
        drawer.fOpacityOnly = opacityOnly;
        drawer.fLit = lit;
        drawer.fIgnoreParticleColors = ignored;
        return only(drawn(drawer), {"glColor4f", "glColor4fv", "glMaterialfv"});
    };
    const Values kOwn[] = {{0, 1, 0, 0.25}, {1, 0, 0, 1}, {0, 0, 1, 0.5}};
    const Values kOpacities[] = {{1, 1, 1, 0.25}, {1, 1, 1, 0.5}, {1, 1, 1, 0.25}};
    const auto sent = [](auto send, const Values(&values)[3]) {
        return send(values[0]) + send(values[1]) + send(values[2]) + color(1, 1, 1, 1);
    };
    const auto asColor = [](const Values& c) { return color(c); };
    EXPECT_EQ(colors(false, false, false), sent(asColor, kOwn));
    EXPECT_EQ(colors(true, false, false), sent(asColor, kOwn));
    EXPECT_EQ(colors(true, true, false), sent(material, kOwn));
    EXPECT_EQ(colors(true, true, true), sent(material, kOpacities));
    EXPECT_EQ(colors(true, false, true), sent(asColor, kOpacities));
    EXPECT_EQ(colors(false, false, true), color(1, 1, 1, 1));
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
    const Calls vertices = only(drawn(fDrawer), {"glColor4fv", "glVertex3dv"});
    ASSERT_EQ(vertices.size(), 11U);
    EXPECT_EQ(Calls(vertices.begin() + 1, vertices.begin() + 3),
              color(Values{0, 0, 1, 1}) + Calls{call("glVertex3dv", Values{-2, -0.5, 6})});
    EXPECT_EQ(vertices[7], call("glVertex3dv", Values{-1, -0.5, 0}));
    EXPECT_EQ(fDrawer.fIterator->counter(), 1U) << "the host's iterator stands where it stood";
    EXPECT_EQ(fDrawer.fIterator->filter(), nullptr);
}

TEST_F(ParticleSprites, cyclesToTheLastTextureWhichAllTheOthersHave) {
    fDrawer.fTextureCycling = true;
    const auto textured = [&](IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) {
        return only(drawn(fDrawer, placement, textures), {"glBindTexture", "glMultiTexCoord2f"});
    };
    EXPECT_EQ(textured(&fPlacement, &fTextures), Calls{}) << "without textureNumber";
    EXPECT_TRUE(fDrawer.fTextureCycling) << "lowered for the call only";
    const Calls coordinates = only(square(1, 1, true), {"glMultiTexCoord2f"});
    const Calls five = coordinates + coordinates + coordinates + coordinates + coordinates;
    EXPECT_EQ(textured(nullptr, &fTextures), five) << "for the caller's texture";
    EXPECT_EQ(textured(&fPlacement, nullptr), five);

    fRow->addData("textureNumber", {1, 1, 1, 1, 0}); // the numbers themselves pick nothing
    const Calls second = Calls{bound(2)} + coordinates;
    EXPECT_EQ(textured(&fPlacement, &fTextures),
              Calls{bound(1)} + coordinates + second + second + second + second);
    EXPECT_EQ(fDrawer.fTextures, nullptr);
    EXPECT_EQ(fDrawer.fPlacement, nullptr);
    EXPECT_TRUE(fDrawer.fTextureCycling);
    EXPECT_FALSE(fDrawer.applyTextureCycling(0)) << "the draw is over";
    fTextures[1] = nullptr;
    EXPECT_EQ(textured(&fPlacement, &fTextures), Calls{bound(1)} + coordinates) << "a null texture has none";

    fDrawer.fTextureCycling = false;
    EXPECT_EQ(textured(&fPlacement, &fTextures), Calls{});
    fDrawer.fTextureCycling = true;
    fDrawer.fReverseWinding = 1;
    fDrawer.fTextureNumberData = nullptr;
    EXPECT_EQ(spriteAt0(), square(0.5, 0.5, true, true));
    gl().fExtEnabled[kCapMultitexture] = false;
    EXPECT_EQ(spriteAt0()[1], call("glTexCoord2f", 0.0, 1.0));
}

TEST_F(ParticleSprites, setsTheTextureUpFromItsPlacement) {
    fPlacement.fRepeat[0] = 2;
    fPlacement.fOffset[1] = 0.25F;
    fPlacement.fWrapModes[1] = IHWTexUsage::kClampToEdge;
    fPlacement.fMagFilter = IHWTexUsage::kNearest;
    fPlacement.fGenModes[0] = IHWTexUsage::kGenObjectLinear;
    fPlacement.fBorderColor = {1, 0, 0, 1};
    fDrawer.fTextures = &fTextures;
    fDrawer.fPlacement = &fPlacement;
    const auto applied = [&](unsigned index, bool succeeds = true) {
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
        (matrix + Calls{bound(1), call("glDisable", GL_TEXTURE_CUBE_MAP), call("glDisable", GL_TEXTURE_1D),
                        call("glDisable", GL_TEXTURE_2D), call("glDisable", GL_TEXTURE_3D),
                        call("glEnable", GL_TEXTURE_2D), set(GL_TEXTURE_WRAP_S, GL_REPEAT),
                        set(GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE), set(GL_TEXTURE_MIN_FILTER, GL_LINEAR),
                        set(GL_TEXTURE_MAG_FILTER, GL_NEAREST), call("glDisable", GL_TEXTURE_CUBE_MAP),
                        call("glEnable", GL_TEXTURE_GEN_S),
                        call("glTexGeni", GL_S, GL_TEXTURE_GEN_MODE, GL_OBJECT_LINEAR),
                        call("glDisable", GL_TEXTURE_GEN_T), call("glDisable", GL_TEXTURE_GEN_R),
                        call("glDisable", GL_TEXTURE_GEN_Q),
                        call("glTexParameterfv", GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, Values{1, 0, 0, 1}),
                        call("glGetFloatv", 0x84FF, kOut),
                        call("glTexParameterf", GL_TEXTURE_2D, 0x84FE, 1.0)}));

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
