#include "objects/CompiledText.h"

#include "objects/Connections.h"
#include "objects/Names.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>

namespace orlocg {

namespace {

constexpr uint64_t kMostNumbersOfAText = 1 << 18;
constexpr size_t kMostMembersOfAText = 1024;
constexpr int kDeepestOfAText = 32;
constexpr std::string_view kInput = "$vin.";
constexpr std::string_view kOutput = "$vout.";

std::string numberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

// Reading.

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t\r") + 1 - first);
}

/// The part of a text up to a separator, which goes with it.
std::string_view takeUntil(std::string_view& text, std::string_view separator) {
    const size_t end = text.find(separator);
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
    return part;
}

std::optional<int> wholeNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Whether it begins with a name; what follows that is looked at as it is followed.
bool isPath(std::string_view text) {
    return !text.empty() && (std::isalpha(static_cast<unsigned char>(text[0])) != 0 || text[0] == '_');
}

/// A variable as its lines tell it, by its members and elements.
struct TextNode {
    std::string name; ///< of a member; of an element its index
    std::vector<TextNode> parts;
    bool isIndexed = false; ///< the parts are elements

    // Of what has a line of its own, an array of them included.
    const Type* type = nullptr; ///< else what typeOf() found
    std::string semantic;
    std::string place; ///< a uniform's name in GLSL, or the resource of what varies
    bool isUniform = true;
    bool isInput = false;
    bool isOutput = false;
    bool isUsed = false;
};

class TextReader {
public:
    explicit TextReader(CompiledProgram& out) : fOut(out) {}

    /// False: the line isn't one of such a text.
    bool readVariable(std::string_view line);
    bool readDefault(std::string_view line);
    bool finish();

private:
    struct Whole {
        TextNode node;
        std::unique_ptr<Variable> variable;
        bool isGlobal = false;
        std::vector<double> initial;
    };

    Whole& wholeOf(std::string_view path);
    static TextNode* follow(TextNode& from, std::string_view path);
    const Type* typeOf(TextNode& node);
    const Type* arrayTypeNamed(std::string_view name);
    static void addLeaves(const TextNode& node, const std::string& path, Parameter& parameter);

    CompiledProgram& fOut;
    std::vector<std::unique_ptr<Whole>> fWholes;
    std::map<std::string, Whole*, std::less<>> fByName;
};

TextReader::Whole& TextReader::wholeOf(std::string_view path) {
    const std::string name(path.substr(0, path.find_first_of(".[")));
    Whole*& whole = fByName[name];
    if (!whole) {
        fWholes.push_back(std::make_unique<Whole>());
        whole = fWholes.back().get();
        whole->variable = std::make_unique<Variable>();
        whole->variable->name = whole->node.name = name;
        whole->variable->isParameter = true;
    }
    return *whole;
}

/// The node at "[2].color" or ".color" below one, made where it is new; null: the path isn't one.
TextNode* TextReader::follow(TextNode& from, std::string_view path) {
    TextNode* at = &from;
    for (int depth = 0; !path.empty(); ++depth) {
        const bool isIndex = path.front() == '[';
        path.remove_prefix(1);
        const size_t end = path.find_first_of(isIndex ? "]" : ".[");
        const std::string name(path.substr(0, end));
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + (isIndex ? 1 : 0));
        std::vector<TextNode>& parts = at->parts;
        if (name.empty() || depth > kDeepestOfAText || (!parts.empty() && at->isIndexed != isIndex))
            return nullptr;
        size_t place = parts.size();
        if (isIndex)
            place = static_cast<size_t>(wholeNumber(name).value_or(-1));
        else
            place = static_cast<size_t>(
                std::find_if(parts.begin(), parts.end(), [&](const TextNode& p) { return p.name == name; }) -
                parts.begin());
        // What is new comes behind what is there.
        if (place == parts.size()) {
            if (at->type || (!isIndex && place >= kMostMembersOfAText))
                return nullptr;
            at->isIndexed = isIndex;
            parts.emplace_back().name = name;
        } else if (place > parts.size()) {
            return nullptr;
        }
        at = &parts[place];
    }
    return at;
}

/// "float4", or "float4[3][2]"; null: there is none.
const Type* TextReader::arrayTypeNamed(std::string_view name) {
    Types& types = fOut.program->types;
    const Type* type = types.named(name.substr(0, name.find('[')));
    if (!type || !(type->isNumeric() || type->isSampler()))
        return nullptr;
    while (name.ends_with(']')) { // the last is the innermost
        const size_t start = name.rfind('[');
        const std::optional<int> length = start == std::string_view::npos
                                              ? std::nullopt
                                              : wholeNumber(name.substr(start + 1, name.size() - start - 2));
        if (!length || *length < 1 || leavesOf(type) * static_cast<uint64_t>(*length) > kMostNumbersOfAText)
            return nullptr;
        type = types.array(type, static_cast<uint32_t>(*length));
        name = name.substr(0, start);
    }
    return name.find('[') == std::string_view::npos ? type : nullptr;
}

bool TextReader::readVariable(std::string_view line) {
    const Type* type = arrayTypeNamed(takeUntil(line, " "));
    const std::string_view path = trimmed(takeUntil(line, " :"));
    std::string_view semantic = trimmed(takeUntil(line, " :"));
    const std::string_view place = trimmed(takeUntil(line, " :"));
    const std::optional<int> number = wholeNumber(trimmed(takeUntil(line, " :")));
    const std::string_view used = trimmed(line);
    if (!type || !isPath(path) || !number || (used != "0" && used != "1"))
        return false;
    const bool isOutput = semantic.starts_with(kOutput);
    const bool isInput = semantic.starts_with(kInput);
    if (isOutput && *number < 0) // what the entry gives back is no parameter
        return true;
    semantic.remove_prefix(isOutput ? kOutput.size() : (isInput ? kInput.size() : 0));
    Whole& whole = wholeOf(path);
    TextNode* node = follow(whole.node, path.substr(whole.node.name.size()));
    if (!node || !node->parts.empty())
        return false;
    whole.isGlobal = *number < 0;
    node->type = type;
    node->semantic = semantic;
    node->place = place;
    node->isUniform = !isInput && !isOutput;
    node->isInput = node->isInput || isInput; // the lines of inputs come before those of outputs
    node->isOutput = isOutput;
    node->isUsed = used == "1";
    Variable& variable = *whole.variable;
    if (isOutput)
        variable.direction = node->isInput ? Direction::InOut : Direction::Out;
    variable.isUniform = variable.isUniform || node->isUniform;
    variable.isReferenced = variable.isReferenced || node->isUsed;
    if (node->isUsed)
        variable.partsUsed.insert(std::string(path.substr(variable.name.size())));
    return true;
}

bool TextReader::readDefault(std::string_view line) {
    const auto whole = fByName.find(trimmed(takeUntil(line, " =")));
    if (whole == fByName.end())
        return false;
    for (line = trimmed(line); !line.empty(); line = trimmed(line)) {
        const std::string_view text = takeUntil(line, " ");
        double value = 0.0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size())
            return false;
        whole->second->initial.push_back(value);
    }
    return true;
}

/// The type of a variable from those of its parts; null: they make none.
const Type* TextReader::typeOf(TextNode& node) {
    if (node.parts.empty())
        return node.type;
    Types& types = fOut.program->types;
    if (node.isIndexed) {
        for (TextNode& part : node.parts)
            if (!typeOf(part) || !haveSameShape(part.type, node.parts.front().type))
                return nullptr;
        return node.type = types.array(node.parts.front().type, static_cast<uint32_t>(node.parts.size()));
    }
    StructType* structure = types.makeStruct("");
    for (TextNode& part : node.parts) {
        if (!typeOf(part))
            return nullptr;
        structure->members.push_back({part.name, part.type, part.semantic, part.isUniform});
    }
    return node.type = types.structure(structure);
}

void TextReader::addLeaves(const TextNode& node, const std::string& path, Parameter& parameter) {
    // An array of numbers or samplers is one uniform: its elements' names have an index behind it.
    const Type* inner = node.type;
    const TextNode* first = &node;
    while (inner->isArray()) {
        inner = inner->element;
        first = first->parts.empty() ? first : &first->parts.front();
    }
    if (first->isUniform && !inner->isStruct() && first->parts.empty()) {
        const std::string& place = first->place;
        const bool isIndexed = first != &node;
        parameter.leaves.push_back({path, isIndexed ? place.substr(0, place.rfind('[')) : place, node.type,
                                    first->semantic, first->isUsed});
        return;
    }
    if (node.parts.empty())
        for (const bool isOutput : {false, true})
            if (isOutput ? node.isOutput : node.isInput)
                parameter.varyings.push_back(
                    {path, node.type, node.semantic, node.place, isOutput, node.isUsed});
    for (const TextNode& part : node.parts)
        addLeaves(part, path + (node.isIndexed ? "[" + part.name + "]" : "." + part.name), parameter);
}

bool TextReader::finish() {
    uint64_t numbers = 0;
    for (const std::unique_ptr<Whole>& whole : fWholes) {
        Variable& variable = *whole->variable;
        variable.type = typeOf(whole->node);
        if (!variable.type)
            return false;
        numbers += leavesOf(variable.type);
        if (numbers > kMostNumbersOfAText)
            return false;
        variable.semantic = whole->node.semantic;
        variable.isGlobal = whole->isGlobal;
        Parameter parameter{&variable, whole->isGlobal, {}, {}, {}};
        addLeaves(whole->node, variable.name, parameter);
        if (!whole->initial.empty() && whole->initial.size() != leavesOf(variable.type))
            return false;
        parameter.initial = whole->initial;
        fOut.parameters.push_back(std::move(parameter));
        fOut.program->globals.push_back(std::move(whole->variable));
    }
    return true;
}

/// The generic attributes that GLSL declares.
void findAttributes(CompiledProgram& out) {
    constexpr std::string_view kDeclaration = "attribute vec4 cg_attribute";
    for (size_t at = out.glsl.find(kDeclaration); at != std::string::npos;
         at = out.glsl.find(kDeclaration, at + 1)) {
        std::string_view rest = std::string_view(out.glsl).substr(at + kDeclaration.size());
        if (const std::optional<int> number = wholeNumber(takeUntil(rest, ";")); number && *number < 16)
            out.genericAttributes.push_back(*number);
    }
}

} // namespace

std::string writeCompiledText(const ProgramObject& program) {
    std::string defaults;
    for (const Parameter& parameter : program.compiled->parameters) {
        if (parameter.initial.empty())
            continue;
        defaults += joined({"//default ", parameter.variable->name, " ="});
        for (const double value : parameter.initial)
            defaults += " " + numberText(value);
        defaults += "\n";
    }
    const std::string glsl = program.glsl();
    const size_t listEnd = glsl.starts_with("#") ? 0 : glsl.find("\n#") + 1;
    return joined({"//profile ", nameOf(program.profile), "\n//program ", program.options.entry, "\n",
                   glsl.substr(0, listEnd), defaults, glsl.substr(listEnd)});
}

std::unique_ptr<CompiledProgram> readCompiledText(const std::string& text, Stage stage,
                                                  std::string& listing) {
    auto compiled = std::make_unique<CompiledProgram>();
    compiled->texts = std::make_unique<TextStore>();
    compiled->program = std::make_unique<Program>();
    std::string& glsl = compiled->glsl;
    TextReader reader(*compiled);
    constexpr std::string_view kProfile = "//profile ";
    std::string_view rest = text;
    int number = 1;
    const std::string_view first = takeUntil(rest, "\n");
    bool isRead = first.starts_with(kProfile);
    if (isRead) {
        const CGdomain domain = domainOf(profileNamed(std::string(first.substr(kProfile.size()))));
        isRead = domain == (stage == Stage::Vertex ? CG_VERTEX_DOMAIN : CG_FRAGMENT_DOMAIN);
    }
    while (isRead && rest.starts_with("//")) {
        std::string_view line = takeUntil(rest, "\n");
        ++number;
        if (line.starts_with("//var ")) {
            isRead = reader.readVariable(line.substr(6));
            glsl.append(line).append("\n");
        } else if (line.starts_with("//default "))
            isRead = reader.readDefault(line.substr(10));
    }
    isRead = isRead && reader.finish() && rest.starts_with("#version");
    if (!isRead) {
        listing = "program:" + std::to_string(number) + ": error: this is no text of a compiled program\n";
        return nullptr;
    }
    glsl += rest;
    findAttributes(*compiled);
    return compiled;
}

} // namespace orlocg
