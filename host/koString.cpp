#include "orlohost/koString.h"

#include <cstring>

namespace koString {

CString::CString(const char* text) : fText(text ? text : "") {}

CString CString::plus(const CString& tail) const {
    CString result(*this);
    return result.plusEqual(tail);
}

CString& CString::plusEqual(const CString& tail) {
    fText += tail.fText;
    return *this;
}

CString& CString::plusEqual(const char* tail) {
    if (tail)
        fText += tail;
    return *this;
}

IString::IString(const char* text) : fText(text ? text : "") {}

IString::IString(const CString& text) : fText(text.asChar()) {}

CString IString::convertToCString() const {
    return {fText.c_str()};
}

IString IString::plus(const IString& tail) const {
    IString result(*this);
    return result.plusEqual(tail);
}

IString& IString::plusEqual(const IString& tail) {
    fText += tail.fText;
    return *this;
}

IString& IString::plusEqual(const char* tail) {
    if (tail)
        fText += tail;
    return *this;
}

bool less(const CString& a, const CString& b) {
    return std::strcmp(a.asChar(), b.asChar()) < 0;
}

bool less(const IString& a, const IString& b) {
    return std::strcmp(a.asMultibyte(), b.asMultibyte()) < 0;
}

bool equal(const CString& a, const CString& b) {
    return a == b;
}

bool equal(const IString& a, const IString& b) {
    return a == b;
}

} // namespace koString
