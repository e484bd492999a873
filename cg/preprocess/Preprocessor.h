#pragma once

#include "preprocess/Lexer.h"

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace orlocg {

struct PreprocessOptions {
    std::vector<std::string> includeFolders;
    std::vector<std::string> defines; ///< "NAME", or "NAME=VALUE"

    /// The text of a file, or nothing. From the disk unless told.
    std::function<std::optional<std::string>(const std::string& path)> read;
};

/// Carries out the directives of a source and expands its macros.
///
/// Bounds on nesting, on the length of what comes out and on the size of files see to it that no source keeps
/// it busy for long. Throws CompileError.
class Preprocessor {
public:
    Preprocessor(const PreprocessOptions& options, TextStore& store, Diagnostics& diagnostics);

    /// The tokens of a source; `name` stands in messages, and what it includes is looked for beside it.
    std::vector<Token> run(std::string_view source, const std::string& name);

private:
    struct Macro {
        bool takesArguments = false;
        std::vector<std::string_view> parameters;
        std::vector<Token> body;
        bool isBusy = false; ///< being expanded
    };

    /// Tokens that come before those of the file.
    struct Expansion {
        std::vector<Token> tokens;
        size_t next = 0;
        Macro* macro = nullptr;
    };

    struct Condition {
        Location at;
        bool isActive; ///< this branch is taken
        bool wasTaken; ///< one of its branches was
        bool parentActive;
        bool hadElse;
    };

    using Arguments = std::vector<std::vector<Token>>;

    void define(const std::string& definition);
    void runFile(std::string_view text, const std::string& name);
    void directive(Lexer& lexer, const Token& hash, const std::string& path);
    void defineMacro(const std::vector<Token>& line, const Location& at);
    void include(std::vector<Token> line, const Location& at, const std::string& from);
    void setLine(Lexer& lexer, std::vector<Token> line, const Location& at);
    bool conditional(std::string_view name, const std::vector<Token>& line, const Location& at);
    bool evaluate(const std::vector<Token>& line, const Location& at);
    bool isActive() const { return fConditions.empty() || fConditions.back().isActive; }
    static std::vector<Token> takeLine(Lexer& lexer);

    Token nextRaw(Lexer* lexer);
    void push(std::vector<Token> tokens, Macro* macro, const Location& at);
    std::vector<Token> expandAll(std::vector<Token> tokens);
    bool expand(Lexer* lexer, Token& name);
    Arguments takeArguments(Lexer* lexer, const Token& name, const Macro& macro);
    std::vector<Token> substitute(const Macro& macro, const Token& name, const Arguments& arguments);
    Token paste(const Token& left, const Token& right);
    Token stringOf(const std::vector<Token>& tokens, const Location& at);
    void emit(std::vector<Token>& out, const Token& token);

    const PreprocessOptions& fOptions;
    TextStore& fStore;
    Diagnostics& fDiagnostics;
    std::unordered_map<std::string_view, Macro> fMacros;
    std::vector<Expansion> fExpansions;
    size_t fExpansionFloor = 0; ///< what an argument's own expansion may not read past
    std::vector<Condition> fConditions;
    std::vector<Token> fOut;
    size_t fWork = 0; ///< tokens handled
    int fIncludeDepth = 0;
    int fExpandDepth = 0;
};

} // namespace orlocg
