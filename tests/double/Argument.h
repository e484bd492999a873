#pragma once

#include <cstdint>
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

/// One argument of a recorded call: a number, a pointer, or text that is printed as it is.
class Argument {
public:
    enum class Kind { Integer, Real, Pointer, Text };
    /// What a pointer points to, as far as it can be printed.
    enum class Element { Opaque, Byte, UByte, Short, UShort, Int, UInt, Float, Double, String, StringList };

    template <typename T>
    requires(std::is_integral_v<T> || std::is_enum_v<T>) Argument(T value)
        : fKind(Kind::Integer), fInteger(static_cast<long long>(value)) {}
    Argument(double value) : fKind(Kind::Real), fReal(value) {}
    Argument(std::nullptr_t) : fKind(Kind::Pointer) {}
    Argument(const Values& elements);
    Argument(Out) : fKind(Kind::Text), fText("out") {}
    /// Printed as it is, without quotes.
    Argument(std::string text) : fKind(Kind::Text), fText(std::move(text)) {}

    template <typename T>
    Argument(T* pointer)
        : fKind(Kind::Pointer), fElement(elementOf<std::remove_const_t<T>>()),
          fWritable(std::is_arithmetic_v<T> && !std::is_const_v<T>),
          fPointer(reinterpret_cast<const void*>(pointer)) {}

    Kind kind() const { return fKind; }
    Element element() const { return fElement; }
    /// Whether it points to numbers that the callee may change.
    bool writable() const { return fWritable; }
    long long integer() const { return fInteger; }
    double real() const { return fKind == Kind::Real ? fReal : static_cast<double>(fInteger); }
    void* pointer() const { return const_cast<void*>(fPointer); }
    const std::string& text() const { return fText; }

private:
    template <typename T>
    static constexpr Element elementOf() {
        if constexpr (std::is_same_v<T, char>)
            return Element::String;
        else if constexpr (std::is_same_v<T, const char*>)
            return Element::StringList;
        else if constexpr (std::is_same_v<T, float>)
            return Element::Float;
        else if constexpr (std::is_same_v<T, double>)
            return Element::Double;
        else if constexpr (std::is_integral_v<T>)
            return integerElement<T>();
        else
            return Element::Opaque;
    }

    template <typename T>
    static constexpr Element integerElement() {
        constexpr bool kSigned = std::is_signed_v<T>;
        switch (sizeof(T)) {
        case 1:
            return kSigned ? Element::Byte : Element::UByte;
        case 2:
            return kSigned ? Element::Short : Element::UShort;
        case 4:
            return kSigned ? Element::Int : Element::UInt;
        default:
            return Element::Opaque;
        }
    }

    Kind fKind;
    Element fElement = Element::Opaque;
    bool fWritable = false;
    long long fInteger = 0;
    double fReal = 0;
    const void* fPointer = nullptr;
    std::string fText;
};

/// The elements behind a pointer as text: {1, 2, 3}; null for a null pointer.
std::string elementsText(const Argument& pointer, size_t count);
