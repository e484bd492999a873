#pragma once

#include "gl/Export.h"
#include "shader/CGcontextSingleton.h"

#include <cstdint>
#include <map>
#include <vector>

#include <orlohost/ShadingNodeSpec.h>
#include <orlohost/koLinear.h>
#include <orlohost/koString.h>

/// Compiles Cg shaders of files and of shading networks, once for each request, and binds them.
///
///     CGManager manager(CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1);
///     CGManager::CGShader toon = manager.bindShader("toon", {"-DBANDS=4"}, {});
///     toon.setParameter3f(CGManager::kFragmentProgram, "bodyColor", 1, 0.5F, 0);
///     // draw; later frames: toon.enable()
///     toon.disable();
///
/// A shader N of a file is two: N_vertex.cg and N_fragment.cg in the folder "bin/Cg" of
/// HWEnvironment::orlo_path.
///
/// The Cg context is one for all managers, and any that ends takes it down with all programs: those that
/// other managers keep are stale then, and sceneHasChanged lets go of them. Without the Cg run time nothing
/// compiles and nothing is bound. Everything needs the table and a current context.
class ORLOGL_API CGManager : public IHWShaderManager {
public:
    /// What a light of a compiled shader is: named in what the shader is built from.
    enum CGLightType : uint32_t {
        kPointLight = 0,
        kSpotLight = 1,
        kDirectionalLight = 2,
        kAmbientLight = 3,
    };

    /// How an image tells what is seen through.
    enum CGTransparencyType : uint32_t {
        kOpacityInAlpha = 2,
        kTransparencyInRGB = 3,
    };

    /// Which program of a shader is meant.
    enum CGProgramType : uint32_t {
        kVertexProgram = 0,
        kFragmentProgram = 1,
    };

    /// A vertex and a fragment program, each of which may be missing. A plain value: copies share the
    /// programs, and only destroy() ends them.
    class ORLOGL_API CGShader {
    public:
        CGprogram getVertexProgram() const { return fVertexProgram; }     ///< null where there is none
        CGprogram getFragmentProgram() const { return fFragmentProgram; } ///< null where there is none

        /// Null for a type that is none.
        CGprogram getProgramFromType(CGProgramType type) const;

        /// Compiles a file with these switches (up to a null; null: none) and hands it to GL. A program that
        /// is there already is handed over once more as it is. False where there is no profile, and where it
        /// doesn't compile, which is told on standard output.
        bool loadVertexProgram(const koString::IString& path, const char** options);

        /// The same for the fragment program.
        bool loadFragmentProgram(const koString::IString& path, const char** options);

        /// Compiles a source, in the place of what was there: a vertex program so that it puts vertices
        /// exactly where GL's own functions do. One that doesn't compile leaves null, without a word.
        void loadVertexProgramFromString(const koString::IString& source);

        /// The same for the fragment program.
        void loadFragmentProgramFromString(const koString::IString& source);

        /// Makes what programs there are current, their profiles enabled.
        void enable() const;

        /// Hands the stages of these programs back to GL's own functions.
        void disable() const;

        /// Disables and ends the programs.
        void destroy();

        /// A parameter of one of the programs by its name ("light.color"). Nothing happens where there is
        /// none of that name. Values stay with the program.
        ///
        /// Oddity: the flag of setParameter1f means nothing. Vectors go out with 1 behind them like points:
        /// shaders that take both rely on it.
        void setParameter1f(CGProgramType type, const koString::CString& name, float value, bool flag) const;

        /// As 1 or 0.
        void setParameterBool(CGProgramType type, const koString::CString& name, bool value) const;

        /// Two floats.
        void setParameter2f(CGProgramType type, const koString::CString& name, float x, float y) const;

        /// Three floats.
        void setParameter3f(CGProgramType type, const koString::CString& name, float x, float y,
                            float z) const;

        /// Three doubles.
        void setParameter3d(CGProgramType type, const koString::CString& name, double x, double y,
                            double z) const;

        /// Three doubles of a place or vector.
        void setParameter3fv(CGProgramType type, const koString::CString& name,
                             const koLinear::Point& point) const;

        /// Three floats of a place or vector.
        void setParameter3fv(CGProgramType type, const koString::CString& name,
                             const koLinear::PointFlt& point) const;

        /// Four floats.
        void setParameter4f(CGProgramType type, const koString::CString& name, float x, float y, float z,
                            float w) const;

        /// Four doubles.
        void setParameter4d(CGProgramType type, const koString::CString& name, double x, double y, double z,
                            double w) const;

        /// Three doubles and 1.
        void setParameter4fv(CGProgramType type, const koString::CString& name,
                             const koLinear::HPoint& point) const;

        /// Three floats and 1.
        void setParameter4fv(CGProgramType type, const koString::CString& name,
                             const koLinear::Point& point) const;

        /// Three doubles of a vector, and 1.
        void setParameter4fv(CGProgramType type, const koString::CString& name,
                             const koLinear::PointFlt& point) const;

        /// Three floats of a vector, and 1.
        void setParameter4fv(CGProgramType type, const koString::CString& name,
                             const koLinear::Vector& vector) const;

        /// Four doubles.
        void setParameter4fv(CGProgramType type, const koString::CString& name,
                             const koLinear::VectorFlt& vector) const;

        /// Matrices as they are stored, read column by column, as GL does, or row by row.
        void setParameterMatrix(CGProgramType type, const koString::CString& name,
                                const koLinear::ProjMatrix& matrix) const;

        /// The same matrix in floats.
        void setParameterMatrix(CGProgramType type, const koString::CString& name,
                                const koLinear::ProjMatrixFlt& matrix) const;

        /// With rows for columns.
        void setParameterMatrixRowMajor(CGProgramType type, const koString::CString& name,
                                        const koLinear::ProjMatrix& matrix) const;

        /// The same in floats.
        void setParameterMatrixRowMajor(CGProgramType type, const koString::CString& name,
                                        const koLinear::ProjMatrixFlt& matrix) const;

        /// Puts a texture, by its GL name, on a sampler and binds it to the sampler's unit. Takes a pending
        /// GL error away.
        void setParameterTexture(CGProgramType type, const koString::CString& name,
                                 unsigned int texture) const;

        /// The number of the parameter's register: of a sampler its texture unit. 0xFFFFFFFF where there is
        /// none of that name.
        unsigned int getParameterIndex(CGProgramType type, const koString::CString& name) const;

        /// The set of texture coordinates that an input reads; 0xFFFFFFFF for one with another semantic, 0
        /// where there is none of that name. `found`, which may be null, tells the last two apart.
        unsigned int getTextureInterpolant(CGProgramType type, const koString::CString& name,
                                           bool* found) const;

        /// 0 to 15 for "TEXCOORD0" to "TEXCOORD15", spelled like that; else 0xFFFFFFFF.
        static unsigned int getTextureOffsetFromSemantic(const koString::CString& semantic);

        CGprogram fVertexProgram = nullptr;              ///< null where there is none
        CGprogram fFragmentProgram = nullptr;            ///< null where there is none
        CGprofile fVertexProfile = CG_PROFILE_UNKNOWN;   ///< what it was compiled for
        CGprofile fFragmentProfile = CG_PROFILE_UNKNOWN; ///< what it was compiled for
    };

    /// Orders shaders by their names.
    struct ByName {
        /// Whether a stands before b.
        bool operator()(const koString::IString& a, const koString::IString& b) const {
            return koString::less(a, b);
        }
    };

    /// Loads the Cg run time and makes the context, unless they are there.
    CGManager(CGprofile vertexProfile, CGprofile fragmentProfile);

    /// Destroys its shaders, then the Cg context that all managers share.
    ~CGManager() override;

    /// "Unknown" for none.
    const char* vertexProfileString() const;
    const char* fragmentProfileString() const; ///< the same for fragments

    /// The names that light types and transparencies have in shader sources; empty for what has none.
    koString::CString getLightStringFromType(CGLightType type);

    /// The word for it in the names of shaders.
    koString::CString getTransparencyTypeStringFromType(CGTransparencyType type);

    /// The shader of that name, compiled with these switches and bound. It is compiled once for each list of
    /// switches. Without both programs, because a file isn't there or doesn't compile, nothing is bound; what
    /// doesn't compile is told on standard output and tried again next time.
    ///
    /// Looks for the files each time. A host that draws often keeps the result, whose enable() costs less.
    CGShader bindShader(const koString::CString& name, const std::vector<koString::CString>& vertexOptions,
                        const std::vector<koString::CString>& fragmentOptions);

    /// The vertex program alone. One that doesn't compile is not tried again before releaseShaderMap.
    CGShader bindVertexShader(const koString::CString& name,
                              const std::vector<koString::CString>& vertexOptions);

    /// The node's shader of that key, compiled first where there is none yet, and bound: only the key
    /// decides, so let it tell all that the sources depend on (ShadingNodeSpec::networkKey does). What
    /// doesn't compile is kept all the same, as a shader without that program.
    ///
    /// The node gets a manager where it has none, and the shader stays where it is as long as that one lives.
    /// Null, with nothing called, where the node's manager is of another kind or memory is short.
    const CGShader* bindKOSLShader(koShadingDag::ShadingNodeSpec& node, const koString::CString& key,
                                   const std::vector<LightSpec>* lights) const;

    /// Destroys all shaders, in the order of their keys.
    void releaseShaderMap();

    /// Whatever a scene changes may be compiled into its shaders: releases them all.
    void sceneHasChanged() { releaseShaderMap(); }

    CGprofile fVertexProfile;   ///< what vertex programs are compiled for
    CGprofile fFragmentProfile; ///< what fragment programs are compiled for

    /// The shaders made so far, by their names and options.
    std::map<koString::IString, CGShader, ByName> fShaderMap;

private:
    using Options = std::vector<koString::CString>;

    CGShader emptyShader() const { return {nullptr, nullptr, fVertexProfile, fFragmentProfile}; }
    CGShader findOrCompile(const koString::CString& name, const Options& vertexOptions,
                           const Options& fragmentOptions);
    CGShader findOrCompileVertex(const koString::CString& name, const Options& vertexOptions);
    const CGShader* findOrCompileMaterial(const koShadingDag::ShadingNodeSpec& node,
                                          const koString::IString& key, const std::vector<LightSpec>* lights,
                                          CGShader empty);
};

/// Whether it can be opened for reading.
ORLOGL_API bool fileExists(const koString::IString& path);
