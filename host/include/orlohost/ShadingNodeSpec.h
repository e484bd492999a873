#pragma once

#include "orlohost/Export.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/koColor.h"
#include "orlohost/koString.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// A host's materials: networks of shading nodes, and the compiler that makes shaders of them.
//
//     auto wood = std::make_shared<koShadingDag::ShadingNodeSpec>(koShadingDag::kFileTexture);
//     wood->setTexture(texture, usage);
//     koShadingDag::ShadingNodeSpec material(koShadingDag::kMetallicRoughness);
//     material.connect("baseColor", wood, "color");
//     material.setValue("roughness", 0.4F);
//     compileMaterialToGlsl(material, &lights, vertexSource, fragmentSource);

/// What a renderer hangs on a material: its compiled shaders. The material's node deletes it, while the
/// context that the shaders live in is current.
class ORLOHOST_API IHWShaderManager {
public:
    IHWShaderManager() = default;
    virtual ~IHWShaderManager();

    IHWShaderManager(const IHWShaderManager&) = delete;
    IHWShaderManager& operator=(const IHWShaderManager&) = delete;
};

/// What a shader has to know of a light in advance; colours and places come from GL's light state. The i-th
/// of a list stands for GL light i. A sky takes no GL light: put it behind the others, and not more than one.
/// kSky has a color for each height, kSkyMap one for each direction.
///
/// A GL light's diffuse colour is what a white surface sends out that faces it, an ambient light's ambient
/// colour what it sends out from anywhere.
struct LightSpec {
    /// What kind of light it is.
    enum Type : uint32_t { kPoint = 0, kSpot = 1, kDirectional = 2, kAmbient = 3, kSky = 4, kSkyMap = 5 };

    /// Its kind.
    Type fType = kPoint;

    /// It ends at a distance: uniform float lightNInverseRange (1 / distance).
    bool fHasRange = false;

    /// Spots: the cone fades from an inner angle to the cutoff, in the place of GL's exponent: uniform float
    /// lightNInnerCosine.
    bool fHasInnerCone = false;

    /// It has a shadow map: uniform sampler2DShadow lightNShadowMap and mat4 lightNShadowMatrix, from eye
    /// space to the map, 0 to 1.
    bool fCastsShadow = false;

    /// Ambient lights and skies: what is near keeps them off: uniform sampler2D occlusionMap, what is left of
    /// them, and mat4 occlusionMatrix, from eye space to the map, 0 to 1.
    bool fIsOccluded = false;
};

namespace koShadingDag {

/// Floats go where colours are asked for, as grey. Nothing else changes its type.
enum ValueType : uint32_t { kFloat = 0, kVector2 = 1, kColor = 2, kNormal = 3 };

/// Docs: docs/shading-networks.md lists the inputs, settings and outputs of each.
enum NodeKind : uint32_t {
    kTexCoord,
    kVertexColor,
    kFileTexture,
    kRamp,
    kNoise,
    kChecker,
    kBumpMap,
    kNormalMap,
    kMultiply,
    kMix,
    kLambert,
    kBlinnPhong,
    kMetallicRoughness,
    kSpecularGlossiness,
    kUnlit,
    kNodeKindCount
};

/// What a surface does with its opacity: nothing, hide what is below the cutoff, or shine through (colours
/// come out multiplied by it).
enum AlphaMode : int32_t { kOpaque = 0, kMask = 1, kBlend = 2 };

/// What a ramp does between its stops.
enum Interpolation : int32_t { kLinear = 0, kSmooth = 1, kStep = 2 };

/// How a texture of a network is applied.
struct TextureUsage {
    IHWTexUsage::WrapMode fWrapS = IHWTexUsage::kRepeat;      ///< across the picture
    IHWTexUsage::WrapMode fWrapT = IHWTexUsage::kRepeat;      ///< up the picture
    IHWTexUsage::Filter fMinFilter = IHWTexUsage::kTrilinear; ///< where it is drawn smaller
    IHWTexUsage::Filter fMagFilter = IHWTexUsage::kLinear;    ///< where it is drawn larger
    koColor::Color fBorderColor;                              ///< beyond the picture, with a clamping wrap
    bool fAnisotropic = false;                                ///< sharper where it is seen at a slant
};

/// A node of a shading network, and with all that is connected to it a whole material.
///
/// An input is fed by a connection, else by the value set, else by its kind's default. Defaults cost nothing:
/// they are part of the shader. Values become uniforms, so that materials that differ in them alone share one
/// shader.
class ORLOHOST_API ShadingNodeSpec {
public:
    /// An input of the network that a renderer sets: its name in the shader, and where its 1, 2 or 3 floats
    /// are, for as long as the network stays as it is.
    struct Uniform {
        koString::CString fName; ///< of the variable in the shader
        uint32_t fComponents;    ///< 1, 2 or 3
        const float* fValues;    ///< as many; the node's own
    };

    /// A 2D texture of the network and the name of its sampler.
    struct Sampler {
        koString::CString fName; ///< of the variable in the shader
        IHWTexture* fTexture;    ///< no reference
        TextureUsage fUsage;     ///< how it is applied
    };

    /// A node of that kind, with its default values.
    explicit ShadingNodeSpec(NodeKind kind = kLambert);

    /// Deletes the manager and lets go of what is connected.
    ~ShadingNodeSpec();

    ShadingNodeSpec(const ShadingNodeSpec&) = delete;
    ShadingNodeSpec& operator=(const ShadingNodeSpec&) = delete;

    NodeKind kind() const { return fKind; } ///< what it computes

    /// Feeds an input from another node's output. Empty when done, else what is wrong, for people: a name
    /// that isn't there, types that don't fit, a circle. Then nothing has changed.
    [[nodiscard]] koString::CString connect(const koString::CString& input,
                                            std::shared_ptr<ShadingNodeSpec> source,
                                            const koString::CString& output);

    /// Takes the node away that feeds an input; its value is used again.
    void disconnect(const koString::CString& input);

    /// False, with nothing changed, for an input that isn't there or of another type; a color takes a float
    /// as grey, a normal takes no value.
    bool setValue(const koString::CString& input, float value);

    /// Two numbers; false where the input has another size, or there is none.
    bool setValue(const koString::CString& input, float x, float y);

    /// A colour; false as above.
    bool setValue(const koString::CString& input, const koColor::Color& value);

    /// Back to the default.
    void unsetValue(const koString::CString& input);

    /// What can't change without another shader, by name and range (docs/shading-networks.md). False, with
    /// nothing changed, for what isn't there.
    bool setSetting(const koString::CString& name, int32_t value);

    /// File textures: what is sampled; it has to outlive the node. Null: white.
    void setTexture(IHWTexture* texture, const TextureUsage& usage);

    /// What compiles the network, or null.
    IHWShaderManager* shaderManager() const { return fShaderManager.get(); }

    /// Takes the manager over; the one before is deleted.
    void assignShaderManager(IHWShaderManager* manager) { fShaderManager.reset(manager); }

    /// All that makes the shader of this network under these lights what it is: equal keys, equal sources.
    koString::CString networkKey(const std::vector<LightSpec>* lights) const;

    /// What a renderer has to feed the shader with.
    std::vector<Uniform> uniforms() const;

    /// The textures of the whole network, in the order of the shader's samplers.
    std::vector<Sampler> samplers() const;

    /// For compilers.
    struct Input {
        std::shared_ptr<ShadingNodeSpec> fSource; ///< null: not connected
        uint32_t fOutput = 0;                     ///< number of the source's output
        bool fIsSet = false;                      ///< whether the host gave a value
        float fValue[3] = {};                     ///< used while nothing is connected
    };
    const std::vector<Input>& inputs() const { return fInputs; } ///< in the order of the kind's
    /// Choices of the node that are no numbers, in its own order.
    const std::vector<int32_t>& settings() const { return fSettings; }
    IHWTexture* texture() const { return fTexture; }            ///< of a texture node, or null
    const TextureUsage& textureUsage() const { return fUsage; } ///< of a texture node

private:
    Input* findInput(const koString::CString& name, ValueType type);

    NodeKind fKind;
    std::vector<Input> fInputs;
    std::vector<int32_t> fSettings;
    IHWTexture* fTexture = nullptr;
    TextureUsage fUsage;
    std::unique_ptr<IHWShaderManager> fShaderManager;
};

} // namespace koShadingDag

/// Makes GLSL 1.20 of a network: the first output of the node under these lights (none where null).
/// Attributes are GL's own, as GLRouting sets them up: gl_Vertex, gl_Normal, gl_Color, and texture coordinate
/// set N in gl_MultiTexCoordN. Surfaces are shaded in eye space. Colours come out linear.
///
/// A network that is too large, and a ninth light, give sources that don't compile and say why.
ORLOHOST_API void compileMaterialToGlsl(const koShadingDag::ShadingNodeSpec& node,
                                        const std::vector<LightSpec>* lights, koString::CString& vertexSource,
                                        koString::CString& fragmentSource);

/// The same in Cg, with the same names of uniforms and samplers (which are global). The entries are called
/// main. Compile the vertex program with "-posinv": it leaves the position to that.
ORLOHOST_API void compileMaterialToCg(const koShadingDag::ShadingNodeSpec& node,
                                      const std::vector<LightSpec>* lights, koString::CString& vertexSource,
                                      koString::CString& fragmentSource);
