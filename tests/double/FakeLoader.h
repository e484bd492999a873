#pragma once

// The program's own dlopen and dlsym: they write down what is opened and looked up, and take libraries and
// names away. For tests of the loading itself; linked by `orlo_double_test(... LOADER)`.

#include "RecordingGL.h"

/// dlopen("libGL.so", 1) and dlsym("glBegin") calls in order, as text.
const Calls& loaderCalls();
/// dlopen answers null for these.
std::set<std::string>& missingLibraries();
/// dlsym answers null for these.
std::set<std::string>& missingSymbols();
/// dlsym answers with these instead of what it finds.
std::map<std::string, void*>& replacedSymbols();
/// Forgets all of this, and starts writing down.
void resetLoader();
