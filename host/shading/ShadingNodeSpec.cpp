#include "orlohost/ShadingNodeSpec.h"

#include "Network.h"
#include "NodeCatalogue.h"

#include <algorithm>
#include <string>
#include <unordered_set>

IHWShaderManager::~IHWShaderManager() = default;

namespace koShadingDag {

namespace {

template <typename Info>
std::string namesOf(std::span<const Info> list) {
    std::string names;
    for (const Info& info : list)
        names += (names.empty() ? "" : ", ") + std::string(info.name);
    return names.empty() ? "none" : names;
}

const char* typeName(ValueType type) {
    constexpr std::array<const char*, 4> kNames = {"a float", "texture coordinates", "a color", "a normal"};
    return kNames[type];
}

bool fits(ValueType from, ValueType to) {
    return from == to || (from == kFloat && to == kColor);
}

/// Whether `node` is among what feeds `from`, or is it.
bool isFedBy(const ShadingNodeSpec* from, const ShadingNodeSpec* node) {
    std::vector<const ShadingNodeSpec*> open{from};
    std::unordered_set<const ShadingNodeSpec*> seen{from};
    while (!open.empty()) {
        const ShadingNodeSpec* next = open.back();
        open.pop_back();
        if (next == node)
            return true;
        for (const ShadingNodeSpec::Input& input : next->inputs()) {
            if (input.fSource && seen.insert(input.fSource.get()).second)
                open.push_back(input.fSource.get());
        }
    }
    return false;
}

} // namespace

ShadingNodeSpec::ShadingNodeSpec(NodeKind kind)
    : fKind(kind < kNodeKindCount ? kind : kLambert), fInputs(nodeInfo(fKind).inputs.size()) {
    for (const SettingInfo& setting : nodeInfo(fKind).settings)
        fSettings.push_back(setting.fallback);
}

ShadingNodeSpec::~ShadingNodeSpec() {
    // A chain of nodes that each let go of the next would need as much stack as it is long.
    std::vector<std::shared_ptr<ShadingNodeSpec>> released;
    const auto take = [&released](ShadingNodeSpec& node) {
        for (Input& input : node.fInputs) {
            if (input.fSource)
                released.push_back(std::move(input.fSource));
        }
    };
    take(*this);
    while (!released.empty()) {
        const std::shared_ptr<ShadingNodeSpec> node = std::move(released.back());
        released.pop_back();
        if (node.use_count() == 1)
            take(*node);
    }
}

koString::CString ShadingNodeSpec::connect(const koString::CString& input,
                                           std::shared_ptr<ShadingNodeSpec> source,
                                           const koString::CString& output) {
    const NodeInfo& info = nodeInfo(fKind);
    const std::string self(info.name);
    const int place = indexOf(info.inputs, input.asChar());
    if (place < 0)
        return (self + " has no input '" + input.asChar() + "'; its inputs: " + namesOf(info.inputs)).c_str();
    if (!source)
        return (self + "." + input.asChar() + ": there is no node to connect; disconnect() leaves it free")
            .c_str();
    const NodeInfo& from = nodeInfo(source->kind());
    const int out = indexOf(from.outputs, output.asChar());
    if (out < 0)
        return (std::string(from.name) + " has no output '" + output.asChar() +
                "'; its outputs: " + namesOf(from.outputs))
            .c_str();
    const std::string both =
        std::string(from.name) + "." + output.asChar() + " can't feed " + self + "." + input.asChar() + ": ";
    const ValueType given = from.outputs[static_cast<size_t>(out)].type;
    const ValueType wanted = info.inputs[static_cast<size_t>(place)].type;
    if (!fits(given, wanted))
        return (both + "it is " + typeName(given) + ", not " + typeName(wanted)).c_str();
    if (isFedBy(source.get(), this))
        return (both + "the network would go in a circle").c_str();
    fInputs[static_cast<size_t>(place)].fSource = std::move(source);
    fInputs[static_cast<size_t>(place)].fOutput = static_cast<uint32_t>(out);
    return {};
}

void ShadingNodeSpec::disconnect(const koString::CString& input) {
    const int place = indexOf(nodeInfo(fKind).inputs, input.asChar());
    if (place >= 0)
        fInputs[static_cast<size_t>(place)].fSource.reset();
}

ShadingNodeSpec::Input* ShadingNodeSpec::findInput(const koString::CString& name, ValueType type) {
    const auto inputs = nodeInfo(fKind).inputs;
    const int place = indexOf(inputs, name.asChar());
    const bool found = place >= 0 && inputs[static_cast<size_t>(place)].type == type;
    return found ? &fInputs[static_cast<size_t>(place)] : nullptr;
}

bool ShadingNodeSpec::setValue(const koString::CString& input, float value) {
    Input* found = findInput(input, kFloat);
    if (!found)
        return setValue(input, koColor::Color(value, value, value));
    found->fValue[0] = value;
    return found->fIsSet = true;
}

bool ShadingNodeSpec::setValue(const koString::CString& input, float x, float y) {
    Input* found = findInput(input, kVector2);
    if (!found)
        return false;
    found->fValue[0] = x;
    found->fValue[1] = y;
    return found->fIsSet = true;
}

bool ShadingNodeSpec::setValue(const koString::CString& input, const koColor::Color& value) {
    Input* found = findInput(input, kColor);
    if (!found)
        return false;
    std::copy_n(value.data(), 3, found->fValue);
    return found->fIsSet = true;
}

void ShadingNodeSpec::unsetValue(const koString::CString& input) {
    const int place = indexOf(nodeInfo(fKind).inputs, input.asChar());
    if (place >= 0)
        fInputs[static_cast<size_t>(place)].fIsSet = false;
}

bool ShadingNodeSpec::setSetting(const koString::CString& name, int32_t value) {
    const auto settings = nodeInfo(fKind).settings;
    const int place = indexOf(settings, name.asChar());
    if (place < 0)
        return false;
    const SettingInfo& setting = settings[static_cast<size_t>(place)];
    if (value < setting.least || value > setting.most)
        return false;
    fSettings[static_cast<size_t>(place)] = value;
    return true;
}

void ShadingNodeSpec::setTexture(IHWTexture* texture, const TextureUsage& usage) {
    fTexture = texture;
    fUsage = usage;
}

koString::CString ShadingNodeSpec::networkKey(const std::vector<LightSpec>* lights) const {
    std::string key = Network(*this).key();
    if (lights) {
        for (const LightSpec& light : *lights) {
            key += '+' + std::to_string(light.fType);
            key += light.fHasRange ? "r" : "";
            key += light.fHasInnerCone ? "c" : "";
            key += light.fCastsShadow ? "s" : "";
            key += light.fIsOccluded ? "o" : "";
        }
    }
    return key.c_str();
}

std::vector<ShadingNodeSpec::Uniform> ShadingNodeSpec::uniforms() const {
    std::vector<Uniform> uniforms;
    const Network network(*this);
    for (const Network::Member& member : network.members()) {
        const auto infos = nodeInfo(member.node->kind()).inputs;
        for (size_t i = 0; i < infos.size(); ++i) {
            const Input& input = member.node->inputs()[i];
            if (!input.fSource && input.fIsSet)
                uniforms.push_back({(member.name + "_" + std::string(infos[i].name)).c_str(),
                                    componentsOf(infos[i].type), input.fValue});
        }
    }
    return uniforms;
}

std::vector<ShadingNodeSpec::Sampler> ShadingNodeSpec::samplers() const {
    std::vector<Sampler> samplers;
    const Network network(*this);
    for (const Network::Member& member : network.members()) {
        if (member.node->texture())
            samplers.push_back(
                {(member.name + "_image").c_str(), member.node->texture(), member.node->textureUsage()});
    }
    return samplers;
}

} // namespace koShadingDag
