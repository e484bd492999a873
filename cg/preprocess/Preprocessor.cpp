#include "preprocess/Preprocessor.h"

#include "preprocess/Condition.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace orlocg {

namespace {

constexpr size_t kMostTokens = 1'000'000;
constexpr size_t kLargestFile = size_t{16} << 20U;
constexpr int kDeepestInclude = 64;
constexpr int kDeepestExpansion = 128;
constexpr size_t kMostBusyMacros = 4096;

std::optional<std::string> readFromDisk(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error || size > kLargestFile)
        return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return file ? std::optional(text.str()) : std::nullopt;
}

std::string folderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

std::string spelled(const std::vector<Token>& tokens) {
    std::string text;
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (i > 0 && tokens[i].spaceBefore)
            text += ' ';
        text += tokens[i].text;
    }
    return text;
}

} // namespace

Preprocessor::Preprocessor(const PreprocessOptions& options, TextStore& store, Diagnostics& diagnostics)
    : fOptions(options), fStore(store), fDiagnostics(diagnostics) {}

std::vector<Token> Preprocessor::run(std::string_view source, const std::string& name) {
    for (const std::string& definition : fOptions.defines)
        define(definition);
    runFile(source, name);
    return std::move(fOut);
}

void Preprocessor::define(const std::string& definition) {
    const size_t equals = definition.find('=');
    const std::string value = equals == std::string::npos ? "1" : definition.substr(equals + 1);
    const std::string_view text = fStore.keep(definition.substr(0, equals) + " " + value);
    Lexer lexer(text, fDiagnostics.addFile("-D " + definition), fStore, fDiagnostics);
    defineMacro(takeLine(lexer), {});
}

void Preprocessor::runFile(std::string_view text, const std::string& name) {
    if (text.size() > kLargestFile)
        fDiagnostics.fail({fDiagnostics.addFile(name), 1, 1}, "the source is larger than 16 MB");
    Lexer lexer(text, fDiagnostics.addFile(name), fStore, fDiagnostics);
    const size_t conditionsBefore = fConditions.size();
    for (;;) {
        Token token = nextRaw(&lexer);
        if (token.kind == TokenKind::End)
            break;
        if (token.startsLine && token.is("#")) {
            directive(lexer, token, name);
            continue;
        }
        if (!isActive())
            continue;
        if (!expand(&lexer, token))
            emit(fOut, token);
    }
    if (fConditions.size() > conditionsBefore)
        fDiagnostics.fail(fConditions.back().at, "this #if has no #endif");
}

void Preprocessor::emit(std::vector<Token>& out, const Token& token) {
    if (++fWork > kMostTokens)
        fDiagnostics.fail(token.at,
                          "the source comes to more than 1,000,000 tokens; do its macros grow without end?");
    out.push_back(token);
}

/// The tokens up to the end of the line.
std::vector<Token> Preprocessor::takeLine(Lexer& lexer) {
    std::vector<Token> line;
    while (!lexer.lineEnds())
        line.push_back(lexer.next());
    return line;
}

void Preprocessor::directive(Lexer& lexer, const Token& hash, const std::string& path) {
    std::vector<Token> line = takeLine(lexer);
    if (line.empty())
        return;
    const Token name = line.front();
    line.erase(line.begin());
    if (conditional(name.text, line, name.at) || !isActive())
        return;
    if (name.is("define"))
        defineMacro(line, name.at);
    else if (name.is("undef") && !line.empty())
        fMacros.erase(line.front().text);
    else if (name.is("include"))
        include(std::move(line), name.at, path);
    else if (name.is("line"))
        setLine(lexer, std::move(line), name.at);
    else if (name.is("error"))
        fDiagnostics.fail(hash.at, "#error " + spelled(line));
    else if (name.is("warning"))
        fDiagnostics.warn(hash.at, "#warning " + spelled(line));
    else if (!name.is("pragma"))
        fDiagnostics.fail(name.at, "there is no directive #" + std::string(name.text.substr(0, 40)));
}

void Preprocessor::defineMacro(const std::vector<Token>& line, const Location& at) {
    if (line.empty() || !line.front().isName())
        fDiagnostics.fail(at, "#define needs a name");
    if (line.front().is("defined"))
        fDiagnostics.fail(at, "'defined' can't be a macro");
    Macro macro;
    size_t i = 1;
    if (line.size() > 1 && line[1].is("(") && !line[1].spaceBefore) {
        macro.takesArguments = true;
        for (i = 2; i < line.size() && !line[i].is(")"); ++i) {
            const bool wantsComma = (i - 2) % 2 == 1;
            if (wantsComma ? !line[i].is(",") : !line[i].isName())
                fDiagnostics.fail(line[i].at, "the parameters of a macro are names with commas between");
            if (!wantsComma)
                macro.parameters.push_back(line[i].text);
        }
        if (i == line.size())
            fDiagnostics.fail(at,
                              "the parameters of the macro " + inQuotes(line.front().text) + " need a ')'");
        ++i;
    }
    macro.body.assign(line.begin() + static_cast<ptrdiff_t>(i), line.end());
    if (!macro.body.empty() && (macro.body.front().is("##") || macro.body.back().is("##")))
        fDiagnostics.fail(at, "'##' joins two things; it can't stand at an end of a macro");
    fMacros[line.front().text] = std::move(macro);
}

void Preprocessor::include(std::vector<Token> line, const Location& at, const std::string& from) {
    if (!line.empty() && line.front().isName())
        line = expandAll(std::move(line));
    std::string name = spelled(line);
    const bool isBeside = name.size() > 2 && name.front() == '"' && name.back() == '"';
    const bool isQuoted = isBeside || (name.size() > 2 && name.front() == '<' && name.back() == '>');
    if (!isQuoted)
        fDiagnostics.fail(at, "#include needs a name in quotes or angle brackets");
    name = name.substr(1, name.size() - 2);
    if (++fIncludeDepth > kDeepestInclude)
        fDiagnostics.fail(at, "files include each other more than 64 deep: " + inQuotes(name) +
                                  "; guard it with #ifndef");
    const auto read = [&](const std::string& path) {
        return fOptions.read ? fOptions.read(path) : readFromDisk(path);
    };
    std::vector<std::string> places;
    if (isBeside || name.starts_with('/'))
        places.push_back(name.starts_with('/') ? name : folderOf(from) + name);
    for (const std::string& folder : fOptions.includeFolders)
        places.push_back(joined({folder, "/", name}));
    if (!isBeside && !name.starts_with('/'))
        places.push_back(folderOf(from) + name);
    for (const std::string& place : places) {
        if (std::optional<std::string> text = read(place)) {
            runFile(fStore.keep(std::move(*text)), place);
            --fIncludeDepth;
            return;
        }
    }
    fDiagnostics.fail(at,
                      "there is no file " + inQuotes(name) + " beside this one or in a folder given with -I");
}

void Preprocessor::setLine(Lexer& lexer, std::vector<Token> line, const Location& at) {
    line = expandAll(std::move(line));
    uint32_t number = 0;
    const std::string_view text = line.empty() ? std::string_view() : line.front().text;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        fDiagnostics.fail(at, "#line needs a number");
    lexer.renumber(number);
    if (line.size() > 1 && line[1].kind == TokenKind::String)
        lexer.rename(fDiagnostics.addFile(std::string(line[1].text.substr(1, line[1].text.size() - 2))));
}

/// Whether it is one of the directives that choose what is read.
bool Preprocessor::conditional(std::string_view name, const std::vector<Token>& line, const Location& at) {
    const bool isDefinedTest = name == "ifdef" || name == "ifndef";
    if (name == "if" || isDefinedTest) {
        constexpr size_t kDeepest = 1000;
        if (fConditions.size() > kDeepest)
            fDiagnostics.fail(at, "#if is nested more than 1000 deep");
        bool isTaken = false;
        if (isActive() && isDefinedTest) {
            if (line.empty() || !line.front().isName())
                fDiagnostics.fail(at, "#" + std::string(name) + " needs a name");
            isTaken = (fMacros.count(line.front().text) != 0) == (name == "ifdef");
        } else if (isActive()) {
            isTaken = evaluate(line, at);
        }
        fConditions.push_back({at, isTaken, isTaken || !isActive(), isActive(), false});
        return true;
    }
    if (name != "elif" && name != "else" && name != "endif")
        return false;
    if (fConditions.empty())
        fDiagnostics.fail(at, "#" + std::string(name) + " without an #if");
    Condition& condition = fConditions.back();
    if (name == "endif") {
        fConditions.pop_back();
        return true;
    }
    if (condition.hadElse)
        fDiagnostics.fail(at, "#" + std::string(name) + " behind #else");
    condition.hadElse = name == "else";
    const bool mayBeTaken = condition.parentActive && !condition.wasTaken;
    condition.isActive = mayBeTaken && (condition.hadElse || evaluate(line, at));
    condition.wasTaken = condition.wasTaken || condition.isActive;
    return true;
}

/// `defined` is looked up before macros are expanded.
bool Preprocessor::evaluate(const std::vector<Token>& line, const Location& at) {
    std::vector<Token> known;
    for (size_t i = 0; i < line.size(); ++i) {
        if (!line[i].is("defined")) {
            known.push_back(line[i]);
            continue;
        }
        const bool isBracketed = i + 3 < line.size() && line[i + 1].is("(") && line[i + 3].is(")");
        const size_t place = i + (isBracketed ? 2 : 1);
        if (place >= line.size() || !line[place].isName())
            fDiagnostics.fail(line[i].at, "'defined' needs a name");
        Token answer = line[i];
        answer.kind = TokenKind::Number;
        answer.text = fMacros.count(line[place].text) != 0 ? "1" : "0";
        known.push_back(answer);
        i = place + (isBracketed ? 1 : 0);
    }
    return evaluateCondition(expandAll(std::move(known)), at, fDiagnostics) != 0;
}

/// The next token of what is being expanded, else of the file (null: none).
Token Preprocessor::nextRaw(Lexer* lexer) {
    while (fExpansions.size() > fExpansionFloor) {
        Expansion& top = fExpansions.back();
        if (top.next < top.tokens.size())
            return top.tokens[top.next++];
        if (top.macro)
            top.macro->isBusy = false;
        fExpansions.pop_back();
    }
    return lexer ? lexer->next() : Token();
}

void Preprocessor::push(std::vector<Token> tokens, Macro* macro, const Location& at) {
    if (fExpansions.size() > kMostBusyMacros)
        fDiagnostics.fail(at, "macros are nested too deep");
    if (macro)
        macro->isBusy = true;
    fExpansions.push_back({std::move(tokens), 0, macro});
}

std::vector<Token> Preprocessor::expandAll(std::vector<Token> tokens) {
    const Location at = tokens.empty() ? Location() : tokens.front().at;
    if (++fExpandDepth > kDeepestExpansion)
        fDiagnostics.fail(at, "macros are nested too deep");
    const size_t floor = std::exchange(fExpansionFloor, fExpansions.size());
    push(std::move(tokens), nullptr, at);
    std::vector<Token> expanded;
    for (;;) {
        Token token = nextRaw(nullptr);
        if (token.kind == TokenKind::End)
            break;
        if (!expand(nullptr, token))
            emit(expanded, token);
    }
    fExpansionFloor = floor;
    --fExpandDepth;
    return expanded;
}

/// Puts a macro's expansion in front of what is read next. False: the token is none, and stays.
bool Preprocessor::expand(Lexer* lexer, Token& name) {
    if (!name.isName() || name.noExpansion)
        return false;
    if (name.is("__LINE__") || name.is("__FILE__")) {
        const bool isLine = name.is("__LINE__");
        name.kind = isLine ? TokenKind::Number : TokenKind::String;
        name.text = fStore.keep(isLine ? std::to_string(name.at.line)
                                       : "\"" + fDiagnostics.fileName(name.at.file) + "\"");
        return false;
    }
    const auto found = fMacros.find(name.text);
    if (found == fMacros.end())
        return false;
    Macro& macro = found->second;
    if (macro.isBusy) {
        name.noExpansion = true;
        return false;
    }
    if (++fWork > kMostTokens)
        emit(fOut, name); // says what is wrong
    Arguments arguments;
    if (macro.takesArguments) {
        const Token next = nextRaw(lexer);
        if (!next.is("(")) {
            if (next.kind != TokenKind::End)
                push({next}, nullptr, next.at);
            return false;
        }
        arguments = takeArguments(lexer, name, macro);
    }
    push(substitute(macro, name, arguments), &macro, name.at);
    return true;
}

Preprocessor::Arguments Preprocessor::takeArguments(Lexer* lexer, const Token& name, const Macro& macro) {
    Arguments arguments(1);
    for (int depth = 1;;) {
        const Token token = nextRaw(lexer);
        if (token.kind == TokenKind::End)
            fDiagnostics.fail(name.at, "the arguments of the macro " + inQuotes(name.text) + " need a ')'");
        if (++fWork > kMostTokens)
            emit(fOut, token);
        depth += token.is("(") ? 1 : 0;
        depth -= token.is(")") ? 1 : 0;
        if (depth == 0)
            break;
        if (depth == 1 && token.is(","))
            arguments.emplace_back();
        else
            arguments.back().push_back(token);
    }
    if (macro.parameters.empty() && arguments.size() == 1 && arguments[0].empty())
        arguments.clear();
    if (arguments.size() != macro.parameters.size())
        fDiagnostics.fail(name.at, "the macro " + inQuotes(name.text) + " takes " +
                                       std::to_string(macro.parameters.size()) + " arguments, and is given " +
                                       std::to_string(arguments.size()));
    return arguments;
}

/// A macro's body with its arguments in place, '#' and '##' done.
std::vector<Token> Preprocessor::substitute(const Macro& macro, const Token& name,
                                            const Arguments& arguments) {
    const auto argumentOf = [&](const Token& token) -> const std::vector<Token>* {
        const auto found = std::find(macro.parameters.begin(), macro.parameters.end(), token.text);
        return macro.takesArguments && token.isName() && found != macro.parameters.end()
                   ? &arguments[static_cast<size_t>(found - macro.parameters.begin())]
                   : nullptr;
    };
    std::vector<Token> result;
    bool joins = false; // the next tokens to the last of the result
    const auto append = [&](std::vector<Token> tokens) {
        auto first = tokens.begin();
        if (joins && !result.empty() && first != tokens.end()) {
            result.back() = paste(result.back(), *first);
            ++first;
        }
        joins = false;
        for (; first != tokens.end(); ++first)
            emit(result, *first);
    };
    for (size_t i = 0; i < macro.body.size(); ++i) {
        const Token& token = macro.body[i];
        if (token.is("##")) {
            joins = true;
            continue;
        }
        const bool isJoined = joins || (i + 1 < macro.body.size() && macro.body[i + 1].is("##"));
        if (macro.takesArguments && token.is("#") && i + 1 < macro.body.size() &&
            argumentOf(macro.body[i + 1])) {
            append({stringOf(*argumentOf(macro.body[++i]), name.at)});
        } else if (const std::vector<Token>* argument = argumentOf(token)) {
            append(isJoined ? *argument : expandAll(*argument));
        } else {
            Token placed = token;
            placed.at = name.at; // messages are about where it is used
            append({placed});
        }
    }
    for (Token& token : result)
        token.startsLine = false;
    if (!result.empty())
        result.front().spaceBefore = name.spaceBefore;
    return result;
}

Token Preprocessor::paste(const Token& left, const Token& right) {
    const std::string_view text = fStore.keep(std::string(left.text) + std::string(right.text));
    Lexer lexer(text, left.at.file, fStore, fDiagnostics);
    Token token = lexer.next();
    if (token.text.size() != text.size())
        fDiagnostics.fail(left.at, "'##' makes " + inQuotes(text) + ", which is no single token");
    token.at = left.at;
    token.spaceBefore = left.spaceBefore;
    return token;
}

Token Preprocessor::stringOf(const std::vector<Token>& tokens, const Location& at) {
    std::string text = "\"";
    for (const char c : spelled(tokens)) {
        if (c == '"' || c == '\\')
            text += '\\';
        text += c;
    }
    Token token;
    token.kind = TokenKind::String;
    token.text = fStore.keep(text + "\"");
    token.at = at;
    return token;
}

} // namespace orlocg
