#include "RoutingFixture.h"

namespace {

class Drawing : public RoutingTest {
protected:
    Drawing() {
        fPositions = fGroup.addStream(GeometryData::kPosition, 3, std::vector<float>(30)).fData;
        route(GLRouting::kPosition, GeometryData::kPosition);
    }

    ~Drawing() override { HWEnvironment::orlo_block_allocate_strips = false; }

    /// What drawGroup calls for all but the arrays: those are checked here.
    Calls drawn(koUtil::BitField* visible = nullptr, unsigned* list = nullptr, unsigned* prepared = nullptr,
                unsigned preparedCount = 0) {
        made();
        fRouting.drawGroup(&fGroup, visible, list, prepared, preparedCount, false);
        Calls calls = made();
        const Calls head = {enable(GL_VERTEX_ARRAY), vertices(3, fPositions)};
        const Calls tail = GLRouting::fsUseObjectsForIndexing && gl().usable(kCapVertexBufferObject)
                               ? Calls{disable(GL_VERTEX_ARRAY), bindIndices(0), unit(0)}
                               : Calls{disable(GL_VERTEX_ARRAY), unit(0)};
        EXPECT_GE(calls.size(), head.size() + tail.size());
        EXPECT_TRUE(std::equal(head.begin(), head.end(), calls.begin()));
        EXPECT_TRUE(std::equal(tail.rbegin(), tail.rend(), calls.rbegin()));
        calls.erase(calls.end() - static_cast<long>(tail.size()), calls.end());
        calls.erase(calls.begin(), calls.begin() + static_cast<long>(head.size()));
        return calls;
    }

    static std::string elements(GLenum mode, int count, const void* indices) {
        return call("glDrawElements", mode, count, GL_UNSIGNED_INT, indices);
    }

    static std::string upload(int bytes, const void* data) {
        return call("glBufferDataARB", GL_ELEMENT_ARRAY_BUFFER_ARB, bytes, data, GL_STATIC_DRAW_ARB);
    }

    /// The indices sent one by one, "glBegin ... glEnd" around them.
    static Calls oneByOne(GLenum mode, const std::vector<int>& indices) {
        Calls calls = {call("glBegin", mode)};
        for (int index : indices)
            calls.push_back(call("glArrayElement", index));
        calls.push_back(call("glEnd"));
        return calls;
    }

    static koUtil::BitField bits(std::initializer_list<size_t> set) {
        koUtil::BitField field;
        for (size_t bit : set)
            field.set(bit);
        return field;
    }

    const void* fPositions;
};

TEST_F(Drawing, needsStreamsAndRecords) {
    GeometryLogicalGroup empty;
    fRouting.drawGroup(nullptr, nullptr, nullptr, nullptr, 0, false);
    fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, false);
    empty.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
    fRouting.drawGroup(&empty, nullptr, nullptr, nullptr, 0, false);
    EXPECT_EQ(fRouting.fGroup, &empty) << "stored all the same";
    GLRouting().drawSingleIndexed(nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(Drawing, drawsWholeRecordsByTheirType) {
    Calls expected;
    const std::pair<uint32_t, int> kTypes[] = {{5, 4}, {0, -1}, {6, 5}, {7, -1}, {8, 7}, {4, -1}, {9, -1}};
    for (const auto& [type, mode] : kTypes) {
        const GeometryDataIndex& record = fGroup.addIndexRecord(type, {0, 1, 2, 3});
        if (mode >= 0)
            expected.push_back(elements(static_cast<GLenum>(mode), 4, record.fIndices));
    }
    fGroup.addIndexRecord(GeometryDataIndex::kTriangles, {});
    EXPECT_EQ(drawn(), expected);
}

TEST_F(Drawing, endsARangeAtTheIndexCount) {
    const auto& record = fGroup.addIndexRecord(GeometryDataIndex::kTriangles, std::vector<uint32_t>(300));
    std::vector<unsigned> prepared(6);
    GLRouting::fsUseDrawRangeElements = true;
    EXPECT_EQ(drawn(), Calls{call("glDrawRangeElements", GL_TRIANGLES, 0, 300, 300, GL_UNSIGNED_INT,
                                  static_cast<const void*>(record.fIndices))});
    EXPECT_EQ(drawn(nullptr, nullptr, prepared.data(), 6),
              Calls{call("glDrawRangeElements", GL_TRIANGLES, 0, 6, 6, GL_UNSIGNED_INT,
                         static_cast<const void*>(prepared.data()))});
    gl().fExtEnabled[kCapDrawRangeElements] = false;
    EXPECT_EQ(drawn(), Calls{elements(GL_TRIANGLES, 300, record.fIndices)});
}

TEST_F(Drawing, restartsPrimitivesAroundTheRecords) {
    const auto& record = fGroup.addIndexRecord(GeometryDataIndex::kTriangleStrip, {0, 1, 2, 0xFFFFFFFF});
    GLRouting::fsUsePrimitiveRestart = true;
    EXPECT_EQ(
        drawn(),
        (Calls{call("glEnable", GL_PRIMITIVE_RESTART_NV), call("glPrimitiveRestartIndexNV", 0xFFFFFFFFU),
               elements(GL_TRIANGLE_STRIP, 4, record.fIndices), call("glDisable", GL_PRIMITIVE_RESTART_NV)}));
    gl().fExtEnabled[kCapNVPrimitiveRestart] = false;
    EXPECT_EQ(drawn(), Calls{elements(GL_TRIANGLE_STRIP, 4, record.fIndices)});
}

TEST_F(Drawing, uploadsIndicesOnce) {
    auto& record = fGroup.addIndexRecord(GeometryDataIndex::kQuads, {3, 2, 1, 0});
    GLRouting::fsUseObjectsForIndexing = true;
    const Calls draw = {elements(GL_QUADS, 4, nullptr), bindIndices(0)};
    EXPECT_EQ(drawn(), (Calls{generate(), bindIndices(buffer(0)), upload(16, record.fIndices)}) + draw);
    EXPECT_EQ(drawn(), Calls{bindIndices(buffer(0))} + draw);
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 16U);
    EXPECT_EQ(bufferContents(static_cast<GLuint>(buffer(0)))[0], 3);

    gl().fExtEnabled[kCapVertexBufferObject] = false;
    EXPECT_EQ(drawn(), Calls{elements(GL_QUADS, 4, record.fIndices)}) << "the hanger rests";
    gl().fExtEnabled[kCapVertexBufferObject] = true;
    GLObject::fsSupported = false;
    EXPECT_EQ(drawn(), Calls{elements(GL_QUADS, 4, record.fIndices)}) << "a hanger that can't be bound";
    GLObject::fsSupported = true;
}

TEST_F(Drawing, drawsFromClientMemoryBeyondTheBudget) {
    auto& record = fGroup.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
    GLRouting::fsUseObjectsForIndexing = true;
    GLObject::fsMaximumMemoryUsage = 11;
    EXPECT_EQ(drawn(), (Calls{generate(), bindIndices(buffer(0)), bindIndices(buffer(0)), bindIndices(0),
                              remove(buffer(0)), elements(GL_TRIANGLES, 3, record.fIndices)}));
    EXPECT_EQ(record.fHanger, nullptr);

    struct Foreign : IHWMemoryObject {};
    GLObject::fsMaximumMemoryUsage = 12;
    Foreign foreign;
    record.setHanger(&foreign);
    drawn();
    EXPECT_NE(GLObject::from(record.fHanger), nullptr) << "a foreign hanger counts as none";

    const auto& second = fGroup.addIndexRecord(GeometryDataIndex::kTriangles, {3, 4, 5});
    EXPECT_EQ(drawn(), (Calls{bindIndices(buffer(1)), elements(GL_TRIANGLES, 3, nullptr), bindIndices(0),
                              generate(), bindIndices(buffer(2)), bindIndices(buffer(2)), bindIndices(0),
                              remove(buffer(2)), elements(GL_TRIANGLES, 3, second.fIndices)}))
        << "a group that fits in part";
}

TEST_F(Drawing, drawsSubsets) {
    koUtil::BitField some = bits({0, 2});
    koUtil::BitField none;
    koUtil::BitField far = bits({1, 40});
    unsigned list[] = {2, 0, 9};
    unsigned prepared[] = {20, 21, 22, 23, 24, 25, 26, 27, 28, 29};
    const GLenum t = GL_TRIANGLES;
    // Ten indices make three triangles.
    fGroup.addIndexRecord(GeometryDataIndex::kTriangles, {10, 11, 12, 13, 14, 15, 16, 17, 18, 19});
    const struct {
        const char* name;
        koUtil::BitField* visible;
        unsigned* list;
        unsigned* prepared;
        unsigned count;
        Calls expected;
    } kCases[] = {
        {"visible", &some, nullptr, nullptr, 0, oneByOne(t, {10, 11, 12, 16, 17, 18})},
        {"none visible", &none, nullptr, nullptr, 0, oneByOne(t, {})},
        {"bits beyond the record", &far, nullptr, nullptr, 0, oneByOne(t, {13, 14, 15})},
        {"list", nullptr, list, nullptr, 0, oneByOne(t, {16, 17, 18, 10, 11, 12})},
        {"visible, list", &some, list, nullptr, 0, oneByOne(t, {10, 11, 12, 13, 14, 15})},
        {"visible, list, prepared", &some, list, prepared, 0, oneByOne(t, {20, 21, 22, 23, 24, 25})},
        {"the same with a count", &some, list, prepared, 6, oneByOne(t, {20, 21, 22, 23, 24, 25})},
        {"prepared", nullptr, nullptr, prepared, 6, {elements(t, 6, prepared)}},
        {"prepared, none", nullptr, nullptr, prepared, 0, {}},
        {"visible, prepared", &none, nullptr, prepared, 6, {elements(t, 6, prepared)}},
        {"visible, prepared, none", &some, nullptr, prepared, 0, oneByOne(t, {10, 11, 12, 16, 17, 18})},
        {"list, prepared", nullptr, list, prepared, 6, {elements(t, 10, prepared)}},
        {"list, prepared, none", nullptr, list, prepared, 0, {elements(t, 10, prepared)}},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(drawn(c.visible, c.list, c.prepared, c.count), c.expected) << c.name;
}

TEST_F(Drawing, drawsSubsetsOfQuadsOnly) {
    koUtil::BitField second = bits({1});
    unsigned list[] = {1, 0};
    unsigned prepared[] = {7, 8, 9};
    for (uint32_t type : {6U, 8U, 7U, 4U})
        fGroup.addIndexRecord(type, {0, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(drawn(&second), oneByOne(GL_QUADS, {4, 5, 6, 7}));
    EXPECT_EQ(drawn(nullptr, list), oneByOne(GL_QUADS, {4, 5, 6, 7, 0, 1, 2, 3}));
    EXPECT_EQ(drawn(nullptr, nullptr, prepared, 3), Calls{elements(GL_QUADS, 3, prepared)});
}

TEST_F(Drawing, exchangesTheSwitchesAfterASubset) {
    fGroup.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
    koUtil::BitField visible = bits({0});
    unsigned list[] = {0};
    for (bool data : {false, true}) {
        for (bool indexing : {false, true}) {
            for (bool byList : {false, true}) {
                GLRouting::fsUseObjectsForData = data;
                GLRouting::fsUseObjectsForIndexing = indexing;
                made();
                fRouting.drawGroup(&fGroup, byList ? nullptr : &visible, byList ? list : nullptr, nullptr, 0,
                                   false);
                EXPECT_EQ(made(),
                          (Calls{enable(GL_VERTEX_ARRAY), vertices(3, fPositions)} +
                           oneByOne(GL_TRIANGLES, {0, 1, 2}) + Calls{disable(GL_VERTEX_ARRAY), unit(0)}))
                    << "no buffer objects";
                EXPECT_EQ(GLRouting::fsUseObjectsForData, indexing);
                EXPECT_EQ(GLRouting::fsUseObjectsForIndexing, data);
            }
        }
    }
    GLRouting::fsUseObjectsForData = true;
    GLRouting::fsUseObjectsForIndexing = false;
    fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, false);
    EXPECT_TRUE(GLRouting::fsUseObjectsForData) << "whole groups leave them alone";
    GeometryLogicalGroup empty;
    fRouting.drawGroup(&empty, &visible, nullptr, nullptr, 0, false);
    EXPECT_TRUE(GLRouting::fsUseObjectsForData) << "nor do groups that aren't drawn";
}

TEST_F(Drawing, drawsStreamsWithIndexListsOfTheirOwn) {
    GeometryLogicalGroup group;
    std::map<GeometryData::DataType, GeometryData*> streams;
    // Five elements each; component k of element e of type t is 100 t + 10 e + k.
    for (auto type :
         {GeometryData::kPosition, GeometryData::kNormal, GeometryData::kTexCoord, GeometryData::kColor}) {
        const uint32_t components = type == GeometryData::kTexCoord ? 2 : 3;
        std::vector<float> values;
        for (uint32_t i = 0; i < 5 * components; ++i)
            values.push_back(static_cast<float>(100 * type + 10 * (i / components) + i % components));
        streams[type] = &group.addStream(type, components, values);
    }
    const auto record = [&](GeometryData::DataType type, uint32_t primitives, std::vector<uint32_t> indices) {
        GeometryDataIndex& added = group.addIndexRecord(primitives, std::move(indices));
        added.fStream = type == GeometryData::kNone ? nullptr : streams[type];
        return &added;
    };
    const auto vertex = [](int texCoord, int normal, int position) {
        const auto values = [](double type, double element) {
            const double first = 100 * type + 10 * element;
            return element < 0 ? Values{0, 0, 0} : Values{first, first + 1, first + 2};
        };
        Values two = values(3, texCoord);
        two.pop_back();
        return Calls{call("glTexCoord2fv", two), call("glNormal3fv", values(2, normal)),
                     call("glVertex3fv", values(1, position))};
    };
    const auto drawn = [&] {
        fRouting.fGroup = &group;
        made();
        fRouting.drawFullMultipleIndexed();
        return made();
    };
    const auto begin = [](GLenum mode) { return Calls{call("glBegin", mode)}; };
    const Calls end = {call("glEnd")};

    EXPECT_EQ(drawn(), Calls{}) << "no records";
    record(GeometryData::kPosition, 8, {0, 1, 2, 3});
    record(GeometryData::kTexCoord, 8, {4, 3, 2, 1, 0});
    EXPECT_EQ(drawn(), begin(GL_QUADS) + vertex(4, -1, 0) + vertex(3, -1, 1) + vertex(2, -1, 2) +
                           vertex(1, -1, 3) + end);

    record(GeometryData::kColor, 8, {0});
    record(GeometryData::kNone, 8, {0});
    GeometryDataIndex* last = record(GeometryData::kNormal, 5, {2, 2, 0, 9});
    EXPECT_EQ(drawn(), begin(GL_TRIANGLES) + vertex(4, 2, 0) + vertex(3, 2, 1) + vertex(2, 0, 2) + end +
                           begin(GL_TRIANGLES) + vertex(1, -1, 3) + vertex(0, -1, -1) + vertex(-1, -1, -1) +
                           end)
        << "past its end an iterator reads as nothing";

    last->fPrimitiveType = 6;
    EXPECT_EQ(drawn(), Calls{}) << "the last record's type decides";
    fRouting.fGroup = nullptr;
    fRouting.drawFullMultipleIndexed();
    EXPECT_EQ(made(), Calls{});
}

TEST_F(Drawing, substitutesStreams) {
    fGroup.addStream(GeometryData::kNormal, 3, {0, 0, 1});
    const void* flat = fGroup.addStream(GeometryData::kSubstituteNormal, 3, {0, 1, 0}).fData;
    fGroup.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
    route(GLRouting::kNormal, GeometryData::kNormal);
    fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, true);
    EXPECT_THAT(recorded(), testing::Contains(normals(flat)));
}

/// Groups whose records share an index store.
class Blocks : public Drawing {
protected:
    Blocks() {
        HWEnvironment::orlo_block_allocate_strips = true;
        GLRouting::fsUseObjectsForIndexing = true;
    }

    const GeometryDataIndex& record(size_t i) { return *fGroup.indexRecord(i); }

    /// Strip number `i` drawn at an offset of so many indices.
    std::string atOffset(size_t i, uintptr_t start) {
        return elements(GL_TRIANGLE_STRIP, static_cast<int>(record(i).fIndexCount), offset(start * 4));
    }

    std::string fromMemory(size_t i) {
        return elements(GL_TRIANGLE_STRIP, static_cast<int>(record(i).fIndexCount), record(i).fIndices);
    }
};

TEST_F(Blocks, shareOneIndexBuffer) {
    fGroup.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0, 1, 2}, {3, 4, 5, 6}, {7, 8, 9}});
    const Calls draw = {bindIndices(buffer(0)), atOffset(0, 0), atOffset(1, 3), atOffset(2, 7),
                        bindIndices(0)};
    EXPECT_EQ(drawn(), (Calls{generate(), bindIndices(buffer(0)), upload(44, record(0).fIndices)}) + draw);
    EXPECT_EQ(record(2).fHanger, record(0).fHanger);
    EXPECT_EQ(drawn(), draw);

    HWEnvironment::orlo_block_allocate_strips = false;
    GLRouting::fsUseObjectsForIndexing = false;
    EXPECT_EQ(drawn(), (Calls{fromMemory(0), fromMemory(1), fromMemory(2)}));
}

TEST_F(Blocks, areSingleRecordsWithoutTheSetting) {
    fGroup.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0, 1, 2}, {3, 4, 5, 6}});
    HWEnvironment::orlo_block_allocate_strips = false;
    EXPECT_EQ(drawn(), (Calls{generate(), bindIndices(buffer(0)), upload(12, record(0).fIndices),
                              atOffset(0, 0), bindIndices(0), generate(), bindIndices(buffer(1)),
                              upload(16, record(1).fIndices), atOffset(1, 0), bindIndices(0)}));
    const IHWMemoryObject* own = record(1).fHanger;
    HWEnvironment::orlo_block_allocate_strips = true;
    drawn();
    EXPECT_EQ(record(1).fHanger, own) << "which the block's doesn't replace";
}

TEST_F(Blocks, mixWithOtherRecords) {
    fGroup.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0, 1, 2}, {3, 4, 5}});
    auto& single = fGroup.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
    auto& late = fGroup.addIndexRecord(
        std::make_unique<GeometryDataIndex>(GeometryDataIndex::kTriangleStrip, record(1).fIndices, 3));
    late.fAllocatedCount = 6;
    late.fStart = 3;
    drawn();
    // Behind a record with a buffer of its own nothing is bound any more: an offset would kill the process.
    const std::string own = elements(GL_TRIANGLES, 3, nullptr);
    EXPECT_EQ(drawn(), (Calls{bindIndices(buffer(0)), atOffset(0, 0), atOffset(1, 3), bindIndices(buffer(1)),
                              own, bindIndices(0), fromMemory(3), bindIndices(0)}));

    // The same where the single record's upload fails.
    delete std::exchange(single.fHanger, nullptr);
    GLObject::fsMaximumMemoryUsage = IHWMemoryObject::fsMemoryUsage;
    EXPECT_EQ(drawn(),
              (Calls{bindIndices(buffer(0)), atOffset(0, 0), atOffset(1, 3), generate(),
                     bindIndices(buffer(2)), bindIndices(buffer(2)), bindIndices(0), remove(buffer(2)),
                     elements(GL_TRIANGLES, 3, single.fIndices), fromMemory(3), bindIndices(0)}));
}

TEST_F(Blocks, needTheirFirstRecord) {
    fGroup.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0, 1, 2}, {3, 4, 5}});
    fGroup.indexRecord(0)->fPrimitiveType = GeometryDataIndex::kNothing;
    EXPECT_EQ(drawn(), Calls{fromMemory(1)}) << "the one that would bind is skipped";
    EXPECT_EQ(record(1).fHanger, nullptr);

    fGroup.indexRecord(0)->fPrimitiveType = GeometryDataIndex::kTriangleStrip;
    fGroup.indexRecord(1)->fPrimitiveType = GeometryDataIndex::kNothing;
    drawn();
    EXPECT_EQ(drawn(), (Calls{bindIndices(buffer(0)), atOffset(0, 0), bindIndices(0)}))
        << "unbound behind a skipped last one, too";

    GeometryLogicalGroup other;
    other.addStream(GeometryData::kPosition, 3, {0, 0, 0});
    auto& first = other.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
    other.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0, 1, 2}, {3, 4, 5}});
    fRouting.drawGroup(&other, nullptr, nullptr, nullptr, 0, false);
    made();
    fRouting.drawGroup(&other, nullptr, nullptr, nullptr, 0, false);
    const uint64_t own = GLObject::from(first.fHanger)->fBufferName;
    EXPECT_EQ(made().size(), 2U + 3U + 2U + 3U) << "the first draws itself, the block from memory";
    EXPECT_EQ(own, buffer(1));
}

TEST_F(Blocks, drawFromMemoryWithoutTheirBuffer) {
    fGroup.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0, 1, 2}, {3, 4, 5}});
    GLObject::fsMaximumMemoryUsage = 27;
    EXPECT_EQ(drawn(), (Calls{generate(), bindIndices(buffer(0)), bindIndices(buffer(0)), bindIndices(0),
                              remove(buffer(0)), fromMemory(0), fromMemory(1)}));
    EXPECT_EQ(record(0).fHanger, nullptr);
    EXPECT_EQ(record(1).fHanger, nullptr);

    GLObject::fsMaximumMemoryUsage = 28;
    drawn();
    made();
    fRouting.drawSingleIndexed(nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(made(), Calls{fromMemory(1)}) << "alone: nobody has bound the buffer";

    // Strips have no subsets, and a subset no shared buffer.
    koUtil::BitField visible = bits({0});
    GLRouting::fsUseObjectsForIndexing = false;
    EXPECT_EQ(drawn(&visible), Calls{});
}

} // namespace
