#include "import/GltfJson.h"

#include <cmath>
#include <utility>

namespace orloview {

namespace {

using nlohmann::json;

constexpr double kLargestExact = 9007199254740992.0; // 2^53

bool isWhole(const json& value) {
    if (value.is_number_unsigned())
        return true;
    if (!value.is_number_float())
        return false;
    const double number = value.get<double>(); // some exporters write 24.0
    return number >= 0.0 && number <= kLargestExact && number == std::floor(number);
}

} // namespace

GltfObject::GltfObject(const json& value, std::string place) : fValue(&value), fPlace(std::move(place)) {
    if (!value.is_object())
        throw ImportError("the file is damaged: " + (fPlace.empty() ? "its JSON" : fPlace) +
                          " should be an object; export the model again");
}

void GltfObject::wrong(const std::string& key, const std::string& wanted) const {
    throw ImportError("the file is damaged: " + (fPlace.empty() ? "" : fPlace + ".") + key + " should be " +
                      wanted + "; export the model again");
}

std::vector<std::string> GltfObject::keys() const {
    std::vector<std::string> result;
    for (auto item = fValue->begin(); item != fValue->end(); ++item)
        result.push_back(item.key());
    return result;
}

GltfObject GltfObject::object(const char* key) const {
    static const json kEmpty = json::object();
    const auto found = fValue->find(key);
    return {found == fValue->end() ? kEmpty : *found, fPlace.empty() ? key : fPlace + "." + key};
}

bool GltfObject::hasExtension(const char* name) const {
    const auto extensions = fValue->find("extensions");
    return extensions != fValue->end() && extensions->contains(name);
}

const json& GltfObject::list(const char* key) const {
    static const json kEmpty = json::array();
    const auto found = fValue->find(key);
    if (found == fValue->end())
        return kEmpty;
    if (!found->is_array())
        wrong(key, "a list");
    return *found;
}

std::vector<GltfObject> GltfObject::objects(const char* key) const {
    std::vector<GltfObject> result;
    const json& values = list(key);
    result.reserve(values.size());
    const std::string start = (fPlace.empty() ? "" : fPlace + ".") + key + "[";
    for (size_t i = 0; i < values.size(); ++i)
        result.emplace_back(values[i], start + std::to_string(i) + "]");
    return result;
}

std::string GltfObject::text(const char* key, const std::string& fallback) const {
    const auto found = fValue->find(key);
    if (found == fValue->end())
        return fallback;
    if (!found->is_string())
        wrong(key, "a text");
    return found->get<std::string>();
}

bool GltfObject::flag(const char* key) const {
    const auto found = fValue->find(key);
    if (found == fValue->end())
        return false;
    if (!found->is_boolean())
        wrong(key, "true or false");
    return found->get<bool>();
}

double GltfObject::number(const char* key, double fallback) const {
    const auto found = fValue->find(key);
    if (found == fValue->end())
        return fallback;
    if (!found->is_number())
        wrong(key, "a number");
    return found->get<double>();
}

size_t GltfObject::whole(const char* key, size_t fallback) const {
    const auto found = fValue->find(key);
    if (found == fValue->end())
        return fallback;
    if (!isWhole(*found))
        wrong(key, "a whole number, 0 or more");
    return found->get<size_t>();
}

int GltfObject::reference(const char* key, size_t length) const {
    if (!has(key))
        return -1;
    const size_t index = whole(key, 0);
    if (index >= length)
        wrong(key, "less than " + std::to_string(length) + " (it is " + std::to_string(index) + ")");
    return static_cast<int>(index);
}

std::vector<int> GltfObject::references(const char* key, size_t length) const {
    std::vector<int> result;
    for (const json& value : list(key)) {
        if (!isWhole(value) || value.get<size_t>() >= length)
            wrong(key, "a list of whole numbers less than " + std::to_string(length));
        result.push_back(value.get<int>());
    }
    return result;
}

std::vector<std::string> GltfObject::texts(const char* key) const {
    std::vector<std::string> result;
    for (const json& value : list(key)) {
        if (!value.is_string())
            wrong(key, "a list of texts");
        result.push_back(value.get<std::string>());
    }
    return result;
}

std::vector<double> GltfObject::numberList(const char* key) const {
    std::vector<double> result(list(key).size());
    readNumbers(key, result.data(), result.size());
    return result;
}

void GltfObject::readNumbers(const char* key, double* to, size_t count) const {
    const json& values = list(key);
    if (values.size() != count)
        wrong(key, "a list of " + std::to_string(count) + " numbers");
    for (const json& value : values) {
        if (!value.is_number())
            wrong(key, "a list of numbers");
        *to++ = value.get<double>();
    }
}

} // namespace orloview
