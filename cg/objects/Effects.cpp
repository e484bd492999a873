#include "objects/Effects.h"

#include "effects/EffectParser.h"
#include "objects/Connections.h"
#include "objects/Handles.h"
#include "objects/Names.h"
#include "objects/Values.h"

#include <algorithm>
#include <cmath>

namespace orlocg {

namespace {

using Parts = std::vector<std::unique_ptr<EffectPart>>;

EffectPart& add(Parts& parts, EffectPart::Kind kind, EffectObject& effect, EffectPart* owner,
                const std::string& name) {
    parts.push_back(std::make_unique<EffectPart>());
    EffectPart& made = *parts.back();
    made.kind = kind;
    made.context = effect.context;
    made.effect = &effect;
    made.owner = owner;
    made.name = name;
    made.handle = reinterpret_cast<uintptr_t>(makeHandle<CGobj>());
    global().effectParts.emplace(made.handle, &made);
    if (parts.size() > 1)
        parts[parts.size() - 2]->next = &made;
    return made;
}

void addAnnotations(const std::vector<EffectVariable>& from, EffectObject& effect, EffectPart* owner,
                    Parts& annotations) {
    for (const EffectVariable& each : from) {
        EffectPart& made = add(annotations, EffectPart::Kind::Annotation, effect, owner, each.name);
        made.type = typeNamed(each.type);
        made.value = &each.value;
    }
}

void addTechniques(EffectObject& effect) {
    using Kind = EffectPart::Kind;
    for (const EffectTechnique& technique : effect.syntax->techniques) {
        EffectPart& made = add(effect.parts, Kind::Technique, effect, &effect, technique.name);
        addAnnotations(technique.annotations, effect, &made, made.annotations);
        for (const EffectPass& pass : technique.passes) {
            EffectPart& own = add(made.parts, Kind::Pass, effect, &made, pass.name);
            addAnnotations(pass.annotations, effect, &own, own.annotations);
            for (const EffectState& state : pass.states) {
                EffectPart& assignment = add(own.parts, Kind::Assignment, effect, &own, state.name);
                assignment.value = &state.value;
                assignment.index = state.index;
                assignment.state = &stateNamed(*effect.context, state.name, false);
            }
        }
    }
}

/// The type of a parameter that an effect can have; null: the compiler's alone, such as a struct.
const Type* typeOfVariable(Types& types, const EffectVariable& variable) {
    const bool isTexture = variable.type.starts_with("texture") || variable.type.starts_with("Texture");
    const Type* type = isTexture ? types.stringType() : types.named(variable.type);
    if (!type || type == types.voidType())
        return nullptr;
    for (size_t i = variable.lengths.size(); i > 0; --i) {
        const std::vector<double> length = numbersOf(variable.lengths[i - 1]);
        constexpr uint64_t kMostNumbers = 1 << 18;
        if (length.size() != 1 || !(length[0] >= 1) || !(length[0] <= kMostNumbers) ||
            leavesOf(type) * static_cast<uint64_t>(length[0]) > kMostNumbers)
            return nullptr;
        type = types.array(type, static_cast<uint32_t>(length[0]));
    }
    return type;
}

void nameAll(ParameterObject& p, const std::string& name) {
    p.name = name;
    for (size_t i = 0; i < p.parts.size(); ++i)
        nameAll(*p.parts[i], name + "[" + std::to_string(i) + "]");
}

void giveInitial(ParameterObject& p, std::vector<double>::const_iterator& at) {
    if (p.isLeaf() && p.type->isNumeric()) {
        p.initial.assign(at, at + p.type->size());
        at += p.type->size();
    }
    for (const std::unique_ptr<ParameterObject>& part : p.parts)
        giveInitial(*part, at);
}

void addParameters(EffectObject& effect) {
    for (const EffectVariable& variable : effect.syntax->parameters) {
        Types& types = effect.context->types;
        const Type* type = typeOfVariable(types, variable);
        if (!type)
            continue;
        effect.parameters.push_back(makeOwnParameter(*effect.context, type));
        ParameterObject& made = *effect.parameters.back();
        nameAll(made, variable.name);
        made.semantic = variable.semantic;
        made.place = effect.parameters.size() - 1;
        made.effect = &effect;
        if (type == types.stringType())
            made.objectType = variable.type == "string" ? CG_STRING : CG_TEXTURE;
        std::vector<double> numbers = numbersOf(variable.value);
        const uint64_t wanted = leavesOf(type);
        if (numbers.size() == 1)
            numbers.resize(wanted, numbers[0]);
        if (numbers.size() == wanted && !holdsSampler(type) && made.objectType == CG_UNKNOWN_TYPE) {
            auto at = numbers.cbegin();
            giveInitial(made, at);
        }
        effect.strings.push_back(variable.value.kind == EffectValue::Kind::Text ? variable.value.text : "");
        effect.parameterAnnotations.emplace_back();
        addAnnotations(variable.annotations, effect, nullptr, effect.parameterAnnotations.back());
        effect.samplerStates.emplace_back();
        for (const EffectState& state : variable.value.states) {
            EffectPart& assignment =
                add(effect.samplerStates.back(), EffectPart::Kind::Assignment, effect, nullptr, state.name);
            assignment.value = &state.value;
            assignment.index = state.index;
            assignment.sampler = made.handle;
            assignment.state = &stateNamed(*effect.context, state.name, true);
        }
    }
}

} // namespace

EffectPart& stateNamed(ContextObject& context, const std::string& name, bool isOfSamplers) {
    Parts& states = context.states[isOfSamplers];
    EffectPart*& known = context.statesByName[isOfSamplers][name];
    if (known)
        return *known;
    states.push_back(std::make_unique<EffectPart>());
    EffectPart& made = *states.back();
    made.kind = EffectPart::Kind::State;
    made.context = &context;
    made.name = name;
    made.handle = reinterpret_cast<uintptr_t>(makeHandle<CGstate>());
    global().effectParts.emplace(made.handle, &made);
    if (states.size() > 1)
        states[states.size() - 2]->next = &made;
    known = &made;
    return made;
}

std::vector<double> numbersOf(const EffectValue& value, const std::map<std::string, int>& names) {
    using Kind = EffectValue::Kind;
    if (value.kind == Kind::Number)
        return {value.number};
    if (value.kind == Kind::Name && (value.text == "true" || value.text == "TRUE"))
        return {1.0};
    if (value.kind == Kind::Name && (value.text == "false" || value.text == "FALSE"))
        return {0.0};
    if (value.kind == Kind::Name)
        if (const auto found = names.find(value.text); found != names.end())
            return {static_cast<double>(found->second)};
    if (value.kind == Kind::Operation && value.parts.size() == 1) {
        std::vector<double> numbers = numbersOf(value.parts[0], names);
        for (double& number : numbers)
            number = value.text == "-" ? -number : (value.text == "!" ? number == 0.0 : number);
        return value.text == "~" ? std::vector<double>() : numbers;
    }
    if (value.kind == Kind::Operation) {
        const std::vector<double> a = numbersOf(value.parts[0], names);
        const std::vector<double> b = numbersOf(value.parts[1], names);
        if (a.size() != 1 || b.size() != 1)
            return {};
        if (value.text == "|")
            return {static_cast<double>(numberFrom<int>(a[0]) | numberFrom<int>(b[0]))};
        if (value.text == "+")
            return {a[0] + b[0]};
        if (value.text == "-")
            return {a[0] - b[0]};
        if (value.text == "*")
            return {a[0] * b[0]};
        return value.text == "/" && b[0] != 0.0 ? std::vector{a[0] / b[0]} : std::vector<double>();
    }
    // Lists, and constructors of types.
    Types types;
    const Type* type = value.kind == Kind::Call ? types.named(value.text) : nullptr;
    if (value.kind != Kind::List && !type)
        return {};
    std::vector<double> numbers;
    for (const EffectValue& part : value.parts) {
        const std::vector<double> own = numbersOf(part, names);
        if (own.empty())
            return {};
        numbers.insert(numbers.end(), own.begin(), own.end());
    }
    if (type && type->isNumeric() && numbers.size() == 1)
        numbers.resize(type->size(), numbers[0]);
    return numbers;
}

std::string textOf(const EffectValue& value) {
    using Kind = EffectValue::Kind;
    const bool isOne = value.kind == Kind::Text || value.kind == Kind::Name || value.kind == Kind::Reference;
    return isOne ? value.text : std::string();
}

std::unique_ptr<EffectObject> makeEffect(ContextObject& context, std::string source, std::string fileName,
                                         const PreprocessOptions& options) {
    auto made = std::make_unique<EffectObject>();
    made->context = &context;
    made->effect = made.get();
    made->source = std::move(source);
    made->fileName = std::move(fileName);
    std::string listing;
    made->syntax = readEffect(made->source, made->fileName, options, listing);
    context.listing = std::move(listing);
    context.hasListing = true;
    if (!made->syntax)
        return nullptr;
    made->handle = reinterpret_cast<uintptr_t>(makeHandle<CGeffect>());
    global().effectParts.emplace(made->handle, made.get());
    try {
        addParameters(*made);
        addTechniques(*made);
    } catch (...) {
        forget(*made);
        throw;
    }
    return made;
}

void forget(const EffectPart& part) {
    global().effectParts.erase(part.handle);
    for (const std::unique_ptr<EffectPart>& each : part.parts)
        forget(*each);
    for (const std::unique_ptr<EffectPart>& each : part.annotations)
        forget(*each);
}

void forget(EffectObject& effect) {
    forget(static_cast<const EffectPart&>(effect));
    for (const auto* lists : {&effect.parameterAnnotations, &effect.samplerStates})
        for (const Parts& parts : *lists)
            for (const std::unique_ptr<EffectPart>& each : parts)
                forget(*each);
    for (const std::unique_ptr<ParameterObject>& parameter : effect.parameters)
        forget(*parameter);
}

} // namespace orlocg
