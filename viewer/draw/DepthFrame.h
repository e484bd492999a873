#pragma once

namespace orloview {

/// Makes the current target's lower left square ready for shapes whose depth alone is wanted, however they
/// are lit, coloured or turned: clears its depth, and sets what such shapes are drawn by. What of them shows
/// in colours is of no account.
void beginDepthFrame(int side);

} // namespace orloview
