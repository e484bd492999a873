#include "objects/CompiledText.h"

#include "objects/GlslNames.h"
#include "objects/Names.h"

#include <algorithm>
#include <array>
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

// Writing.

void appendNumbers(const ParameterObject& p, std::string& out) {
    for (const double value : p.initial)
        out += " " + numberText(value);
    for (const std::unique_ptr<ParameterObject>& part : p.parts)
        appendNumbers(*part, out);
}

bool hasInitial(const ParameterObject& p) {
    return p.isLeaf() ? !p.initial.empty() : hasInitial(*p.parts.front());
}

class TextWriter {
public:
    explicit TextWriter(const ProgramObject& program) : fNames(glslNamesOf(program)) {}

    void add(const ParameterObject& p, int place) {
        const Type* inner = p.type;
        std::string name = p.name;
        for (; inner->isArray(); inner = inner->element)
            name += "[" + std::to_string(inner->length) + "]";
        if (inner->isStruct()) {
            for (const std::unique_ptr<ParameterObject>& part : p.parts)
                add(*part, place);
            return;
        }
        const std::string head = "//var " + orlocg::nameOf(inner) + " " + name + " : ";
        const std::string tail = " : " + std::to_string(place) + " : " + (p.isReferenced() ? "1\n" : "0\n");
        const Direction direction = p.direction();
        if (p.isUniform) {
            const auto glsl = fNames.find(p.name);
            fText += head + p.semantic + " : " + (glsl == fNames.end() ? "" : glsl->second) + tail;
            if (hasInitial(p)) {
                fText += "//default " + p.name + " =";
                appendNumbers(p, fText);
                fText += "\n";
            }
            return;
        }
        const std::string resource = p.resource == CG_UNDEFINED ? "" : nameOf(p.resource);
        if (direction != Direction::Out)
            fText += joined({head, kInput, p.semantic, " : ", resource, tail});
        if (direction != Direction::In)
            fText += joined({head, kOutput, p.semantic, " : ", resource, tail});
    }

    std::string take() { return std::move(fText); }

private:
    GlslNames fNames;
    std::string fText;
};

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

std::optional<int> numberOf(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// A variable as its lines tell it, by its members and elements.
struct TextNode {
    std::string name; ///< of a member; of an element its index
    std::string semantic;
    std::string glsl;
    const Type* type = nullptr; ///< of a leaf, an array of them included
    std::vector<double> initial;
    std::vector<TextNode> parts;
    bool isIndexed = false; ///< the parts are elements
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
    };

    Whole* wholeOf(std::string_view path);
    static TextNode* follow(TextNode& from, std::string_view path, bool makesIt);
    const Type* typeOf(TextNode& node);
    static void addLeaves(const TextNode& node, const std::string& path, Parameter& parameter);

    CompiledProgram& fOut;
    std::vector<std::unique_ptr<Whole>> fWholes;
    std::map<std::string, Whole*, std::less<>> fByName;
};

TextReader::Whole* TextReader::wholeOf(std::string_view path) {
    const std::string name(path.substr(0, path.find_first_of(".[")));
    Whole*& whole = fByName[name];
    if (!whole) {
        fWholes.push_back(std::make_unique<Whole>());
        whole = fWholes.back().get();
        whole->variable = std::make_unique<Variable>();
        whole->variable->name = whole->node.name = name;
        whole->variable->isParameter = true;
    }
    return whole;
}

/// The node at "[2].color" or ".color" below one; null: there is none, or the path isn't one.
TextNode* TextReader::follow(TextNode& from, std::string_view path, bool makesIt) {
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
            place = static_cast<size_t>(numberOf(name).value_or(-1));
        else
            place = static_cast<size_t>(
                std::find_if(parts.begin(), parts.end(), [&](const TextNode& p) { return p.name == name; }) -
                parts.begin());
        // What is new comes behind what is there.
        if (place == parts.size()) {
            if (!makesIt || at->type || (!isIndex && place >= kMostMembersOfAText))
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

bool TextReader::readVariable(std::string_view line) {
    const std::string_view type = takeUntil(line, " ");
    std::string_view path = trimmed(takeUntil(line, " :"));
    std::string_view semantic = trimmed(takeUntil(line, " :"));
    const std::string_view resource = trimmed(takeUntil(line, " :"));
    const std::optional<int> place = numberOf(trimmed(takeUntil(line, " :")));
    const std::string_view used = trimmed(line);
    Types& types = fOut.program->types;
    const Type* full = types.named(type);
    if (!full || !(full->isNumeric() || full->isSampler()) || path.empty() || !place ||
        (used != "0" && used != "1"))
        return false;
    // "bones[3]", "grid[2][4]": lengths stand behind the name.
    while (path.back() == ']') {
        const size_t start = path.rfind('[');
        const std::optional<int> length = start == std::string_view::npos
                                              ? std::nullopt
                                              : numberOf(path.substr(start + 1, path.size() - start - 2));
        if (!length || *length < 1 || leavesOf(full) * static_cast<uint64_t>(*length) > kMostNumbersOfAText)
            return false;
        full = types.array(full, static_cast<uint32_t>(*length));
        path = path.substr(0, start);
        if (path.empty())
            return false;
    }
    Whole* whole = wholeOf(path);
    TextNode* node = follow(whole->node, path.substr(whole->node.name.size()), true);
    if (!node || whole->node.name.empty() || !node->parts.empty())
        return false;
    const bool isOutput = semantic.starts_with(kOutput);
    const bool isVarying = isOutput || semantic.starts_with(kInput);
    if (isVarying)
        semantic.remove_prefix((isOutput ? kOutput : kInput).size());
    Variable& variable = *whole->variable;
    if (isOutput)
        variable.direction = node->type ? Direction::InOut : Direction::Out; // the input came before
    variable.isUniform = !isVarying;
    variable.isReferenced = variable.isReferenced || used == "1";
    whole->isGlobal = *place < 0;
    node->type = full;
    node->semantic = semantic;
    node->glsl = isVarying ? std::string_view() : resource;
    return true;
}

bool TextReader::readDefault(std::string_view line) {
    const std::string_view path = trimmed(takeUntil(line, " ="));
    const auto whole = fByName.find(path.substr(0, path.find_first_of(".[")));
    TextNode* node = whole == fByName.end()
                         ? nullptr
                         : follow(whole->second->node, path.substr(whole->first.size()), false);
    if (!node || !node->type)
        return false;
    for (line = trimmed(line); !line.empty(); line = trimmed(line)) {
        const std::string_view text = takeUntil(line, " ");
        double value = 0.0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size())
            return false;
        node->initial.push_back(value);
    }
    return node->initial.size() == leavesOf(node->type);
}

/// The type of a variable from those of its parts; null: they make none.
const Type* TextReader::typeOf(TextNode& node) {
    if (node.parts.empty())
        return node.type;
    Types& types = fOut.program->types;
    if (node.isIndexed) {
        // Elements are alike: the first one stands for all.
        const Type* element = typeOf(node.parts.front());
        return node.type = element ? types.array(element, static_cast<uint32_t>(node.parts.size())) : nullptr;
    }
    StructType* structure = types.makeStruct("");
    for (TextNode& part : node.parts) {
        const Type* type = typeOf(part);
        if (!type)
            return nullptr;
        structure->members.push_back({part.name, type, part.semantic});
    }
    return node.type = types.structure(structure);
}

void TextReader::addLeaves(const TextNode& node, const std::string& path, Parameter& parameter) {
    if (node.parts.empty()) {
        parameter.leaves.push_back({path, node.glsl, node.type});
        parameter.initial.insert(parameter.initial.end(), node.initial.begin(), node.initial.end());
    }
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
        Parameter parameter{&variable, whole->isGlobal, {}, {}};
        if (variable.isUniform && !variable.semantic.starts_with("state."))
            addLeaves(whole->node, variable.name, parameter);
        if (parameter.initial.size() != leavesOf(variable.type))
            parameter.initial.clear();
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
        if (const std::optional<int> number = numberOf(takeUntil(rest, ";")); number && *number < 16)
            out.genericAttributes.push_back(*number);
    }
}

} // namespace

std::string writeCompiledText(const ProgramObject& program) {
    TextWriter writer(program);
    for (const bool isGlobal : {false, true})
        for (const std::unique_ptr<ParameterObject>& p : program.parameters[isGlobal])
            writer.add(*p, isGlobal ? -1 : static_cast<int>(p->place));
    return joined({"//profile ", nameOf(program.profile), "\n//program ", program.options.entry, "\n",
                   writer.take(), program.glsl()});
}

std::unique_ptr<CompiledProgram> readCompiledText(const std::string& text, Stage stage,
                                                  std::string& listing) {
    auto compiled = std::make_unique<CompiledProgram>();
    compiled->texts = std::make_unique<TextStore>();
    compiled->program = std::make_unique<Program>();
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
        if (line.starts_with("//var "))
            isRead = reader.readVariable(line.substr(6));
        else if (line.starts_with("//default "))
            isRead = reader.readDefault(line.substr(10));
    }
    isRead = isRead && reader.finish() && rest.starts_with("#version");
    if (!isRead) {
        listing = "program:" + std::to_string(number) + ": error: this is no text of a compiled program\n";
        return nullptr;
    }
    compiled->glsl = rest;
    findAttributes(*compiled);
    return compiled;
}

} // namespace orlocg
