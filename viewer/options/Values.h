#pragma once

#include "base/ExitCode.h"
#include "draw/FrameLook.h"
#include "draw/Shading.h"
#include "output/Share.h"
#include "shading/Sky.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <orlohost/koLinear.h>

// The values of switches, from their words. Each throws Failure (kExitUsage), which names the switch, the
// word and what would be right.

namespace orloview {

[[noreturn]] void wrong(const std::string& name, const std::string& value, const std::string& wanted);

/// A word of a switch and what it stands for.
template <typename T>
struct Choice {
    const char* word;
    T value;
};

template <typename T, size_t kCount>
T oneOf(const std::string& name, const std::string& text, const std::array<Choice<T>, kCount>& choices) {
    std::string wanted = "give ";
    for (size_t i = 0; i < kCount; ++i) {
        if (text == choices[i].word)
            return choices[i].value;
        wanted.append(i == 0 ? "" : i + 1 == kCount ? " or " : ", ").append(choices[i].word);
    }
    wrong(name, text, wanted);
}

/// "fixed|glsl|cg"
template <typename T, size_t kCount>
std::string wordsOf(const std::array<Choice<T>, kCount>& choices) {
    std::string words;
    for (const Choice<T>& choice : choices)
        words.append(words.empty() ? "" : "|").append(choice.word);
    return words;
}

/// All of the text as a number, or nothing.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

/// The number of the one of the file's cameras, or the like, that the switch of that name asks for by its
/// name or its number. Throws where there is none.
size_t indexOf(const std::string& what, const std::string& wanted, const std::vector<std::string>& names);

template <typename Thing>
size_t indexOf(const std::string& what, const std::string& wanted, const std::vector<Thing>& things) {
    std::vector<std::string> names;
    names.reserve(things.size());
    for (const Thing& thing : things)
        names.push_back(thing.name);
    return indexOf(what, wanted, names);
}

int parseCount(const std::string& name, const std::string& text, int least, int most);

/// "2/4".
Share parseShare(const std::string& text);

struct PixelSize {
    int width;
    int height;
};
PixelSize parseSize(const std::string& text);

template <typename Triple>
Triple parseTriple(const std::string& name, const std::string& text) {
    Triple triple;
    std::string_view rest(text);
    for (int i = 0; i < 3; ++i) {
        const size_t comma = i < 2 ? rest.find(',') : rest.size();
        const std::optional<double> number =
            comma == std::string_view::npos ? std::nullopt : parseNumber<double>(rest.substr(0, comma));
        if (!number || !std::isfinite(*number))
            wrong(name, text, "give three numbers with commas between, such as " + name + " 0,1.5,-4");
        triple[i] = *number;
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    return triple;
}

/// "y,1.5".
Clip parseClip(const std::string& text);

/// Two points, six numbers.
std::array<koLinear::Point, 2> parsePoints(const std::string& text);

/// "500M" or "8G", in bytes.
size_t parseMemory(const std::string& text);

/// Degrees, -most to most.
double parseAngle(const std::string& name, const std::string& text, double most);

/// Seconds, 0 or more.
double parseTime(const std::string& text);

/// Pictures a second.
double parseRate(const std::string& text);

float parsePointSize(const std::string& text);
double parseFieldOfView(const std::string& text);

/// Whether --sky names a picture, by its suffix.
bool isSkyFile(const std::string& text);

/// A built-in sky, or none.
std::optional<Sky> parseSky(const std::string& text);

/// "1.5": how many times light is doubled, as its factor.
float parseExposure(const std::string& text);

CgRequest::Value parseCgValue(const std::string& text);

/// A colour of --background: a name, #RGB, #RRGGBB, #RRGGBBAA, or "transparent". Null when it is none.
std::optional<std::array<float, 4>> parseColor(const std::string& text);

} // namespace orloview
