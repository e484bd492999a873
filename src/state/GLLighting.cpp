#include "state/GLLighting.h"

#include "gl/GLFunctionTable.h"
#include "state/GLLight.h"

#include <new>

int32_t GLLighting::fsNumInstances_GLLighting = 0;

GLLighting::GLLighting() {
    ++fsNumInstances_GLLighting;
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (gl->usable(kCapSeparateSpecularColor))
        gl->glLightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, GL_SEPARATE_SPECULAR_COLOR);
    GLint units = 8;
    gl->glGetIntegerv(GL_MAX_LIGHTS, &units);
    try {
        fLightSlots.resize(units > 0 ? static_cast<size_t>(units) : 0, nullptr);
    } catch (const std::bad_alloc&) {
        fLightSlots.clear(); // no unit can be used, and nothing breaks
    }
}

GLLighting::~GLLighting() {
    --fsNumInstances_GLLighting;
}

void GLLighting::bind(unsigned int unit, GLLight* light) {
    if (unit >= fLightSlots.size())
        return;
    fLightSlots[unit] = light;
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (!light) {
        gl->glDisable(GL_LIGHT0 + unit);
        return;
    }
    gl->glEnable(GL_LIGHT0 + unit);
    light->bind(static_cast<unsigned short>(unit));
}

void GLLighting::unbindAll() {
    for (size_t unit = 0; unit < fLightSlots.size(); ++unit) {
        if (fLightSlots[unit])
            fLightSlots[unit]->unbind(static_cast<unsigned short>(unit));
        fLightSlots[unit] = nullptr;
        GLFunctionTable::fpGlobalFunctionTable->glDisable(GL_LIGHT0 + static_cast<GLenum>(unit));
    }
}
