#pragma once

#include "geometry/GLObject.h"
#include "gl/EntryMacros.h"
#include "gl/Export.h"

#include <orlohost/GeometryData.h>
#include <orlohost/koUtil.h>

#include <array>
#include <cstdint>
#include <optional>

/// Routes the data streams of a geometry group to GL vertex arrays and draws the group.
///
///     GLRouting routing;
///     routing.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
///     routing.fSlots[GLRouting::kNormal] = {GLRouting::kFromGeometry, {}, GeometryData::kNormal, 0};
///     routing.drawGroup(&group, nullptr, nullptr, nullptr, 0, false);
///
/// The host fills the slots, one per interpolant: with a stream of whatever group is drawn, or directly with
/// memory of its own. With fsUseObjectsForData and fsUseObjectsForIndexing streams and indices are uploaded
/// into buffer objects the first time, hung on the host's records, and found there from then on; where that
/// fails they are drawn from client memory.
///
/// Everything needs the table and a current context. One routing at a time. Streams are sent as floats: route
/// no other. Once a slot is fed from a buffer object, feed no later one from client memory: GL would take the
/// pointer for an offset into the buffer.
class ORLOGL_API GLRouting {
public:
    /// What of GL a slot feeds: an array, a texture unit's coordinates, or a generic attribute.
    enum GLInterpolant : uint32_t {
        kPosition = 0,
        kNormal = 1,
        kColor = 2,
        kTexCoord0 = 3,
        kTexCoord7 = 10,
        kAttrib1 = 11,
        kAttrib15 = 25,
    };

    /// How many slots there are.
    static constexpr uint32_t kInterpolantCount = 26;

    /// The array of the first three, the texture unit of the next eight, the index of the generic vertex
    /// attribute of the rest.
    static constexpr std::array<uint32_t, 26> fsInterpolantEnums = {
        // clang-format off
        GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY,
        GL_TEXTURE0_ARB, GL_TEXTURE1_ARB, GL_TEXTURE2_ARB, GL_TEXTURE3_ARB,
        GL_TEXTURE4_ARB, GL_TEXTURE5_ARB, GL_TEXTURE6_ARB, GL_TEXTURE7_ARB,
        1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
        // clang-format on
    };
    static_assert(fsInterpolantEnums.size() == kInterpolantCount);

    /// An array in memory of the caller or in a buffer object of the caller.
    struct DirectDataAssignment {
        uint32_t fComponentCount = 0;       ///< numbers an element
        uint32_t fComponentType = GL_FLOAT; ///< GL's name for their type
        uint32_t fStride = 0;               ///< bytes from one element to the next; 0: they lie without gaps

        /// Not looked at with a buffer object: the data begin at its offset 0.
        const void* fClientData = nullptr;
        GLObject* fBufferObject = nullptr; ///< or memory of GL; not owned
    };

    /// Where a slot takes its data from.
    enum SourceMode : uint32_t { kFromGeometry = 0, kDirect = 1, kUnused = 2 };

    /// A value that is read and written as any other. Other values count as a change, by which routings tell
    /// that they have to look at their slots again.
    template <typename T>
    class Watched {
    public:
        Watched(T value = {}) : fValue(value) {} ///< no change
        Watched(const Watched&) = default;       ///< no change
        ~Watched() = default;

        /// A change, where the value is another one.
        Watched& operator=(const Watched& other) { return *this = other.fValue; }

        /// A change, where the value is another one.
        Watched& operator=(T value) {
            fsSlotChanges += fValue != value;
            fValue = value;
            return *this;
        }

        operator T() const { return fValue; } ///< the value

    private:
        T fValue;
    };

    /// Where one interpolant comes from.
    struct Slot {
        Watched<uint32_t> fMode = kUnused; ///< a SourceMode

        /// For kDirect.
        DirectDataAssignment fDirect;

        /// For kFromGeometry: the stream number fIndex of that type.
        Watched<GeometryData::DataType> fDataType = GeometryData::kNone;
        Watched<int32_t> fIndex = 0; ///< 0 is the first of its type
    };

    /// Draws a group: its arrays set, each index record drawn, the arrays undone. Does nothing for a null
    /// group and for one without streams or without records.
    ///
    /// With none of the following three, records are drawn whole. `visible`: only the primitives in the set.
    /// `primitiveList`: only the primitives named there, as many entries as the record has primitives;
    /// entries beyond the record are skipped. `preparedIndices`: those `preparedCount` indices instead of the
    /// record's; switch fsUseObjectsForIndexing off for them. Strips have no subsets: nothing is drawn.
    /// Subsets change from call to call, so they never use buffer objects: fsUseObjectsForData and
    /// fsUseObjectsForIndexing are off meanwhile, and come back *exchanged*.
    ///
    /// | visible | list | prepared         | drawn                                                        |
    /// |---------|------|------------------|--------------------------------------------------------------|
    /// | any     | -    | count above 0    | the prepared indices                                         |
    /// | -       | yes  | any count        | as many prepared indices as the record has                   |
    /// | yes     | -    | - or count 0     | the visible primitives                                       |
    /// | yes     | yes  | any              | primitive j for each visible entry j, from prepared if given |
    /// | -       | yes  | -                | the primitives listed                                        |
    /// | -       | -    | count 0          | nothing                                                      |
    ///
    /// `substitute`: see GeometryData::DataType.
    void drawGroup(GeometryLogicalGroup* group, koUtil::BitField* visible, unsigned* primitiveList,
                   unsigned* preparedIndices, unsigned preparedCount, bool substitute);

    /// Draws the current index record alone, with arrays that are already set; the arguments as in drawGroup,
    /// which calls it.
    void drawSingleIndexed(koUtil::BitField* visible, unsigned* primitiveList, unsigned* preparedIndices,
                           unsigned preparedCount);

    /// Draws fGroup in immediate mode where each stream has an index record of its own (fStream): positions,
    /// normals and texture coordinates, each walked in its own order until the positions are through. The
    /// type of the last record decides: triangles or quads, else nothing is drawn. A stream that no record
    /// names reads as (0, 0, 0, 1). Uses no slots; positions and normals have at least 3 components, texture
    /// coordinates 2.
    void drawFullMultipleIndexed();

    /// Sets the arrays of all used slots, in their order, with streams of fGroup. Stops after as many slots
    /// as there are texture units and three. With `pointersOnly` the arrays are enabled already.
    void setVertexArrays(bool pointersOnly, bool substitute);

    /// Disables the arrays of all used slots, and leaves none of their buffers bound and texture unit 0
    /// client-active. Like disableInterpolant and disableAllArrays it leaves coordinates alone on units
    /// beyond the table's fMaxTextureUnits, where they stay enabled: route none there.
    void unsetVertexArrays();

    /// Sets one array. With `pointersOnly` the array is enabled already, and for texture coordinates the unit
    /// is client-active already. Generic attributes need requiresAttribInterpolants. Of a number that is no
    /// interpolant nothing is set or disabled.
    void setupInterpolant(GLInterpolant i, const DirectDataAssignment& a, bool pointersOnly);

    /// Disables the array of one interpolant, enabled or not.
    void disableInterpolant(GLInterpolant i);

    /// Disables every array that a routing can have enabled, and the colour index array. Unbinds the buffers
    /// that fsUseObjectsForData and fsUseObjectsForIndexing are on for.
    static void disableAllArrays();

    /// Upload vertex streams into buffer objects; upload index lists. Set by the host.
    static bool fsUseObjectsForData;
    static bool fsUseObjectsForIndexing; ///< the same for index records

    /// Draw with primitive restart at index 0xFFFFFFFF (NV). Set by the host. Each group switches it on by
    /// glEnable and off by glDisable, which Mesa refuses (GL_INVALID_ENUM): there the host does the same by
    /// glEnableClientState and glDisableClientState.
    static bool fsUsePrimitiveRestart;

    /// Draw with glDrawRangeElements. Its range ends at the number of indices, not at the largest one: leave
    /// it off for records with larger indices.
    static bool fsUseDrawRangeElements;

    /// Whether generic attributes (kAttrib1 and up) reach GL. Set by the host.
    static bool requiresAttribInterpolants;

    std::array<Slot, kInterpolantCount> fSlots; ///< by GLInterpolant

    /// The group whose streams are routed; drawGroup sets it, and the host for drawFullMultipleIndexed.
    GeometryLogicalGroup* fGroup = nullptr;

    /// What drawSingleIndexed draws; drawGroup sets them.
    GeometryDataIndex* fIndexRecord = nullptr;
    uint32_t fPrimitiveType = GeometryDataIndex::kNothing; ///< of the record being drawn
    uint32_t fIndexCount = 0;                              ///< of the record being drawn

private:
    friend class DrawPlan;

    void drawUnplanned(GeometryLogicalGroup* group, koUtil::BitField* visible, unsigned* primitiveList,
                       unsigned* preparedIndices, unsigned preparedCount, bool substitute);
    void drawWhole();
    void drawByLayout();
    void drawByOtherPlan();
    void drawAndPlan();
    void readSlots();
    static bool allIsOrdinary(const GLFunctionTable& gl);
    template <bool kPointersOnly>
    static void setArray(GLFunctionTable& gl, GLInterpolant i, const DirectDataAssignment& a);
    static void disableArray(GLFunctionTable& gl, GLInterpolant i);
    uint32_t usedSlots() const;
    template <bool kPointersOnly>
    void setArrays(GLFunctionTable& gl, uint32_t usedSlots, bool substitute);
    void unsetArrays(GLFunctionTable& gl, uint32_t usedSlots);
    static std::optional<GLenum> primitiveMode(uint32_t primitiveType);
    bool makeCurrent(GeometryDataIndex* record);
    void drawRecords(koUtil::BitField* visible, unsigned* primitiveList, unsigned* preparedIndices,
                     unsigned preparedCount);
    void drawRecordsFromSharedObject(unsigned* preparedIndices, unsigned preparedCount);
    void drawWholeRecord();
    void drawSubset(const koUtil::BitField* visible, const unsigned* primitiveList,
                    const unsigned* preparedIndices, unsigned preparedCount);
    void drawOneByOne(GLenum mode, uint32_t primitiveSize, const koUtil::BitField* visible,
                      const unsigned* primitiveList, const unsigned* preparedIndices);

    /// Whether drawRecordsFromSharedObject has an object bound for the records of a block.
    bool fSharedObjectIsBound = false;

    /// Whether the host may have left something in boundGLObjects.
    static bool fsHostHasRouted;

    /// Changes of any routing's slots, and how many there were when fLayout was made of these.
    static uint64_t fsSlotChanges;
    uint64_t fSlotsRead = 0;

    /// A byte for each slot up to kTexCoord7, 0 where it is unused: its stream's type and number. All 0 when
    /// the slots can't be told so.
    std::array<uint8_t, 16> fLayout = {};
};

/// The buffer object that each interpolant was last routed to, between setting the arrays and undoing them.
extern ORLOGL_API GLObject* boundGLObjects[GLRouting::kInterpolantCount];
