#include "DoubleTest.h"

#include "geometry/GLObject.h"

#include <limits>

namespace {

constexpr GLenum kArray = GL_ARRAY_BUFFER_ARB;

class Object : public DoubleTest {
protected:
    Object() { IHWMemoryObject::fsMemoryUsage = 0; }

    static std::string bind(int name, GLenum at = kArray) { return call("glBindBufferARB", at, name); }
    static std::string upload(long size, const void* data, GLenum usage = GL_STATIC_DRAW_ARB) {
        return call("glBufferDataARB", kArray, size, data, usage);
    }
    static std::string remove(double name) { return call("glDeleteBuffersARB", 1, Values{name}); }

    /// Every operation that needs a bound buffer, none of which may succeed.
    void expectAllFail(GLObject& object) {
        void* pointer = fPart;
        EXPECT_FALSE(object.bufferData(4, fBytes) || object.bufferSubData(0, 4, fBytes));
        EXPECT_FALSE(object.getBufferSubData(0, 4, fPart) || object.getBufferPointer(&pointer));
        EXPECT_FALSE(object.mapBuffer() || object.unmapBuffer() || object.deleteObject());
    }

    const std::string fGenerate = call("glGenBuffersARB", 1, kOut);
    const std::string fMap = call("glMapBufferARB", kArray, GL_READ_WRITE_ARB);
    const std::string fUnmap = call("glUnmapBufferARB", kArray);
    const unsigned char fBytes[1000] = {7, 7, 7, 7};
    unsigned char fPart[2] = {1, 2};
};

TEST_F(Object, isMadeFilledMappedAndDeleted) {
    void* pointer = nullptr;
    {
        GLObject object;
        object.fUsage = GLObject::kDynamicCopy;
        object.fAccess = GLObject::kReadWrite;
        EXPECT_TRUE(object.bind() && object.fBound);
        EXPECT_TRUE(object.unbind() && !object.fBound);
        EXPECT_TRUE(object.bind() && object.fBound);
        EXPECT_TRUE(object.bufferData(1000, fBytes) && object.bufferData(4, fBytes));
        EXPECT_FALSE(object.unmapBuffer()) << "not mapped";
        EXPECT_TRUE(object.bufferSubData(1, 2, fPart) && object.getBufferSubData(0, 2, fPart));
        EXPECT_TRUE(object.mapBuffer() && object.mapBuffer() && object.getBufferPointer(&pointer));
        EXPECT_TRUE(object.unmapBuffer() && !object.fMapped && object.mapBuffer() && object.unbind());
        EXPECT_THAT(bufferContents(101), testing::ElementsAre(7, 1, 2, 7));
    }
    EXPECT_EQ(made(),
              (Calls{fGenerate, bind(101), bind(0), bind(101), upload(1000, fBytes, 0x88EA),
                     upload(4, fBytes, 0x88EA),
                     call("glBufferSubDataARB", kArray, 1, 2, static_cast<const void*>(fPart)),
                     call("glGetBufferSubDataARB", kArray, 0, 2, static_cast<void*>(fPart)), fMap, fUnmap,
                     fMap, call("glGetBufferPointervARB", kArray, GL_BUFFER_MAP_POINTER_ARB, &pointer),
                     fUnmap, fMap, bind(0), bind(101), fUnmap, bind(0), remove(101)}));
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 1000U) << "every upload counts, the last is given back";
    {
        GLObject empty;
        GLObject filled;
        GLObject vetoed;
        EXPECT_TRUE(empty.bind() && filled.bind() && filled.bufferData(4, fBytes) && vetoed.bind());
        made();
        EXPECT_TRUE(filled.deleteObject());
        EXPECT_FALSE(filled.deleteObject());
        EXPECT_TRUE(empty.deleteObject());
        GLObject::fsSupported = false;
    }
    EXPECT_EQ(made(),
              (Calls{bind(103), upload(0, nullptr), bind(0), remove(103), bind(102), bind(0), remove(102)}));
    EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, 1000U);
}

TEST_F(Object, translatesItsEnumerations) {
    using testing::ElementsAre;
    std::vector<GLenum> constants;
    for (auto usage : {GLObject::kStreamDraw, GLObject::kStreamRead, GLObject::kStreamCopy,
                       GLObject::kStaticDraw, GLObject::kStaticRead, GLObject::kStaticCopy,
                       GLObject::kDynamicDraw, GLObject::kDynamicRead, GLObject::kDynamicCopy})
        constants.push_back(GLObject::fsUsageInternal[usage]);
    for (auto access : {GLObject::kReadOnly, GLObject::kWriteOnly, GLObject::kReadWrite})
        constants.push_back(GLObject::fsAccessInternal[access]);
    EXPECT_THAT(constants, ElementsAre(0x88E0, 0x88E1, 0x88E2, 0x88E4, 0x88E5, 0x88E6, 0x88E8, 0x88E9, 0x88EA,
                                       0x88B8, 0x88B9, 0x88BA));
    EXPECT_THAT(GLObject::fsDataTypeInternal, ElementsAre(0x8892, 0x8893));
    GLObject object;
    EXPECT_EQ(object.fAccess, 0U);
    object.bind();
    made();
    object.fUsage = 9;
    object.fAccess = 3;
    GLObject none;
    none.fDataType = GLObject::DataType(2);
    EXPECT_FALSE(object.bufferData(1, fBytes) || object.mapBuffer() || none.bind());
    GLObject::unbindBuffer(none.fDataType);
    EXPECT_EQ(made(), Calls{}) << "beyond the enumerations";
    EXPECT_TRUE(object.deleteObject());
    class Derived : public GLObject {
    } derived;
    EXPECT_EQ(GLObject::from(&derived), &derived);
}

TEST_F(Object, failsQuietlyWhereItCannotWork) {
    failNext("glGenBuffersARB");
    GLObject unbound;
    EXPECT_FALSE(unbound.bind() || unbound.fBound);
    expectAllFail(unbound);
    EXPECT_EQ(made(), Calls{fGenerate});

    GLObject object;
    object.bind();
    made();
    for (auto* offer : {&gl().fExtSupported, &gl().fExtEnabled}) {
        (*offer)[kCapVertexBufferObject] = false;
        EXPECT_TRUE(GLObject::fsSupported) << "only a constructor looks again";
        const GLObject other;
        EXPECT_FALSE(GLObject::fsSupported || object.bind() || object.unbind());
        expectAllFail(object);
        GLObject::unbindBuffer(GLObject::kVertexData);
        (*offer)[kCapVertexBufferObject] = true;
        GLObject::fsSupported = true;
    }
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_FALSE(GLObject().bind());
    GLObject::unbindBuffer(GLObject::kVertexData);
    EXPECT_EQ(made(), Calls{});

    // The static operation asks the table, whatever the flag says.
    GLFunctionTable::fpGlobalFunctionTable = &gl();
    GLObject::unbindBuffer(GLObject::kIndexData);
    GLObject::unbindBuffer(GLObject::kVertexData);
    EXPECT_EQ(made(), (Calls{bind(0, GL_ELEMENT_ARRAY_BUFFER_ARB), bind(0)}));

    GLObject::fsSupported = true;
    script().answers["glMapBufferARB"] = [](const auto&) { return 0; };
    EXPECT_FALSE(object.mapBuffer() || object.fMapped);
    script().answers.clear();
    EXPECT_TRUE(object.bufferData(8, fBytes) && object.mapBuffer());
    script().answers["glUnmapBufferARB"] = [](const auto&) { return GL_FALSE; };
    EXPECT_FALSE(object.unmapBuffer() || object.fMapped) << "contents lost";
}

TEST_F(Object, keepsWithinTheBudget) {
    EXPECT_EQ(GLObject::fsMaximumMemoryUsage, 67108864U);
    GLObject object;
    object.bind();
    // A size beyond 32 bits goes to GL whole: keep the double from storing it.
    script().answers["glBufferDataARB"] = [](const auto&) { return 0; };
    const std::tuple<uint32_t, long, bool, uint32_t, uint32_t> kCases[] = {
        {67108000, 864, true, 67108864, 864},
        {67108000, 865, false, 67108000, 0},
        {67108864, 0, true, 67108864, 0},
        {0, -1, false, 0, 0},
        {100, std::numeric_limits<long>::min(), false, 100, 0},
        {5, (1L << 32) + 10, true, 15, 10},
        {0xFFFFFFFF, 11, true, 10, 11},
    };
    for (const auto& [before, size, fits, after, accounted] : kCases) {
        made();
        object.fSize = 77;
        IHWMemoryObject::fsMemoryUsage = before;
        EXPECT_EQ(object.bufferData(size, fBytes), fits) << size;
        EXPECT_EQ(IHWMemoryObject::fsMemoryUsage, after) << size;
        EXPECT_EQ(object.fSize, accounted) << size;
        EXPECT_EQ(made(), fits ? Calls{upload(size, fBytes)} : Calls{});
    }
}

} // namespace
