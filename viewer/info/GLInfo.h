#pragma once

#include <string>

namespace orloview {

/// Version, renderer, every capability with its state, and limits, for --gl-info. Needs a current context.
std::string describeGL();

} // namespace orloview
