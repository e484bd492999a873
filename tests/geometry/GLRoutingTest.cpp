#include "DoubleTest.h"

#include "geometry/GLRouting.h"

#include <orlohost/HWEnvironment.h>

#include <optional>
#include <random>

namespace {

constexpr auto kTriangles = GeometryDataIndex::kTriangles;
constexpr auto kStrip = GeometryDataIndex::kTriangleStrip;
constexpr auto kQuads = GeometryDataIndex::kQuads;

/// A routing on the recording GL, with the calls that its transcripts are made of. Buffers go by their
/// number.
class RoutingTest : public DoubleTest {
protected:
    RoutingTest() { IHWMemoryObject::fsMemoryUsage = 0; }
    ~RoutingTest() override { HWEnvironment::orlo_block_allocate_strips = false; }

    static std::string bind(int n) { return call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 101 + n); }
    static std::string unbind() { return call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0); }
    static std::string bindIndices(int n) { return call("glBindBufferARB", 0x8893, 101 + n); }
    static std::string unbindIndices() { return call("glBindBufferARB", 0x8893, 0); }
    static std::string generate() { return call("glGenBuffersARB", 1, kOut); }
    static std::string remove(int n) { return call("glDeleteBuffersARB", 1, Values{101.0 + n}); }
    static std::string enable(GLenum array) { return call("glEnableClientState", array); }
    static std::string disable(GLenum array) { return call("glDisableClientState", array); }
    static std::string unit(uint32_t n) { return call("glClientActiveTexture", GL_TEXTURE0 + n); }
    static std::string vertices(const void* data) { return call("glVertexPointer", 3, GL_FLOAT, 0, data); }
    static std::string normals(const void* data) { return call("glNormalPointer", GL_FLOAT, 0, data); }

    /// Routes a slot to the first stream of a type.
    void route(uint32_t slot, GeometryData::DataType type) {
        fRouting.fSlots[slot].fMode = GLRouting::kFromGeometry;
        fRouting.fSlots[slot].fDataType = type;
    }

    GLRouting fRouting;
    GeometryLogicalGroup fGroup;
};

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

/// Draws groups without arrays: what drawGroup calls is the records, and at the end, with objects for
/// indices, unbindIndices().
class Drawing : public RoutingTest {
protected:
    Drawing() {
        gl().fExtEnabled[kCapMultitexture] = false; // no unit to go back to
        fPositions = fGroup.addStream(GeometryData::kPosition, 3, std::vector<float>(30)).fData;
    }

    Calls drawn(koUtil::BitField* visible = nullptr, unsigned* list = nullptr, unsigned* prepared = nullptr,
                unsigned preparedCount = 0) {
        fRouting.drawGroup(&fGroup, visible, list, prepared, preparedCount, false);
        return made();
    }

    static std::string elements(GLenum mode, uint32_t count, const void* indices) {
        return call("glDrawElements", mode, count, GL_UNSIGNED_INT, indices);
    }

    /// Record number `i`, a strip or triangles, drawn from client memory.
    std::string fromMemory(size_t i) const {
        const GeometryDataIndex& record = *fGroup.indexRecord(i);
        return elements(record.fPrimitiveType - 1, record.fIndexCount, record.fIndices);
    }

    Calls upload(int buffer, size_t i, int bytes) const {
        return {generate(), bindIndices(buffer),
                call("glBufferDataARB", GL_ELEMENT_ARRAY_BUFFER_ARB, bytes,
                     static_cast<const void*>(fGroup.indexRecord(i)->fIndices), GL_STATIC_DRAW_ARB)};
    }

    static Calls refused(int buffer) {
        return {generate(), bindIndices(buffer), bindIndices(buffer), unbindIndices(), remove(buffer)};
    }

    static Calls oneByOne(GLenum mode, const std::vector<int>& indices) {
        Calls calls = {call("glBegin", mode)};
        for (int index : indices)
            calls.push_back(call("glArrayElement", index));
        return calls + Calls{call("glEnd")};
    }

    const void* fPositions;
};

TEST_F(Drawing, drawsWholeRecordsByTheirType) {
    EXPECT_EQ(drawn(), Calls{}) << "no records";
    Calls records;
    Calls ranges;
    const std::pair<uint32_t, int> kTypes[] = {{5, 4}, {0, -1}, {6, 5}, {7, -1}, {8, 7}, {4, -1}, {9, -1}};
    for (const auto& [type, mode] : kTypes) {
        const void* indices = fGroup.addIndexRecord(type, std::vector<uint32_t>(300)).fIndices;
        if (mode < 0)
            continue;
        records.push_back(elements(static_cast<GLenum>(mode), 300, indices));
        ranges.push_back(call("glDrawRangeElements", mode, 0, 300, 300, GL_UNSIGNED_INT, indices));
    }
    fGroup.addIndexRecord(kTriangles, {});
    EXPECT_EQ(drawn(), records);
    GLRouting::fsUseDrawRangeElements = true;
    EXPECT_EQ(drawn(), ranges) << "whose end is the count";
    gl().fExtEnabled[kCapDrawRangeElements] = false;
    EXPECT_EQ(drawn(), records);

    // Between the arrays and their end, primitive restart the innermost.
    const void* flat = fGroup.addStream(GeometryData::kSubstituteNormal, 3, {0, 1, 0}).fData;
    route(GLRouting::kNormal, GeometryData::kNormal);
    GLRouting::fsUsePrimitiveRestart = true;
    fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, true);
    const Calls head = {enable(GL_NORMAL_ARRAY), normals(flat)};
    const Calls tail = {disable(GL_NORMAL_ARRAY)};
    EXPECT_EQ(made(),
              (head + Calls{call("glEnable", 0x8558), call("glPrimitiveRestartIndexNV", 0xFFFFFFFFU)} +
               records + Calls{call("glDisable", 0x8558)} + tail));
    gl().fExtEnabled[kCapNVPrimitiveRestart] = false;
    fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, true);
    EXPECT_EQ(made(), head + records + tail);

    GeometryLogicalGroup streamless;
    streamless.addIndexRecord(kTriangles, {0, 1, 2});
    fRouting.drawGroup(nullptr, nullptr, nullptr, nullptr, 0, false);
    fRouting.drawGroup(&streamless, nullptr, nullptr, nullptr, 0, false);
    EXPECT_EQ(fRouting.fGroup, &streamless) << "stored all the same";
    GLRouting().drawSingleIndexed(nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(made(), Calls{});
}

TEST_F(Drawing, drawsSubsetsAndExchangesTheSwitches) {
    koUtil::BitField some;
    koUtil::BitField none;
    for (const size_t bit : {0, 2, 40})
        some.set(bit);
    unsigned list[] = {2, 0, 9};
    unsigned prepared[] = {20, 21, 22, 23, 24, 25, 26, 27, 28, 29};
    const GLenum t = GL_TRIANGLES;
    // Ten indices make three triangles, or two quads. Strips and what is nothing have no subsets.
    for (const uint32_t type : {6U, 5U, 7U, 4U})
        fGroup.addIndexRecord(type, {10, 11, 12, 13, 14, 15, 16, 17, 18, 19});
    // What is visible, the list, the prepared indices and their count.
    const std::tuple<koUtil::BitField*, unsigned*, unsigned*, unsigned, Calls> kCases[] = {
        {&some, nullptr, nullptr, 0, oneByOne(t, {10, 11, 12, 16, 17, 18})},
        {nullptr, list, nullptr, 0, oneByOne(t, {16, 17, 18, 10, 11, 12})},
        {&some, list, nullptr, 0, oneByOne(t, {10, 11, 12, 13, 14, 15})},
        {&some, list, prepared, 6, oneByOne(t, {20, 21, 22, 23, 24, 25})},
        {nullptr, nullptr, prepared, 6, {elements(t, 6, prepared)}},
        {nullptr, nullptr, prepared, 0, {}},
        {&none, nullptr, prepared, 6, {elements(t, 6, prepared)}},
        {&some, nullptr, prepared, 0, oneByOne(t, {10, 11, 12, 16, 17, 18})},
        {nullptr, list, prepared, 6, {elements(t, 10, prepared)}},
    };
    route(GLRouting::kPosition, GeometryData::kPosition);
    const Calls head = {enable(GL_VERTEX_ARRAY), vertices(fPositions)};
    const Calls tail = {disable(GL_VERTEX_ARRAY)};
    int row = 0;
    for (const auto& [visible, listed, indices, count, expected] : kCases) {
        SCOPED_TRACE(row++);
        const bool isSubset = visible || listed;
        GLRouting::fsUseObjectsForData = isSubset; // but off meanwhile
        EXPECT_EQ(drawn(visible, listed, indices, count), head + expected + tail);
        EXPECT_EQ(std::exchange(GLRouting::fsUseObjectsForIndexing, false), isSubset);
        EXPECT_FALSE(GLRouting::fsUseObjectsForData);
    }
    GLRouting::fsUseObjectsForIndexing = HWEnvironment::orlo_block_allocate_strips = true;
    fGroup.indexRecord(1)->fPrimitiveType = kQuads;
    EXPECT_EQ(drawn(&some), head + oneByOne(GL_QUADS, {10, 11, 12, 13}) + tail);
    EXPECT_TRUE(GLRouting::fsUseObjectsForData && !GLRouting::fsUseObjectsForIndexing);
    GLRouting::fsUseObjectsForData = false;
    unsigned both[] = {1, 0, 9};
    EXPECT_EQ(drawn(nullptr, both), head + oneByOne(GL_QUADS, {14, 15, 16, 17, 10, 11, 12, 13}) + tail);
    EXPECT_EQ(drawn(nullptr, nullptr, prepared, 3), head + Calls{elements(GL_QUADS, 3, prepared)} + tail);
}

TEST_F(Drawing, drawsStreamsWithIndexListsOfTheirOwn) {
    // Element e of a stream of type t is 10 t + e throughout.
    const auto add = [&](GeometryData::DataType type, uint32_t primitives, std::vector<uint32_t> indices) {
        const uint32_t components = type == GeometryData::kTexCoord ? 2 : 3;
        std::vector<float> values;
        for (uint32_t e = 0; e < 5; ++e)
            values.insert(values.end(), components, static_cast<float>(10 * type + e));
        GeometryDataIndex& record = fGroup.addIndexRecord(primitives, std::move(indices));
        record.fStream = type == GeometryData::kNone ? nullptr : &fGroup.addStream(type, components, values);
    };
    const auto vertex = [](double texCoord, double normal, double position) {
        return Calls{call("glTexCoord2fv", Values(2, texCoord)), call("glNormal3fv", Values(3, normal)),
                     call("glVertex3fv", Values(3, position))};
    };
    const auto drawnWhole = [&] {
        fRouting.drawFullMultipleIndexed();
        return made();
    };
    const Calls end = {call("glEnd")};
    const Calls triangle = {call("glBegin", GL_TRIANGLES)};
    EXPECT_EQ(drawnWhole(), Calls{}) << "no group";
    fRouting.fGroup = &fGroup;
    add(GeometryData::kPosition, kQuads, {0, 1, 2, 3});
    add(GeometryData::kTexCoord, kQuads, {4, 3, 2, 1, 0});
    EXPECT_EQ(drawnWhole(), (Calls{call("glBegin", GL_QUADS)} + vertex(34, 0, 10) + vertex(33, 0, 11) +
                             vertex(32, 0, 12) + vertex(31, 0, 13) + end));
    add(GeometryData::kColor, kQuads, {0});
    add(GeometryData::kNone, kQuads, {0});
    add(GeometryData::kNormal, kTriangles, {2, 2, 0, 9});
    EXPECT_EQ(drawnWhole(), (triangle + vertex(34, 22, 10) + vertex(33, 22, 11) + vertex(32, 20, 12) + end +
                             triangle + vertex(31, 0, 13) + vertex(30, 0, 0) + vertex(0, 0, 0) + end))
        << "past its end a list reads as nothing";
    add(GeometryData::kNone, kStrip, {0});
    EXPECT_EQ(drawnWhole(), Calls{}) << "the last record's type decides";
}

/// A group whose first two records share an index store.
class Blocks : public Drawing {
protected:
    Blocks() {
        HWEnvironment::orlo_block_allocate_strips = true;
        GLRouting::fsUseObjectsForIndexing = true;
        fGroup.addIndexBlock(kStrip, {{0, 1, 2}, {3, 4, 5, 6}});
    }

    uint32_t& type(size_t i) { return fGroup.indexRecord(i)->fPrimitiveType; }
    IHWMemoryObject*& hanger(size_t i) { return fGroup.indexRecord(i)->fHanger; }

    const std::string fFirst = elements(GL_TRIANGLE_STRIP, 3, nullptr);
    const std::string fSecond = elements(GL_TRIANGLE_STRIP, 4, offset(12));
    const Calls fEnd = {unbindIndices(), unbindIndices()};
};

TEST_F(Blocks, shareOneIndexBuffer) {
    struct Foreign : IHWMemoryObject {
    } foreign;
    // Behind a record with a buffer of its own nothing is bound any more: an offset would kill the process.
    fGroup.addIndexRecord(kTriangles, {0, 1, 2}).setHanger(&foreign);
    fGroup.addIndexRecord(kStrip, {3, 4, 5}).fAllocatedCount = 7;
    const Calls block = {bindIndices(0), fFirst, fSecond};
    const Calls own = {elements(GL_TRIANGLES, 3, nullptr), unbindIndices(), fromMemory(3)};
    EXPECT_EQ(drawn(), upload(0, 0, 32) + block + upload(1, 2, 12) + own + fEnd)
        << "a foreign one counts as none";
    EXPECT_EQ(hanger(1), hanger(0));
    EXPECT_EQ(drawn(), block + Calls{bindIndices(1)} + own + fEnd);
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 44U);

    const Calls all = {fromMemory(0), fromMemory(1), fromMemory(2), fromMemory(3)};
    GLObject::fsSupported = false;
    EXPECT_EQ(drawn(), all + Calls{unbindIndices()}) << "hangers that can't be bound";
    GLObject::fsSupported = true;
    gl().fExtEnabled[kCapVertexBufferObject] = false;
    EXPECT_EQ(drawn(), all) << "hangers that rest";
    gl().fExtEnabled[kCapVertexBufferObject] = true;

    // One that the budget refuses.
    delete std::exchange(hanger(2), nullptr);
    GLObject::fsMaximumMemoryUsage = IHWMemoryObject::fsMemoryUsage;
    made();
    EXPECT_EQ(drawn(), (block + refused(2) + Calls{fromMemory(2), fromMemory(3)} + fEnd));
    EXPECT_EQ(hanger(2), nullptr);
    fRouting.drawSingleIndexed(nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(made(), Calls{fromMemory(3)}) << "alone: nobody has bound the buffer";
}

TEST_F(Blocks, areSingleRecordsWithoutTheSetting) {
    HWEnvironment::orlo_block_allocate_strips = false;
    const std::string second = elements(GL_TRIANGLE_STRIP, 4, nullptr);
    EXPECT_EQ(drawn(),
              (upload(0, 0, 12) + Calls{fFirst, unbindIndices()} + upload(1, 1, 16) + Calls{second} + fEnd));
    const IHWMemoryObject* own = hanger(1);
    HWEnvironment::orlo_block_allocate_strips = true;
    drawn();
    EXPECT_EQ(hanger(1), own) << "which the block's doesn't replace";
}

TEST_F(Blocks, needTheirFirstRecord) {
    GLObject::fsMaximumMemoryUsage = 31;
    EXPECT_EQ(drawn(), (refused(0) + Calls{fromMemory(0), fromMemory(1), unbindIndices()}));
    GLObject::fsMaximumMemoryUsage = 32;
    type(0) = GeometryDataIndex::kNothing;
    EXPECT_EQ(drawn(), (Calls{fromMemory(1), unbindIndices()})) << "the one that would bind is skipped";
    EXPECT_TRUE(!hanger(0) && !hanger(1));
    std::swap(type(0), type(1));
    EXPECT_EQ(drawn(), (upload(1, 0, 32) + Calls{bindIndices(1), fFirst} + fEnd)) << "a skipped last one";

    type(1) = kStrip;
    fGroup.indexRecord(0)->fAllocatedCount = 3;
    delete std::exchange(hanger(0), nullptr);
    made();
    EXPECT_EQ(drawn(), (upload(2, 0, 12) + Calls{fFirst, unbindIndices(), fromMemory(1), unbindIndices()}))
        << "the first stands for itself";
}

/// Groups that are drawn again and again while all that a drawing depends on changes. What drawGroup calls is
/// what its steps call one by one, which remember nothing.
class Redrawing : public RoutingTest {
protected:
    static constexpr GeometryData::DataType kTypes[] = {GeometryData::kPosition, GeometryData::kNormal,
                                                        GeometryData::kColor, GeometryData::kTexCoord};

    struct Scene {
        /// With all kinds of arrays routed, or only some of them.
        explicit Scene(std::minstd_rand& random) {
            for (GeometryLogicalGroup& group : groups) {
                for (const auto type : kTypes)
                    group.addStream(type, 3, std::vector<float>(40)).fElementCount = 10; // of up to 4
                group.addIndexRecord(kTriangles, {0, 1, 2, 3, 4, 5});
            }
            for (GLRouting& routing : routings) {
                for (uint32_t slot = 0; slot < 6; ++slot) {
                    if (slot == GLRouting::kPosition || random() % 2 != 0)
                        routing.fSlots[slot] = {GLRouting::kFromGeometry, {}, kTypes[std::min(slot, 3U)], 0};
                }
            }
        }

        GeometryLogicalGroup groups[2];
        GLRouting routings[2];
    };

    void startAnew() {
        GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = true;
        GLRouting::fsUseDrawRangeElements = HWEnvironment::orlo_block_allocate_strips = false;
        gl().fExtEnabled[kCapMultitexture] = gl().fExtEnabled[kCapVertexBufferObject] = true;
        gl().fMaxTextureUnits = 8;
        GLObject::fsMaximumMemoryUsage = 1U << 30;
        fScene.emplace(fRandom);
        IHWMemoryObject::fsMemoryUsage = 0; // buffers deleted twice were taken off it twice
        made();
    }

    Calls stepByStep(const GLRouting& like, GeometryLogicalGroup& group) {
        GLRouting routing;
        routing.fSlots = like.fSlots;
        routing.fGroup = &group;
        routing.setVertexArrays(false, false);
        for (size_t i = 0; i < group.indexRecordCount(); ++i) {
            routing.fIndexRecord = group.indexRecord(i);
            routing.fPrimitiveType = routing.fIndexRecord->fPrimitiveType;
            routing.fIndexCount = routing.fIndexRecord->fIndexCount;
            if (routing.fPrimitiveType != GeometryDataIndex::kNothing && routing.fIndexCount != 0)
                routing.drawSingleIndexed(nullptr, nullptr, nullptr, 0);
        }
        routing.unsetVertexArrays();
        return madeButForNames();
    }

    Calls inOne(GLRouting& routing, GeometryLogicalGroup& group) {
        routing.drawGroup(&group, nullptr, nullptr, nullptr, 0, false);
        EXPECT_EQ(routing.fIndexRecord, group.indexRecord(group.indexRecordCount() - 1));
        EXPECT_EQ(routing.fPrimitiveType, routing.fIndexRecord->fPrimitiveType);
        EXPECT_EQ(routing.fIndexCount, routing.fIndexRecord->fIndexCount);
        EXPECT_THAT(boundGLObjects, testing::Each(nullptr));
        return madeButForNames();
    }

    /// An upload that the budget refuses goes by a new name each time.
    static Calls madeButForNames() {
        Calls calls = made();
        for (size_t i = 0; i + 4 < calls.size(); ++i) {
            if (calls[i] == generate() && calls[i + 4].starts_with("glDeleteBuffersARB"))
                calls.erase(calls.begin() + static_cast<ptrdiff_t>(i) + 1,
                            calls.begin() + static_cast<ptrdiff_t>(i) + 5);
        }
        return calls;
    }

    unsigned random(unsigned end) { return static_cast<unsigned>(fRandom() % end); }

    GeometryData& anyStream() { return *fScene->groups[random(2)].stream(random(4)); }
    GeometryDataIndex& anyRecord() { return *fScene->groups[random(2)].indexRecord(0); }
    GLRouting::Slot& anySlot() { return fScene->routings[random(2)].fSlots[random(8)]; }

    static GLObject* named(GLObject::DataType type) {
        auto* object = new GLObject;
        object->fDataType = type;
        if (object->bind()) {
            object->bufferData(4, "abc");
            object->unbind();
        }
        return object;
    }

    /// Changes one thing, by the operations for it or by writing the field.
    void changeSomething() {
        GeometryData& stream = anyStream();
        GeometryDataIndex& record = anyRecord();
        GLRouting::Slot& slot = anySlot();
        switch (random(17)) {
        case 0:
            return stream.deleteHanger();
        case 1:
            stream.deleteHanger();
            return stream.setHanger(named(GLObject::kVertexData)); // often where the one before it was
        case 2:
            delete std::exchange(record.fHanger, random(2) != 0 ? named(GLObject::kIndexData) : nullptr);
            return;
        case 3:
            if (GLObject* object = GLObject::from(stream.fHanger))
                object->deleteObject();
            return;
        case 4: // and left so
            if (GLObject* object = GLObject::from(stream.fHanger); object && random(2) != 0)
                object->bind();
            fScene->routings[0].setupInterpolant(GLRouting::kTexCoord7, {3, GL_FLOAT, 0, fData, nullptr},
                                                 true);
            boundGLObjects[GLRouting::kTexCoord7] = GLObject::from(stream.fHanger);
            return;
        case 5:
            stream.fComponentsPerElement = 2 + random(3);
            return;
        case 6:
            record.fIndexCount = record.fAllocatedCount = random(7);
            return;
        case 7:
            record.fPrimitiveType = 5 + random(4);
            return;
        case 8:
            // A record in a block would be no step of its own.
            HWEnvironment::orlo_block_allocate_strips = random(2) != 0;
            for (GeometryLogicalGroup& group : fScene->groups) {
                const GeometryDataIndex& all = *group.indexRecord(0);
                group.indexRecord(0)->fAllocatedCount =
                    all.fIndexCount + (HWEnvironment::orlo_block_allocate_strips ? 0 : random(2));
            }
            return;
        case 9:
        case 10:
            slot.fMode = random(4) != 0 ? GLRouting::kFromGeometry : GLRouting::kUnused;
            slot.fDataType = kTypes[random(4)];
            slot.fIndex = static_cast<int32_t>(random(8)) / 7;
            return;
        case 11:
            slot = {GLRouting::kDirect, {3, GL_FLOAT, 0, fData, nullptr}};
            return;
        case 12:
            gl().fMaxTextureUnits = static_cast<int32_t>(random(5));
            return;
        case 13:
            gl().fExtEnabled[random(2) != 0 ? kCapMultitexture : kCapVertexBufferObject] = random(4) != 0;
            return;
        case 14:
            for (bool* flag : {&GLRouting::fsUseObjectsForData, &GLRouting::fsUseObjectsForIndexing})
                *flag = random(4) != 0;
            GLRouting::fsUseDrawRangeElements = random(4) == 0;
            return;
        case 15: // the kind of one may be what another is routed by
            stream.fDataType = kTypes[random(4)];
            return;
        default:
            GLObject::fsMaximumMemoryUsage = IHWMemoryObject::fsMemoryUsage + 130;
        }
    }

    std::minstd_rand fRandom; // NOLINT(cert-msc51-cpp): the same each time
    std::optional<Scene> fScene;
    const float fData[30] = {};
};

TEST_F(Redrawing, callsWhatItsStepsCall) {
    int planned = 0;
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        if (i % 4 == 0)
            startAnew();
        changeSomething();
        made();
        for (int draw = 0; draw < 3; ++draw) {
            GLRouting& routing = fScene->routings[random(2)];
            GeometryLogicalGroup& group = fScene->groups[random(2)];
            // Who draws first uploads what is missing, with a full budget only what fits.
            if (random(2) != 0)
                inOne(routing, group);
            Calls expected;
            while (std::exchange(expected, stepByStep(routing, group)) != expected) {
            }
            ASSERT_EQ(inOne(routing, group), expected);
            ASSERT_EQ(inOne(routing, group), expected) << "again";
            planned += group.fDrawPlan != nullptr;
        }
    }
    EXPECT_GT(planned, 300) << "of 600";
}

TEST_F(Redrawing, seesAStreamBecomeTheOneThatIsRouted) {
    startAnew();
    GLRouting routing;
    GeometryLogicalGroup& group = fScene->groups[0];
    routing.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kNormal, 0};
    inOne(routing, group);
    EXPECT_EQ(inOne(routing, group), stepByStep(routing, group));
    EXPECT_NE(group.fDrawPlan, nullptr);
    group.stream(0)->fDataType = GeometryData::kNormal; // before the one that was
    inOne(routing, group);
    EXPECT_EQ(inOne(routing, group), stepByStep(routing, group));
    EXPECT_NE(group.stream(0)->fHanger, nullptr);
}

} // namespace
