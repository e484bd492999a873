#pragma once

#include <algorithm>
#include <cmath>

namespace orloview {

// The microfacet model of the shaders (docs/shading-networks.md), for integrals over it.

inline double alphaOf(double roughness) {
    return std::max(roughness * roughness, 0.002);
}

/// The cosine between normal and half vector below which a share of GGX's facets, seen from the normal, lies.
inline double facetCosine(double share, double alpha) {
    return std::sqrt((1.0 - share) / (1.0 + (alpha * alpha - 1.0) * share));
}

inline double smith(double cosine, double alpha) {
    return cosine + std::sqrt(alpha * alpha + (1.0 - alpha * alpha) * cosine * cosine);
}

} // namespace orloview
