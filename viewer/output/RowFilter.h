#pragma once

#include "output/Picture.h"

#include <vector>

namespace orloview {

/// Rows `first` to before `end` of a part of a picture as PNG packs them: before each the number of a filter,
/// the one whose differences are least in sum, then the row less what the filter foretells. The part's own
/// first row is foretold from itself alone.
std::vector<std::uint8_t> filterRows(const Picture& part, int first, int end);

} // namespace orloview
