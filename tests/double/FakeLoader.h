#pragma once

// The program's own dlopen and dlsym: they write down what is opened and looked up, and take libraries and
// names away. For tests of the loading itself; linked by `orlo_double_test(... LOADER)`.

#include "RecordingGL.h"

struct FakeLoader {
    /// dlopen("libGL.so", 1) and dlsym("glBegin") calls in order, as text.
    Calls calls;
    /// dlopen and dlsym answer null for these.
    std::set<std::string> missing;
    /// dlsym answers with these instead of what it finds.
    std::map<std::string, void*> replaced;
};
FakeLoader& loader();
/// Forgets all of this, and starts writing down.
void resetLoader();
