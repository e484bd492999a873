#include "preprocess/Lexer.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace orlocg {

namespace {

/// Longest first.
constexpr std::array<std::string_view, 24> kLongPunctuation = {
    "<<=", ">>=", "...", "<<", ">>", "<=", ">=", "==", "!=", "&&", "||", "++",
    "--",  "+=",  "-=",  "*=", "/=", "%=", "&=", "|=", "^=", "##", "::", "->"};

bool startsName(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool continuesName(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

Lexer::Lexer(std::string_view text, uint32_t file, TextStore& store, Diagnostics& diagnostics)
    : fText(text), fFile(file), fDiagnostics(diagnostics) {
    if (fText.starts_with("\xEF\xBB\xBF"))
        fText.remove_prefix(3);
    takeSplices(fText, store);
}

void Lexer::takeSplices(std::string_view text, TextStore& store) {
    const auto spliceAt = [&](size_t i) -> size_t {
        if (text[i] != '\\')
            return 0;
        if (text.substr(i + 1).starts_with('\n'))
            return 2;
        return text.substr(i + 1).starts_with("\r\n") ? 3 : 0;
    };
    if (text.find('\\') == text.npos)
        return;
    std::string joined;
    for (size_t i = 0; i < text.size();) {
        if (const size_t length = spliceAt(i)) {
            fSplices.push_back(joined.size());
            i += length;
        } else {
            joined += text[i++];
        }
    }
    fText = store.keep(std::move(joined));
}

Location Lexer::here() const {
    return {fFile, static_cast<uint32_t>(std::max<int64_t>(fLine + fLineShift, 0)),
            static_cast<uint32_t>(fPosition - fLineStart + 1)};
}

/// One character on, counting lines and the splices passed.
void Lexer::advance() {
    const char c = fText[fPosition++];
    while (fNextSplice < fSplices.size() && fSplices[fNextSplice] < fPosition) {
        ++fLine;
        ++fNextSplice;
        fLineStart = fPosition - 1;
    }
    if (c == '\n') {
        ++fLine;
        fLineStart = fPosition;
        fStartsLine = true;
    }
}

void Lexer::skipComment() {
    const Location start = here();
    const bool toEndOfLine = at(1) == '/';
    advance();
    advance();
    if (toEndOfLine) {
        while (fPosition < fText.size() && at() != '\n')
            advance();
        return;
    }
    const bool startsLine = fStartsLine;
    while (fPosition < fText.size() && !(at() == '*' && at(1) == '/'))
        advance();
    if (fPosition >= fText.size())
        fDiagnostics.fail(start, "the comment never ends");
    advance();
    advance();
    fStartsLine = fStartsLine || startsLine;
}

/// Whether there were any.
bool Lexer::skipBlanks() {
    const size_t start = fPosition;
    while (fPosition < fText.size()) {
        const auto c = static_cast<unsigned char>(at());
        if (atComment())
            skipComment();
        else if (std::isspace(c) != 0 || c == '\0')
            advance();
        else
            break;
    }
    return fPosition != start;
}

size_t Lexer::lengthOfNumber() const {
    size_t length = 0;
    while (continuesName(at(length)) || at(length) == '.' ||
           ((at(length) == '+' || at(length) == '-') && (at(length - 1) == 'e' || at(length - 1) == 'E') &&
            at(1) != 'x' && at(1) != 'X'))
        ++length;
    return length;
}

size_t Lexer::lengthOfPunctuation() const {
    for (const std::string_view candidate : kLongPunctuation)
        if (fText.substr(fPosition).starts_with(candidate))
            return candidate.size();
    return 1;
}

Token Lexer::next() {
    Token token;
    token.spaceBefore = skipBlanks() || fBlankBefore;
    fBlankBefore = false;
    token.startsLine = fStartsLine;
    token.at = here();
    if (fPosition >= fText.size())
        return token;
    size_t length = 0;
    const char c = at();
    if (startsName(c)) {
        token.kind = TokenKind::Identifier;
        while (continuesName(at(length)))
            ++length;
    } else if (isDigit(c) || (c == '.' && isDigit(at(1)))) {
        token.kind = TokenKind::Number;
        length = lengthOfNumber();
    } else if (c == '"') {
        token.kind = TokenKind::String;
        for (length = 1; at(length) != '"'; ++length) {
            if (at(length) == '\\')
                ++length;
            if (at(length) == '\n' || fPosition + length >= fText.size())
                fDiagnostics.fail(token.at, "the string never ends");
        }
        ++length;
    } else {
        token.kind = TokenKind::Punctuation;
        length = lengthOfPunctuation();
    }
    token.text = fText.substr(fPosition, length);
    for (size_t i = 0; i < length; ++i)
        advance();
    fStartsLine = false;
    return token;
}

bool Lexer::lineEnds() {
    while (fPosition < fText.size() && at() != '\n') {
        if (atComment())
            skipComment();
        else if (std::isspace(static_cast<unsigned char>(at())) != 0)
            advance();
        else
            return false;
        fBlankBefore = true;
    }
    return true;
}

} // namespace orlocg
