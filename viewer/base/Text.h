#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Reading text formats line by line and word by word, whatever the locale.
namespace orloview {

/// Takes the next line off the front of the text, without its end (\n, \r\n or \r).
std::string_view takeLine(std::string_view& text);

/// Takes the next word off the front of the text; words are parted by white space. Empty at the end.
std::string_view takeWord(std::string_view& text);

std::string_view trimmed(std::string_view text);

/// With small letters for the capitals of ASCII.
std::string lowered(std::string_view text);

/// The word as a number, if all of it is one. "inf" and "nan" are; what is too large is infinite.
std::optional<double> toNumber(std::string_view word);

/// The word as a whole number, if all of it is one.
std::optional<long long> toWhole(std::string_view word);

/// In single precision; what is too large for that is infinite.
float toFloat(double number);

/// Fit for one line of a terminal: control characters become blanks, and what is longer than `most` bytes is
/// cut. Names in damaged files hold anything.
std::string printable(std::string_view text, size_t most = 120);

/// One word of a shell's command line, in quotes where a shell would make something else of it.
std::string shellWord(const std::string& text);

/// The path in a form that this system understands: files made elsewhere part folders by a backslash.
std::string withSlashes(std::string_view path);

} // namespace orloview
