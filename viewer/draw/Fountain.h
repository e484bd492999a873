#pragma once

#include "scene/Scene.h"

namespace orloview {

/// A fountain in the wind: drops that rise from a basin, are blown aside and fall back into it. Each follows
/// from the time alone, so that any moment can be shown, and is the same in every run.
class Fountain {
public:
    Fountain();

    /// The basin, and the drops at the first moment.
    Scene scene() const;

    /// The drops of a moment, as points.
    Mesh dropsAt(double seconds) const;

private:
    struct Drop {
        koLinear::Vector velocity; ///< at its birth
        float size = 0.0F;
        float turn = 0.0F; ///< degrees per second
    };
    std::vector<Drop> fDrops; ///< one behind the other, and then from the first again
};

} // namespace orloview
