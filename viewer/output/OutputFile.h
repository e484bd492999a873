#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace orloview {

/// A file that appears whole or not at all: it is written without a name and put in its place at the end, so
/// an older one stays where that fails, and nothing is left of it however the program ends. Where the file
/// system keeps no nameless files it has a short name beside its place, which signals take away too. A
/// symbolic link stays, and what it leads to is written. "-" is standard output; devices and pipes are
/// written straight.
///
/// One at a time. Throws Failure (kExitNotWritten; kExitUsage where the file is one of the inputs).
class OutputFile {
public:
    explicit OutputFile(std::string path);

    /// Takes away what was not committed.
    ~OutputFile();

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// From now on nothing is written in this file's place: it is one of the inputs, and would be lost.
    static void spare(const std::string& path);

    /// Whether it is one of those.
    static bool isSpared(const std::string& path);

    /// Takes away what was not committed, for ways out that run no destructors.
    static void removeUnfinished();

    std::FILE* stream() { return fStream; }
    void write(const void* bytes, size_t count);

    /// Puts the file in its place. Nothing can be written any more.
    void commit();

    /// Throws, with the reason of the last failed call.
    [[noreturn]] void fail() const;

private:
    int openReplacement();
    void nameBeside();
    template <typename Attempt>
    void makeBeside(Attempt attempt);
    void setBeside(std::string name);

    std::string fPath;   ///< as given
    std::string fPlace;  ///< behind symbolic links; empty for what is written straight
    std::string fBeside; ///< the short name, as long as it has one
    std::FILE* fStream = nullptr;
};

} // namespace orloview
