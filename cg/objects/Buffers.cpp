#include "objects/Handles.h"
#include "objects/Values.h"

#include <charconv>
#include <cstring>
#include <optional>
#include <set>
#include <string_view>

// Parameters that are read from buffers.

namespace orlocg {

namespace {

constexpr int kLastByte = 1 << 24; ///< no offset goes beyond

/// The number in front, "[16]"; it and the brackets go.
std::optional<int> takeIndex(std::string_view& text) {
    int number = 0;
    if (!text.starts_with('['))
        return std::nullopt;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), number);
    if (error != std::errc() || end == text.data() + text.size() || *end != ']' || number < 0 ||
        number > kLastByte)
        return std::nullopt;
    text.remove_prefix(static_cast<size_t>(end + 1 - text.data()));
    return number;
}

int roundedUp(int offset, int alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

constexpr int kVector = 16; ///< bytes of a vec4: arrays, structs and rows of matrices begin at multiples

/// Places a parameter and its parts from a byte on, and gives the byte behind it.
int placeFrom(ParameterObject& p, int buffer, int offset) {
    const int columns = std::max<int>(p.type->columns, 1);
    const bool isVector = p.isLeaf() && p.type->rows == 0;
    const int alignment = !isVector ? kVector : (columns > 2 ? kVector : 4 * columns);
    p.buffer = buffer;
    p.offset = offset = roundedUp(std::min(offset, kLastByte), alignment);
    for (const std::unique_ptr<ParameterObject>& part : p.parts) {
        offset = placeFrom(*part, buffer, offset);
        if (p.type->isArray())
            offset = roundedUp(offset, kVector);
    }
    if (p.isLeaf())
        offset += isVector ? 4 * columns : kVector * p.type->rows;
    return isVector ? offset : roundedUp(offset, kVector);
}

/// The numbers of a leaf; it keeps its own where the buffer ends before them.
void readLeaf(ParameterObject& leaf, const std::vector<unsigned char>& bytes) {
    const size_t columns = std::max<size_t>(leaf.type->columns, 1);
    const size_t rows = std::max<size_t>(leaf.type->rows, 1);
    const size_t first = static_cast<size_t>(leaf.offset);
    if (first + (rows - 1) * kVector + columns * sizeof(float) > bytes.size())
        return;
    std::vector<float>& values = valuesOf(leaf);
    for (size_t i = 0; i < values.size(); ++i) {
        const unsigned char* at = bytes.data() + first + i / columns * kVector + i % columns * sizeof(float);
        int32_t whole = 0;
        if (leaf.type->isInt() || leaf.type->isBool()) {
            std::memcpy(&whole, at, sizeof whole);
            values[i] = static_cast<float>(whole);
        } else {
            std::memcpy(&values[i], at, sizeof values[i]);
        }
    }
    if (leaf.program->extension)
        global().binding->send(leaf);
}

/// What OpenGL has is read but once.
void readAll(ParameterObject& p, std::set<BufferObject*>& read) {
    if (p.isLeaf() && p.type->isNumeric()) {
        const CGbuffer handle = p.program->buffers[static_cast<size_t>(p.buffer)];
        const auto found = global().buffers.find(reinterpret_cast<uintptr_t>(handle));
        if (found != global().buffers.end()) {
            BufferObject& buffer = *found->second;
            if (buffer.extension && !buffer.isMapped && read.insert(&buffer).second)
                global().binding->fetch(buffer);
            readLeaf(p, buffer.bytes);
        }
    }
    for (const std::unique_ptr<ParameterObject>& part : p.parts)
        readAll(*part, read);
}

} // namespace

void placeInBuffers(ProgramObject& program) {
    std::array<int, std::tuple_size_v<decltype(program.buffers)>> next{};
    program.readsBuffers = false;
    for (const ParameterList& list : program.parameters)
        for (const std::unique_ptr<ParameterObject>& p : list) {
            constexpr std::string_view kBuffer = "BUFFER";
            std::string_view semantic = p->semantic;
            if (!p->isUniform || !semantic.starts_with(kBuffer))
                continue;
            semantic.remove_prefix(kBuffer.size());
            const std::optional<int> buffer = takeIndex(semantic);
            if (!buffer || static_cast<size_t>(*buffer) >= next.size())
                continue;
            program.readsBuffers = true;
            int& end = next[static_cast<size_t>(*buffer)];
            end = placeFrom(*p, *buffer, takeIndex(semantic).value_or(end));
        }
}

void readBuffers(ProgramObject& program) {
    std::set<BufferObject*> read;
    for (const ParameterList& list : program.parameters)
        for (const std::unique_ptr<ParameterObject>& p : list)
            if (p->buffer >= 0)
                readAll(*p, read);
}

} // namespace orlocg
