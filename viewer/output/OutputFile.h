#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace orloview {

/// A file that appears whole or not at all: it is written beside and renamed at the end, so an older one
/// stays where that fails. "-" is standard output; devices and pipes are written straight. Throws Failure
/// (kExitNotWritten).
class OutputFile {
public:
    explicit OutputFile(std::string path);

    /// Takes away what was not committed.
    ~OutputFile();

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::FILE* stream() { return fStream; }
    void write(const void* bytes, size_t count);

    /// Puts the file in its place. Nothing can be written any more.
    void commit();

    /// Throws, with the reason of the last failed call.
    [[noreturn]] void fail() const;

private:
    std::string fPath;
    std::string fWritten; ///< where it stands until then; empty for what isn't renamed
    std::FILE* fStream = nullptr;
};

} // namespace orloview
