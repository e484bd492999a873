// Every public name, by the two umbrellas alone. That it compiles and links is the test; running it proves
// that nothing was left to a lazy look-up.

#include <orlogl.h>
#include <orlohost.h>

#include <type_traits>

namespace {

const void* volatile sink;

/// Makes the linker find what a name stands for. A pointer to a member is wider than a plain one, so the
/// address of its copy is taken.
template <typename T>
void use(const T& name) {
    sink = &name;
}

template <typename T>
constexpr bool kComplete = sizeof(T) > 0;

void glAccess() {
    use(GLFunctionTable::fpGlobalFunctionTable);
    use(GLFunctionTable::fsNumInstances_GLFunctionTable);
    use(&GLFunctionTable::nullify);
    use(&GLFunctionTable::nullify_platform);
    use(&GLFunctionTable::populate);
    use(&GLFunctionTable::populate_platformExtensions);
    use(&GLFunctionTable::ensureLiveMultitexture);
    use(&GLFunctionTable::usable);
    use(&GLFunctionTable::TrapBefore);
    use(&GLFunctionTable::TrapAfter);
    use(&GLFunctionTable::TrapBefore_PossiblyBeginEnd);
    use(&GLFunctionTable::TrapAfter_PossiblyBeginEnd);
    use(&GLFunctionTable::TrapAfterLoadProgramNV);
    use(&GLFunctionTable::fExtSupported);
    use(&GLFunctionTable::fExtEnabled);
    use(&GLFunctionTable::fMaxTextureUnits);
    use(&GLFunctionTable::fMaxTextureCoords);
    use(&GLFunctionTable::fMaxTextureImageUnits);
    use(&GLFunctionTable::fMaxTextureSize);
    use(&GLFunctionTable::fMaxVertexAttribs);
    use(&GLFunctionTable::fMaxArrayTextureLayers);
    use(&GLFunctionTable::fInBeginEnd);
    use(&isExtensionSupported);
    use(&glXCreateGLXPbuffer);
    const GLFunctionTable table;

    use(GLStartupContext::fpGlobalGLStartupContext);
    use(GLStartupContext::fsNumInstances_GLStartupContext);
    use(&GLStartupContext::makeCurrent);
    GLStartupContext startup(nullptr);
    use(startup.window);
    use(startup.display);
    use(startup.wrapper);
    use(startup.context);
    use(startup.valid);
    use(&GLStartupContext::serial);
    use(&GLStartupContext::living);
    const GLStartupContext working(WindowWrapper(), nullptr);
    const GLHostContext host{nullptr, nullptr, nullptr};
    const GLStartupContext ofHost(host);

    use(GLUtility::fsLastGLError);
    use(&GLUtility::gluErrorString);
    use(&GLUtility::error);
    use(&GLUtility::errorString);
    use(&GLUtility::assertNoError);
    use(&GLUtility::printErrors);
    use(glErrorStrings);
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

void hostTypes() {
    using koString::CString;
    using koString::IString;
    const CString c = CString("a").plus("b");
    IString i = IString("a").plus("b");
    i.plusEqual("c");
    use(i.asMultibyte());
    use(c.asChar());
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
    use(wrapper.display());
    use(wrapper.window());
    use(wrapper.widget());
    use(wrapper.fbWindow());

    use(HWEnvironment::orlo_path);
    use(HWEnvironment::orlo_block_allocate_strips);
    use(HWEnvironment::disable_hwr_texture_shader_flag);
    use(&OrloGetEnv);

    PixelArray2D pixels(koSysPixelFormat(koSysPixelFormat::kDepthBytes, 4), 2, 3);
    use(pixels.data());
    use(pixels.width());
    use(pixels.height());
    use(koBufferFormat());
    static_assert(kComplete<IHWTexture> && kComplete<IHWLight> && kComplete<IHWCamera> &&
                  kComplete<IHWMemoryObject> && kComplete<IBaseResource> && kComplete<IPixelFormat>);
    static_assert(kComplete<GeometryData> && kComplete<GeometryDataIndex> && kComplete<GeometryDataIterator>);
    static_assert(sizeof(RasterFormat) == 4 && sizeof(SamplingType) == 4);
}

void geometry() {
    use(&GLOcclusionQuery::generateQueries);
    use(&GLOcclusionQuery::reset);
    use(&GLOcclusionQuery::beginQuery);
    use(&GLOcclusionQuery::endQuery);
    use(&GLOcclusionQuery::completeQueryRenders);
    use(&GLOcclusionQuery::queryIsAvailable);
    use(&GLOcclusionQuery::waitForQueriesToProcess);
    use(&GLOcclusionQuery::sampleCount);
    use(&GLObject::bind);
    use(&GLObject::unbind);
    use(&GLObject::unbindBuffer);
    use(&GLObject::mapBuffer);
    use(&GLObject::unmapBuffer);
    use(&GLObject::bufferData);
    use(&GLObject::bufferSubData);
    use(&GLObject::getBufferSubData);
    use(&GLObject::getBufferPointer);
    use(&GLObject::deleteObject);
    use(GLObject::fsDataTypeInternal);
    use(GLObject::fsAccessInternal);
    use(GLObject::fsUsageInternal);
    use(GLObject::fsSupported);
    use(GLObject::fsMaximumMemoryUsage);
    use(IHWMemoryObject::fsMemoryUsage);
    GLObject object;
    object.fUsage = 6;
    object.fAccess = 2;
    object.fDataType = GLObject::DataType(1);
    use(object.fBufferName);
    use(object.fBound);
    use(object.fMapped);
    use(object.fSize);

    use(&GLRouting::drawGroup);
    use(&GLRouting::drawSingleIndexed);
    use(&GLRouting::drawFullMultipleIndexed);
    use(&GLRouting::setVertexArrays);
    use(&GLRouting::unsetVertexArrays);
    use(&GLRouting::setupInterpolant);
    use(&GLRouting::disableInterpolant);
    use(&GLRouting::disableAllArrays);
    use(GLRouting::fsInterpolantEnums);
    use(GLRouting::fsUseObjectsForData);
    use(GLRouting::fsUseObjectsForIndexing);
    use(GLRouting::fsUsePrimitiveRestart);
    use(GLRouting::fsUseDrawRangeElements);
    use(GLRouting::requiresAttribInterpolants);
    use(boundGLObjects[25]);
    GLRouting routing;
    routing.fSlots[GLRouting::GLInterpolant(25)].fMode = 1;
    routing.fSlots[25].fDirect = GLRouting::DirectDataAssignment{3, GL_FLOAT, 0, nullptr, &object};
    routing.fSlots[25].fDataType = GeometryData::DataType(2);
    routing.fSlots[25].fIndex = 0;

    GeometryLogicalGroup group;
    GeometryData& stream = group.addStream(GeometryData::kPosition, 3, {0, 0, 0});
    stream.deleteHanger();
    group.addIndexRecord(GeometryDataIndex::kTriangles, {0, 0, 0}).setHanger(nullptr);
    use(group.geometryDataPtr(GeometryData::DataType(1), 0, false));
    use(GeometryData::elementTypeSize(stream.fElementType));
    GeometryDataIterator().reset(group.indexRecord(0), nullptr);
}

void textures() {
    static_assert(std::is_base_of_v<IHWTexture, IGLTexture> && std::is_base_of_v<IGLTexture, GLTexture2D>);
    use(&IGLTexture::sysDataType);
    use(&IGLTexture::sysDataFormat);
    use(&IGLTexture::sysPixelFormat);
    use(&IGLTexture::textureName);
    use(&GLTexture2D::width);
    use(&GLTexture2D::height);
    use(&GLTexture2D::bind);
    use(&GLTexture2D::setWidthHeight);
    use(&GLTexture2D::GLloadImage);
    use(&GLTexture2D::GLloadImageLevel);
    use(&GLTexture2D::GLloadImageMipmap);
    use(&GLTexture2D::GLloadRenderedImage);
    use(GLTexture2D::fsNumInstances_GLTexture2D);

    static_assert(std::is_base_of_v<IGLTexture, GLTexture1D> && std::is_base_of_v<IGLTexture, GLTexture3D>);
    use(&GLTexture1D::bind);
    use(&GLTexture3D::bind);
    use(GLTexture1D::fsNumInstances_GLTexture1D);
    use(GLTexture3D::fsNumInstances_GLTexture3D);

    static_assert(std::is_base_of_v<IGLTexture, GLTextureCubeMap> && IHWTexture::CubeMapSide(5) == 5);
    using Side = IHWTexture::CubeMapSide;
    use<bool (GLTextureCubeMap::*)(unsigned, Side, void*)>(&GLTextureCubeMap::GLLoadImage);
    use<bool (GLTextureCubeMap::*)(unsigned, Side, void*, Side, void*, Side, void*, Side, void*, Side, void*,
                                   Side, void*)>(&GLTextureCubeMap::GLLoadImage);
    use(&GLTextureCubeMap::GLLoadImageMipMap);
    use(&GLTextureCubeMap::fEdgeSize);
    use(GLTextureCubeMap::fsNumInstances_GLTextureCubeMap);
}

void computedTextures() {
    use(GLTextureManager);
    use(HWTextureCacheList);
    use(&TextureManager::textureCache);
    use(&TextureManager::normalizationCubeMap);
    use(&TextureManager::normalizationHILOCubeMap);
    use(&TextureManager::attenDistanceMap);
    use(&TextureManager::attenExponentMap);
    use(&TextureManager::atten1DMapId);
    use(&TextureManager::nhkMapId);
    use(&TextureManager::normalizeExponentiateMapId);
    use(&TextureManager::rampTextureMap);
    use(&TextureManager::spotProjTextureMask);
    use(&TextureManager::shadowProjTextureMask);
    use(&TextureManager::round2);
    use(&generateNHKMap);
    use(&generateNormalizeExponentiateMap);
    use(&generateRampMap);
    use(&find_closest_normexp_index);
    use(&makeNormalizeVectorCubeMap);

    const GLTextureCacheEntry entry{7, nullptr};
    use(entry);
    use(&GLTextureCache::initialize);
    use(&GLTextureCache::add);
    use(&GLTextureCache::find);
    use(&GLTextureCache::find_texture);
    use(&GLTextureCache::remove);
    static_assert(std::is_base_of_v<GLTextureCubeMap, GLNormalCubeMap>);
    static_assert(std::is_base_of_v<GLTexture2D, GLSpotLightMap> &&
                  std::is_polymorphic_v<GLAttenuationLightMap>);
    use(GLNormalCubeMap::fsNumInstances_GLNormalCubeMap);
    use(GLSpotLightMap::fsNumInstances_GLSpotLightMap);
    use(GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap);
    use(&GLAttenuationLightMap::fDistanceTexture);
    use(&GLAttenuationLightMap::fExponentTexture);
}

void textureUse() {
    use(&GLTexUsage::setWrapMode);
    use(&GLTexUsage::setMinMagFilter);
    use(&GLTexUsage::setBorderColor);
    use(&GLTexUsage::setFilterAnisotropic);
    use<void (*)(unsigned, IHWTexUsage::GenMode*)>(&GLTexUsage::setTexGenMode);
    use<void (*)(IHWTexUsage::ProjType, const koLinear::ProjMatrix&, float*)>(&GLTexUsage::setTexGenMode);
    use<void (*)(const koLinear::ProjMatrix&)>(&GLTexUsage::setTransform);
    use<void (*)(float*, float*, float)>(&GLTexUsage::setTransform);
    use<void (*)(float*, float*, float*, float, float*)>(&GLTexUsage::setTransform);
    use(GLTexUsage::fsWrapModes[IHWTexUsage::WrapMode(6)]);
    use(GLTexUsage::fsFilterModes[IHWTexUsage::Filter(7)]);
    use(GLTexUsage::fsTexGenModes[9]);
    use(GLTexUsage::fsMaxAnisotropy);

    GLTexUnitState unit;
    unit.setTextureFunction(GLTexUnitState::TexEnvFunc(5));
    unit.setCombinerFuncRGB(GLTexUnitState::CombinerFunc(7));
    unit.setCombinerFuncAlpha(GLTexUnitState::CombinerFunc(7));
    unit.setCombinerSourceOpRGB(0, GLTexUnitState::CombinerSource(3), GLTexUnitState::CombinerOperand(3));
    unit.setCombinerSourceOpAlpha(0, GLTexUnitState::CombinerSource(3), GLTexUnitState::CombinerOperand(1));
    unit.setCombinerScaleRGB(4);
    unit.setCombinerScaleAlpha(4);
    unit.reset();
    use(&GLTexUnitState::applyGL);
    use(&GLTexUnitState::textureFunction);
    use(&GLTexUnitState::combinerFuncRGB);
    use(&GLTexUnitState::combinerFuncAlpha);
    use(&GLTexUnitState::combinerSourceRGB);
    use(&GLTexUnitState::combinerOperandRGB);
    use(&GLTexUnitState::combinerSourceAlpha);
    use(&GLTexUnitState::combinerOperandAlpha);
    use(&GLTexUnitState::combinerScaleRGB);
    use(&GLTexUnitState::combinerScaleAlpha);
    use(TexEnvFuncTable[5]);
    use(CombinerFuncTable[7]);
    use(CombinerSourceTable[3]);
    use(CombinerOperandTable[3]);
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
    use(&GLPassState::applyGL);
    use(TestConditionTable[7]);
    use(StencilOpTable[5]);
    use(BlendFactorTable[10]);
    use(LogicOpTable[15]);

    GLLight light;
    light.setLightType(IHWLight::LightType(0));
    light.addProjector(1);
    light.removeProjector();
    light.releaseLightResources();
    light.removeShadowMaps();
    light.removeTextures();
    use(&GLLight::bind);
    use(&GLLight::unbind);
    use(&GLLight::allocateShadowMap);
    use(GLLight::fsNumInstances_GLLight);
    use(&GLLighting::bind);
    use(&GLLighting::unbindAll);
    use(GLLighting::fsNumInstances_GLLighting);
    use(&GLCamera::bind);
    use(GLCamera::fsNumInstances_GLCamera);
    IHWCamera().bind();
}

void frameBuffers() {
    GLFrameBuffer buffer;
    buffer.clearInternalState();
    buffer.deleteInternalState();
    use(buffer.isOffscreen());
    use<uint32_t (GLFrameBuffer::*)(const koBufferFormat&, unsigned, unsigned)>(
        &GLFrameBuffer::createOffscreen);
    use(&GLFrameBuffer::createInWindow);
    use(&GLFrameBuffer::createInWindowPortably);
    use(&GLFrameBuffer::createPbufferPortably);
    use(&GLFrameBuffer::assignInWindow);
    use(&GLFrameBuffer::unassignInWindow);
    use(&GLFrameBuffer::makeCurrent);
    use(&GLFrameBuffer::viewportSize);
    use(&GLFrameBuffer::getDimensions);
    use(&GLFrameBuffer::resizeViewport);
    use(&GLFrameBuffer::swapBuffers);
    use(&GLFrameBuffer::readColorBuffer);
    use<uint32_t (GLFrameBuffer::*)(const WindowWrapper&, const koBufferFormat&, unsigned, unsigned, bool)>(
        &GLFrameBuffer::createOffscreen);
    use<PixelArray2D* (GLFrameBuffer::*)(PixelArray2D*)>(&GLFrameBuffer::readCurrentColorBuffer);
    use<void (GLFrameBuffer::*)(IHWTexture*, unsigned)>(&GLFrameBuffer::readCurrentColorBuffer);
    use<PixelArray2D* (GLFrameBuffer::*)(int, int, int, int)>(&GLFrameBuffer::readDepthBuffer);
    use<PixelArray2D* (GLFrameBuffer::*)()>(&GLFrameBuffer::readDepthBuffer);
    use<void (GLFrameBuffer::*)(PixelArray2D*)>(&GLFrameBuffer::readDepthBuffer);
    use<void (GLFrameBuffer::*)(IHWTexture*)>(&GLFrameBuffer::readDepthBuffer);
    use(&GLFrameBuffer::readDepthBufferInBytes);
    use(&GLFrameBuffer::drawColorBuffer);
    use(&GLFrameBuffer::drawDepthBuffer);
    use<void (GLFrameBuffer::*)(const PixelArray2D&)>(&GLFrameBuffer::writeCurrentColorBuffer);
    use<void (GLFrameBuffer::*)(const IHWTexture&)>(&GLFrameBuffer::writeCurrentColorBuffer);
    use<void (GLFrameBuffer::*)(const PixelArray2D&)>(&GLFrameBuffer::writeDepthBuffer);
    use<void (GLFrameBuffer::*)(const IHWTexture&)>(&GLFrameBuffer::writeDepthBuffer);
    use(&GLFrameBuffer::renderTexture);
    use(&GLFrameBuffer::copyDepthBuffer2Texture2D);
    use(&GLFrameBuffer::makeCurrentWindowed);
    use(&GLFrameBuffer::swapBuffersWindowed);
    use(&GLFrameBuffer::resizeWindow);
    use(&GLFrameBuffer::deleteInternalStateWindowed);
    use(GLFrameBuffer::fsNumInstances_GLFrameBuffer);
    use(&validFrameBufferStatus);
}

void cgShaders() {
    use(&init_explicit_Cg);
    use(&fileExists);
#define CG_CORE(name) use(F_##name);
#define CG_GL(name) use(F_##name);
#include <shader/CgEntryPoints.inc>
    use(&CGcontextSingleton::theCgContext);
    use(CGcontextSingleton::sCgContext);
    const CGcontextSingleton context;
    use(context.fContext);

    using Shader = CGManager::CGShader;
    using Name = const koString::CString&;
    using Type = CGManager::CGProgramType;
    const Shader shader{nullptr, nullptr, CG_PROFILE_UNKNOWN, CG_PROFILE_UNKNOWN};
    use(shader.fVertexProgram);
    use(shader.fFragmentProgram);
    use(shader.fVertexProfile);
    use(shader.fFragmentProfile);
    use(&Shader::getVertexProgram);
    use(&Shader::getFragmentProgram);
    use(&Shader::getProgramFromType);
    use(&Shader::loadVertexProgram);
    use(&Shader::loadFragmentProgram);
    use(&Shader::loadVertexProgramFromString);
    use(&Shader::loadFragmentProgramFromString);
    use(&Shader::enable);
    use(&Shader::disable);
    use(&Shader::destroy);
    use(&Shader::setParameter1f);
    use(&Shader::setParameterBool);
    use(&Shader::setParameter2f);
    use(&Shader::setParameter3f);
    use(&Shader::setParameter3d);
    use<void (Shader::*)(Type, Name, const koLinear::Point&) const>(&Shader::setParameter3fv);
    use<void (Shader::*)(Type, Name, const koLinear::PointFlt&) const>(&Shader::setParameter3fv);
    use(&Shader::setParameter4f);
    use(&Shader::setParameter4d);
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
    use(&Shader::setParameterTexture);
    use(&Shader::getParameterIndex);
    use(&Shader::getTextureInterpolant);
    use(&Shader::getTextureOffsetFromSemantic);

    CGManager manager(CG_PROFILE_UNKNOWN, CG_PROFILE_UNKNOWN);
    use(&CGManager::vertexProfileString);
    use(&CGManager::fragmentProfileString);
    use(&CGManager::getLightStringFromType);
    use(&CGManager::getTransparencyTypeStringFromType);
    use(&CGManager::bindShader);
    use(&CGManager::bindVertexShader);
    use(&CGManager::bindKOSLShader);
    use(&CGManager::releaseShaderMap);
    use(&CGManager::sceneHasChanged);
    use(CGManager::kAmbientLight);
    use(CGManager::kTransparencyInRGB);
    use(CGManager::kFragmentProgram);
    use(manager.fShaderMap.size());
    use(manager.fVertexProfile);
    use(manager.fFragmentProfile);
}

void shaders() {
    GlslShader shader;
    use(&GlslShader::create);
    use(&GlslShader::enable);
    use(&GlslShader::destroy);
    use(&GlslShader::loadVertexProgramFromString);
    use(&GlslShader::loadFragmentProgramFromString);
    use<void (GlslShader::*)(const koString::CString&, IHWTexture::TextureType, IHWTexUsage::WrapMode,
                             IHWTexUsage::WrapMode, IHWTexUsage::Filter, IHWTexUsage::Filter,
                             const koColor::Color&, bool, IGLTexture*) const>(
        &GlslShader::setParameterTexture);
    use<void (GlslShader::*)(const koString::CString&, unsigned) const>(&GlslShader::setParameterTexture);
    use(shader.fSamplerUnits.size() + shader.fVertexShader + shader.fFragmentShader + shader.fProgram);
    use(shader.fNeedsLink);

    GlslManager manager;
    use(&GlslManager::bindKOSLShader);
    use(&GlslManager::getLightStringFromType);
    use(&GlslManager::getTransparencyTypeStringFromType);
    use(GlslManager::kAmbientLight);
    use(GlslManager::kTransparencyInRGB);
    use(manager.fShaders.size());

    GL2Shader stage(GL2Shader::kFragmentShader);
    use(GL2Shader::vertexShaderExtension);
    use(GL2Shader::fragmentShaderExtension);
    use(&GL2Shader::initialize);
    use(&GL2Shader::deleteSource);
    use(&GL2Shader::deleteProgramObject);
    use(&GL2Shader::readShaderSource);
    use(&GL2Shader::setShaderSource);
    use(&GL2Shader::assignShaderSource);
    use(&GL2Shader::compileShaderSource);
    use(stage.fType == GL2Shader::kVertexShader);
    use(stage.fSourceLength);
    use(stage.fShaderObject + stage.fStatusWord);
    use(stage.fSource.get());

    GL2ProgramObject program;
    use(&GL2ProgramObject::createObject);
    use(&GL2ProgramObject::attachVertexShader);
    use(&GL2ProgramObject::detachVertexShader);
    use(&GL2ProgramObject::attachFragmentShader);
    use(&GL2ProgramObject::detachFragmentShader);
    use(&GL2ProgramObject::linkShaders);
    use(&GL2ProgramObject::bind);
    use(&GL2ProgramObject::unbind);
    use(&GL2ProgramObject::deleteObject);
    use(program.fProgramObject);
    use(program.fVertexShader);
    use(program.fFragmentShader);
}

void shadingNetworks() {
    using koShadingDag::ShadingNodeSpec;
    ShadingNodeSpec node(koShadingDag::kMetallicRoughness);
    use(&ShadingNodeSpec::kind);
    use(&ShadingNodeSpec::connect);
    use(&ShadingNodeSpec::disconnect);
    use<bool (ShadingNodeSpec::*)(const koString::CString&, float)>(&ShadingNodeSpec::setValue);
    use<bool (ShadingNodeSpec::*)(const koString::CString&, float, float)>(&ShadingNodeSpec::setValue);
    use<bool (ShadingNodeSpec::*)(const koString::CString&, const koColor::Color&)>(
        &ShadingNodeSpec::setValue);
    use(&ShadingNodeSpec::unsetValue);
    use(&ShadingNodeSpec::setSetting);
    use(&ShadingNodeSpec::setTexture);
    use(&ShadingNodeSpec::shaderManager);
    use(&ShadingNodeSpec::assignShaderManager);
    use(&ShadingNodeSpec::networkKey);
    use(&ShadingNodeSpec::uniforms);
    use(&ShadingNodeSpec::samplers);
    use(koShadingDag::kNormal);
    use(koShadingDag::kMask);
    use(koShadingDag::kStep);
    use(koShadingDag::TextureUsage().fAnisotropic);
    use(LightSpec{LightSpec::kSky}.fCastsShadow);
    use(&compileMaterialToGlsl);
    use(&compileMaterialToCg);

    class Manager : public IHWShaderManager {};
    use(Manager());
}

void particles() {
    auto* data = new ParticleData;
    data->ref();
    use(&ParticleData::setPositions);
    use(&ParticleData::setVelocities);
    use(&ParticleData::setColors);
    use(&ParticleData::addData);
    use(&ParticleData::getDataIndex);
    use(&ParticleData::getData);
    use(data->fPointSize);
    use(data->fOpacity);
    use(data->fObjectColor);
    use(data->fFilterEnabled);
    use(data->fFilter);
    use(&ParticleDataIterator::setFilter);
    use(IHWTexPlacement().fMatrix);

    use(&GLParticleDrawBase::setData);
    use(&GLParticleDrawBase::setIterator);
    use(&GLParticleDrawBase::createAlignmentInfo);
    use(&GLParticleDrawBase::setAlignTwist);
    use(&GLParticleDrawBase::setAlignScaleX);
    use(&GLParticleDrawBase::setAlignScaleY);
    use(&GLParticleDrawBase::alignToCamera);
    use(&GLParticleDrawBase::alignToYZ);
    use(&GLParticleDrawBase::setMaterialProperties);
    use(&GLParticleDrawBase::applyMaterialProperties);
    use(&GLParticleDrawBase::setObjectSeed);
    use(&GLParticleDrawBase::drand48);
    use(&GLParticleDrawBase::erand48);
    use(&GLParticleDrawBase::generateRandom3);
    use(&GLParticleDrawBase::initRandom3);
    use(GLParticleDrawBase::sfRandom3);
    use(GLParticleDrawBase::sfInitRandom3);
    use(AlignmentInfo().fTwist);

    GLParticlePointDraw points(*data);
    use(&GLParticlePointDraw::setCurrentNormal);
    use(points.fNormalMode);
    use(points.fDistanceAttenuation);
    use(points.fLit);
    use(points.fIgnoreParticleColors);
    use(points.fMultiCount);
    use(points.fMultiRadius);
    use(points.fRandomBlock);
    use(GLParticleMultiPointDraw(*data));
    const GLParticleStreakDraw streaks(*data);
    use(streaks.fTailSize);
    use(streaks.fTailFade);
    use(streaks.fLineWidth);
    use(streaks.fNoTailFade);
    const GLParticleSpriteDraw sprites(*data);
    use(&GLParticleSpriteDraw::setCamPositionOS);
    use(&GLParticleSpriteDraw::setCamUpVectorOS);
    use(&GLParticleSpriteDraw::applyTextureCycling);
    use(&GLParticleSpriteDraw::drawGLQuadAt);
    use(sprites.fTextureCycling);
    use(sprites.fReverseWinding);
    use(sprites.fOpacityOnly);
    use(sprites.fOpacityGain);
    use(GLParticleSphereDraw(*data));
    use(GLParticleCloudDraw(*data));
    data->unref();

    use(&koLinear::VectorFlt::normalize);
    use(&koLinear::AffineMatrix::rotateZ);
    use(&koLinear::AffineMatrix::scale);
    use(&koLinear::ProjMatrix::preMult);
    use(&koLinear::equivalent);
}

} // namespace

int main() {
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
