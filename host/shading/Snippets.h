#pragma once

#include <string_view>

namespace koShadingDag {

/// A function of the shading language that compiled networks call, with the names of those that it calls
/// itself, a space between.
struct Snippet {
    std::string_view name;
    std::string_view needs;
    std::string_view text;
};

/// By its name, which has to be there.
const Snippet& snippet(std::string_view name);

} // namespace koShadingDag
