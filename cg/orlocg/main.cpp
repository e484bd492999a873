// orlocg: compiles a Cg program and prints the GLSL.

#include "compile/Compiler.h"
#include "effects/EffectParser.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <set>

namespace {

using namespace orlocg;

enum CompilerExit {
    kDone = 0,
    kUsage = 1,
    kDoesNotCompile = 2,
    kNoInput = 3,
    kNotWritten = 4,
    kOurFault = 70
};

/// A stream that the caller has closed leaves its number to the next file, which listings would be written
/// to.
void occupyClosedStreams() {
    for (const int stream : {0, 1, 2}) {
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", stream == 0 ? O_WRONLY : O_RDONLY) != stream)
            std::_Exit(kOurFault);
    }
}

/// Names of files, and what a program holds, may be meant for the terminal.
void tell(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char c) { return (c < 0x20 && c != '\n' && c != '\t') || c == 0x7F; }, ' ');
    std::fputs(text.c_str(), stderr);
}

std::optional<std::string> readAll(const std::string& path) {
    if (path == "-") {
        std::string text(std::istreambuf_iterator<char>(std::cin), {});
        return std::ferror(stdin) == 0 ? std::optional(std::move(text)) : std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    return file.good() || file.eof() ? std::optional(std::move(text)) : std::nullopt;
}

const char* nameOf(Direction direction) {
    return direction == Direction::In ? "in" : (direction == Direction::Out ? "out" : "inout");
}

/// A line for each parameter, and for each part of it that has a value of its own: a uniform's name in GLSL,
/// or where what varies comes from or goes to.
void printParameters(const CompiledProgram& program) {
    const auto print = [](const std::string& name, const Type* type, const char* kind, const char* way,
                          const std::string& semantic, const std::string& place) {
        std::printf("%-32s %-16s %-8s %-6s %-12s %s\n", name.c_str(), nameOf(type).c_str(), kind, way,
                    semantic.empty() ? "-" : semantic.c_str(), place.empty() ? "-" : place.c_str());
    };
    std::printf("%-32s %-16s %-8s %-6s %-12s %s\n", "parameter", "type", "kind", "way", "semantic", "place");
    for (const Parameter& parameter : program.parameters) {
        const Variable& variable = *parameter.variable;
        const char* way = nameOf(variable.direction);
        const char* kind = parameter.varyings.empty() ? "uniform"
                           : parameter.leaves.empty() ? "varying"
                                                      : "mixed";
        std::string place;
        for (const Leaf& leaf : parameter.leaves)
            place = leaf.path == variable.name ? leaf.glsl : place;
        for (const VaryingLeaf& leaf : parameter.varyings)
            place = leaf.path == variable.name ? leaf.resource : place;
        print(variable.name, variable.type, kind, way, variable.semantic, place);
        for (const Leaf& leaf : parameter.leaves)
            if (leaf.path != variable.name)
                print("  " + leaf.path, leaf.type, "uniform", "in", leaf.semantic, leaf.glsl);
        for (const VaryingLeaf& leaf : parameter.varyings)
            if (leaf.path != variable.name)
                print("  " + leaf.path, leaf.type, "varying", leaf.isOutput ? "out" : "in", leaf.semantic,
                      leaf.resource);
    }
}

/// What stage a state's program is for; nothing: it is none that is compiled.
std::optional<Stage> stageOf(std::string state) {
    std::transform(state.begin(), state.end(), state.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (state == "vertexshader" || state == "vertexprogram")
        return Stage::Vertex;
    return state == "pixelshader" || state == "fragmentprogram" ? std::optional(Stage::Fragment)
                                                                : std::nullopt;
}

/// The program that a state is given, as it stands or by the name of a variable; null: none.
const EffectValue* programOf(const Effect& effect, const EffectValue& value) {
    if (value.kind == EffectValue::Kind::Compile)
        return &value;
    const auto named = std::find_if(effect.parameters.begin(), effect.parameters.end(),
                                    [&](const auto& each) { return each.name == value.text; });
    const bool isOne = named != effect.parameters.end() && named->value.kind == EffectValue::Kind::Compile;
    return isOne ? &named->value : nullptr;
}

/// Compiles the programs of an effect's passes, each once, and prints a line for each pass.
int checkEffect(const std::string& source, CompileOptions options) {
    std::string listing;
    const std::unique_ptr<Effect> effect = readEffect(source, options.fileName, options.preprocess, listing);
    tell(listing);
    if (!effect)
        return kDoesNotCompile;
    bool isRight = true;
    std::set<std::pair<Stage, std::string>> compiled;
    for (const EffectTechnique& technique : effect->techniques)
        for (const EffectPass& pass : technique.passes) {
            std::printf("technique %s, pass %s:", technique.name.c_str(), pass.name.c_str());
            for (const EffectState& state : pass.states) {
                const std::optional<Stage> stage = stageOf(state.name);
                const EffectValue* program = stage ? programOf(*effect, state.value) : nullptr;
                if (!program)
                    continue;
                std::printf(" %s %s", state.name.c_str(), program->text.c_str());
                options.stage = *stage;
                options.entry = program->text;
                if (!compiled.insert({*stage, options.entry}).second)
                    continue;
                const bool compiles = compile(source, options, listing) != nullptr;
                tell(listing);
                isRight = isRight && compiles;
            }
            std::printf("\n");
        }
    return isRight ? kDone : kDoesNotCompile;
}

int run(int argc, char** argv) {
    CompileOptions options;
    std::string file;
    std::string stage = "fragment";
    std::string output;
    bool parameters = false;
    bool isEffect = false;
    CLI::App app("Compiles a Cg program and prints GLSL that OpenGL's compatibility contexts take.",
                 "orlocg");
    app.add_option("file", file, "The program; - for standard input")->required()->type_name("FILE");
    app.add_option("--entry", options.entry, "The function to begin with, main unless given")
        ->type_name("NAME");
    app.add_option("--stage", stage, "What it is run for, fragments unless given")
        ->check(CLI::IsMember({"vertex", "fragment"}).description(""))
        ->type_name("vertex|fragment");
    app.add_option("-I", options.preprocess.includeFolders, "Look for included files here")
        ->type_name("DIR")
        ->allow_extra_args(false);
    app.add_option("-D", options.preprocess.defines, "Define a macro")
        ->type_name("NAME[=VALUE]")
        ->allow_extra_args(false);
    app.add_option("-o,--output", output, "Write the GLSL here")->type_name("FILE");
    app.add_flag("--params", parameters, "Print a table of the parameters instead");
    app.add_flag("--effect", isEffect,
                 "Compile the programs of an effect's passes instead, and list the passes");
    app.add_flag("--posinv", options.isPositionInvariant,
                 "Let the position be that of OpenGL's own functions");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kUsage;
    }
    const std::optional<std::string> source = readAll(file);
    if (!source) {
        tell("orlocg: " + file + ": it can't be read; check the name\n");
        return kNoInput;
    }
    options.stage = stage == "vertex" ? Stage::Vertex : Stage::Fragment;
    options.fileName = file;
    if (isEffect)
        return checkEffect(*source, options);
    std::string listing;
    const std::unique_ptr<CompiledProgram> program = compile(*source, options, listing);
    tell(listing);
    if (!program)
        return kDoesNotCompile;
    if (parameters || output.empty()) {
        if (parameters)
            printParameters(*program);
        else
            std::fputs(program->glsl.c_str(), stdout);
        if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
            return kDone;
        std::fputs("orlocg: standard output took no more; check where it leads and the space left\n", stderr);
        return kNotWritten;
    }
    std::ofstream written(output, std::ios::binary);
    written << program->glsl;
    written.close();
    if (!written) {
        tell("orlocg: " + output + ": it could not be written\n");
        return kNotWritten;
    }
    return kDone;
}

} // namespace

int main(int argc, char** argv) {
    occupyClosedStreams();
    std::signal(SIGPIPE, SIG_IGN); // the write fails instead
    try {
        return run(argc, argv);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "orlocg: an unexpected fault: %s; please report it with the program\n",
                     fault.what());
        return kOurFault;
    }
}
