#include "RoutingFixture.h"

namespace {

using Interpolant = GLRouting::GLInterpolant;

class Routing : public RoutingTest {
protected:
    /// The calls that switch interpolant `i` on (an empty unit, an enable) and its pointer call, by number.
    static Calls switchOn(uint32_t i) {
        if (i <= 2)
            return {enable(0x8074 + i)};
        if (i <= 10)
            return {call("glClientActiveTexture", 0x84C0 + i - 3), enable(0x8078)};
        return {call("glEnableVertexAttribArrayARB", i - 10)};
    }

    static std::string point(uint32_t i, const void* p) {
        const GLenum type = GL_SHORT;
        switch (i) {
        case 0:
            return call("glVertexPointer", 4, type, 12, p);
        case 1:
            return call("glNormalPointer", type, 12, p);
        case 2:
            return call("glColorPointer", 4, type, 12, p);
        default:
            return i <= 10 ? call("glTexCoordPointer", 4, type, 12, p)
                           : call("glVertexAttribPointerARB", i - 10, 4, type, GL_FALSE, 12, p);
        }
    }

    static Calls switchOff(uint32_t i) {
        if (i <= 2)
            return {disable(0x8074 + i)};
        if (i <= 10)
            return {call("glClientActiveTexture", 0x84C0 + i - 3), disable(0x8078)};
        return {call("glDisableVertexAttribArrayARB", i - 10)};
    }

    const float fData[24] = {};
};

TEST_F(Routing, setsAndClearsEachInterpolant) {
    GLRouting::requiresAttribInterpolants = true;
    GLObject object;
    object.bind();
    made();
    for (uint32_t i = 0; i < 26; ++i) {
        SCOPED_TRACE(i);
        const auto interpolant = Interpolant(i);
        const GLRouting::DirectDataAssignment client = {4, GL_SHORT, 12, fData, nullptr};
        const GLRouting::DirectDataAssignment buffered = {4, GL_SHORT, 12, fData, &object};

        fRouting.setupInterpolant(interpolant, client, false);
        EXPECT_EQ(made(), switchOn(i) + Calls{point(i, fData)});
        EXPECT_EQ(boundGLObjects[i], nullptr);

        fRouting.setupInterpolant(interpolant, buffered, false);
        Calls expected = switchOn(i) + Calls{point(i, nullptr)};
        expected.insert(expected.end() - 2, bind(buffer(0))); // behind the unit, before the enabling
        EXPECT_EQ(made(), expected);
        EXPECT_EQ(boundGLObjects[i], &object);

        fRouting.setupInterpolant(interpolant, buffered, true);
        EXPECT_EQ(made(), (Calls{bind(buffer(0)), point(i, nullptr)}));
        fRouting.setupInterpolant(interpolant, client, true);
        EXPECT_EQ(made(), Calls{point(i, fData)});
        EXPECT_EQ(boundGLObjects[i], nullptr);

        fRouting.disableInterpolant(interpolant);
        EXPECT_EQ(made(), switchOff(i));
    }
    GLObject nameless;
    failNext("glGenBuffersARB");
    fRouting.setupInterpolant(GLRouting::kNormal, {4, GL_SHORT, 12, fData, &nameless}, true);
    EXPECT_EQ(recorded().back(), point(1, fData));
}

TEST_F(Routing, leavesAttributesAloneUnlessRequired) {
    GLObject object;
    object.bind();
    GLRouting::fsUseObjectsForData = true;
    fGroup.addStream(GeometryData::kGeneric, 2, {1, 2});
    fRouting.fGroup = &fGroup;
    assign(GLRouting::kAttrib1, fData, &object);
    route(GLRouting::kAttrib15, GeometryData::kGeneric);
    made();

    fRouting.setVertexArrays(false, false);
    EXPECT_EQ(made(), Calls{});
    EXPECT_EQ(boundGLObjects[11], &object) << "recorded all the same";
    EXPECT_EQ(fGroup.stream(0)->fHanger, nullptr) << "nothing uploaded";
    fRouting.unsetVertexArrays();
    EXPECT_EQ(made(), (Calls{bind(0), unit(0)}));
    EXPECT_EQ(boundGLObjects[11], nullptr);
    fRouting.disableInterpolant(GLRouting::kAttrib1);
    EXPECT_EQ(made(), Calls{});

    // Attributes that the implementation does not have, and one that nobody has.
    GLRouting::requiresAttribInterpolants = true;
    gl().fMaxVertexAttribs = 8;
    for (const auto& [interpolant, reaches] : {std::pair(17U, true), {18U, false}, {26U, false}}) {
        fRouting.setupInterpolant(Interpolant(interpolant), {4, GL_SHORT, 12, fData, &object}, false);
        EXPECT_EQ(made().empty(), !reaches) << interpolant;
        fRouting.disableInterpolant(Interpolant(interpolant));
        EXPECT_EQ(made().empty(), !reaches) << interpolant;
    }
}

TEST_F(Routing, stopsBehindTheTextureUnits) {
    gl().fMaxTextureUnits = 4;
    for (uint32_t i = 0; i <= 10; ++i)
        assign(i, fData);
    fRouting.setVertexArrays(true, false);
    const Calls calls = made();
    EXPECT_EQ(calls.size(), 7U) << "slots 0 to 6";
    EXPECT_EQ(calls.front(), call("glVertexPointer", 2, GL_FLOAT, 0, static_cast<const void*>(fData)));

    fRouting.unsetVertexArrays();
    Calls expected = {disable(0x8074), disable(0x8075), disable(0x8076)};
    for (int u = 0; u < 4; ++u)
        expected = expected + Calls{unit(u), disable(GL_TEXTURE_COORD_ARRAY)};
    EXPECT_EQ(made(), expected + Calls{unit(0)}) << "slots 7 to 10 have no unit";

    // Unused slots don't count; one whose stream is missing does.
    fRouting.fSlots[0].fMode = fRouting.fSlots[3].fMode = GLRouting::kUnused;
    route(GLRouting::kNormal, GeometryData::kNormal);
    fRouting.fGroup = &fGroup;
    fRouting.setVertexArrays(true, false);
    EXPECT_EQ(made().size(), 6U) << "slot 2 and slots 4 to 8, slot 1 counted";
}

TEST_F(Routing, sendsStreamsFromClientMemory) {
    const GeometryData& position = fGroup.addStream(GeometryData::kPosition, 3, {0, 0, 0});
    const GeometryData& normal = fGroup.addStream(GeometryData::kNormal, 3, {0, 0, 1});
    fGroup.addStream(GeometryData::kTexCoord, 2, {0, 0});
    const GeometryData& second = fGroup.addStream(GeometryData::kTexCoord, 2, {0, 0});
    const GeometryData& flat = fGroup.addStream(GeometryData::DataType(14), 3, {0, 1, 0});
    route(GLRouting::kPosition, GeometryData::kPosition);
    route(GLRouting::kNormal, GeometryData::kNormal);
    route(GLRouting::kColor, GeometryData::kTexCoord, 2); // there are only two
    route(GLRouting::GLInterpolant(5), GeometryData::kTexCoord, 1);
    fRouting.setVertexArrays(false, false);
    EXPECT_EQ(made(), Calls{}) << "no group, no streams";

    fRouting.fGroup = &fGroup;
    const Calls head = {enable(GL_VERTEX_ARRAY), vertices(3, position.fData), enable(GL_NORMAL_ARRAY)};
    const Calls tail = {unit(2), enable(GL_TEXTURE_COORD_ARRAY), texCoords(second.fData)};
    fRouting.setVertexArrays(false, false);
    EXPECT_EQ(made(), head + Calls{normals(normal.fData)} + tail);
    fRouting.setVertexArrays(false, true);
    EXPECT_EQ(made(), head + Calls{normals(flat.fData)} + tail) << "type 14 in the place of 2";
    fRouting.setVertexArrays(true, false);
    EXPECT_EQ(made(), (Calls{vertices(3, position.fData), normals(normal.fData), texCoords(second.fData)}))
        << "pointers only: no unit chosen";
}

TEST_F(Routing, uploadsStreamsOnce) {
    GLRouting::fsUseObjectsForData = true;
    GeometryData& stream = fGroup.addStream(GeometryData::kPosition, 3, {1, 2, 3, 4, 5, 6});
    route(GLRouting::kPosition, GeometryData::kPosition);
    fRouting.fGroup = &fGroup;

    const Calls steady = {bind(buffer(0)), enable(GL_VERTEX_ARRAY), vertices(3, nullptr)};
    fRouting.setVertexArrays(false, false);
    EXPECT_EQ(made(),
              (Calls{generate(), bind(buffer(0)),
                     call("glBufferDataARB", GL_ARRAY_BUFFER_ARB, 24, stream.fData, GL_STATIC_DRAW_ARB)}) +
                  steady);
    const auto* object = dynamic_cast<GLObject*>(stream.fHanger);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->fAccess, 0U);
    fRouting.setVertexArrays(false, false);
    EXPECT_EQ(made(), steady);

    fRouting.unsetVertexArrays();
    EXPECT_EQ(made(), (Calls{bind(buffer(0)), disable(GL_VERTEX_ARRAY), bind(0), bind(0), unit(0)}));

    // Without the capability, or the switch, a hanger from before is not used.
    gl().fExtEnabled[kCapVertexBufferObject] = false;
    fRouting.setVertexArrays(true, false);
    gl().fExtEnabled[kCapVertexBufferObject] = true;
    GLRouting::fsUseObjectsForData = false;
    fRouting.setVertexArrays(true, false);
    EXPECT_EQ(made(), (Calls{vertices(3, stream.fData), vertices(3, stream.fData)}));
}

TEST_F(Routing, fallsBackWhereAnUploadFails) {
    GLRouting::fsUseObjectsForData = true;
    GeometryData& stream = fGroup.addStream(GeometryData::kPosition, 3, {1, 2, 3});
    route(GLRouting::kPosition, GeometryData::kPosition);
    fRouting.fGroup = &fGroup;

    IHWMemoryObject::fsMemoryUsage = GLObject::fsMaximumMemoryUsage - 11;
    fRouting.setVertexArrays(true, false);
    EXPECT_EQ(made(), (Calls{generate(), bind(buffer(0)), bind(buffer(0)), bind(0), remove(buffer(0)),
                             vertices(3, stream.fData)}));
    EXPECT_EQ(stream.fHanger, nullptr);
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, GLObject::fsMaximumMemoryUsage - 11);
    EXPECT_EQ(boundGLObjects[0], nullptr);

    script().failing = {{"glGenBuffersARB", 2}};
    fRouting.setVertexArrays(true, false);
    EXPECT_EQ(made(), (Calls{generate(), vertices(3, stream.fData)}));

    IHWMemoryObject::fsMemoryUsage = 0;
    stream.fElementCount = stream.fComponentsPerElement = 0xFFFFFFFF;
    stream.fElementType = GeometryData::kDouble;
    fRouting.setVertexArrays(true, false);
    EXPECT_EQ(made().size(), 6U) << "a size that can't be counted is not uploaded";
    EXPECT_EQ(stream.fHanger, nullptr);
}

TEST_F(Routing, replacesAForeignHanger) {
    static bool died = false;
    struct Foreign : IHWMemoryObject {
        ~Foreign() override { died = true; }
    };
    GLRouting::fsUseObjectsForData = true;
    GeometryData& stream = fGroup.addStream(GeometryData::kPosition, 3, {1, 2, 3});
    route(GLRouting::kPosition, GeometryData::kPosition);
    fRouting.fGroup = &fGroup;
    stream.setHanger(new Foreign);
    GLObject::fsMaximumMemoryUsage = 11;
    fRouting.setVertexArrays(true, false);
    EXPECT_FALSE(died) << "it goes only when there is a new one";
    GLObject::fsMaximumMemoryUsage = 12;
    fRouting.setVertexArrays(true, false);
    EXPECT_TRUE(died);
    EXPECT_NE(GLObject::from(stream.fHanger), nullptr);
}

TEST_F(Routing, undoesItsArraysInOrder) {
    GLRouting::fsUseObjectsForIndexing = true;
    GLObject first;
    GLObject second;
    first.bind();
    second.bind();
    made();
    assign(GLRouting::kColor, fData);
    assign(GLRouting::kNormal, nullptr, &first);
    assign(4, nullptr, &second);
    boundGLObjects[20] = &first;
    fRouting.setVertexArrays(true, false);
    made();
    fRouting.unsetVertexArrays();
    EXPECT_EQ(made(), (Calls{bind(buffer(0)), disable(GL_NORMAL_ARRAY), bind(0), disable(GL_COLOR_ARRAY),
                             bind(buffer(1)), unit(1), disable(GL_TEXTURE_COORD_ARRAY), bind(0),
                             bindIndices(0), unit(0)}));
    EXPECT_FALSE(first.fBound);
    EXPECT_THAT(boundGLObjects, testing::Each(nullptr)) << "also those of unused slots";

    // Neither buffer objects nor multitexture.
    gl().fExtSupported[kCapVertexBufferObject] = gl().fExtEnabled[kCapMultitexture] = false;
    fRouting.fSlots[4].fDirect = {2, GL_FLOAT, 0, fData, nullptr};
    fRouting.fSlots[1].fMode = fRouting.fSlots[2].fMode = GLRouting::kUnused;
    fRouting.setVertexArrays(false, false);
    fRouting.unsetVertexArrays();
    EXPECT_EQ(made(),
              (Calls{enable(GL_TEXTURE_COORD_ARRAY), texCoords(fData), disable(GL_TEXTURE_COORD_ARRAY)}));
}

TEST_F(Routing, disablesAllArrays) {
    gl().fMaxTextureUnits = 2;
    gl().fMaxVertexAttribs = 3;
    const Calls fixed = {disable(0x8074), disable(0x8075), disable(0x8076), disable(GL_INDEX_ARRAY)};
    const Calls units = {unit(0), disable(0x8078), unit(1), disable(0x8078), unit(0)};
    GLRouting::disableAllArrays();
    EXPECT_EQ(made(), fixed + units);

    GLRouting::requiresAttribInterpolants = true;
    GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = true;
    GLRouting::disableAllArrays();
    EXPECT_EQ(made(), (fixed + units +
                       Calls{call("glDisableVertexAttribArrayARB", 1),
                             call("glDisableVertexAttribArrayARB", 2), bind(0), bindIndices(0)}))
        << "never attribute 0";

    gl().fExtEnabled[kCapVertexBufferObject] = gl().fExtEnabled[kCapMultitexture] = false;
    gl().fMaxVertexAttribs = 1;
    GLRouting::disableAllArrays();
    EXPECT_EQ(made(), (fixed + Calls{disable(0x8078), disable(0x8078)}));
}

} // namespace
