#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace orloview {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

// Words and lines are short, and a million of them are common: a plain loop beats searching for a set.

constexpr bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool endsLine(char c) {
    return c == '\n' || c == '\r';
}

std::string_view withoutPlus(std::string_view word) {
    return word.size() > 1 && word[0] == '+' ? word.substr(1) : word;
}

/// from_chars says "out of range" for too large and too small alike; the exponent tells which.
double outOfRange(std::string_view word) {
    const bool tiny = word.find("e-") != word.npos || word.find("E-") != word.npos;
    const double size = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    return word[0] == '-' ? -size : size;
}

} // namespace

std::string_view takeLine(std::string_view& text) {
    const auto end = static_cast<size_t>(std::find_if(text.begin(), text.end(), endsLine) - text.begin());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<size_t>(text.size(), 1));
    return line;
}

std::string_view takeWord(std::string_view& text) {
    const auto* const start = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto* const end = std::find_if(start, text.end(), isBlank);
    text.remove_prefix(static_cast<size_t>(end - text.begin()));
    return {start, end};
}

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](unsigned char c) {
        return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    });
    return result;
}

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::optional<double> toNumber(std::string_view word) {
    word = withoutPlus(word);
    double number = 0.0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (word.empty() || end != word.data() + word.size() || error == std::errc::invalid_argument)
        return std::nullopt;
    return error == std::errc::result_out_of_range ? outOfRange(word) : number;
}

std::optional<long long> toWhole(std::string_view word) {
    word = withoutPlus(word);
    long long number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (word.empty() || end != word.data() + word.size() || error != std::errc())
        return std::nullopt;
    return number;
}

float toFloat(double number) {
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        return std::copysign(std::numeric_limits<float>::infinity(), static_cast<float>(number > 0 ? 1 : -1));
    return static_cast<float>(number);
}

std::string printable(std::string_view text, size_t most) {
    std::string result(text.substr(0, most));
    unsigned char before = 0;
    for (char& c : result) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isSecondOfControl = before == 0xC2 && byte >= 0x80 && byte < 0xA0; // U+0080 to U+009F
        if (byte < 0x20 || byte == 0x7F || isSecondOfControl)
            c = ' ';
        if (isSecondOfControl)
            (&c)[-1] = ' ';
        before = byte;
    }
    return text.size() > most ? result + "..." : result;
}

std::string shellWord(const std::string& text) {
    const auto isPlain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view("%+,-./:=@_").find(c) != std::string_view::npos;
    };
    if (!text.empty() && std::all_of(text.begin(), text.end(), isPlain))
        return text;
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

std::string withSlashes(std::string_view path) {
    std::string result(path);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

} // namespace orloview
