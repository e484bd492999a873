// Runs each target over its seeds, whole, cut, and with bytes changed, the same in every run:
//     replay CORPUS [TARGET]

#include "Targets.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

namespace {

constexpr int kChanges = 200; ///< of each seed

using Buffer = std::vector<std::uint8_t>;

Buffer bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A few bytes replaced, doubled or left out.
Buffer changed(Buffer bytes, std::minstd_rand& random) {
    for (auto changes = random() % 4 + 1; changes > 0 && !bytes.empty(); --changes) {
        const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(random() % bytes.size());
        switch (random() % 4) {
        case 0:
            *at = static_cast<std::uint8_t>(random());
            break;
        case 1:
            *at ^= static_cast<std::uint8_t>(1U << random() % 8);
            break;
        case 2:
            bytes.insert(at, *at);
            break;
        default:
            bytes.erase(at);
        }
    }
    return bytes;
}

} // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::fprintf(stderr, "usage: %s CORPUS [TARGET]\n", arguments[0]);
        return 2;
    }
    const std::filesystem::path corpus = arguments[1];
    for (const FuzzTarget& target : fuzzTargets()) {
        if (count > 2 && target.name != arguments[2])
            continue;
        int seeds = 0;
        for (const auto& entry : std::filesystem::directory_iterator(corpus / target.name)) {
            const Buffer seed = bytesOf(entry.path());
            std::minstd_rand random(static_cast<unsigned>(++seeds));
            target.run(seed);
            for (size_t length = 0; length < seed.size(); length += seed.size() / 32 + 1)
                target.run({seed.data(), length});
            for (int i = 0; i < kChanges; ++i)
                target.run(changed(seed, random));
        }
        std::printf("%s: %d seeds\n", target.name.data(), seeds);
        if (seeds == 0)
            return 1;
    }
}
