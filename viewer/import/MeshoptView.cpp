#include "import/MeshoptView.h"

#include <cstddef>
#include <string>
#include <utility>

#include <meshoptimizer.h>

#include "base/ImportError.h"

namespace orloview {

namespace {

/// The elements that a view holds.
struct Form {
    std::string mode;
    std::string filter;
    size_t count;
    size_t stride;
};

/// The decoders trust their callers with all of this.
bool isPossible(const Form& form) {
    const auto [mode, filter, count, stride] = form;
    if (mode == "TRIANGLES" || mode == "INDICES")
        return filter == "NONE" && (stride == 2 || stride == 4) && (mode == "INDICES" || count % 3 == 0);
    const std::pair<const char*, bool> filters[] = {{"NONE", true},
                                                    {"OCTAHEDRAL", stride == 4 || stride == 8},
                                                    {"QUATERNION", stride == 8},
                                                    {"EXPONENTIAL", true}};
    bool fitsFilter = false;
    for (const auto& [name, fits] : filters)
        fitsFilter = fitsFilter || (filter == name && fits);
    return mode == "ATTRIBUTES" && stride > 0 && stride <= 256 && stride % 4 == 0 && fitsFilter;
}

bool decode(const Form& form, std::span<const std::uint8_t> packed, std::uint8_t* to) {
    const auto [mode, filter, count, stride] = form;
    if (mode == "TRIANGLES")
        return meshopt_decodeIndexBuffer(to, count, stride, packed.data(), packed.size()) == 0;
    if (mode == "INDICES")
        return meshopt_decodeIndexSequence(to, count, stride, packed.data(), packed.size()) == 0;
    return meshopt_decodeVertexBuffer(to, count, stride, packed.data(), packed.size()) == 0;
}

void applyFilter(const Form& form, std::uint8_t* to) {
    if (form.filter == "OCTAHEDRAL")
        meshopt_decodeFilterOct(to, form.count, form.stride);
    else if (form.filter == "QUATERNION")
        meshopt_decodeFilterQuat(to, form.count, form.stride);
    else if (form.filter == "EXPONENTIAL")
        meshopt_decodeFilterExp(to, form.count, form.stride);
}

} // namespace

std::vector<std::uint8_t> unpackMeshopt(const GltfObject& compression, std::span<const std::uint8_t> packed) {
    const Form form{compression.text("mode"), compression.text("filter", "NONE"),
                    compression.whole("count", 0), compression.whole("byteStride", 0)};
    constexpr unsigned kVersionBits = 0xF;
    if (form.filter == "COLOR" ||
        (form.mode == "ATTRIBUTES" && !packed.empty() && (packed[0] & kVersionBits) != 0))
        throw ImportError(compression.place() +
                          " is packed in a way that this program doesn't know; pack the model for "
                          "EXT_meshopt_compression");
    if (!isPossible(form))
        throw ImportError(compression.place() + " is of a kind that there isn't");
    // No mode packs more than 64 bytes into one.
    if (form.count > packed.size() * 64 / form.stride)
        throw ImportError(compression.place() + " has more elements than its bytes could hold");
    std::vector<std::uint8_t> bytes(form.count * form.stride);
    if (!decode(form, packed, bytes.data()))
        throw ImportError(compression.place() + " is damaged");
    applyFilter(form, bytes.data());
    return bytes;
}

} // namespace orloview
