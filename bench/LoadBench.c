/* What loading the library costs beside loading what it needs. In C, so that the C++ runtime is not there yet.
   Usage: orloload LIBORLOGL */

#include <dlfcn.h>
#include <stdio.h>
#include <valgrind/callgrind.h>

static int load(const char* library) {
    if (dlopen(library, RTLD_NOW))
        return 1;
    fprintf(stderr, "orloload: %s\n", dlerror());
    return 0;
}

int main(int argc, char** argv) {
    int loaded;
    if (argc != 2)
        return 1;
    CALLGRIND_ZERO_STATS;
    CALLGRIND_DUMP_STATS_AT("nothing/by hand");
    CALLGRIND_ZERO_STATS;
    loaded = load("libstdc++.so.6") && load("libX11.so.6");
    CALLGRIND_DUMP_STATS_AT("loading itself; what it needs/by hand");
    CALLGRIND_ZERO_STATS;
    loaded = load(argv[1]) && loaded;
    CALLGRIND_DUMP_STATS_AT("loading itself; what it needs/library");
    return loaded ? 0 : 1;
}
