#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orloview {

/// One corner of a face: indices from 0 into the file's lists, kNone where the corner has no such thing. What
/// lies beyond a list stays as it is and is sorted out with the mesh.
struct FaceCorner {
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    std::uint32_t position = kNone;
    std::uint32_t uv = kNone;
    std::uint32_t normal = kNone;
    std::uint32_t smoothing = kNone; ///< the group of faces with whose corners it shares a normal

    bool operator==(const FaceCorner&) const = default;
};

/// The different corners among many, numbered as they come.
///
/// Faces use the positions that they name in about the order of the file, and most positions have one corner.
/// So a corner's first place in the table is its position: neighbours in the model are neighbours in memory.
/// Whoever finds that taken goes to a place as good as random, and on in steps as good as random: positions
/// lie side by side, and one step at a time would walk along all of them.
class CornerTable {
public:
    /// The number of the corner, which is its own from here on where there was no equal one.
    std::uint32_t numberOf(const FaceCorner& corner) {
        if (2 * fCorners.size() >= fPlaces.size())
            grow();
        std::uint32_t& place = placeOf(corner);
        if (place == FaceCorner::kNone) {
            place = static_cast<std::uint32_t>(fCorners.size());
            fCorners.push_back(corner);
        }
        return place;
    }

    /// By number.
    const std::vector<FaceCorner>& corners() const { return fCorners; }

private:
    /// Where the number of the corner is, or kNone and room for it.
    std::uint32_t& placeOf(const FaceCorner& corner) {
        const size_t last = fPlaces.size() - 1;
        size_t place = corner.position & last;
        if (isNot(fPlaces[place], corner)) {
            const size_t hash = mixed(corner);
            const size_t step = hash >> 8U | 1U; // odd, so that it comes everywhere
            for (place = hash >> 32U & last; isNot(fPlaces[place], corner);)
                place = (place + step) & last;
        }
        return fPlaces[place];
    }

    bool isNot(std::uint32_t number, const FaceCorner& corner) const {
        return number != FaceCorner::kNone && fCorners[number] != corner;
    }

    static size_t mixed(const FaceCorner& corner) {
        size_t hash = corner.position;
        for (const std::uint32_t part : {corner.uv, corner.normal, corner.smoothing})
            hash = (hash ^ hash >> 32U) * 0x9E3779B97F4A7C15U + part;
        return hash * 0x9E3779B97F4A7C15U;
    }

    void grow() {
        constexpr size_t kSmallest = 16;
        fPlaces.assign(fPlaces.empty() ? kSmallest : 2 * fPlaces.size(), FaceCorner::kNone);
        for (size_t number = 0; number < fCorners.size(); ++number)
            placeOf(fCorners[number]) = static_cast<std::uint32_t>(number);
    }

    std::vector<FaceCorner> fCorners;
    std::vector<std::uint32_t> fPlaces; ///< numbers; a power of two of them, half of them free at least
};

} // namespace orloview
