#include "DoubleTest.h"

#include "geometry/GLObject.h"

#include <limits>

namespace {

constexpr GLenum kArray = GL_ARRAY_BUFFER_ARB;
constexpr GLenum kElements = GL_ELEMENT_ARRAY_BUFFER_ARB;
constexpr uint64_t kName = nthName(NameKind::Buffer);

class Object : public DoubleTest {
protected:
    Object() { IHWMemoryObject::fsMemoryUsage = 0; }

    static std::string bindCall(GLenum target, uint64_t name) {
        return call("glBindBufferARB", target, name);
    }

    /// Every operation, none of which may succeed.
    static void expectAllFail(GLObject& object) {
        int data = 0;
        void* pointer = &data;
        EXPECT_FALSE(object.bufferData(4, &data));
        EXPECT_FALSE(object.bufferSubData(0, 4, &data));
        EXPECT_FALSE(object.getBufferSubData(0, 4, &data));
        EXPECT_FALSE(object.getBufferPointer(&pointer));
        EXPECT_EQ(object.mapBuffer(), nullptr);
        EXPECT_FALSE(object.unmapBuffer());
        EXPECT_FALSE(object.deleteObject());
    }

    const std::vector<unsigned char> fBytes = std::vector<unsigned char>(2000, 7);
};

TEST_F(Object, translatesItsEnumerations) {
    GLObject object;
    EXPECT_EQ(object.fUsage, 3U);
    EXPECT_EQ(object.fAccess, 0U);
    EXPECT_EQ(object.fDataType, 0U);
    const GLenum kUsages[] = {0x88E0, 0x88E1, 0x88E2, 0x88E4, 0x88E5, 0x88E6, 0x88E8, 0x88E9, 0x88EA};
    const GLenum kAccesses[] = {0x88B8, 0x88B9, 0x88BA};
    object.bind();
    for (uint32_t usage = 0; usage < 9; ++usage) {
        object.fUsage = usage;
        object.bufferData(1, fBytes.data());
        EXPECT_EQ(recorded().back(), call("glBufferDataARB", 0x8892, 1, fBytes.data(), kUsages[usage]));
    }
    for (uint32_t access = 0; access < 3; ++access) {
        object.fAccess = access;
        object.mapBuffer();
        EXPECT_EQ(recorded().back(), call("glMapBufferARB", 0x8892, kAccesses[access]));
    }
    object.fDataType = GLObject::DataType(1);
    object.bind();
    EXPECT_EQ(recorded().back(), bindCall(0x8893, kName));

    clearRecorded();
    object.fUsage = 9;
    object.fAccess = 3;
    EXPECT_FALSE(object.bufferData(1, fBytes.data()) || object.mapBuffer());
    GLObject none;
    none.fDataType = GLObject::DataType(2);
    EXPECT_FALSE(none.bind());
    GLObject::unbindBuffer(GLObject::DataType(2));
    EXPECT_EQ(recorded(), Calls{}) << "beyond the enumerations";
    EXPECT_TRUE(object.deleteObject());
}

TEST_F(Object, makesItsNameOnTheFirstBind) {
    GLObject object;
    object.fDataType = GLObject::kIndexData;
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_TRUE(object.bind());
    EXPECT_TRUE(object.fBound);
    EXPECT_TRUE(object.unbind());
    EXPECT_FALSE(object.fBound);
    EXPECT_TRUE(object.bind());
    EXPECT_EQ(recorded(), (Calls{call("glGenBuffersARB", 1, kOut), bindCall(kElements, kName),
                                 bindCall(kElements, 0), bindCall(kElements, kName)}));
    clearRecorded();

    script().failing = {{"glGenBuffersARB", 2}};
    GLObject nameless;
    EXPECT_FALSE(nameless.bind());
    EXPECT_FALSE(nameless.fBound);
    EXPECT_EQ(recorded(), Calls{call("glGenBuffersARB", 1, kOut)});
}

TEST_F(Object, failsQuietlyWhereItCannotWork) {
    GLObject unbound;
    expectAllFail(unbound);

    GLObject object;
    object.bind();
    clearRecorded();
    const struct {
        bool supported;
        bool enabled;
    } kCases[] = {{false, true}, {true, false}};
    for (const auto& c : kCases) {
        gl().fExtSupported[kCapVertexBufferObject] = c.supported;
        gl().fExtEnabled[kCapVertexBufferObject] = c.enabled;
        EXPECT_TRUE(GLObject::fsSupported) << "only a constructor looks again";
        const GLObject other;
        EXPECT_FALSE(GLObject::fsSupported);
        EXPECT_FALSE(object.bind());
        EXPECT_FALSE(object.unbind());
        expectAllFail(object);
        GLObject::unbindBuffer(GLObject::kVertexData);
        GLObject::fsSupported = true;
    }
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    {
        GLObject withoutTable;
        EXPECT_FALSE(withoutTable.bind());
        GLObject::unbindBuffer(GLObject::kVertexData);
    }
    EXPECT_EQ(recorded(), Calls{});

    // The static operation asks the table, whatever the flag says.
    GLFunctionTable::fpGlobalFunctionTable = &gl();
    gl().fExtSupported[kCapVertexBufferObject] = gl().fExtEnabled[kCapVertexBufferObject] = true;
    GLObject::unbindBuffer(GLObject::kIndexData);
    GLObject::unbindBuffer(GLObject::kVertexData);
    EXPECT_EQ(recorded(), (Calls{bindCall(kElements, 0), bindCall(kArray, 0)}));
    GLObject::fsSupported = true;
}

TEST_F(Object, keepsWithinTheBudget) {
    EXPECT_EQ(GLObject::fsMaximumMemoryUsage, 67108864U);
    GLObject object;
    object.bind();
    // A size beyond 32 bits goes to GL whole: keep the double from storing it.
    script().answers["glBufferDataARB"] = [](const auto&) { return 0; };
    const struct {
        uint32_t before;
        long size;
        bool fits;
        uint32_t after;
        uint32_t accounted;
    } kCases[] = {
        {67108000, 864, true, 67108864, 864},
        {67108000, 865, false, 67108000, 0},
        {67108864, 0, true, 67108864, 0},
        {0, -1, false, 0, 0},
        {100, std::numeric_limits<long>::min(), false, 100, 0},
        {5, (1L << 32) + 10, true, 15, 10},
        {0xFFFFFFFF, 11, true, 10, 11},
    };
    for (const auto& c : kCases) {
        clearRecorded();
        object.fSize = 77;
        IHWMemoryObject::fsMemoryUsage = c.before;
        EXPECT_EQ(object.bufferData(c.size, fBytes.data()), c.fits) << c.size;
        EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, c.after) << c.size;
        EXPECT_EQ(object.fSize, c.accounted) << c.size;
        EXPECT_EQ(recorded(),
                  c.fits ? (Calls{call("glBufferDataARB", kArray, c.size, fBytes.data(), GL_STATIC_DRAW_ARB)})
                         : Calls{});
    }
}

TEST_F(Object, countsEveryUploadAndGivesBackTheLast) {
    GLObject object;
    EXPECT_FALSE(object.deleteObject()) << "never bound";
    object.bind();
    EXPECT_TRUE(object.bufferData(1000, fBytes.data()));
    EXPECT_TRUE(object.bufferData(1000, fBytes.data()));
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 2000U);
    EXPECT_EQ(bufferContents(kName).size(), 1000U);
    clearRecorded();
    EXPECT_TRUE(object.deleteObject());
    EXPECT_EQ(recorded(),
              (Calls{bindCall(kArray, kName), call("glBufferDataARB", kArray, 0, nullptr, GL_STATIC_DRAW_ARB),
                     bindCall(kArray, 0), call("glDeleteBuffersARB", 1, Values{double(kName)})}));
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 1000U);
    EXPECT_EQ(object.fSize, 1000U);
    EXPECT_EQ(object.fBufferName, 0U);
    EXPECT_FALSE(object.deleteObject());
}

TEST_F(Object, deletesByWhatItHolds) {
    const std::string bind = bindCall(kArray, kName);
    const std::string unbind = bindCall(kArray, 0);
    const std::string remove = call("glDeleteBuffersARB", 1, Values{double(kName)});
    {
        GLObject empty;
        empty.bind();
        clearRecorded();
    }
    EXPECT_EQ(recorded(), (Calls{bind, unbind, remove})) << "nothing to orphan";

    resetRecording();
    {
        GLObject mapped;
        mapped.bind();
        mapped.bufferData(8, fBytes.data());
        mapped.mapBuffer();
        mapped.unbind();
        clearRecorded();
    }
    EXPECT_EQ(recorded(), (Calls{bind, call("glUnmapBufferARB", kArray), unbind, remove}));
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 0U);
    EXPECT_TRUE(ledger(NameKind::Buffer).live.empty());

    resetRecording();
    {
        GLObject vetoed;
        vetoed.bind();
        clearRecorded();
        GLObject::fsSupported = false;
    }
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(Object, mapsAndUnmaps) {
    GLObject object;
    object.bind();
    object.bufferData(8, fBytes.data());
    clearRecorded();
    const std::string map = call("glMapBufferARB", kArray, GL_READ_ONLY_ARB);
    const std::string unmap = call("glUnmapBufferARB", kArray);

    EXPECT_FALSE(object.unmapBuffer());
    EXPECT_EQ(recorded(), Calls{}) << "bound but not mapped";
    const auto* bytes = static_cast<unsigned char*>(object.mapBuffer());
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[7], 7);
    EXPECT_NE(object.mapBuffer(), nullptr);
    EXPECT_EQ(recorded(), (Calls{map, unmap, map})) << "mapped again: unmapped first";
    EXPECT_TRUE(object.unmapBuffer());
    EXPECT_FALSE(object.fMapped);

    object.mapBuffer();
    script().answers["glUnmapBufferARB"] = [](const auto&) { return GL_FALSE; };
    EXPECT_FALSE(object.unmapBuffer()) << "contents lost";
    EXPECT_FALSE(object.fMapped);
    script().answers["glMapBufferARB"] = [](const auto&) { return 0; };
    EXPECT_EQ(object.mapBuffer(), nullptr);
    EXPECT_FALSE(object.fMapped);
}

TEST_F(Object, movesPartsOfItsStorage) {
    GLObject object;
    object.bind();
    object.bufferData(8, fBytes.data());
    clearRecorded();
    unsigned char part[4] = {1, 2, 3, 4};
    void* pointer = part;
    EXPECT_TRUE(object.bufferSubData(2, 4, part));
    EXPECT_TRUE(object.getBufferSubData(3, 2, part));
    EXPECT_TRUE(object.getBufferPointer(&pointer));
    ASSERT_EQ(recorded().size(), 3U);
    EXPECT_EQ(recorded()[0], call("glBufferSubDataARB", kArray, 2, 4, static_cast<const void*>(part)));
    EXPECT_THAT(recorded()[1], testing::StartsWith("glGetBufferSubDataARB(34962, 3, 2, "));
    EXPECT_THAT(recorded()[2], testing::StartsWith("glGetBufferPointervARB(34962, 35005, "));
    EXPECT_THAT(bufferContents(kName), testing::ElementsAre(7, 7, 1, 2, 3, 4, 7, 7));
}

TEST_F(Object, recognisesItselfAmongHangers) {
    class Foreign : public IHWMemoryObject {};
    class Derived : public GLObject {};
    GLObject object;
    Derived derived;
    Foreign foreign;
    EXPECT_EQ(GLObject::from(&object), &object);
    EXPECT_EQ(GLObject::from(&derived), &derived);
    EXPECT_EQ(GLObject::from(&foreign), nullptr);
    EXPECT_EQ(GLObject::from(nullptr), nullptr);
}

} // namespace
