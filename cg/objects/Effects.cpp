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

constexpr uint64_t kMostNumbers = 1 << 18; ///< of a parameter
constexpr uint64_t kMostOfStruct = 1 << 12;
constexpr size_t kMostStructs = 1 << 10;
constexpr uint64_t kMostParts = 1 << 16; ///< of all parameters together
constexpr size_t kMostNamed = 16;        ///< numbers that a name in a value stands for

/// The type of a parameter that an effect can have; null: the compiler's alone, or too large.
const Type* typeOfVariable(EffectObject& effect, const EffectVariable& variable) {
    Types& types = effect.types;
    const bool isTexture = variable.type.starts_with("texture") || variable.type.starts_with("Texture");
    const Type* type = isTexture ? types.stringType() : types.named(variable.type);
    if (const auto known = effect.structs.find(variable.type); known != effect.structs.end())
        type = known->second;
    if (!type || type == types.voidType())
        return nullptr;
    for (size_t i = variable.lengths.size(); i > 0; --i) {
        const std::vector<double> length = numbersOf(effect, variable.lengths[i - 1]);
        if (length.size() != 1 || !(length[0] >= 1) || !(length[0] <= kMostNumbers) ||
            leavesOf(type) * static_cast<uint64_t>(length[0]) > kMostNumbers)
            return nullptr;
        type = types.array(type, static_cast<uint32_t>(length[0]));
    }
    return type;
}

/// Takes over what constants are, each by those before it.
void addConstants(EffectObject& effect) {
    for (const EffectVariable& constant : effect.syntax->constants) {
        std::vector<double> numbers = numbersOf(effect, constant.value);
        if (!numbers.empty() && numbers.size() <= kMostNamed)
            effect.constants.insert_or_assign(constant.name, std::move(numbers));
    }
}

/// Makes types of structs; of those with strings, textures or something else in them there are none.
void addStructs(EffectObject& effect) {
    Types& types = effect.types;
    for (const EffectStruct& written : effect.syntax->structs) {
        if (effect.structs.size() == kMostStructs)
            return;
        std::vector<Member> members;
        uint64_t size = 0;
        for (const EffectVariable& variable : written.members) {
            const Type* type = typeOfVariable(effect, variable);
            const Type* innermost = type;
            while (innermost && innermost->isArray())
                innermost = innermost->element;
            if (innermost == types.stringType())
                innermost = nullptr;
            size += innermost ? leavesOf(type) : kMostNumbers;
            if (size > kMostOfStruct)
                break;
            members.push_back({variable.name, type, variable.semantic});
        }
        if (members.empty() || size > kMostOfStruct)
            continue;
        StructType* structure = types.makeStruct(written.name);
        structure->members = std::move(members);
        effect.structs.insert_or_assign(written.name, types.structure(structure));
    }
}

uint64_t partsOf(const Type* type) {
    if (type->isArray())
        return 1 + partsOf(type->element) * type->length;
    uint64_t sum = 1;
    if (type->isStruct())
        for (const Member& member : type->structure->members)
            sum += partsOf(member.type);
    return sum;
}

template <typename Use>
void forEachLeafOf(ParameterObject& p, Use&& use) {
    if (p.isLeaf())
        use(p);
    for (const std::unique_ptr<ParameterObject>& part : p.parts)
        forEachLeafOf(*part, use);
}

void putNameBefore(ParameterObject& p, const std::string& name) {
    p.name.insert(0, name);
    for (const std::unique_ptr<ParameterObject>& part : p.parts)
        putNameBefore(*part, name);
}

/// Gives a parameter the value that it is written with.
void giveInitial(EffectObject& effect, ParameterObject& made, const EffectVariable& variable) {
    if (made.objectType == CG_UNKNOWN_TYPE && !made.isLeaf())
        forEachLeafOf(made, [&](ParameterObject& leaf) {
            if (leaf.type == effect.types.stringType())
                leaf.objectType = variable.type == "string" ? CG_STRING : CG_TEXTURE;
        });
    const EffectValue& value = variable.value;
    size_t next = 0;
    const bool isList = value.kind == EffectValue::Kind::List;
    forEachLeafOf(made, [&](const ParameterObject& leaf) {
        if (leaf.objectType != CG_STRING)
            return;
        const EffectValue* own =
            !isList ? &value : (next < value.parts.size() ? &value.parts[next++] : nullptr);
        effect.strings[leaf.handle] = own && own->kind == EffectValue::Kind::Text ? own->text : std::string();
    });
    std::vector<double> numbers = numbersOf(effect, value);
    const uint64_t wanted = leavesOf(made.type);
    if (numbers.size() == 1)
        numbers.resize(wanted, numbers[0]);
    if (numbers.size() != wanted || holdsSampler(made.type))
        return;
    auto at = numbers.cbegin();
    forEachLeafOf(made, [&](ParameterObject& leaf) {
        if (leaf.type->isNumeric())
            leaf.initial.assign(at, at + leaf.type->size());
        at += leaf.type->isNumeric() ? leaf.type->size() : 1;
    });
}

/// False: they are too many.
bool addParameters(EffectObject& effect) {
    uint64_t parts = 0;
    for (const EffectVariable& variable : effect.syntax->parameters) {
        const Type* type = typeOfVariable(effect, variable);
        if (!type)
            continue;
        if ((parts += partsOf(type)) > kMostParts)
            return false;
        effect.parameters.push_back(makeOwnParameter(*effect.context, type));
        ParameterObject& made = *effect.parameters.back();
        putNameBefore(made, variable.name);
        effect.parametersByName.emplace(made.name, &made);
        made.semantic = variable.semantic;
        made.place = effect.parameters.size() - 1;
        made.effect = &effect;
        if (type == effect.types.stringType())
            made.objectType = variable.type == "string" ? CG_STRING : CG_TEXTURE;
        giveInitial(effect, made, variable);
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
    return true;
}

std::string inSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

EffectPart& stateNamed(ContextObject& context, const std::string& name, bool isOfSamplers) {
    Parts& states = context.states[isOfSamplers];
    EffectPart*& known = context.statesByName[isOfSamplers][inSmallLetters(name)];
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

namespace {

double calculated(const std::string& operation, double a, double b) {
    if (operation == "|")
        return numberFrom<int>(a) | numberFrom<int>(b);
    if (operation == "&")
        return numberFrom<int>(a) & numberFrom<int>(b);
    if (operation == "+")
        return a + b;
    if (operation == "-")
        return a - b;
    if (operation == "*")
        return a * b;
    return operation == "/" && b != 0.0 ? a / b : std::nan("");
}

/// ".x" or ".rgb" of numbers; none: they have no such.
std::vector<double> swizzled(const std::vector<double>& numbers, const std::string& members) {
    std::vector<double> found;
    for (const char member : members) {
        size_t place = std::string_view("xyzw").find(member);
        if (place == std::string_view::npos)
            place = std::string_view("rgba").find(member);
        if (place >= numbers.size() || found.size() == 4)
            return {};
        found.push_back(numbers[place]);
    }
    return found;
}

std::vector<double> numbersOfOperation(const EffectValue& value, const NumbersOfName& named) {
    std::vector<double> a = numbersOf(value.parts[0], named);
    if (value.parts.size() == 1) {
        for (double& number : a)
            number = value.text == "-" ? -number : (value.text == "!" ? number == 0.0 : number);
        return value.text == "~" ? std::vector<double>() : a;
    }
    const std::vector<double> b = numbersOf(value.parts[1], named);
    if (a.size() != 1 || b.size() != 1)
        return {};
    const double result = calculated(value.text, a[0], b[0]);
    return std::isnan(result) ? std::vector<double>() : std::vector{result};
}

/// Of lists, and of constructors of types.
std::vector<double> numbersOfParts(const EffectValue& value, const NumbersOfName& named) {
    Types types;
    const Type* type = value.kind == EffectValue::Kind::Call ? types.named(value.text) : nullptr;
    if (value.kind != EffectValue::Kind::List && !type)
        return {};
    std::vector<double> numbers;
    for (const EffectValue& part : value.parts) {
        const std::vector<double> own = numbersOf(part, named);
        if (own.empty())
            return {};
        numbers.insert(numbers.end(), own.begin(), own.end());
    }
    if (type && type->isNumeric() && numbers.size() == 1)
        numbers.resize(type->size(), numbers[0]);
    return numbers;
}

/// What a parameter, an element of one or a member is called in a value; empty: it is no such.
std::string pathOf(const EffectValue& value, const NumbersOfName& named) {
    using Kind = EffectValue::Kind;
    if (value.kind == Kind::Name || value.kind == Kind::Reference)
        return value.text;
    if (value.kind != Kind::Index && value.kind != Kind::Member)
        return {};
    const std::string owner = pathOf(value.parts[0], named);
    if (owner.empty() || value.kind == Kind::Member)
        return owner.empty() ? owner : owner + "." + value.text;
    const std::vector<double> index = numbersOf(value.parts[1], named);
    return index.size() == 1 ? owner + "[" + std::to_string(numberFrom<int>(index[0])) + "]" : std::string();
}

ParameterObject* partAt(const EffectObject& effect, std::string_view path) {
    ParameterObject* at = parameterNamed(effect, std::string(path.substr(0, path.find_first_of(".["))));
    while (at && at->name != path) {
        const auto next = std::find_if(at->parts.begin(), at->parts.end(), [&](const auto& part) {
            const char behind = part->name.size() < path.size() ? path[part->name.size()] : '.';
            return path.starts_with(part->name) && (behind == '.' || behind == '[');
        });
        at = next == at->parts.end() ? nullptr : next->get();
    }
    return at;
}

} // namespace

std::vector<double> numbersOf(const EffectValue& value, const NumbersOfName& named) {
    using Kind = EffectValue::Kind;
    switch (value.kind) {
    case Kind::Number:
        return {value.number};
    case Kind::Name:
        if (value.text == "true" || value.text == "TRUE" || value.text == "True")
            return {1.0};
        if (value.text == "false" || value.text == "FALSE" || value.text == "False")
            return {0.0};
        [[fallthrough]];
    case Kind::Reference:
        return named ? named(value.text) : std::vector<double>();
    case Kind::Operation:
        return numbersOfOperation(value, named);
    case Kind::Member:
    case Kind::Index: {
        const std::string path = named ? pathOf(value, named) : std::string();
        std::vector<double> numbers = path.empty() ? std::vector<double>() : named(path);
        if (numbers.empty() && value.kind == Kind::Member)
            return swizzled(numbersOf(value.parts[0], named), value.text);
        return numbers;
    }
    case Kind::List:
    case Kind::Call:
        return numbersOfParts(value, named);
    default:
        return {};
    }
}

std::vector<double> numbersOf(const EffectObject& effect, const EffectValue& value, const EffectPart* state) {
    return numbersOf(value, [&](const std::string& name) -> std::vector<double> {
        if (const std::optional<int> constant = state ? enumerantOf(*state, name) : std::nullopt)
            return {static_cast<double>(*constant)};
        if (const auto found = effect.constants.find(name); found != effect.constants.end())
            return found->second;
        ParameterObject* p = partAt(effect, name);
        if (!p || !p->isLeaf() || !p->type->isNumeric() || p->type->size() > kMostNamed)
            return {};
        const std::vector<float>& values = valuesOf(*p);
        return {values.begin(), values.end()};
    });
}

ParameterObject* parameterNamed(const EffectObject& effect, const std::string& name) {
    const auto found = effect.parametersByName.find(name);
    return found == effect.parametersByName.end() ? nullptr : found->second;
}

std::optional<int> enumerantOf(const EffectPart& state, const std::string& name) {
    if (const auto found = state.enumerants.find(name); found != state.enumerants.end())
        return found->second;
    const std::string small = inSmallLetters(name);
    for (const auto& [each, value] : state.enumerants)
        if (inSmallLetters(each) == small)
            return value;
    return std::nullopt;
}

const ParameterObject* wholeOfEffect(const ParameterObject& parameter) {
    const ParameterObject* whole = &parameter;
    while (whole->parent)
        whole = whole->parent;
    return whole->effect ? whole : nullptr;
}

const EffectValue* programOf(const EffectObject& effect, const EffectValue& value) {
    using Kind = EffectValue::Kind;
    if (value.kind == Kind::Compile)
        return &value;
    const EffectValue& owner = value.kind == Kind::Index ? value.parts[0] : value;
    const auto& all = effect.syntax->parameters;
    const auto named =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == textOf(owner); });
    if (named == all.end() || textOf(owner).empty())
        return nullptr;
    const EffectValue* found = &named->value;
    if (value.kind == Kind::Index) {
        const std::vector<double> index = numbersOf(effect, value.parts[1]);
        const bool isThere = index.size() == 1 && found->kind == Kind::List && index[0] >= 0.0 &&
                             index[0] < static_cast<double>(found->parts.size());
        found = isThere ? &found->parts[static_cast<size_t>(index[0])] : nullptr;
    }
    return found && found->kind == Kind::Compile ? found : nullptr;
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
        addConstants(*made);
        addStructs(*made);
        if (!addParameters(*made)) {
            context.listing += made->fileName + ": error: its parameters have too many parts\n";
            forget(*made);
            return nullptr;
        }
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
