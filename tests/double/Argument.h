#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// The elements behind a pointer, for call(): call("glVertex3fv", Values{1, 2, 3}).
struct Values : std::vector<double> {
    using std::vector<double>::vector;
};

/// In the place of a pointer that the call writes to.
struct Out {};
inline constexpr Out kOut;

/// A pointer that is an offset into a buffer object.
inline const void* offset(uintptr_t bytes) {
    return reinterpret_cast<const void*>(bytes);
}

/// Numbers in decimal, whatever their type; floats as %g; strings in quotes.
template <typename T>
std::string elementText(T element) {
    std::ostringstream text;
    if constexpr (std::is_arithmetic_v<T>)
        text << +element;
    else
        text << (element ? '"' + std::string(element) + '"' : "null");
    return text.str();
}

template <typename T>
std::string elementsText(const void* elements, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += (i > 0 ? ", " : "") + elementText(static_cast<const T*>(elements)[i]);
    return '{' + text + '}';
}

/// One argument of a recorded call: a number, a pointer, or text that is printed as it is.
class Argument {
public:
    template <typename T>
    requires(std::is_integral_v<T> || std::is_enum_v<T>) Argument(T value)
        : fInteger(static_cast<long long>(value)), fText(elementText(fInteger)) {}
    Argument(double value) : fText(elementText(value)) {}
    Argument(std::nullptr_t) : fText("null") {}
    Argument(const Values& elements) : fText(elementsText<double>(elements.data(), elements.size())) {}
    Argument(Out) : fText("out") {}
    /// Printed as it is, without quotes.
    Argument(std::string text) : fText(std::move(text)) {}

    template <typename T>
    Argument(T* pointer)
        : fIsString(std::is_same_v<std::remove_const_t<T>, char>),
          fIsStringList(std::is_same_v<std::remove_const_t<T>, const char*>),
          fWritable(std::is_arithmetic_v<T> && !std::is_const_v<T>),
          fPointer(reinterpret_cast<const void*>(pointer)), fText(pointer ? "" : "null") {
        if constexpr (std::is_arithmetic_v<T> || std::is_same_v<std::remove_const_t<T>, const char*>)
            fElements = elementsText<T>;
    }

    bool isString() const { return fIsString; }
    bool isStringList() const { return fIsStringList; }
    /// Whether it points to numbers that the callee may change.
    bool writable() const { return fWritable; }
    long long integer() const { return fInteger; }
    void* pointer() const { return const_cast<void*>(fPointer); }
    /// How it prints, of a pointer only where that is null.
    const std::string& text() const { return fText; }
    /// The first elements behind a pointer to numbers or strings as text: {1, 2, 3}.
    std::string elements(size_t count) const { return fElements(fPointer, count); }

private:
    bool fIsString = false;
    bool fIsStringList = false;
    bool fWritable = false;
    long long fInteger = 0;
    const void* fPointer = nullptr;
    std::string (*fElements)(const void*, size_t) = nullptr;
    std::string fText;
};
