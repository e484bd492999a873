#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <GL/gl.h>

/// An argument or a result of a call, whatever its type.
struct CallValue {
    enum class Kind : uint8_t { None, Signed, Unsigned, Real, Pointer };

    CallValue() = default;
    template <typename T>
    explicit CallValue(T value);

    Kind kind = Kind::None;
    union {
        int64_t asSigned = 0;
        uint64_t asUnsigned;
        double asReal;
        const void* asPointer;
    };
};

template <typename T>
CallValue::CallValue(T value) {
    if constexpr (std::is_pointer_v<T>) {
        kind = Kind::Pointer;
        asPointer = reinterpret_cast<const void*>(value);
    } else if constexpr (std::is_floating_point_v<T>) {
        kind = Kind::Real;
        asReal = value;
    } else if constexpr (std::is_signed_v<T>) {
        kind = Kind::Signed;
        asSigned = +value; // a GLbyte is a number
    } else {
        kind = Kind::Unsigned;
        asUnsigned = value;
    }
}

/// Calls as text, with the names that GL's headers give to numbers.
class GLCallText {
public:
    GLCallText();

    /// The name of an entry point, by its place in GLEntryPoints.inc.
    const std::string& name(size_t entry) const { return fEntries[entry].name; }
    size_t count() const { return fEntries.size(); }

    /// "glGenLists(3) = 1". The values are read after the call, and lists of names through their pointers.
    std::string call(size_t entry, const CallValue* arguments, const CallValue& result) const;

    /// "GL_INVALID_ENUM", or the number in hexadecimal.
    std::string enumerant(uint64_t value) const;

private:
    struct Parameter {
        std::string type;
        std::string name;
    };
    struct Entry {
        std::string name;
        std::string result;
        std::vector<Parameter> parameters;
    };

    std::string value(const Entry& entry, const Parameter& parameter, const CallValue* arguments,
                      const CallValue& value) const;
    std::string enumerantOf(const Entry& entry, const Parameter& parameter, uint64_t value) const;
    std::string bits(const Entry& entry, uint64_t value) const;

    std::vector<Entry> fEntries;
    std::map<uint64_t, std::string_view> fEnumerants;
    std::map<uint64_t, std::string_view> fBits;
    std::map<uint64_t, std::string_view> fClientBits;
};
