#pragma once

#include "orlohost/Export.h"

#include <string>

namespace koString {

/// A string of plain characters: names of parameters, keys, program sources. A null pointer reads as empty.
class ORLOHOST_API CString {
public:
    CString() = default;

    /// A copy of the text; null is empty.
    CString(const char* text); // NOLINT: hosts pass literals

    const char* asChar() const { return fText.c_str(); } ///< ends with a null byte; until the string changes
    bool empty() const { return fText.empty(); }         ///< whether it has no characters

    bool operator==(const CString&) const = default; ///< whether the texts are the same

    CString plus(const CString& tail) const; ///< a new string of both
    CString& plusEqual(const CString& tail); ///< adds to this one
    CString& plusEqual(const char* tail);    ///< the same; null adds nothing

private:
    std::string fText;
};

/// A string for people and for file names, in the multibyte encoding of the host (UTF-8 on Linux).
class ORLOHOST_API IString {
public:
    IString() = default;

    /// A copy of the text; null is empty.
    IString(const char* text); // NOLINT: hosts pass literals
    /// The same text.
    explicit IString(const CString& text);

    /// The text in the host's multibyte encoding: what the C library takes as a file name.
    const char* asMultibyte() const { return fText.c_str(); }
    bool empty() const { return fText.empty(); } ///< whether it has no characters
    CString convertToCString() const;            ///< the same text

    bool operator==(const IString&) const = default; ///< whether the texts are the same

    IString plus(const IString& tail) const; ///< a new string of both
    IString& plusEqual(const IString& tail); ///< adds to this one
    IString& plusEqual(const char* tail);    ///< the same; null adds nothing

    /// Room for a string of that many bytes, so that it grows without being moved.
    void reserve(size_t bytes) { fText.reserve(bytes); }

private:
    std::string fText;
};

/// Byte order, as ordered maps use it.
ORLOHOST_API bool less(const CString& a, const CString& b);
ORLOHOST_API bool less(const IString& a, const IString& b);

ORLOHOST_API bool equal(const CString& a, const CString& b);
ORLOHOST_API bool equal(const IString& a, const IString& b);

} // namespace koString
