#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orloview {

/// What shines from all round: a color for each height, the same in every direction of the compass.
class Sky {
public:
    using Color = std::array<double, 3>;

    /// Looking at a component along up of -1 (straight down) to 1, linear between the stops.
    struct Stop {
        double up;
        Color color;
    };

    /// One of the skies of `names`, or nothing.
    static std::optional<Sky> named(std::string_view name);

    /// All names, with `between` between them.
    static std::string names(const char* between);

    Color at(double up) const;

private:
    explicit Sky(std::vector<Stop> stops) : fStops(std::move(stops)) {}

    std::vector<Stop> fStops; ///< from below to above
};

} // namespace orloview
