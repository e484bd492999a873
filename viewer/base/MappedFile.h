#pragma once

#include <cstdint>
#include <span>
#include <sys/mman.h>
#include <sys/stat.h>

namespace orloview {

/// A file as memory: only what is looked at is read, and holes take none. Empty where it can't be had.
class MappedFile {
public:
    explicit MappedFile(int descriptor) {
        struct stat status = {};
        if (fstat(descriptor, &status) != 0 || status.st_size <= 0)
            return;
        const auto size = static_cast<size_t>(status.st_size);
        void* const place = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (place != MAP_FAILED)
            fBytes = {static_cast<const std::uint8_t*>(place), size};
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile() {
        if (!fBytes.empty())
            munmap(const_cast<std::uint8_t*>(fBytes.data()), fBytes.size());
    }

    std::span<const std::uint8_t> bytes() const { return fBytes; }

private:
    std::span<const std::uint8_t> fBytes;
};

} // namespace orloview
