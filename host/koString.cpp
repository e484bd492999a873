#include "orlohost/koString.h"

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

bool less(const CString& a, const CString& b) {
    return std::string_view(a.asChar()) < std::string_view(b.asChar());
}

bool less(const IString& a, const IString& b) {
    return std::string_view(a.asMultibyte()) < std::string_view(b.asMultibyte());
}

bool equal(const CString& a, const CString& b) {
    return std::string_view(a.asChar()) == std::string_view(b.asChar());
}

bool equal(const IString& a, const IString& b) {
    return std::string_view(a.asMultibyte()) == std::string_view(b.asMultibyte());
}

} // namespace koString
