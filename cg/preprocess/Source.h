#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orlocg {

/// A place in a source file.
struct Location {
    uint32_t file = 0; ///< into Diagnostics::files
    uint32_t line = 0; ///< from 1; #line moves it
    uint32_t column = 0;
};

/// Ends a compilation. What was wrong is in the Diagnostics.
struct CompileError {};

/// What a compilation has to say: the listing.
class Diagnostics {
public:
    /// Adds the error and ends the compilation.
    [[noreturn]] void fail(const Location& at, const std::string& message);
    void warn(const Location& at, const std::string& message);

    /// The number of a file, for locations.
    uint32_t addFile(const std::string& name);
    const std::string& fileName(uint32_t file) const { return fFiles[file]; }

    /// "FILE:LINE:COLUMN: error: MESSAGE", a line each.
    const std::string& listing() const { return fListing; }

private:
    void add(const Location& at, const char* kind, const std::string& message);

    std::vector<std::string> fFiles;
    std::string fListing;
    int fWarnings = 0;
};

enum class TokenKind : uint8_t { End, Identifier, Number, String, Punctuation };

struct Token {
    TokenKind kind = TokenKind::End;
    bool spaceBefore = false;
    bool startsLine = false;
    bool noExpansion = false; ///< the name of a macro inside its own expansion
    std::string_view text;
    Location at;

    bool is(std::string_view other) const { return text == other && kind != TokenKind::String; }
    bool isName() const { return kind == TokenKind::Identifier; }
};

/// Keeps the texts that tokens look into.
class TextStore {
public:
    std::string_view keep(std::string text) {
        fTexts.push_back(std::make_unique<std::string>(std::move(text)));
        return *fTexts.back();
    }

private:
    std::vector<std::unique_ptr<std::string>> fTexts;
};

/// One behind the other.
std::string joined(std::initializer_list<std::string_view> parts);

/// Fit for a message: cut where it is long.
std::string inQuotes(std::string_view text);

} // namespace orlocg
