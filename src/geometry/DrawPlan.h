#pragma once

#include "geometry/GLObject.h"
#include "geometry/GLRouting.h"
#include "gl/GLFunctionTable.h"

#include <orlohost/GeometryData.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

/// The calls that draw a group once all of it is uploaded, worked out by one drawing for those that follow.
///
/// A plan makes the very calls that drawing without it would. It is in force while the routing has the same
/// layout and the streams and the record say what they said; each drawing compares that, in a few
/// instructions. What else can change a call ends it: a buffer object that dies or loses its name, a stream
/// or record that joins the group. Switches, limits and capabilities are the caller's to look at
/// (GLRouting::allIsOrdinary).
///
/// The group keeps its plans in a list, one for each layout that it is drawn with: a pass for shadows routes
/// less than one for colours.
class DrawPlan final : public IHWMemoryObject {
public:
    ~DrawPlan() override;

    /// Whether all of the group of one record that `routing` has just drawn lies in buffer objects that no
    /// other group draws: who ends one could not tell all groups.
    static bool isPlannable(const GLRouting& routing);

    /// A plan for such a group; null for layouts that have no draw function. While it is made no plan of the
    /// group may end: it shares its buffer objects with those.
    static std::unique_ptr<DrawPlan> make(const GLFunctionTable& gl, const GLRouting& routing);

    /// Draws the group, and leaves in `routing` what drawing leaves there. Lets the routing find another way
    /// when the plan is not in force.
    void draw(GLRouting& routing, const GLFunctionTable& gl) const { fDraw(routing, gl, *this); }

    bool hasLayoutOf(const GLRouting& routing) const { return fLayout == routing.fLayout; }

    std::unique_ptr<DrawPlan> fNext;

    static void operator delete(DrawPlan* plan, std::destroying_delete_t tag); ///< of all of its memory

private:
    /// What a stream or a record begins with: what it is, and what hangs on it. Aligned, as all that is
    /// compared at once.
    struct alignas(16) Head {
        uint32_t fWhat[2];
        IHWMemoryObject* fHanger;
    };

    struct Array {
        Head fHead;
        const GeometryData* fStream;
        GLuint fBufferName;
        GLenum fUnit; ///< of texture coordinates
    };

    static Head headOf(const GeometryData& stream);

    // The routing comes first, as it does where drawGroup jumps from.
    using Draw = void (*)(GLRouting&, const GLFunctionTable&, const DrawPlan&);

    template <bool kNormals, bool kColors, size_t kTexCoords>
    static void drawShape(GLRouting& routing, const GLFunctionTable& gl, const DrawPlan& plan);
    static void drawWatching(GLRouting& routing, const GLFunctionTable& gl, const DrawPlan& plan);
    template <size_t... kShapes>
    static Draw drawOfShape(size_t shape, std::index_sequence<kShapes...> shapes);
    static Draw drawOf(const GLRouting& routing);

    DrawPlan(const GLRouting& routing, Draw draw, size_t room);
    static void* placeWith(size_t room);
    static size_t sizeWith(size_t room) { return sizeof(DrawPlan) + room * sizeof(Array); }
    void planArrays(const GLRouting& routing);
    bool watchOthers(const GeometryLogicalGroup& group);
    void planRecord(GeometryLogicalGroup& group);
    static GLuint bufferNameOf(IHWMemoryObject* hanger);
    void linkObjects(GeometryLogicalGroup* group);

    // Behind the plan, in the same memory, lie an array for each used slot and then the streams that it only
    // watches.
    Array* arrays() { return reinterpret_cast<Array*>(this + 1); }
    const Array* arrays() const { return reinterpret_cast<const Array*>(this + 1); }

    Draw fDraw;
    Draw fDrawShape;                      ///< what fDraw ends in, or is
    GeometryDataIndex* fRecord = nullptr; ///< null until all else is planned
    GLuint fIndexBufferName = 0;
    GLenum fMode = 0;
    uint8_t fRoom; ///< for arrays and watched streams
    uint8_t fArrayCount = 0;
    uint8_t fComparedCount = 0; ///< the arrays and the watched streams
    uint8_t fUnits = 0;         ///< of textures, without which not all slots are reached
    alignas(16) std::array<uint8_t, 16> fLayout;
    Head fRecordHead = {};
};
