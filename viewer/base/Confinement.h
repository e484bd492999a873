#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orloview {

/// Takes from this process, and for good, what reading needs none of: it may open no file but those that are,
/// or lie below, one of `readable`, and the libraries, and these only to read; it may have no sockets, start
/// no program, look into no process and send no signals. A damaged file may make a reader do anything; this
/// is all it can do then. As far as the kernel has the means: see whatIsNotConfined.
void confine(const std::vector<std::filesystem::path>& readable);

/// Which of it this kernel has no means for, in words; empty: all is confined.
std::string whatIsNotConfined();

} // namespace orloview
