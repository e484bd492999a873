#include "draw/TextureUnits.h"

#include <utility>

#include <gl/GLFunctionTable.h>
#include <texture/GLTexUnitState.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

void activate(size_t unit) {
    GLFunctionTable::fpGlobalFunctionTable->glActiveTexture(GL_TEXTURE0_ARB + static_cast<GLenum>(unit));
}

} // namespace

TextureUnits::TextureUnits()
    : fHasMoreUnits(GLFunctionTable::fpGlobalFunctionTable->usable(kCapMultitexture)) {}

TextureUnits::~TextureUnits() {
    set(nullptr, nullptr);
}

void TextureUnits::setUnit(size_t unit, const TextureLayer* layer) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const TextureLayer* before = std::exchange(fLayers[unit], layer);
    if (unit > 0)
        activate(unit);
    if (!layer) {
        gl->glDisable(GL_TEXTURE_2D);
    } else {
        if (!before) {
            gl->glEnable(GL_TEXTURE_2D);
            GLTexUnitState state;
            state.setTextureFunction(unit == 0 ? GLTexUnitState::kEnvModulate : GLTexUnitState::kEnvAdd);
            state.applyGL();
        }
        layer->texture->bind();
    }
    if (layer && layer->transform)
        GLTexUsage::setTransform(*layer->transform);
    else if (before && before->transform)
        GLTexUsage::setTransform(koLinear::ProjMatrix());
    if (unit > 0)
        activate(0);
}

} // namespace orloview
