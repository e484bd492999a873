// Every public name, by the two umbrellas alone. That it compiles and links is the test; running it proves
// that nothing was left to a lazy look-up.

#include <orlogl.h>
#include <orlohost.h>

#include <type_traits>

namespace {

const void* volatile sink;

/// Makes the linker find what names stand for. A pointer to a member is wider than a plain one, so the
/// address of its copy is taken.
template <typename... T>
void use(const T&... names) {
    for (const void* address : {static_cast<const void*>(&names)...})
        sink = address;
}

template <typename T>
constexpr bool kComplete = sizeof(T) > 0;

void glAccess() {
    use(GLFunctionTable::fpGlobalFunctionTable, GLFunctionTable::fsNumInstances_GLFunctionTable,
        &GLFunctionTable::nullify, &GLFunctionTable::nullify_platform, &GLFunctionTable::populate,
        &GLFunctionTable::populate_platformExtensions, &GLFunctionTable::ensureLiveMultitexture,
        &GLFunctionTable::usable, &GLFunctionTable::TrapBefore, &GLFunctionTable::TrapAfter,
        &GLFunctionTable::TrapBefore_PossiblyBeginEnd, &GLFunctionTable::TrapAfter_PossiblyBeginEnd,
        &GLFunctionTable::TrapAfterLoadProgramNV, &GLFunctionTable::fExtSupported,
        &GLFunctionTable::fExtEnabled, &GLFunctionTable::fMaxTextureUnits,
        &GLFunctionTable::fMaxTextureCoords, &GLFunctionTable::fMaxTextureImageUnits,
        &GLFunctionTable::fMaxTextureSize, &GLFunctionTable::fMaxVertexAttribs,
        &GLFunctionTable::fMaxArrayTextureLayers, &GLFunctionTable::fInBeginEnd, &isExtensionSupported,
        &glXCreateGLXPbuffer);
    const GLFunctionTable table;
    use(&GLCallLog::begin, &GLCallLog::note, &GLCallLog::end, &GLDebugOutput::begin, &GLDebugOutput::isOn,
        &GLDebugOutput::label, &GLDebugOutput::pushGroup, &GLDebugOutput::popGroup, &GLDebugOutput::end,
        &GLShaderCompiler::release);

    use(GLStartupContext::fpGlobalGLStartupContext, GLStartupContext::fsNumInstances_GLStartupContext,
        &GLStartupContext::makeCurrent);
    GLStartupContext startup(nullptr);
    use(startup.window, startup.display, startup.wrapper, startup.context, startup.valid,
        &GLStartupContext::serial, &GLStartupContext::living);
    const GLStartupContext working(WindowWrapper(), nullptr);
    const GLHostContext host{nullptr, nullptr, nullptr};
    const GLStartupContext ofHost(host);

    use(GLUtility::fsLastGLError, &GLUtility::gluErrorString, &GLUtility::error, &GLUtility::errorString,
        &GLUtility::assertNoError, &GLUtility::printErrors, glErrorStrings);
}

template <auto kMember, typename Signature>
constexpr bool kIs = std::is_same_v<decltype(kMember), Signature GLFunctionTable::*>;

// A host may hold framebuffer configurations without GLX's own type.
static_assert(kIs<&GLFunctionTable::glXChooseFBConfig, void**(Display*, int, const int*, int*) const>);
static_assert(kIs<&GLFunctionTable::glXChooseFBConfigSGIX, void**(Display*, int, int*, int*) const>);
static_assert(kIs<&GLFunctionTable::glXGetFBConfigs, void**(Display*, int, int*) const>);
static_assert(kIs<&GLFunctionTable::glXGetFBConfigAttrib, int(Display*, void*, int, int*) const>);
static_assert(kIs<&GLFunctionTable::glXCreatePbuffer, GLXPbuffer(Display*, void*, const int*) const>);
static_assert(std::is_polymorphic_v<GLFunctionTable> && std::has_virtual_destructor_v<GLFunctionTable>);

static_assert(std::has_virtual_destructor_v<GLFrameBuffer>);

void hostTypes() {
    using koString::CString;
    using koString::IString;
    const CString c = CString("a").plus("b");
    IString i = IString("a").plus("b");
    i.plusEqual("c");
    use(i.asMultibyte(), c.asChar());
    const CString converted = i.convertToCString();
    const bool same = koString::equal(c, converted) || koString::less(c, converted) ||
                      koString::equal(i, i) || koString::less(i, i);
    use(same);

    static_assert(kComplete<koLinear::Point> && kComplete<koLinear::PointFlt> &&
                  kComplete<koLinear::Vector> && kComplete<koLinear::VectorFlt> &&
                  kComplete<koLinear::HPoint>);
    static_assert(koLinear::Point(1, 2, 3)[2] == 3 && koLinear::HPoint(1, 2, 3, 4)[3] == 4);
    use(koLinear::ProjMatrixFlt(koLinear::ProjMatrix(koLinear::AffineMatrix())));
    static_assert(koColor::Color(1, 2, 3, 4)[3] == 4);

    koSharedObject::SharedObject* shared = new koSharedObject::SharedObject;
    shared->ref();
    shared->unref();
    koUtil::BitField bits;
    bits.set(3);
    use(bits);

    WindowWrapper wrapper(nullptr, 1, nullptr);
    wrapper.setFBWindow(2);
    use(wrapper.display(), wrapper.window(), wrapper.widget(), wrapper.fbWindow());

    use(HWEnvironment::orlo_path, HWEnvironment::orlo_block_allocate_strips,
        HWEnvironment::disable_hwr_texture_shader_flag, &OrloGetEnv);

    PixelArray2D pixels(koSysPixelFormat(koSysPixelFormat::kDepthBytes, 4), 2, 3);
    use(pixels.data(), pixels.width(), pixels.height(), koBufferFormat());
    static_assert(kComplete<IHWTexture> && kComplete<IHWLight> && kComplete<IHWCamera> &&
                  kComplete<IHWMemoryObject> && kComplete<IBaseResource> && kComplete<IPixelFormat>);
    static_assert(kComplete<GeometryData> && kComplete<GeometryDataIndex> && kComplete<GeometryDataIterator>);
    static_assert(sizeof(RasterFormat) == 4 && sizeof(SamplingType) == 4);
}

void geometry() {
    use(&GLOcclusionQuery::generateQueries, &GLOcclusionQuery::reset, &GLOcclusionQuery::beginQuery,
        &GLOcclusionQuery::endQuery, &GLOcclusionQuery::completeQueryRenders,
        &GLOcclusionQuery::queryIsAvailable, &GLOcclusionQuery::waitForQueriesToProcess,
        &GLOcclusionQuery::sampleCount, &GLObject::bind, &GLObject::unbind, &GLObject::unbindBuffer,
        &GLObject::mapBuffer, &GLObject::unmapBuffer, &GLObject::bufferData, &GLObject::bufferSubData,
        &GLObject::getBufferSubData, &GLObject::getBufferPointer, &GLObject::deleteObject,
        GLObject::fsDataTypeInternal, GLObject::fsAccessInternal, GLObject::fsUsageInternal,
        GLObject::fsSupported, GLObject::fsMaximumMemoryUsage, IHWMemoryObject::fsMemoryUsage);
    GLObject object;
    object.fUsage = 6;
    object.fAccess = 2;
    object.fDataType = GLObject::DataType(1);
    use(object.fBufferName, object.fBound, object.fMapped, object.fSize);

    use(&GLRouting::drawGroup, &GLRouting::drawSingleIndexed, &GLRouting::drawFullMultipleIndexed,
        &GLRouting::setVertexArrays, &GLRouting::unsetVertexArrays, &GLRouting::setupInterpolant,
        &GLRouting::disableInterpolant, &GLRouting::disableAllArrays, GLRouting::fsInterpolantEnums,
        GLRouting::fsUseObjectsForData, GLRouting::fsUseObjectsForIndexing, GLRouting::fsUsePrimitiveRestart,
        GLRouting::fsUseDrawRangeElements, GLRouting::requiresAttribInterpolants, boundGLObjects[25]);
    GLRouting routing;
    routing.fSlots[GLRouting::GLInterpolant(25)].fMode = 1;
    routing.fSlots[25].fDirect = GLRouting::DirectDataAssignment{3, GL_FLOAT, 0, nullptr, &object};
    routing.fSlots[25].fDataType = GeometryData::DataType(2);
    routing.fSlots[25].fIndex = 0;

    GeometryLogicalGroup group;
    GeometryData& stream = group.addStream(GeometryData::kPosition, 3, {0, 0, 0});
    stream.deleteHanger();
    group.addIndexRecord(GeometryDataIndex::kTriangles, {0, 0, 0}).setHanger(nullptr);
    use(group.geometryDataPtr(GeometryData::DataType(1), 0, false),
        GeometryData::elementTypeSize(stream.fElementType));
    GeometryDataIterator().reset(group.indexRecord(0), nullptr);
}

void textures() {
    static_assert(std::is_base_of_v<IHWTexture, IGLTexture> && std::is_base_of_v<IGLTexture, GLTexture2D>);
    use(&IGLTexture::sysDataType, &IGLTexture::sysDataFormat, &IGLTexture::sysPixelFormat,
        &IGLTexture::textureName, &GLTexture2D::width, &GLTexture2D::height, &GLTexture2D::bind,
        &GLTexture2D::setWidthHeight, &GLTexture2D::GLloadImage, &GLTexture2D::GLloadImageLevel,
        &GLTexture2D::GLloadImageMipmap, &GLTexture2D::GLloadRenderedImage,
        GLTexture2D::fsNumInstances_GLTexture2D);

    static_assert(std::is_base_of_v<IGLTexture, GLTexture1D> && std::is_base_of_v<IGLTexture, GLTexture3D>);
    use(&GLTexture1D::bind, &GLTexture3D::bind, GLTexture1D::fsNumInstances_GLTexture1D,
        GLTexture3D::fsNumInstances_GLTexture3D);

    static_assert(std::is_base_of_v<IGLTexture, GLTextureCubeMap> && IHWTexture::CubeMapSide(5) == 5);
    using Side = IHWTexture::CubeMapSide;
    use<bool (GLTextureCubeMap::*)(unsigned, Side, void*)>(&GLTextureCubeMap::GLLoadImage);
    use<bool (GLTextureCubeMap::*)(unsigned, Side, void*, Side, void*, Side, void*, Side, void*, Side, void*,
                                   Side, void*)>(&GLTextureCubeMap::GLLoadImage);
    use(&GLTextureCubeMap::GLLoadImageMipMap, &GLTextureCubeMap::fEdgeSize,
        GLTextureCubeMap::fsNumInstances_GLTextureCubeMap);
}

void computedTextures() {
    use(GLTextureManager, HWTextureCacheList, &TextureManager::textureCache,
        &TextureManager::normalizationCubeMap, &TextureManager::normalizationHILOCubeMap,
        &TextureManager::attenDistanceMap, &TextureManager::attenExponentMap, &TextureManager::atten1DMapId,
        &TextureManager::nhkMapId, &TextureManager::normalizeExponentiateMapId,
        &TextureManager::rampTextureMap, &TextureManager::spotProjTextureMask,
        &TextureManager::shadowProjTextureMask, &TextureManager::round2, &generateNHKMap,
        &generateNormalizeExponentiateMap, &generateRampMap, &find_closest_normexp_index,
        &makeNormalizeVectorCubeMap);

    const GLTextureCacheEntry entry{7, nullptr};
    use(entry, &GLTextureCache::initialize, &GLTextureCache::add, &GLTextureCache::find,
        &GLTextureCache::find_texture, &GLTextureCache::remove);
    static_assert(std::is_base_of_v<GLTextureCubeMap, GLNormalCubeMap>);
    static_assert(std::is_base_of_v<GLTexture2D, GLSpotLightMap> &&
                  std::is_polymorphic_v<GLAttenuationLightMap>);
    use(GLNormalCubeMap::fsNumInstances_GLNormalCubeMap, GLSpotLightMap::fsNumInstances_GLSpotLightMap,
        GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap, &GLAttenuationLightMap::fDistanceTexture,
        &GLAttenuationLightMap::fExponentTexture);
}

void textureUse() {
    use(&GLTexUsage::setWrapMode, &GLTexUsage::setMinMagFilter, &GLTexUsage::setBorderColor,
        &GLTexUsage::setFilterAnisotropic);
    use<void (*)(unsigned, IHWTexUsage::GenMode*)>(&GLTexUsage::setTexGenMode);
    use<void (*)(IHWTexUsage::ProjType, const koLinear::ProjMatrix&, float*)>(&GLTexUsage::setTexGenMode);
    use<void (*)(const koLinear::ProjMatrix&)>(&GLTexUsage::setTransform);
    use<void (*)(float*, float*, float)>(&GLTexUsage::setTransform);
    use<void (*)(float*, float*, float*, float, float*)>(&GLTexUsage::setTransform);
    use(GLTexUsage::fsWrapModes[IHWTexUsage::WrapMode(6)], GLTexUsage::fsFilterModes[IHWTexUsage::Filter(7)],
        GLTexUsage::fsTexGenModes[9], GLTexUsage::fsMaxAnisotropy);

    GLTexUnitState unit;
    unit.setTextureFunction(GLTexUnitState::TexEnvFunc(5));
    unit.setCombinerFuncRGB(GLTexUnitState::CombinerFunc(7));
    unit.setCombinerFuncAlpha(GLTexUnitState::CombinerFunc(7));
    unit.setCombinerSourceOpRGB(0, GLTexUnitState::CombinerSource(3), GLTexUnitState::CombinerOperand(3));
    unit.setCombinerSourceOpAlpha(0, GLTexUnitState::CombinerSource(3), GLTexUnitState::CombinerOperand(1));
    unit.setCombinerScaleRGB(4);
    unit.setCombinerScaleAlpha(4);
    unit.reset();
    use(&GLTexUnitState::applyGL, &GLTexUnitState::textureFunction, &GLTexUnitState::combinerFuncRGB,
        &GLTexUnitState::combinerFuncAlpha, &GLTexUnitState::combinerSourceRGB,
        &GLTexUnitState::combinerOperandRGB, &GLTexUnitState::combinerSourceAlpha,
        &GLTexUnitState::combinerOperandAlpha, &GLTexUnitState::combinerScaleRGB,
        &GLTexUnitState::combinerScaleAlpha, TexEnvFuncTable[5], CombinerFuncTable[7], CombinerSourceTable[3],
        CombinerOperandTable[3]);
}

void state() {
    GLPassState pass;
    pass.setColorMask(true, true, true, true);
    pass.setDepthMask(true);
    pass.setDepthFunc(GLPassState::TestCondition(7));
    pass.setAlphaFunc(GLPassState::TestCondition(7), 1.0F);
    pass.setStencilReadMask(1);
    pass.setStencilWriteMask(1);
    pass.setStencilFunc(GLPassState::TestCondition(7));
    pass.setStencilRef(1);
    pass.setStencilOpSFail(GLPassState::StencilOp(5));
    pass.setStencilOpZFail(GLPassState::StencilOp(5));
    pass.setStencilOpZPass(GLPassState::StencilOp(5));
    pass.setBlendFuncFactors(GLPassState::BlendFactor(10), GLPassState::BlendFactor(10));
    pass.setLogicOp(GLPassState::LogicOp(15));
    pass.reset();
    use(&GLPassState::applyGL, TestConditionTable[7], StencilOpTable[5], BlendFactorTable[10],
        LogicOpTable[15]);

    GLLight light;
    light.setLightType(IHWLight::LightType(0));
    light.addProjector(1);
    light.removeProjector();
    light.releaseLightResources();
    light.removeShadowMaps();
    light.removeTextures();
    use(&GLLight::bind, &GLLight::unbind, &GLLight::allocateShadowMap, GLLight::fsNumInstances_GLLight,
        &GLLighting::bind, &GLLighting::unbindAll, GLLighting::fsNumInstances_GLLighting, &GLCamera::bind,
        GLCamera::fsNumInstances_GLCamera);
    IHWCamera().bind();
}

void frameBuffers() {
    GLFrameBuffer buffer;
    buffer.clearInternalState();
    buffer.deleteInternalState();
    use(buffer.isOffscreen());
    use<uint32_t (GLFrameBuffer::*)(const koBufferFormat&, unsigned, unsigned)>(
        &GLFrameBuffer::createOffscreen);
    use(&GLFrameBuffer::createInWindow, &GLFrameBuffer::createInWindowPortably,
        &GLFrameBuffer::createPbufferPortably, &GLFrameBuffer::assignInWindow,
        &GLFrameBuffer::unassignInWindow, &GLFrameBuffer::makeCurrent, &GLFrameBuffer::viewportSize,
        &GLFrameBuffer::getDimensions, &GLFrameBuffer::resizeViewport, &GLFrameBuffer::swapBuffers,
        &GLFrameBuffer::readColorBuffer);
    use<uint32_t (GLFrameBuffer::*)(const WindowWrapper&, const koBufferFormat&, unsigned, unsigned, bool)>(
        &GLFrameBuffer::createOffscreen);
    use<PixelArray2D* (GLFrameBuffer::*)(PixelArray2D*)>(&GLFrameBuffer::readCurrentColorBuffer);
    use<void (GLFrameBuffer::*)(IHWTexture*, unsigned)>(&GLFrameBuffer::readCurrentColorBuffer);
    use<PixelArray2D* (GLFrameBuffer::*)(int, int, int, int)>(&GLFrameBuffer::readDepthBuffer);
    use<PixelArray2D* (GLFrameBuffer::*)()>(&GLFrameBuffer::readDepthBuffer);
    use<void (GLFrameBuffer::*)(PixelArray2D*)>(&GLFrameBuffer::readDepthBuffer);
    use<void (GLFrameBuffer::*)(IHWTexture*)>(&GLFrameBuffer::readDepthBuffer);
    use(&GLFrameBuffer::readDepthBufferInBytes, &GLFrameBuffer::drawColorBuffer,
        &GLFrameBuffer::drawDepthBuffer);
    use<void (GLFrameBuffer::*)(const PixelArray2D&)>(&GLFrameBuffer::writeCurrentColorBuffer);
    use<void (GLFrameBuffer::*)(const IHWTexture&)>(&GLFrameBuffer::writeCurrentColorBuffer);
    use<void (GLFrameBuffer::*)(const PixelArray2D&)>(&GLFrameBuffer::writeDepthBuffer);
    use<void (GLFrameBuffer::*)(const IHWTexture&)>(&GLFrameBuffer::writeDepthBuffer);
    use(&GLFrameBuffer::renderTexture, &GLFrameBuffer::copyDepthBuffer2Texture2D,
        &GLFrameBuffer::makeCurrentWindowed, &GLFrameBuffer::swapBuffersWindowed,
        &GLFrameBuffer::resizeWindow, &GLFrameBuffer::deleteInternalStateWindowed,
        GLFrameBuffer::fsNumInstances_GLFrameBuffer, &validFrameBufferStatus);
}

void cgShaders() {
    use(&init_explicit_Cg, &findCgFunction, &fileExists);
#define CG_CORE(name) use(F_##name);
#define CG_GL(name) use(F_##name);
#include <shader/CgEntryPoints.inc>
    use(&CGcontextSingleton::theCgContext, CGcontextSingleton::sCgContext);
    const CGcontextSingleton context;
    use(context.fContext);

    using Shader = CGManager::CGShader;
    using Name = const koString::CString&;
    using Type = CGManager::CGProgramType;
    const Shader shader{nullptr, nullptr, CG_PROFILE_UNKNOWN, CG_PROFILE_UNKNOWN};
    use(shader.fVertexProgram, shader.fFragmentProgram, shader.fVertexProfile, shader.fFragmentProfile,
        &Shader::getVertexProgram, &Shader::getFragmentProgram, &Shader::getProgramFromType,
        &Shader::loadVertexProgram, &Shader::loadFragmentProgram, &Shader::loadVertexProgramFromString,
        &Shader::loadFragmentProgramFromString, &Shader::enable, &Shader::disable, &Shader::destroy,
        &Shader::setParameter1f, &Shader::setParameterBool, &Shader::setParameter2f, &Shader::setParameter3f,
        &Shader::setParameter3d);
    use<void (Shader::*)(Type, Name, const koLinear::Point&) const>(&Shader::setParameter3fv);
    use<void (Shader::*)(Type, Name, const koLinear::PointFlt&) const>(&Shader::setParameter3fv);
    use(&Shader::setParameter4f, &Shader::setParameter4d);
    use<void (Shader::*)(Type, Name, const koLinear::HPoint&) const>(&Shader::setParameter4fv);
    use<void (Shader::*)(Type, Name, const koLinear::Point&) const>(&Shader::setParameter4fv);
    use<void (Shader::*)(Type, Name, const koLinear::PointFlt&) const>(&Shader::setParameter4fv);
    use<void (Shader::*)(Type, Name, const koLinear::Vector&) const>(&Shader::setParameter4fv);
    use<void (Shader::*)(Type, Name, const koLinear::VectorFlt&) const>(&Shader::setParameter4fv);
    use<void (Shader::*)(Type, Name, const koLinear::ProjMatrix&) const>(&Shader::setParameterMatrix);
    use<void (Shader::*)(Type, Name, const koLinear::ProjMatrixFlt&) const>(&Shader::setParameterMatrix);
    use<void (Shader::*)(Type, Name, const koLinear::ProjMatrix&) const>(&Shader::setParameterMatrixRowMajor);
    use<void (Shader::*)(Type, Name, const koLinear::ProjMatrixFlt&) const>(
        &Shader::setParameterMatrixRowMajor);
    use(&Shader::setParameterTexture, &Shader::getParameterIndex, &Shader::getTextureInterpolant,
        &Shader::getTextureOffsetFromSemantic);

    CGManager manager(CG_PROFILE_UNKNOWN, CG_PROFILE_UNKNOWN);
    use(&CGManager::vertexProfileString, &CGManager::fragmentProfileString,
        &CGManager::getLightStringFromType, &CGManager::getTransparencyTypeStringFromType,
        &CGManager::bindShader, &CGManager::bindVertexShader, &CGManager::bindKOSLShader,
        &CGManager::releaseShaderMap, &CGManager::sceneHasChanged, CGManager::kAmbientLight,
        CGManager::kTransparencyInRGB, CGManager::kFragmentProgram, manager.fShaderMap.size(),
        manager.fVertexProfile, manager.fFragmentProfile);
}

void shaders() {
    GlslShader shader;
    use(&GlslShader::create, &GlslShader::enable, &GlslShader::destroy,
        &GlslShader::loadVertexProgramFromString, &GlslShader::loadFragmentProgramFromString);
    use<void (GlslShader::*)(const koString::CString&, IHWTexture::TextureType, IHWTexUsage::WrapMode,
                             IHWTexUsage::WrapMode, IHWTexUsage::Filter, IHWTexUsage::Filter,
                             const koColor::Color&, bool, IGLTexture*) const>(
        &GlslShader::setParameterTexture);
    use<void (GlslShader::*)(const koString::CString&, unsigned) const>(&GlslShader::setParameterTexture);
    use(shader.fSamplerUnits.size() + shader.fVertexShader + shader.fFragmentShader + shader.fProgram,
        shader.fNeedsLink);

    GlslManager manager;
    use(&GlslManager::bindKOSLShader, &GlslManager::getLightStringFromType,
        &GlslManager::getTransparencyTypeStringFromType, GlslManager::kAmbientLight,
        GlslManager::kTransparencyInRGB, manager.fShaders.size());

    GL2Shader stage(GL2Shader::kFragmentShader);
    use(GL2Shader::vertexShaderExtension, GL2Shader::fragmentShaderExtension, &GL2Shader::initialize,
        &GL2Shader::deleteSource, &GL2Shader::deleteProgramObject, &GL2Shader::readShaderSource,
        &GL2Shader::setShaderSource, &GL2Shader::assignShaderSource, &GL2Shader::compileShaderSource,
        stage.fType == GL2Shader::kVertexShader, stage.fSourceLength, stage.fShaderObject + stage.fStatusWord,
        stage.fSource.get());

    GL2ProgramObject program;
    use(&GL2ProgramObject::createObject, &GL2ProgramObject::attachVertexShader,
        &GL2ProgramObject::detachVertexShader, &GL2ProgramObject::attachFragmentShader,
        &GL2ProgramObject::detachFragmentShader, &GL2ProgramObject::linkShaders, &GL2ProgramObject::bind,
        &GL2ProgramObject::unbind, &GL2ProgramObject::deleteObject, program.fProgramObject,
        program.fVertexShader, program.fFragmentShader);
}

void shadingNetworks() {
    using koShadingDag::ShadingNodeSpec;
    ShadingNodeSpec node(koShadingDag::kMetallicRoughness);
    use(&ShadingNodeSpec::kind, &ShadingNodeSpec::connect, &ShadingNodeSpec::disconnect);
    use<bool (ShadingNodeSpec::*)(const koString::CString&, float)>(&ShadingNodeSpec::setValue);
    use<bool (ShadingNodeSpec::*)(const koString::CString&, float, float)>(&ShadingNodeSpec::setValue);
    use<bool (ShadingNodeSpec::*)(const koString::CString&, const koColor::Color&)>(
        &ShadingNodeSpec::setValue);
    use(&ShadingNodeSpec::unsetValue, &ShadingNodeSpec::setSetting, &ShadingNodeSpec::setTexture,
        &ShadingNodeSpec::shaderManager, &ShadingNodeSpec::assignShaderManager, &ShadingNodeSpec::networkKey,
        &ShadingNodeSpec::uniforms, &ShadingNodeSpec::samplers, koShadingDag::kNormal, koShadingDag::kMask,
        koShadingDag::kStep, koShadingDag::TextureUsage().fAnisotropic,
        LightSpec{LightSpec::kSky}.fCastsShadow, &compileMaterialToGlsl, &compileMaterialToCg);

    class Manager : public IHWShaderManager {};
    use(Manager());
}

void particles() {
    auto* data = new ParticleData;
    data->ref();
    use(&ParticleData::setPositions, &ParticleData::setVelocities, &ParticleData::setColors,
        &ParticleData::addData, &ParticleData::getDataIndex, &ParticleData::getData, data->fPointSize,
        data->fOpacity, data->fObjectColor, data->fFilterEnabled, data->fFilter,
        &ParticleDataIterator::setFilter, IHWTexPlacement().fMatrix);

    use(&GLParticleDrawBase::setData, &GLParticleDrawBase::setIterator,
        &GLParticleDrawBase::createAlignmentInfo, &GLParticleDrawBase::setAlignTwist,
        &GLParticleDrawBase::setAlignScaleX, &GLParticleDrawBase::setAlignScaleY,
        &GLParticleDrawBase::alignToCamera, &GLParticleDrawBase::alignToYZ,
        &GLParticleDrawBase::setMaterialProperties, &GLParticleDrawBase::applyMaterialProperties,
        &GLParticleDrawBase::setObjectSeed, &GLParticleDrawBase::drand48, &GLParticleDrawBase::erand48,
        &GLParticleDrawBase::generateRandom3, &GLParticleDrawBase::initRandom3, GLParticleDrawBase::sfRandom3,
        GLParticleDrawBase::sfInitRandom3, AlignmentInfo().fTwist);

    GLParticlePointDraw points(*data);
    use(&GLParticlePointDraw::setCurrentNormal, points.fNormalMode, points.fDistanceAttenuation, points.fLit,
        points.fIgnoreParticleColors, points.fMultiCount, points.fMultiRadius, points.fRandomBlock,
        GLParticleMultiPointDraw(*data));
    const GLParticleStreakDraw streaks(*data);
    use(streaks.fTailSize, streaks.fTailFade, streaks.fLineWidth, streaks.fNoTailFade);
    const GLParticleSpriteDraw sprites(*data);
    use(&GLParticleSpriteDraw::setCamPositionOS, &GLParticleSpriteDraw::setCamUpVectorOS,
        &GLParticleSpriteDraw::applyTextureCycling, &GLParticleSpriteDraw::drawGLQuadAt,
        sprites.fTextureCycling, sprites.fReverseWinding, sprites.fOpacityOnly, sprites.fOpacityGain,
        GLParticleSphereDraw(*data), GLParticleCloudDraw(*data));
    data->unref();

    use(&koLinear::VectorFlt::normalize, &koLinear::AffineMatrix::rotateZ, &koLinear::AffineMatrix::scale,
        &koLinear::ProjMatrix::preMult, &koLinear::equivalent);
}

} // namespace

static_assert(ORLOGL_VERSION >= ORLOGL_VERSION_NUMBER(0, 1, 0) &&
              ORLOGL_VERSION < ORLOGL_VERSION_NUMBER(1, 0, 0));

int main() {
    if (orloglVersion() != ORLOGL_VERSION)
        return 1;
    shadingNetworks();
    particles();
    shaders();
    cgShaders();
    textures();
    computedTextures();
    textureUse();
    state();
    frameBuffers();
    geometry();
    glAccess();
    hostTypes();
}
