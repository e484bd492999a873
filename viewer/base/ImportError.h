#pragma once

#include <stdexcept>
#include <string>

namespace orloview {

/// What is wrong with a model file and what to do about it, in words for the person who gave the file. Thrown
/// and caught within the importers.
class ImportError : public std::runtime_error {
public:
    explicit ImportError(const std::string& message) : std::runtime_error(message) {}
};

} // namespace orloview
