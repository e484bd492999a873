#include "shading/Sky.h"

#include <algorithm>

namespace orloview {

namespace {

using Color = Sky::Color;

struct NamedSky {
    std::string_view name;
    std::vector<Sky::Stop> stops;
};

const std::vector<NamedSky>& skies() {
    static const std::vector<NamedSky> theSkies = {
        {"studio", // a dark room with a large soft lamp in the ceiling
         {{-1.0, {0.10, 0.10, 0.10}},
          {-0.05, {0.16, 0.16, 0.165}},
          {0.05, {0.21, 0.21, 0.22}},
          {0.25, {0.23, 0.23, 0.24}},
          {0.45, {0.32, 0.32, 0.33}},
          {0.62, {0.53, 0.53, 0.535}},
          {0.78, {0.80, 0.80, 0.80}},
          {0.90, {1.00, 1.00, 1.00}},
          {1.0, {1.09, 1.09, 1.09}}}},
        {"clear",
         {{-1.0, {0.13, 0.12, 0.10}},
          {-0.03, {0.20, 0.19, 0.17}},
          {0.03, {0.80, 0.88, 0.95}},
          {0.30, {0.42, 0.60, 0.88}},
          {1.0, {0.14, 0.28, 0.62}}}},
        {"overcast", // a third as bright at the horizon as overhead (CIE 110)
         {{-1.0, {0.12, 0.12, 0.12}},
          {-0.02, {0.16, 0.16, 0.16}},
          {0.02, {0.26, 0.27, 0.28}},
          {1.0, {0.75, 0.77, 0.80}}}},
        {"sunset",
         {{-1.0, {0.03, 0.025, 0.03}},
          {-0.03, {0.10, 0.06, 0.05}},
          {0.02, {1.30, 0.52, 0.18}},
          {0.15, {0.75, 0.35, 0.25}},
          {0.45, {0.22, 0.20, 0.30}},
          {1.0, {0.06, 0.09, 0.20}}}},
        {"white", // to see whether a material sends out more than it gets
         {{-1.0, {1.0, 1.0, 1.0}}, {1.0, {1.0, 1.0, 1.0}}}},
    };
    return theSkies;
}

} // namespace

std::optional<Sky> Sky::named(std::string_view name) {
    for (const NamedSky& sky : skies()) {
        if (sky.name == name)
            return Sky(sky.stops);
    }
    return std::nullopt;
}

std::string Sky::names(const char* between) {
    std::string all;
    for (const NamedSky& sky : skies())
        all += (all.empty() ? "" : between) + std::string(sky.name);
    return all;
}

Sky::Color Sky::at(double up) const {
    size_t above = 1;
    while (above + 1 < fStops.size() && fStops[above].up < up)
        ++above;
    const Stop& a = fStops[above - 1];
    const Stop& b = fStops[above];
    const double share = std::clamp((up - a.up) / (b.up - a.up), 0.0, 1.0);
    Color color;
    for (size_t i = 0; i < 3; ++i)
        color[i] = a.color[i] + share * (b.color[i] - a.color[i]);
    return color;
}

} // namespace orloview
