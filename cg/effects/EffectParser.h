#pragma once

#include "effects/Effect.h"
#include "preprocess/Preprocessor.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orlocg {

/// Reads an effect file's tokens; functions are passed over. Throws CompileError, also for what
/// there is in other effect files and isn't here, by its name.
class EffectParser {
public:
    EffectParser(std::vector<Token> tokens, Effect& out, Diagnostics& diagnostics);

    void parse();

private:
    // Tokens.
    const Token& peek(size_t ahead = 0) const;
    const Token& take();
    bool takeIf(std::string_view text);
    void expect(std::string_view text, const char* where);
    std::string takeName(const char* what);
    bool peeksWord(std::string_view word) const;
    void skipBlock(std::string_view open, std::string_view close);
    void deeper(const Location& at);
    void countPart();

    // The file.
    void declaration();
    std::string structure();
    bool members(std::vector<EffectVariable>& out);
    void typeDefinition();
    bool qualifiers();
    void technique();
    EffectPass pass();
    std::vector<EffectState> states();
    EffectState state();
    std::vector<EffectVariable> annotationsIfAny();
    void variables(const EffectVariable& first);
    void variable(EffectVariable& made);
    std::string semanticIfAny();

    // Values.
    EffectValue value();
    EffectValue compiled();
    EffectValue list();
    EffectValue binary(int level);
    EffectValue unary();
    EffectValue postfix();
    EffectValue primary();
    void arguments(std::vector<EffectValue>& out, const char* close);

    std::vector<Token> fTokens;
    size_t fNext = 0;
    int fDepth = 0;
    int fParts = 0;
    Effect& fOut;
    Diagnostics& fDiagnostics;
};

/// Null where the file has an error; `listing` holds errors and warnings.
std::unique_ptr<Effect> readEffect(std::string_view source, const std::string& fileName,
                                   const PreprocessOptions& options, std::string& listing);

} // namespace orlocg
