// A program for libFuzzer: fuzzer --target=gltf [libFuzzer's switches] CORPUS...

#include "Targets.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

const FuzzTarget* theTarget = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    constexpr std::string_view kSwitch = "--target=";
    for (int i = 1; i < *count; ++i) {
        const std::string_view argument = (*arguments)[i];
        if (argument.starts_with(kSwitch))
            theTarget =
                &*std::ranges::find(fuzzTargets(), argument.substr(kSwitch.size()), &FuzzTarget::name);
    }
    if (theTarget && theTarget != &*fuzzTargets().end())
        return 0;
    std::fputs("fuzzer: name a target, as in --target=gltf; there are", stderr);
    for (const FuzzTarget& target : fuzzTargets())
        std::fprintf(stderr, " %s", target.name.data());
    std::fputs("\n", stderr);
    std::exit(1);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, size_t size) {
    theTarget->run({bytes, size});
    return 0;
}
