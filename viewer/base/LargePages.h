#pragma once

namespace orloview {

/// For a program that does one thing and ends: the heap gets large pages, where the kernel has some. A
/// picture takes some ten thousand small ones, each asked for by a fault, which together may cost a
/// third of its time. All threads share that heap, and what is freed is kept for what comes next.
///
/// Call it before there are other threads. Processes that are made afterwards have such a heap too.
void preferLargePages();

} // namespace orloview
