#pragma once

#include "orlohost/Export.h"

#include <string>

namespace koString {

/// A string of plain characters: names of parameters, keys, program sources. A null pointer reads as empty.
class ORLOHOST_API CString {
public:
    CString() = default;
    CString(const char* text); // NOLINT: hosts pass literals

    const char* asChar() const { return fText.c_str(); }
    bool empty() const { return fText.empty(); }

    CString plus(const CString& tail) const;
    CString& plusEqual(const CString& tail);
    CString& plusEqual(const char* tail);

private:
    std::string fText;
};

/// A string for people and for file names, in the multibyte encoding of the host (UTF-8 on Linux).
class ORLOHOST_API IString {
public:
    IString() = default;
    IString(const char* text); // NOLINT: hosts pass literals
    explicit IString(const CString& text);

    /// The text in the host's multibyte encoding: what the C library takes as a file name.
    const char* asMultibyte() const { return fText.c_str(); }
    bool empty() const { return fText.empty(); }
    CString convertToCString() const;

    IString plus(const IString& tail) const;
    IString& plusEqual(const IString& tail);
    IString& plusEqual(const char* tail);

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
