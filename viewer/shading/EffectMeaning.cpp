#include "shading/EffectMeaning.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <initializer_list>
#include <optional>

namespace orloview {

namespace {

/// In small letters, without lines and digits.
std::string plain(std::string_view word) {
    std::string letters;
    for (const char c : word)
        if (std::isalpha(static_cast<unsigned char>(c)) != 0)
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return letters;
}

bool takeIf(std::string_view& word, std::initializer_list<std::string_view> starts) {
    for (const std::string_view start : starts) {
        if (!word.starts_with(start))
            continue;
        word.remove_prefix(start.size());
        return true;
    }
    return false;
}

bool holds(const std::string& word, std::initializer_list<std::string_view> parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&](std::string_view part) { return word.find(part) != std::string::npos; });
}

/// "WorldViewProjection", "viewInverse", "WorldIT"; nothing: something else is in the word.
std::optional<EffectMeaning> matrixOf(std::string_view word) {
    EffectMeaning made;
    made.kind = EffectMeaning::Kind::Matrix;
    if (!word.starts_with("model"))
        takeIf(word, {"matrix", "mat", "gm", "g", "m"});
    made.isInverse = takeIf(word, {"inverse", "inv"});
    if (takeIf(word, {"modelview"}))
        made.world = made.view = true;
    else if (takeIf(word, {"wvp"}))
        made.world = made.view = made.projection = true;
    else
        made.world = takeIf(word, {"world", "model", "object"});
    made.view = takeIf(word, {"view", "camera"}) || made.view;
    made.projection = takeIf(word, {"projection", "project", "proj"}) || made.projection;
    if (takeIf(word, {"inversetranspose", "invtranspose", "invtrans", "it"}))
        made.isInverse = made.isTransposed = true;
    else if (takeIf(word, {"transpose", "trans", "t"}))
        made.isTransposed = true;
    else if (takeIf(word, {"inverse", "inv", "i"}))
        made.isInverse = true;
    takeIf(word, {"matrix", "mat", "xf"});
    const bool isOne = word.empty() && (made.world || made.view || made.projection);
    return isOne ? std::optional(made) : std::nullopt;
}

/// The first number in the words; 0: there is none.
std::size_t numberIn(std::initializer_list<std::string_view> words) {
    for (const std::string_view word : words) {
        const auto at =
            std::find_if(word.begin(), word.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
        if (at != word.end())
            return static_cast<std::size_t>(*at - '0');
    }
    return 0;
}

EffectMeaning::Kind kindOf(const std::string& word, const std::string& object) {
    using Kind = EffectMeaning::Kind;
    const bool isOfEye =
        holds(word, {"camera", "eye", "viewpos", "viewer"}) || holds(object, {"camera", "eye"});
    const bool isOfLight = holds(word, {"light", "lamp"}) || holds(object, {"light", "lamp"});
    if (word == "time" || word == "currenttime")
        return Kind::Time;
    if (holds(word, {"viewportpixelsize", "viewportsize", "viewportdimensions", "rendertargetdimensions"}))
        return Kind::ViewportSize;
    if (holds(word, {"position", "pos"}))
        return isOfEye ? Kind::EyePosition : (isOfLight ? Kind::LightPosition : Kind::Nothing);
    if (holds(word, {"direction", "dir"}))
        return isOfEye ? Kind::EyeDirection : (isOfLight ? Kind::LightDirection : Kind::Nothing);
    if (holds(word, {"ambient"}))
        return isOfLight || holds(object, {"ambient"}) ? Kind::AmbientColor : Kind::Nothing;
    if (holds(word, {"diffuse", "specular", "color", "colour"}))
        return isOfLight ? Kind::LightColor : Kind::Nothing;
    return Kind::Nothing;
}

bool isWordPart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// What a part of a call comes to but for casts, brackets and what is taken of it: a name, or nothing.
std::string_view nameIn(std::string_view text) {
    const auto trim = [&] {
        while (!text.empty() && !isWordPart(text.front()) && text.front() != '(')
            text.remove_prefix(1);
    };
    trim();
    if (text.starts_with("(") && text.find(')') != std::string_view::npos) // "(float3x3)world"
        text.remove_prefix(text.find(')') + 1);
    trim();
    for (const std::string_view type : {"float3x3", "float4x4", "half3x3", "float4x3", "float3x4"})
        if (text.starts_with(type))
            text.remove_prefix(type.size());
    while (!text.empty() && !isWordPart(text.front()))
        text.remove_prefix(1);
    const auto* end = std::find_if_not(text.begin(), text.end(), isWordPart);
    const std::string_view rest(end, static_cast<std::size_t>(text.end() - end));
    return rest.find('(') == std::string_view::npos ? text.substr(0, text.size() - rest.size())
                                                    : std::string_view();
}

/// The two halves of a call of mul; empty: it is none.
std::array<std::string_view, 2> halvesOf(std::string_view behindBracket) {
    int depth = 0;
    std::size_t comma = 0;
    for (std::size_t i = 0; i < behindBracket.size(); ++i) {
        const char c = behindBracket[i];
        if (c == ',' && depth == 0)
            comma = i;
        if (c == ')' && depth == 0)
            return {behindBracket.substr(0, comma),
                    behindBracket.substr(std::min(comma + 1, i), i - std::min(comma + 1, i))};
        depth += (c == '(' ? 1 : 0) - (c == ')' ? 1 : 0);
    }
    return {};
}

} // namespace

EffectMeaning meaningOf(const EffectWords& words) {
    const std::string& word = words.semantic.empty() ? words.name : words.semantic;
    if (std::optional<EffectMeaning> matrix = matrixOf(plain(word)))
        return *matrix;
    EffectMeaning made;
    made.kind = kindOf(plain(word), plain(words.object));
    made.light = numberIn({words.object, words.semantic, words.name});
    const std::string space = plain(words.space);
    made.space = space == "object"                         ? EffectMeaning::Space::Object
                 : holds(space, {"view", "eye", "camera"}) ? EffectMeaning::Space::Eye
                                                           : EffectMeaning::Space::World;
    return made;
}

MatrixUse::MatrixUse(std::string_view source, std::string_view fileName) {
    constexpr std::string_view kCall = "mul";
    constexpr std::size_t kLongestCall = 400;
    long rows = 0;
    long columns = 0;
    for (std::size_t at = source.find(kCall); at != std::string_view::npos; at = source.find(kCall, at + 1)) {
        std::size_t bracket = at + kCall.size();
        while (bracket < source.size() && source[bracket] == ' ')
            ++bracket;
        if ((at > 0 && isWordPart(source[at - 1])) || bracket == source.size() || source[bracket] != '(')
            continue;
        const auto halves = halvesOf(source.substr(bracket + 1, kLongestCall));
        for (const bool isBehind : {false, true}) {
            const std::string_view name = nameIn(halves[isBehind ? 1 : 0]);
            if (!name.empty())
                fKnown.try_emplace(std::string(name), isBehind);
            if (matrixOf(plain(name)))
                ++(isBehind ? rows : columns);
        }
    }
    fUsual = rows == columns ? fileName.ends_with(".fx") : rows > columns;
}

bool MatrixUse::takesRowVectors(const std::string& matrix) const {
    const auto known = fKnown.find(matrix);
    return known == fKnown.end() ? fUsual : known->second;
}

} // namespace orloview
