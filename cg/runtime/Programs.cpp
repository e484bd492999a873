#include "runtime/Programs.h"

#include "objects/CompiledText.h"
#include "objects/Handles.h"
#include "objects/Names.h"
#include "objects/Values.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orlocg {

namespace {

CGprogram makeProgramHandle(ProgramObject& program) {
    program.handle = makeHandle<CGprogram>();
    global().programs.emplace(reinterpret_cast<uintptr_t>(program.handle), &program);
    return program.handle;
}

/// Compiles a program, also a copy, as what it includes may have changed, and gives its context to keep.
CGprogram adopt(std::unique_ptr<ProgramObject> program) {
    if (!program->compile()) {
        raise(CG_COMPILER_ERROR);
        return nullptr;
    }
    auto& programs = program->context->programs;
    programs.push_back(std::move(program));
    return makeProgramHandle(*programs.back());
}

std::unique_ptr<ProgramObject> copyOf(const ProgramObject& program) {
    auto copy = std::make_unique<ProgramObject>();
    copy->context = program.context;
    copy->profile = program.profile;
    copy->source = program.source;
    copy->isObject = program.isObject;
    copy->options = program.options;
    copy->arguments = program.arguments;
    return copy;
}

bool isProgramType(CGenum programType) {
    const bool isOne = programType == CG_SOURCE || programType == CG_OBJECT;
    if (!isOne)
        raise(CG_INVALID_ENUMERANT_ERROR);
    return isOne;
}

/// The programs that a program is made of; itself, where it isn't combined.
std::vector<ProgramObject*> stagesOf(ProgramObject& program) {
    std::vector<ProgramObject*> stages;
    for (const std::unique_ptr<ProgramObject>& stage : program.domains)
        stages.push_back(stage.get());
    if (stages.empty())
        stages.push_back(&program);
    return stages;
}

/// One of them; null and an error where there are fewer.
ProgramObject* stageAt(CGprogram handle, int index) {
    ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    const std::vector<ProgramObject*> stages = stagesOf(*program);
    if (index >= 0 && static_cast<size_t>(index) < stages.size())
        return stages[static_cast<size_t>(index)];
    raise(CG_INVALID_PARAMETER_ERROR);
    return nullptr;
}

/// Copies of them in one program; null and an error where two are of the same stage or can't be compiled.
std::unique_ptr<ProgramObject> combine(const std::vector<ProgramObject*>& programs) {
    auto combined = std::make_unique<ProgramObject>();
    combined->context = programs.front()->context;
    bool hasStage[2] = {};
    for (const ProgramObject* program : programs) {
        if (std::exchange(hasStage[program->options.stage == Stage::Vertex], true) ||
            program->context != combined->context) {
            raise(CG_INVALID_PARAMETER_ERROR);
            return nullptr;
        }
        auto copy = copyOf(*program);
        if (!copy->compile()) {
            raise(CG_COMPILER_ERROR);
            return nullptr;
        }
        copy->combined = combined.get();
        combined->domains.push_back(std::move(copy));
    }
    return combined;
}

void destroy(ProgramObject& program) {
    for (const std::unique_ptr<ProgramObject>& stage : program.domains)
        destroy(*stage);
    program.forgetParameters();
    program.extension.reset();
    global().programs.erase(reinterpret_cast<uintptr_t>(program.handle));
}

/// What cgGetProgramString gives of a program that isn't combined.
std::string programText(ProgramObject& program, CGenum name) {
    switch (name) {
    case CG_PROGRAM_SOURCE:
        return program.source;
    case CG_PROGRAM_ENTRY:
        return program.options.entry;
    case CG_PROGRAM_PROFILE:
        return nameOf(program.profile);
    default:
        break;
    }
    if (!orlocg_compileForUse(&program)) {
        raise(CG_COMPILER_ERROR);
        return {};
    }
    if (hasGlslText(program.profile))
        return writeCompiledText(program);
    // Whoever asks hands it on to an assembler: that must not be given GLSL.
    raise(CG_INVALID_PROFILE_ERROR);
    const bool isVertex = program.options.stage == Stage::Vertex;
    std::string refusal = joined({"# error: there is no assembly for ", nameOf(program.profile),
                                  "; load the program with cgGLLoadProgram, or compile it for ",
                                  isVertex ? "glslv" : "glslf", " to have its GLSL\n"});
    program.context->listing = refusal;
    program.context->hasListing = true;
    return refusal;
}

} // namespace

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

CGprogram createProgram(ContextObject& context, CGenum programType, std::string source,
                        const std::string& fileName, CGprofile profile, const char* entry,
                        const char** arguments) {
    if (!isCompiledFor(profile)) {
        raise(CG_UNKNOWN_PROFILE_ERROR);
        return nullptr;
    }
    auto program = std::make_unique<ProgramObject>();
    program->context = &context;
    program->profile = profile;
    program->source = std::move(source);
    program->isObject = programType == CG_OBJECT;
    program->options.stage = isVertexProfile(profile) ? Stage::Vertex : Stage::Fragment;
    program->options.entry = entry ? entry : "main";
    program->options.fileName = fileName;
    readArguments(arguments, program->options);
    for (; arguments && *arguments; ++arguments)
        program->arguments.emplace_back(*arguments);
    return adopt(std::move(program));
}

} // namespace orlocg

using namespace orlocg;

CGprogram cgCreateProgram(CGcontext handle, CGenum programType, const char* program, CGprofile profile,
                          const char* entry, const char** args) {
    ContextObject* context = find(handle);
    if (!context || !isProgramType(programType))
        return nullptr;
    if (!program) {
        raise(CG_INVALID_PARAMETER_ERROR);
        return nullptr;
    }
    return guarded<CGprogram>(nullptr, [&] {
        return createProgram(*context, programType, program, "program", profile, entry, args);
    });
}

CGprogram cgCreateProgramFromFile(CGcontext handle, CGenum programType, const char* fileName,
                                  CGprofile profile, const char* entry, const char** args) {
    ContextObject* context = find(handle);
    if (!context || !isProgramType(programType))
        return nullptr;
    return guarded<CGprogram>(nullptr, [&]() -> CGprogram {
        std::optional<std::string> source = readFile(fileName ? fileName : "");
        if (!source) {
            raise(CG_FILE_READ_ERROR);
            return nullptr;
        }
        return createProgram(*context, programType, std::move(*source), fileName, profile, entry, args);
    });
}

CGprogram cgCopyProgram(CGprogram handle) {
    const ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    if (!program->domains.empty())
        return cgCombinePrograms(1, &handle);
    return guarded<CGprogram>(nullptr, [&] { return adopt(copyOf(*program)); });
}

CGprogram cgCombinePrograms(int count, const CGprogram* handles) {
    return guarded<CGprogram>(nullptr, [&]() -> CGprogram {
        std::vector<ProgramObject*> programs;
        for (int i = 0; handles && i < count; ++i) {
            ProgramObject* program = find(handles[i]);
            if (!program)
                return nullptr;
            for (ProgramObject* stage : stagesOf(*program))
                programs.push_back(stage);
        }
        if (programs.empty()) {
            raise(CG_INVALID_PARAMETER_ERROR);
            return nullptr;
        }
        std::unique_ptr<ProgramObject> combined = combine(programs);
        if (!combined)
            return nullptr;
        for (const std::unique_ptr<ProgramObject>& stage : combined->domains)
            makeProgramHandle(*stage);
        auto& kept = combined->context->programs;
        kept.push_back(std::move(combined));
        return makeProgramHandle(*kept.back());
    });
}

CGprogram cgCombinePrograms2(CGprogram first, CGprogram second) {
    const std::array programs = {first, second};
    return cgCombinePrograms(2, programs.data());
}

CGprogram cgCombinePrograms3(CGprogram first, CGprogram second, CGprogram third) {
    const std::array programs = {first, second, third};
    return cgCombinePrograms(3, programs.data());
}

CGprogram cgCombinePrograms4(CGprogram first, CGprogram second, CGprogram third, CGprogram fourth) {
    const std::array programs = {first, second, third, fourth};
    return cgCombinePrograms(4, programs.data());
}

CGprogram cgCombinePrograms5(CGprogram first, CGprogram second, CGprogram third, CGprogram fourth,
                             CGprogram fifth) {
    const std::array programs = {first, second, third, fourth, fifth};
    return cgCombinePrograms(5, programs.data());
}

int cgGetNumProgramDomains(CGprogram handle) {
    ProgramObject* program = find(handle);
    return program ? static_cast<int>(stagesOf(*program).size()) : 0;
}

CGprofile cgGetProgramDomainProfile(CGprogram handle, int index) {
    const ProgramObject* stage = stageAt(handle, index);
    return stage ? stage->profile : CG_PROFILE_UNKNOWN;
}

CGprogram cgGetProgramDomainProgram(CGprogram handle, int index) {
    const ProgramObject* stage = stageAt(handle, index);
    return stage ? stage->handle : nullptr;
}

void cgDestroyProgram(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program)
        return;
    if (program->combined) // goes with the whole
        return raise(CG_INVALID_PROGRAM_HANDLE_ERROR);
    destroy(*program);
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
    return at == all.end() || at + 1 == all.end() ? nullptr : (*(at + 1))->handle;
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
    if (!program)
        return;
    for (ProgramObject* stage : stagesOf(*program))
        if (!guarded(false, [&] { return stage->compile(); }))
            raise(CG_COMPILER_ERROR);
}

CGbool cgIsProgramCompiled(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program)
        return CG_FALSE;
    const std::vector<ProgramObject*> stages = stagesOf(*program);
    return std::all_of(stages.begin(), stages.end(),
                       [](const ProgramObject* stage) { return stage->compiled && !stage->isStale; });
}

void cgUpdateProgramParameters(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program)
        return;
    for (ProgramObject* stage : stagesOf(*program))
        guarded([&] { orlocg_sendWaiting(stage); });
}

const char* cgGetProgramString(CGprogram handle, CGenum name) {
    ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    if (name != CG_PROGRAM_SOURCE && name != CG_PROGRAM_ENTRY && name != CG_PROGRAM_PROFILE &&
        name != CG_COMPILED_PROGRAM) {
        raise(CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    if (name == CG_COMPILED_PROGRAM && program->domains.empty() && !program->compiled)
        return nullptr;
    return guarded<const char*>(nullptr, [&] {
        std::string& text = program->texts[name];
        text.clear();
        for (ProgramObject* stage : stagesOf(*program))
            text += programText(*stage, name);
        return text.c_str();
    });
}

CGprofile cgGetProgramProfile(CGprogram handle) {
    const ProgramObject* program = find(handle);
    return program ? program->profile : CG_PROFILE_UNKNOWN;
}

void cgSetProgramProfile(CGprogram handle, CGprofile profile) {
    ProgramObject* program = find(handle);
    if (!program)
        return;
    if (!isCompiledFor(profile) || !program->domains.empty())
        return raise(isCompiledFor(profile) ? CG_INVALID_PROGRAM_HANDLE_ERROR : CG_UNKNOWN_PROFILE_ERROR);
    program->profile = profile;
    program->options.stage = isVertexProfile(profile) ? Stage::Vertex : Stage::Fragment;
    program->isStale = true;
    if (program->context->autoCompile == CG_COMPILE_IMMEDIATE)
        cgCompileProgram(handle);
}

const char* const* cgGetProgramOptions(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program || program->arguments.empty())
        return nullptr;
    return guarded<const char* const*>(nullptr, [&] {
        program->argumentTexts.clear();
        for (const std::string& argument : program->arguments)
            program->argumentTexts.push_back(argument.c_str());
        program->argumentTexts.push_back(nullptr);
        return program->argumentTexts.data();
    });
}

CGenum cgGetProgramInput(CGprogram handle) {
    const ProgramObject* program = find(handle);
    if (!program || !program->domains.empty())
        return CG_UNKNOWN;
    return program->options.stage == Stage::Vertex ? CG_VERTEX : CG_FRAGMENT;
}

CGenum cgGetProgramOutput(CGprogram handle) {
    return cgGetProgramInput(handle);
}
