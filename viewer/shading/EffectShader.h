#pragma once

#include "draw/SceneLights.h"
#include "draw/Shading.h"
#include "shading/EffectCalls.h"
#include "shading/EffectMeaning.h"
#include "shading/UserShader.h"
#include "texture/TextureStore.h"

#include <string>
#include <vector>

namespace orloview {

/// An effect of the user's. Its parameters get what their semantics, annotations or names ask for (see
/// EffectMeaning), its textures the pictures that they name, beside its file; without one the base colour or
/// the normal map of what is drawn, where the name asks for that, else white. Passes are drawn one after
/// another, each from the states that materials are drawn with.
class EffectShader final : public UserShader {
public:
    /// Throws Failure: kExitUsage where there is no such effect or technique, none of its techniques can be
    /// used, or it has no such parameter; kExitNoGL without Cg.
    EffectShader(const CgRequest& request, const Scene& scene, SceneLights& lights, float exposure);
    ~EffectShader() override;

    void beginFrame(const View& view, int width, int height) override;
    void setTime(double seconds) override;
    void bind() override {}
    void setTextures(const TextureLayer* base, const TextureLayer* normal) override;
    void draw(const koLinear::AffineMatrix& toWorld, const std::function<void()>& draw) override;
    void unbind() override {}
    std::vector<std::string> warnings() const override;

private:
    struct Asked {
        CGparameter parameter;
        EffectMeaning meaning;
        size_t columns; ///< numbers, of a matrix in a row
        size_t rows;    ///< of a matrix
        bool takesRows; ///< of a matrix: vectors stand before it

        /// Whether what is drawn decides it, not the frame alone.
        bool isOfObject() const { return meaning.world || meaning.space == EffectMeaning::Space::Object; }
    };

    enum class Picture : std::uint8_t { OfFile, Base, Normal, White };

    struct Map {
        CGparameter parameter; ///< a texture or a sampler
        bool isSampler;
        Picture picture;
        GLTexture2D* texture; ///< of a file; null: it can't be read
    };

    void read();
    void chooseTechnique();
    std::string faultOf(CGtechnique technique) const;
    void addParameters();
    void addMatrix(CGparameter parameter, const EffectMeaning& meaning, const MatrixUse& use);
    void addMap(CGparameter parameter, bool isSampler);
    std::string pictureOf(CGparameter parameter) const;
    std::string annotation(CGparameter parameter, const char* name) const;
    void setValue(const CgRequest::Value& value) const;
    void feed(const Asked& asked, const koLinear::AffineMatrix& toWorld) const;
    void feedMatrix(const Asked& asked, const koLinear::AffineMatrix& toWorld) const;
    koLinear::Vector vectorOf(const Asked& asked, const koLinear::AffineMatrix& toWorld, bool& isPlace) const;
    void setMap(const Map& map, GLuint texture) const;

    const CgRequest fRequest;
    SceneLights& fLights;
    const float fExposure;
    const koLinear::Point fMiddle;
    const double fFar; ///< how far away lights without a place are said to be
    EffectCalls fCg;
    CGeffect fEffect = nullptr;
    CGtechnique fTechnique = nullptr;
    std::vector<Asked> fAsked;
    std::vector<Map> fMaps;
    Scene fPictures; ///< nothing but what the effect's textures name
    TextureStore fStore;
    GLTexture2D* fWhite = nullptr;
    GLTexture2D* fFlat = nullptr; ///< a normal map that leaves everything as it is
    std::vector<std::string> fNotes;

    View fView;
    int fWidth = 1;
    int fHeight = 1;
    double fSeconds = 0.0;
    bool fIsNewFrame = true; ///< whether what the frame decides hasn't been set yet
};

} // namespace orloview
