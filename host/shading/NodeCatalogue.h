#pragma once

#include "orlohost/ShadingNodeSpec.h"

#include <array>
#include <span>
#include <string_view>

namespace koShadingDag {

struct InputInfo {
    std::string_view name;
    ValueType type;

    /// What it is when nothing feeds it. Normals are then the surface's own; texture coordinates set 0.
    std::array<float, 3> fallback{};
};

struct OutputInfo {
    std::string_view name;
    ValueType type;
    std::string_view member; ///< of the node's result, such as ".rgb"
};

struct SettingInfo {
    std::string_view name;
    int32_t fallback;
    int32_t least;
    int32_t most;
};

/// What a kind of node has. The kind's name is the one that shaders and messages use.
struct NodeInfo {
    std::string_view name;
    ValueType resultType; ///< of results without members
    std::span<const InputInfo> inputs;
    std::span<const OutputInfo> outputs;
    std::span<const SettingInfo> settings;
    bool isSurface = false;
};

const NodeInfo& nodeInfo(NodeKind kind);

constexpr uint32_t componentsOf(ValueType type) {
    return type == kFloat ? 1 : type == kVector2 ? 2 : 3;
}

/// The number of an input or setting in a list, or -1.
template <typename Info>
int indexOf(std::span<const Info> list, std::string_view name) {
    for (size_t i = 0; i < list.size(); ++i) {
        if (list[i].name == name)
            return static_cast<int>(i);
    }
    return -1;
}

} // namespace koShadingDag
