#include "RoutingFixture.h"

namespace {

class Routing : public RoutingTest {
protected:
    Routing() {
        fRouting.fGroup = &fGroup;
        fObject.bind();
        made();
    }

    /// What switches array `i` on or off, behind the choice of its texture unit where it has one.
    static Calls switched(uint32_t i, bool on) {
        const auto client = [on](GLenum array) { return on ? enable(array) : disable(array); };
        if (i >= 11)
            return {call(on ? "glEnableVertexAttribArrayARB" : "glDisableVertexAttribArrayARB", i - 10)};
        return i >= 3 ? Calls{unit(i - 3), client(0x8078)} : Calls{client(0x8074 + i)};
    }

    static std::string point(uint32_t i, const void* data) {
        if (i == 1)
            return call("glNormalPointer", GL_SHORT, 12, data);
        if (i >= 11)
            return call("glVertexAttribPointerARB", i - 10, 4, GL_SHORT, GL_FALSE, 12, data);
        const char* name = i == 0 ? "glVertexPointer" : i == 2 ? "glColorPointer" : "glTexCoordPointer";
        return call(name, 4, GL_SHORT, 12, data);
    }

    void assign(uint32_t slot, GLObject* object = nullptr) {
        fRouting.fSlots[slot].fMode = GLRouting::kDirect;
        fRouting.fSlots[slot].fDirect = {4, GL_SHORT, 12, fData, object};
    }

    Calls set(bool pointersOnly = false, bool substitute = false) {
        fRouting.setVertexArrays(pointersOnly, substitute);
        return made();
    }

    Calls unset() {
        fRouting.unsetVertexArrays();
        return made();
    }

    const float fData[24] = {};
    GLObject fObject;
};

TEST_F(Routing, setsAndClearsEachInterpolant) {
    const GLRouting::DirectDataAssignment client = {4, GL_SHORT, 12, fData, nullptr};
    const GLRouting::DirectDataAssignment buffered = {4, GL_SHORT, 12, fData, &fObject};
    // Generic attributes only where they are required, and as many as GL has.
    for (const uint32_t end : {11U, 25U, 26U}) {
        GLRouting::requiresAttribInterpolants = end > 11;
        gl().fMaxVertexAttribs = end == 25 ? 15 : 16;
        for (uint32_t i = 0; i < 27; ++i) {
            const auto interpolant = GLRouting::GLInterpolant(i);
            fRouting.setupInterpolant(interpolant, client, false);
            fRouting.setupInterpolant(interpolant, buffered, false);
            EXPECT_TRUE(i >= 26 || boundGLObjects[i] == &fObject) << i;
            fRouting.setupInterpolant(interpolant, buffered, true);
            fRouting.setupInterpolant(interpolant, client, true);
            EXPECT_TRUE(i >= 26 || !boundGLObjects[i]) << i;
            fRouting.disableInterpolant(interpolant);
            const Calls on = switched(i, true);
            Calls bound = on;
            bound.insert(bound.end() - 1, bind(0)); // behind the unit, before the enabling
            const Calls expected = on + Calls{point(i, fData)} + bound +
                                   Calls{point(i, nullptr), bind(0), point(i, nullptr), point(i, fData)} +
                                   switched(i, false);
            EXPECT_EQ(made(), i < end ? expected : Calls{}) << i;
        }
    }
}

TEST_F(Routing, sendsNothingThatHasNoPlaceInGL) {
    GLRouting::fsUseObjectsForData = true;
    fGroup.addStream(GeometryData::kGeneric, 2, {1, 2});
    assign(GLRouting::kAttrib1, &fObject);
    route(GLRouting::kAttrib15, GeometryData::kGeneric);
    EXPECT_EQ(set(), Calls{}) << "attributes that nobody requires";
    EXPECT_EQ(boundGLObjects[11], &fObject) << "recorded all the same";
    EXPECT_EQ(fGroup.stream(0)->fHanger, nullptr) << "nothing uploaded";
    EXPECT_EQ(unset(), (Calls{unbind(), unit(0)}));

    GLRouting::fsUseObjectsForData = false;
    gl().fMaxTextureUnits = 1;
    for (uint32_t i = 0; i <= 10; ++i)
        assign(i);
    EXPECT_EQ(set(true), (Calls{point(0, fData), point(1, fData), point(2, fData), point(3, fData)}));
    EXPECT_EQ(unset(),
              (Calls{disable(0x8074), disable(0x8075), disable(0x8076), unit(0), disable(0x8078), unit(0)}))
        << "slots 4 to 10 have no unit";
    // Unused slots don't count; one whose stream is missing does.
    fRouting.fSlots[0].fMode = fRouting.fSlots[3].fMode = GLRouting::kUnused;
    route(GLRouting::kNormal, GeometryData::kNormal);
    EXPECT_EQ(set(true), (Calls{point(2, fData), point(4, fData), point(5, fData)}));
}

TEST_F(Routing, sendsStreamsFromClientMemory) {
    const void* position = fGroup.addStream(GeometryData::kPosition, 3, {0, 0, 0}).fData;
    const void* normal = fGroup.addStream(GeometryData::kNormal, 3, {0, 0, 1}).fData;
    fGroup.addStream(GeometryData::kTexCoord, 2, {0, 0});
    const void* second = fGroup.addStream(GeometryData::kTexCoord, 2, {0, 0}).fData;
    const void* flat = fGroup.addStream(GeometryData::DataType(14), 3, {0, 1, 0}).fData;
    route(GLRouting::kPosition, GeometryData::kPosition);
    route(GLRouting::kNormal, GeometryData::kNormal);
    route(GLRouting::kColor, GeometryData::kTexCoord);
    route(5, GeometryData::kTexCoord);
    fRouting.fSlots[GLRouting::kColor].fIndex = 2; // there are only two
    fRouting.fSlots[5].fIndex = 1;
    const std::string texCoords = call("glTexCoordPointer", 2, GL_FLOAT, 0, second);
    const Calls head = {enable(GL_VERTEX_ARRAY), vertices(position), enable(GL_NORMAL_ARRAY)};
    const Calls tail = {unit(2), enable(GL_TEXTURE_COORD_ARRAY), texCoords};
    EXPECT_EQ(set(), head + Calls{normals(normal)} + tail);
    EXPECT_EQ(set(false, true), head + Calls{normals(flat)} + tail) << "type 14 in the place of 2";
    EXPECT_EQ(set(true), (Calls{vertices(position), normals(normal), texCoords})) << "no unit chosen";
    fRouting.fGroup = nullptr;
    EXPECT_EQ(set(), Calls{}) << "no group, no streams";
}

TEST_F(Routing, uploadsStreamsOnceWhereItCan) {
    static bool died = false;
    struct Foreign : IHWMemoryObject {
        ~Foreign() override { died = true; }
    };
    GLRouting::fsUseObjectsForData = true;
    GeometryData& stream = fGroup.addStream(GeometryData::kPosition, 3, {1, 2, 3});
    route(GLRouting::kPosition, GeometryData::kPosition);
    stream.setHanger(new Foreign);
    const std::string fromMemory = vertices(stream.fData);
    GLObject::fsMaximumMemoryUsage = 11;
    EXPECT_EQ(set(true), (Calls{generate(), bind(1), bind(1), unbind(), remove(1), fromMemory}));
    failNext("glGenBuffersARB");
    EXPECT_EQ(set(true), (Calls{generate(), fromMemory}));
    GLObject::fsMaximumMemoryUsage = 12;
    stream.fElementType = GeometryData::kDouble;
    stream.fElementCount = stream.fComponentsPerElement = 0x80000000;
    EXPECT_EQ(set(true).size(), 6U) << "a size that can't be counted is not uploaded";
    EXPECT_FALSE(died) << "what hung there goes only when there is a new one";
    EXPECT_EQ(boundGLObjects[0], nullptr);
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 0U);

    stream.fElementType = GeometryData::kFloat;
    stream.fElementCount = 1;
    stream.fComponentsPerElement = 3;
    const auto upload = call("glBufferDataARB", GL_ARRAY_BUFFER_ARB, 12, stream.fData, GL_STATIC_DRAW_ARB);
    const Calls steady = {bind(3), enable(GL_VERTEX_ARRAY), vertices(nullptr)};
    EXPECT_EQ(set(), (Calls{generate(), bind(3), upload}) + steady);
    EXPECT_TRUE(died);
    EXPECT_EQ(set(), steady);
    EXPECT_EQ(unset(), (Calls{bind(3), disable(GL_VERTEX_ARRAY), unbind(), unbind(), unit(0)}));
    // Without the capability, or the switch, the hanger rests.
    gl().fExtEnabled[kCapVertexBufferObject] = false;
    EXPECT_EQ(set(true), Calls{fromMemory});
    gl().fExtEnabled[kCapVertexBufferObject] = true;
    GLRouting::fsUseObjectsForData = false;
    EXPECT_EQ(set(true), Calls{fromMemory});
}

TEST_F(Routing, undoesItsArraysInOrder) {
    GLRouting::fsUseObjectsForIndexing = true;
    failNext("glGenBuffersARB");
    GLObject nameless;
    GLObject second;
    assign(GLRouting::kPosition, &nameless);
    assign(GLRouting::kColor);
    assign(GLRouting::kNormal, &fObject);
    assign(GLRouting::kTexCoord7, &second);
    boundGLObjects[20] = &fObject;
    EXPECT_EQ(set(true), (Calls{generate(), point(0, fData), bind(0), point(1, nullptr), point(2, fData),
                                generate(), bind(1), point(10, nullptr)}));
    fRouting.fSlots[0].fMode = GLRouting::kUnused;
    EXPECT_EQ(unset(), (Calls{bind(0), disable(GL_NORMAL_ARRAY), unbind(), disable(GL_COLOR_ARRAY), bind(1),
                              unit(7), disable(GL_TEXTURE_COORD_ARRAY), unbind(), unbindIndices(), unit(0)}));
    EXPECT_FALSE(fObject.fBound);
    EXPECT_THAT(boundGLObjects, testing::Each(nullptr)) << "also those of unused slots";

    // Neither buffer objects nor multitexture.
    gl().fExtSupported[kCapVertexBufferObject] = gl().fExtEnabled[kCapMultitexture] = false;
    assign(GLRouting::kTexCoord7);
    fRouting.fSlots[1].fMode = fRouting.fSlots[2].fMode = GLRouting::kUnused;
    EXPECT_EQ(set(), (Calls{enable(GL_TEXTURE_COORD_ARRAY), point(10, fData)}));
    EXPECT_EQ(unset(), Calls{disable(GL_TEXTURE_COORD_ARRAY)});
}

TEST_F(Routing, disablesAllArrays) {
    const auto disabled = [] {
        GLRouting::disableAllArrays();
        return made();
    };
    gl().fMaxTextureUnits = 2;
    gl().fMaxVertexAttribs = 3;
    const Calls fixed = {disable(0x8074), disable(0x8075), disable(0x8076), disable(GL_INDEX_ARRAY)};
    const Calls all = fixed + switched(3, false) + switched(4, false) + Calls{unit(0)};
    EXPECT_EQ(disabled(), all);
    GLRouting::requiresAttribInterpolants = true;
    GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = true;
    const Calls buffers = {unbind(), unbindIndices()};
    EXPECT_EQ(disabled(), all + switched(11, false) + switched(12, false) + buffers) << "never attribute 0";
    gl().fExtEnabled[kCapVertexBufferObject] = gl().fExtEnabled[kCapMultitexture] = false;
    gl().fMaxVertexAttribs = 1;
    EXPECT_EQ(disabled(), (fixed + Calls{disable(0x8078), disable(0x8078)}));
}

} // namespace
