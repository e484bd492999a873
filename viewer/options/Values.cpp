#include "options/Values.h"

#include "base/Text.h"

#include <algorithm>
#include <cmath>

namespace orloview {

namespace {

constexpr int kLargestSide = 65536;

struct NamedColor {
    const char* name;
    unsigned rgb;
};

constexpr NamedColor kNamedColors[] = {
    {"black", 0x000000},   {"silver", 0xC0C0C0}, {"gray", 0x808080}, {"grey", 0x808080},
    {"white", 0xFFFFFF},   {"maroon", 0x800000}, {"red", 0xFF0000},  {"purple", 0x800080},
    {"fuchsia", 0xFF00FF}, {"green", 0x008000},  {"lime", 0x00FF00}, {"olive", 0x808000},
    {"yellow", 0xFFFF00},  {"navy", 0x000080},   {"blue", 0x0000FF}, {"teal", 0x008080},
    {"aqua", 0x00FFFF},    {"orange", 0xFFA500},
};

} // namespace

void wrong(const std::string& name, const std::string& value, const std::string& wanted) {
    throw Failure(kExitUsage, name + " " + value + ": " + wanted);
}

size_t indexOf(const std::string& what, const std::string& wanted, const std::vector<std::string>& names) {
    if (const auto named = std::find(names.begin(), names.end(), wanted); named != names.end())
        return static_cast<size_t>(named - names.begin());
    const std::optional<size_t> number = parseNumber<size_t>(wanted);
    if (number && *number < names.size())
        return *number;
    const std::string name = "--" + what;
    if (names.empty())
        wrong(name, wanted, "the model has no " + what + "; leave " + name + " out");
    constexpr size_t kMostNamed = 20;
    std::string known;
    for (size_t i = 0; i < std::min(names.size(), kMostNamed); ++i)
        known +=
            (i ? ", " : "") + std::to_string(i) + (names[i].empty() ? "" : " (" + printable(names[i]) + ")");
    if (names.size() > kMostNamed)
        known += " ... " + std::to_string(names.size() - 1);
    wrong(name, wanted, "the model has no such " + what + "; it has " + known);
}

int parseCount(const std::string& name, const std::string& text, int least, int most) {
    const std::optional<int> number = parseNumber<int>(text);
    if (!number || *number < least || *number > most)
        wrong(name, text,
              "give a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    return *number;
}

Share parseShare(const std::string& text) {
    constexpr int kMostParts = 100000;
    const size_t slash = std::min(text.find('/'), text.size());
    const std::optional<int> part = parseNumber<int>(std::string_view(text).substr(0, slash));
    const std::optional<int> of =
        parseNumber<int>(std::string_view(text).substr(std::min(slash + 1, text.size())));
    if (!part || !of || *part < 1 || *part > *of || *of > kMostParts)
        wrong("--only", text, "give a part and how many there are, such as --only 2/4");
    return {*part, *of};
}

PixelSize parseSize(const std::string& text) {
    const size_t x = text.find('x');
    std::optional<int> width;
    std::optional<int> height;
    if (x != std::string::npos) {
        width = parseNumber<int>(std::string_view(text).substr(0, x));
        height = parseNumber<int>(std::string_view(text).substr(x + 1));
    }
    if (!width || !height || *width < 1 || *height < 1 || *width > kLargestSide || *height > kLargestSide)
        wrong("--size", text, "give width and height in pixels, each 1 to 65536, such as --size 1280x720");
    return {*width, *height};
}

size_t parseMemory(const std::string& text) {
    const char unit = text.empty() ? ' ' : text.back();
    const std::optional<unsigned> count =
        parseNumber<unsigned>(std::string_view(text).substr(0, text.size() - 1));
    if (!count || *count == 0 || *count > 1000000 || (unit != 'M' && unit != 'G'))
        wrong("--limit-memory", text, "give megabytes or gigabytes, such as 500M or 8G");
    return size_t{*count} << (unit == 'M' ? 20U : 30U);
}

double parseAngle(const std::string& name, const std::string& text, double most) {
    const std::optional<double> degrees = parseNumber<double>(text);
    if (!degrees || !(std::abs(*degrees) <= most)) {
        const std::string limit = std::to_string(static_cast<int>(most));
        wrong(name, text, "give degrees from -" + limit + " to " + limit);
    }
    return *degrees;
}

double parseTime(const std::string& text) {
    const std::optional<double> seconds = parseNumber<double>(text);
    if (!seconds || !(*seconds >= 0.0 && *seconds <= 1e6))
        wrong("--time", text, "give seconds, 0 or more, such as --time 1.5");
    return *seconds;
}

double parseRate(const std::string& text) {
    const std::optional<double> rate = parseNumber<double>(text);
    if (!rate || !(*rate >= 0.001 && *rate <= 1000.0))
        wrong("--fps", text, "give pictures a second, 0.001 to 1000, such as --fps 25");
    return *rate;
}

Clip parseClip(const std::string& text) {
    const size_t axis = text.empty() ? text.npos : std::string_view("xyz").find(text.front());
    const std::optional<double> place = text.size() > 2 && text[1] == ','
                                            ? parseNumber<double>(std::string_view(text).substr(2))
                                            : std::nullopt;
    if (axis == text.npos || !place || !std::isfinite(*place))
        wrong("--clip", text, "give an axis and a place on it, such as --clip y,1.5");
    return {static_cast<int>(axis), *place};
}

std::array<koLinear::Point, 2> parsePoints(const std::string& text) {
    constexpr int kNumbers = 3;
    size_t comma = text.find(',');
    for (int i = 1; i < kNumbers && comma != text.npos; ++i)
        comma = text.find(',', comma + 1);
    if (comma == text.npos)
        wrong("--measure", text, "give two points, such as --measure 0,0,0,1,0,-2.5");
    return {parseTriple<koLinear::Point>("--measure", text.substr(0, comma)),
            parseTriple<koLinear::Point>("--measure", text.substr(comma + 1))};
}

float parsePointSize(const std::string& text) {
    const std::optional<float> size = parseNumber<float>(text);
    if (!size || !(*size >= 0.1F && *size <= 64.0F))
        wrong("--point-size", text, "give pixels, 0.1 to 64");
    return *size;
}

double parseFieldOfView(const std::string& text) {
    const std::optional<double> degrees = parseNumber<double>(text);
    if (!degrees || !(*degrees > 0.0 && *degrees < 180.0))
        wrong("--fov", text, "give the vertical angle in degrees, above 0 and below 180");
    return *degrees;
}

bool isSkyFile(const std::string& text) {
    const std::string name = lowered(text);
    return name.ends_with(".hdr") || name.ends_with(".pic") || name.ends_with(".exr");
}

float parseExposure(const std::string& text) {
    const std::optional<double> doublings = parseNumber<double>(text);
    if (!doublings || !(std::abs(*doublings) <= 20.0))
        wrong("--exposure", text, "give how many times light is doubled, -20 to 20, such as 1.5");
    return static_cast<float>(std::exp2(*doublings));
}

std::optional<Sky> parseSky(const std::string& text) {
    if (text == "none")
        return std::nullopt;
    std::optional<Sky> sky = Sky::named(text);
    if (!sky)
        wrong("--sky", text,
              "give one of none, " + Sky::names(", ") + ", or a picture of a sky, .hdr or .exr");
    return sky;
}

CgRequest::Value parseCgValue(const std::string& text) {
    const char* const kWanted = "give NAME= and 1 to 4 numbers, or the 16 of a matrix, such as "
                                "--cg-set bodyColor=1,0.5,0";
    const size_t sign = text.find('=');
    if (sign == 0 || sign == std::string::npos)
        wrong("--cg-set", text, kWanted);
    CgRequest::Value value{text.substr(0, sign), {}};
    std::string_view rest = std::string_view(text).substr(sign + 1);
    for (bool more = true; more;) {
        const size_t comma = rest.find(',');
        const std::optional<float> number = parseNumber<float>(rest.substr(0, comma));
        if (!number)
            wrong("--cg-set", text, kWanted);
        value.numbers.push_back(*number);
        more = comma != std::string_view::npos;
        rest.remove_prefix(more ? comma + 1 : rest.size());
    }
    if ((value.numbers.size() > 4 && value.numbers.size() != 16))
        wrong("--cg-set", text, kWanted);
    return value;
}

std::optional<std::array<float, 4>> parseColor(const std::string& text) {
    const auto fromBytes = [](unsigned long rgba) {
        std::array<float, 4> color{};
        for (size_t channel = 0; channel < 4; ++channel)
            color[channel] = static_cast<float>((rgba >> (24 - 8 * channel)) & 0xFFU) / 255.0F;
        return color;
    };
    if (text == "transparent")
        return std::array<float, 4>{0.0F, 0.0F, 0.0F, 0.0F};
    for (const NamedColor& named : kNamedColors) {
        if (text == named.name)
            return fromBytes((static_cast<unsigned long>(named.rgb) << 8) | 0xFFU);
    }
    if (text.empty() || text[0] != '#')
        return std::nullopt;
    std::string digits = text.substr(1);
    if (digits.size() == 3)
        digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
    if (digits.size() == 6)
        digits += "ff";
    unsigned long rgba = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), rgba, 16);
    if (digits.size() != 8 || error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return fromBytes(rgba);
}

} // namespace orloview
