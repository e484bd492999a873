#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace orloview {

/// What a parameter of an effect asks the viewer for, by its semantic, its annotations or its name.
struct EffectMeaning {
    enum class Kind : std::uint8_t {
        Nothing,
        Matrix,
        LightPosition,
        LightDirection, ///< in which its light goes
        LightColor,
        AmbientColor,
        EyePosition,
        EyeDirection, ///< in which it looks
        Time,         ///< seconds
        ViewportSize  ///< pixels
    };
    enum class Space : std::uint8_t { World, Object, Eye };

    Kind kind = Kind::Nothing;

    // Of a matrix: which of these it leads through, in this order, and what is done to it then.
    bool world = false;
    bool view = false;
    bool projection = false;
    bool isInverse = false;
    bool isTransposed = false;

    std::size_t light = 0;
    Space space = Space::World;
};

struct EffectWords {
    std::string semantic;
    std::string name;   ///< of the parameter
    std::string object; ///< annotations; empty: there are none
    std::string space;
};

/// Words are the same in small letters and in capitals. Without a semantic, names tell the same.
EffectMeaning meaningOf(const EffectWords& words);

/// Whether an effect multiplies vectors by a matrix from the left, as Direct3D's do, so that its rows are the
/// columns of others: by how the source uses it, or else all others, or else how the file's name ends.
class MatrixUse {
public:
    MatrixUse(std::string_view source, std::string_view fileName);

    bool takesRowVectors(const std::string& matrix) const;

private:
    std::map<std::string, bool> fKnown; ///< by the matrix's name
    bool fUsual;
};

} // namespace orloview
