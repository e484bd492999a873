#include "shader/GL2ProgramObject.h"

#include "shader/GL2Shader.h"
#include "shader/ShaderObjects.h"

GL2ProgramObject::GL2ProgramObject(GL2Shader* vertex, GL2Shader* fragment) {
    createObject();
    attachVertexShader(vertex);
    attachFragmentShader(fragment);
}

GL2ProgramObject::~GL2ProgramObject() {
    deleteObject();
}

bool GL2ProgramObject::createObject() {
    GLFunctionTable* gl = shaderObjectTable();
    fProgramObject = gl ? gl->glCreateProgramObjectARB() : 0;
    return fProgramObject != 0;
}

void GL2ProgramObject::attach(GL2Shader*& place, GL2Shader* shader) {
    detach(place);
    place = shader;
    GLFunctionTable* gl = shaderObjectTable();
    if (gl && shader && shader->fShaderObject)
        gl->glAttachObjectARB(fProgramObject, shader->fShaderObject);
}

void GL2ProgramObject::detach(GL2Shader*& place) {
    GLFunctionTable* gl = shaderObjectTable();
    if (gl && place && place->fShaderObject)
        gl->glDetachObjectARB(fProgramObject, place->fShaderObject);
    place = nullptr;
}

void GL2ProgramObject::attachVertexShader(GL2Shader* shader) {
    attach(fVertexShader, shader);
}

void GL2ProgramObject::detachVertexShader() {
    detach(fVertexShader);
}

void GL2ProgramObject::attachFragmentShader(GL2Shader* shader) {
    attach(fFragmentShader, shader);
}

void GL2ProgramObject::detachFragmentShader() {
    detach(fFragmentShader);
}

bool GL2ProgramObject::linkShaders() {
    GLFunctionTable* gl = shaderObjectTable();
    if (!gl)
        return false;
    gl->glLinkProgramARB(fProgramObject);
    return objectHas(*gl, fProgramObject, GL_OBJECT_LINK_STATUS_ARB);
}

bool GL2ProgramObject::bind() {
    GLFunctionTable* gl = shaderObjectTable();
    if (gl && fProgramObject)
        gl->glUseProgramObjectARB(fProgramObject);
    return true;
}

bool GL2ProgramObject::unbind() {
    if (GLFunctionTable* gl = shaderObjectTable())
        gl->glUseProgramObjectARB(0);
    return true;
}

bool GL2ProgramObject::deleteObject() {
    attachVertexShader(nullptr);
    attachFragmentShader(nullptr);
    GLFunctionTable* gl = shaderObjectTable();
    if (!gl || !fProgramObject)
        return false;
    gl->glUseProgramObjectARB(0);
    gl->glDeleteObjectARB(fProgramObject);
    fProgramObject = 0;
    return true;
}
