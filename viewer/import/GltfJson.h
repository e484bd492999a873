#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/ImportError.h"

namespace orloview {

/// A JSON object of a glTF file together with its place there, so that a wrong value can be named.
///
/// What is absent gives the fallback (an empty object or list); what has the wrong type throws an ImportError
/// such as "accessors[3].count should be a whole number". Lives no longer than the document.
class GltfObject {
public:
    GltfObject(const nlohmann::json& value, std::string place);

    const std::string& place() const { return fPlace; }
    bool has(const char* key) const { return fValue->contains(key); }
    std::vector<std::string> keys() const;

    GltfObject object(const char* key) const;
    bool hasExtension(const char* name) const;
    GltfObject extension(const char* name) const { return object("extensions").object(name); }
    std::vector<GltfObject> objects(const char* key) const;

    std::string text(const char* key, const std::string& fallback = "") const;
    bool flag(const char* key) const;
    double number(const char* key, double fallback) const;
    size_t whole(const char* key, size_t fallback) const;
    /// A reference into a list of this length; -1 where there is none.
    int reference(const char* key, size_t length) const;
    std::vector<int> references(const char* key, size_t length) const;
    std::vector<std::string> texts(const char* key) const;
    std::vector<double> numberList(const char* key) const;

    /// Exactly N numbers.
    template <size_t N>
    std::array<double, N> numbers(const char* key, const std::array<double, N>& fallback) const {
        if (!has(key))
            return fallback;
        std::array<double, N> result{};
        readNumbers(key, result.data(), N);
        return result;
    }

private:
    [[noreturn]] void wrong(const std::string& key, const std::string& wanted) const;
    const nlohmann::json& list(const char* key) const;
    void readNumbers(const char* key, double* to, size_t count) const;

    const nlohmann::json* fValue;
    std::string fPlace;
};

} // namespace orloview
