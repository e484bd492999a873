#pragma once

#include "scene/Scene.h"

#include <array>
#include <cstdint>
#include <memory>

#include <orlohost/ShadingNodeSpec.h>
#include <texture/GLTexture2D.h>

namespace orloview {

/// The textures of a material, as kTextureUses; null where it has none.
using MaterialTextures = std::array<GLTexture2D*, kTextureUses.size()>;

/// What of a mesh its material can rely on.
struct MeshTraits {
    std::uint32_t uvSets = 0; ///< a bit for each
    bool hasColors = false;
    bool hasTangents = false;
    bool isLit = true; ///< it has normals, and somebody wants light

    auto operator<=>(const MeshTraits&) const = default; // NOLINT(modernize-use-nullptr): a false alarm
};

/// A material as a shading network: metallic-roughness, specular-glossiness, clear coat and unlit as their
/// definitions for glTF say, classic gloss as Blinn-Phong. A factor that changes nothing makes no node, so
/// that materials of one look share a shader.
///
/// Texture coordinate set N is expected on texture unit N, vertex colours as GL's colour, tangents on
/// DrawableScene::kTangentUnit.
std::shared_ptr<koShadingDag::ShadingNodeSpec>
makeNetwork(const Material& material, const MaterialTextures& textures, const MeshTraits& traits);

} // namespace orloview
