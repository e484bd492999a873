#pragma once

#include "orlohost/ShadingNodeSpec.h"

#include <map>
#include <string>
#include <vector>

namespace koShadingDag {

/// A network in the order in which it is computed: every node once, behind all that feed it; the material's
/// own node last. A node's name is its kind and its number among its like.
class Network {
public:
    explicit Network(const ShadingNodeSpec& root);

    struct Member {
        const ShadingNodeSpec* node;
        std::string name;
    };
    const std::vector<Member>& members() const { return fMembers; }

    const std::string& nameOf(const ShadingNodeSpec* node) const { return fMembers[fPlaces.at(node)].name; }

    /// All that makes a shader of it what it is.
    std::string key() const;

private:
    std::vector<Member> fMembers;
    std::map<const ShadingNodeSpec*, size_t> fPlaces;
};

} // namespace koShadingDag
