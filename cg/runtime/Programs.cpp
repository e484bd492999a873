#include "objects/Handles.h"
#include "objects/Names.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

namespace orlocg {

namespace {

void readArguments(const char** arguments, CompileOptions& options) {
    for (; arguments && *arguments; ++arguments) {
        std::string_view argument = *arguments;
        if (argument == "-posinv") {
            options.isPositionInvariant = true;
            continue;
        }
        if (!argument.starts_with("-I") && !argument.starts_with("-D"))
            continue;
        auto& list = argument[1] == 'I' ? options.preprocess.includeFolders : options.preprocess.defines;
        argument.remove_prefix(2);
        if (argument.empty() && arguments[1])
            argument = *++arguments;
        argument.remove_prefix(std::min(argument.find_first_not_of(' '), argument.size())); // "-I folder"
        list.emplace_back(argument);
    }
}

/// Compiles a program, also a copy, as what it includes may have changed, and gives its context to keep.
CGprogram adopt(std::unique_ptr<ProgramObject> program) {
    if (!program->compile()) {
        raise(CG_COMPILER_ERROR);
        return nullptr;
    }
    program->handle = makeHandle<CGprogram>();
    global().programs.emplace(reinterpret_cast<uintptr_t>(program->handle), program.get());
    auto& programs = program->context->programs;
    programs.push_back(std::move(program));
    return programs.back()->handle;
}

CGprogram create(ContextObject& context, std::string source, const std::string& fileName, CGprofile profile,
                 const char* entry, const char** arguments) {
    if (!isKnown(profile)) {
        raise(CG_UNKNOWN_PROFILE_ERROR);
        return nullptr;
    }
    auto program = std::make_unique<ProgramObject>();
    program->context = &context;
    program->profile = profile;
    program->source = std::move(source);
    program->options.stage = isVertexProfile(profile) ? Stage::Vertex : Stage::Fragment;
    program->options.entry = entry ? entry : "main";
    program->options.fileName = fileName;
    readArguments(arguments, program->options);
    return adopt(std::move(program));
}

} // namespace

} // namespace orlocg

using namespace orlocg;

CGcontext cgCreateContext(void) {
    return guarded<CGcontext>(nullptr, [] {
        auto context = std::make_unique<ContextObject>();
        context->handle = makeHandle<CGcontext>();
        global().contexts.emplace(reinterpret_cast<uintptr_t>(context->handle), context.get());
        global().owned.push_back(std::move(context));
        return global().owned.back()->handle;
    });
}

void cgDestroyContext(CGcontext handle) {
    ContextObject* context = find(handle);
    if (!context)
        return;
    while (!context->programs.empty())
        cgDestroyProgram(context->programs.back()->handle);
    global().contexts.erase(reinterpret_cast<uintptr_t>(handle));
    std::erase_if(global().owned, [&](const auto& each) { return each.get() == context; });
}

CGbool cgIsContext(CGcontext context) {
    return findIn(global().contexts, context) != nullptr;
}

const char* cgGetLastListing(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context && context->hasListing ? context->listing.c_str() : nullptr;
}

CGprogram cgCreateProgram(CGcontext handle, CGenum programType, const char* program, CGprofile profile,
                          const char* entry, const char** args) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    if (programType != CG_SOURCE || !program) { // CG_OBJECT: compiled by another compiler, for other drivers
        raise(programType == CG_SOURCE ? CG_INVALID_PARAMETER_ERROR : CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    return guarded<CGprogram>(nullptr,
                              [&] { return create(*context, program, "program", profile, entry, args); });
}

CGprogram cgCreateProgramFromFile(CGcontext handle, CGenum programType, const char* fileName,
                                  CGprofile profile, const char* entry, const char** args) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    if (programType != CG_SOURCE) {
        raise(CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    return guarded<CGprogram>(nullptr, [&]() -> CGprogram {
        std::ifstream file(fileName ? fileName : "", std::ios::binary);
        std::string source(std::istreambuf_iterator<char>(file), {});
        if (!file.is_open() || file.bad()) {
            raise(CG_FILE_READ_ERROR);
            return nullptr;
        }
        return create(*context, std::move(source), fileName, profile, entry, args);
    });
}

CGprogram cgCopyProgram(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    return guarded<CGprogram>(nullptr, [&]() -> CGprogram {
        auto copy = std::make_unique<ProgramObject>();
        copy->context = program->context;
        copy->profile = program->profile;
        copy->source = program->source;
        copy->options = program->options;
        return adopt(std::move(copy));
    });
}

void cgDestroyProgram(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program)
        return;
    program->forgetParameters();
    global().programs.erase(reinterpret_cast<uintptr_t>(handle));
    std::erase_if(program->context->programs, [&](const auto& each) { return each.get() == program; });
}

CGprogram cgGetFirstProgram(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context && !context->programs.empty() ? context->programs.front()->handle : nullptr;
}

CGprogram cgGetNextProgram(CGprogram handle) {
    const ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    const auto& all = program->context->programs;
    const auto at =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.get() == program; });
    return at + 1 == all.end() ? nullptr : (*(at + 1))->handle;
}

CGcontext cgGetProgramContext(CGprogram handle) {
    const ProgramObject* program = find(handle);
    return program ? program->context->handle : nullptr;
}

CGbool cgIsProgram(CGprogram program) {
    return findIn(global().programs, program) != nullptr;
}

void cgCompileProgram(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (program && !guarded(false, [&] { return program->compile(); }))
        raise(CG_COMPILER_ERROR);
}

CGbool cgIsProgramCompiled(CGprogram handle) {
    const ProgramObject* program = find(handle);
    return program && program->compiled;
}

const char* cgGetProgramString(CGprogram handle, CGenum name) {
    const ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    switch (name) {
    case CG_PROGRAM_SOURCE:
        return program->source.c_str();
    case CG_PROGRAM_ENTRY:
        return program->options.entry.c_str();
    case CG_PROGRAM_PROFILE:
        return nameOf(program->profile);
    case CG_COMPILED_PROGRAM:
        return program->compiled ? program->compiled->glsl.c_str() : nullptr;
    default:
        raise(CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
}

CGprofile cgGetProgramProfile(CGprogram handle) {
    const ProgramObject* program = find(handle);
    return program ? program->profile : CG_PROFILE_UNKNOWN;
}
