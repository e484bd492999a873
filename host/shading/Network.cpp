#include "Network.h"

#include "NodeCatalogue.h"

#include <array>

namespace koShadingDag {

Network::Network(const ShadingNodeSpec& root) {
    // A stack of its own: networks may be deeper than the program's.
    struct Visit {
        const ShadingNodeSpec* node;
        size_t nextInput;
    };
    std::vector<Visit> visits{{&root, 0}};
    std::map<const ShadingNodeSpec*, bool> seen{{&root, true}};
    std::array<int, kNodeKindCount> counts{};
    while (!visits.empty()) {
        Visit& visit = visits.back();
        const auto& inputs = visit.node->inputs();
        if (visit.nextInput < inputs.size()) {
            const ShadingNodeSpec* source = inputs[visit.nextInput++].fSource.get();
            if (source && seen.emplace(source, true).second)
                visits.push_back({source, 0});
            continue;
        }
        const NodeKind kind = visit.node->kind();
        fPlaces[visit.node] = fMembers.size();
        fMembers.push_back({visit.node, std::string(nodeInfo(kind).name) + std::to_string(++counts[kind])});
        visits.pop_back();
    }
}

std::string Network::key() const {
    std::string key;
    for (const Member& member : fMembers) {
        const ShadingNodeSpec& node = *member.node;
        key += nodeInfo(node.kind()).name;
        for (const int32_t setting : node.settings())
            key += '/' + std::to_string(setting);
        if (node.texture())
            key += 't';
        key += '(';
        for (const ShadingNodeSpec::Input& input : node.inputs()) {
            if (input.fSource)
                key += std::to_string(fPlaces.at(input.fSource.get())) + '.' + std::to_string(input.fOutput);
            else
                key += input.fIsSet ? "u" : "";
            key += ',';
        }
        key.back() = ')';
    }
    return key;
}

} // namespace koShadingDag
