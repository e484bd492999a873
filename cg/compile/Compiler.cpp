#include "compile/Compiler.h"

#include "check/Checker.h"
#include "glsl/GlslWriter.h"
#include "parse/Parser.h"

#include <new>

namespace orlocg {

std::unique_ptr<CompiledProgram> compile(std::string_view source, const CompileOptions& options,
                                         std::string& listing) {
    Diagnostics diagnostics;
    auto compiled = std::make_unique<CompiledProgram>();
    compiled->texts = std::make_unique<TextStore>();
    compiled->program = std::make_unique<Program>();
    try {
        const std::string_view text = compiled->texts->keep(std::string(source));
        Preprocessor preprocessor(options.preprocess, *compiled->texts, diagnostics);
        Parser(preprocessor.run(text, options.fileName), *compiled->program, diagnostics).parse();
        Function& entry = Checker(*compiled->program, options.stage, diagnostics).check(options.entry);
        GlslWriter(options, diagnostics, *compiled).write(entry);
    } catch (const CompileError&) {
        compiled.reset();
    } catch (const std::bad_alloc&) {
        compiled.reset();
        listing = options.fileName + ": there is not enough memory to compile it\n";
        return nullptr;
    }
    listing = diagnostics.listing();
    return compiled;
}

} // namespace orlocg
