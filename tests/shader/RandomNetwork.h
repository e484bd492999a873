#pragma once

#include <orlohost/ShadingNodeSpec.h>

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

// Random shading networks, each with a formula of its own in double precision for what it comes to.

struct V3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    V3() = default;
    V3(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}
    explicit V3(double grey) : x(grey), y(grey), z(grey) {}

    friend V3 operator+(const V3& a, const V3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend V3 operator-(const V3& a, const V3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend V3 operator*(const V3& a, const V3& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
    friend V3 operator*(const V3& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
    friend double dot(const V3& a, const V3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
    friend V3 normalized(const V3& v) { return v * (1.0 / std::sqrt(dot(v, v))); }
    friend V3 mixed(const V3& a, const V3& b, double share) { return a * (1.0 - share) + b * share; }
};

/// The surface of the tests: a plane that fills the picture, 2 in front of the eye, with texture coordinates
/// and a normal that are the same linear functions of place for both sides.
struct Sample {
    double x; ///< pixels; the middle of the first is at 0.5
    double y;
    int side; ///< of the picture, pixels

    Sample at(double otherX, double otherY) const { return {otherX, otherY, side}; }
    V3 position() const { return {2.0 * deviceX(), 2.0 * deviceY(), -2.0}; }
    V3 uv(int set) const;
    V3 view() const { return normalized(position() * -1.0); }
    double deviceX() const { return 2.0 * x / side - 1.0; }
    double deviceY() const { return 2.0 * y / side - 1.0; }
};
inline const V3 kPlaneNormal(0.1, 0.25, 1.0);
inline const V3 kPlaneColor(0.9, 0.6, 0.3);

/// A light as GL has it, in eye space.
struct TestLight {
    LightSpec spec;
    V3 color;
    V3 place; ///< or the direction to a directional light
    V3 spotDirection{0.0, 0.0, -1.0};
    double cutoff = 60.0; ///< degrees
    double exponent = 0.0;
    double range = 0.0;
    double innerCosine = 0.0;

    V3 directionFrom(const V3& position) const;
    V3 colorAt(const V3& position) const;
};

/// Something that feeds an input, and what it comes to.
struct Made {
    std::shared_ptr<koShadingDag::ShadingNodeSpec> node;
    std::string output;
    std::function<V3(const Sample&)> value;

    /// Feeds an input with another's output. What comes of it.
    std::function<V3(const Sample&)> feedFrom(const char* input, const Made& source);
};

class RandomNetwork {
public:
    /// `texels` are those of the one texture that file textures have, 4 x 4, from the first row on.
    RandomNetwork(unsigned seed, IHWTexture* texture, std::vector<V3> texels, std::vector<TestLight> lights)
        : fRandom(seed), fTexture(texture), fTexels(std::move(texels)), fLights(std::move(lights)) {}

    /// A network whose last node is of that kind, and at most so many nodes one behind the other.
    Made make(koShadingDag::NodeKind kind, int depth);

private:
    struct Fed {
        std::function<V3(const Sample&)> value;
        bool isNeutral = false; ///< nothing feeds it
    };

    Made makeFor(koShadingDag::ValueType type, int depth);
    Fed feed(Made& made, const char* input, koShadingDag::ValueType type, const V3& fallback, int depth);
    Fed feedShare(Made& made, const char* input, double fallback, int depth);
    Fed feedUv(Made& made, int depth);
    Fed feedNormal(Made& made, const char* input, int depth);
    void surface(Made& made, int depth);
    void microfacets(Made& made, int depth);
    double number(double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(fRandom);
    }
    int choice(int count) { return static_cast<int>(fRandom() % static_cast<unsigned>(count)); }

    std::mt19937 fRandom;
    IHWTexture* fTexture;
    std::vector<V3> fTexels;
    std::vector<TestLight> fLights;
};
