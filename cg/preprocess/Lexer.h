#pragma once

#include "preprocess/Source.h"

namespace orlocg {

/// Cuts a text into tokens. Comments and line splices are blanks.
class Lexer {
public:
    /// `text` has to stay; splices are taken out into `store`.
    Lexer(std::string_view text, uint32_t file, TextStore& store, Diagnostics& diagnostics);

    /// The next token; of kind End at the end, and from then on.
    Token next();

    /// Whether nothing but blanks and comments is left on the line. Stays on it.
    bool lineEnds();

    /// Says that the next line has this number, and the file another name where `file` is given.
    void renumber(uint32_t nextLine) { fLineShift = int64_t{nextLine} - (fLine + 1); }
    void rename(uint32_t file) { fFile = file; }
    uint32_t file() const { return fFile; }

private:
    void takeSplices(std::string_view text, TextStore& store);
    bool skipBlanks();
    void skipComment();
    bool atComment() const { return at() == '/' && (at(1) == '/' || at(1) == '*'); }
    void advance();
    char at(size_t ahead = 0) const {
        return fPosition + ahead < fText.size() ? fText[fPosition + ahead] : '\0';
    }
    Location here() const;
    size_t lengthOfNumber() const;
    size_t lengthOfPunctuation() const;

    std::string_view fText;
    std::vector<size_t> fSplices; ///< where a splice was, ascending
    size_t fNextSplice = 0;
    size_t fPosition = 0;
    size_t fLineStart = 0;
    int64_t fLine = 1;
    int64_t fLineShift = 0;
    uint32_t fFile;
    bool fStartsLine = true;
    bool fBlankBefore = false; ///< passed by lineEnds
    Diagnostics& fDiagnostics;
};

} // namespace orlocg
