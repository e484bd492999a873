#pragma once

#include "gl/Export.h"

#include <cstdint>

class GL2Shader;

/// A GLSL program of up to one vertex and one fragment shader. The shaders belong to the host and outlive the
/// program.
///
///     GL2ProgramObject program(&vertex, &fragment); // both compiled
///     if (program.linkShaders())
///         program.bind();
///
/// Needs the table and a current context for everything but the empty constructor. Without shader objects in
/// GL nothing is called, and operations answer false, but for bind and unbind.
class ORLOGL_API GL2ProgramObject {
public:
    GL2ProgramObject() = default;

    /// Creates the program and attaches both; either may be null.
    GL2ProgramObject(GL2Shader* vertex, GL2Shader* fragment);

    virtual ~GL2ProgramObject();

    GL2ProgramObject(const GL2ProgramObject&) = delete;
    GL2ProgramObject& operator=(const GL2ProgramObject&) = delete;

    /// Makes GL's program; whether there is one now. Delete an earlier one first.
    bool createObject();

    /// Puts a shader in the place of the one there was; null only takes that away. One that is not compiled
    /// yet is kept but not attached, and compiling it later doesn't attach it: attach it again.
    void attachVertexShader(GL2Shader* shader);

    /// Takes the vertex shader away, if there is one.
    void detachVertexShader();

    /// The same for the fragment shader.
    void attachFragmentShader(GL2Shader* shader);

    /// Takes the fragment shader away, if there is one.
    void detachFragmentShader();

    /// Whether the attached shaders became a program that can be bound.
    bool linkShaders();

    /// Makes the program current; without one the current program stays. Always true.
    bool bind();

    /// Leaves no program current. Always true.
    bool unbind();

    /// Detaches both shaders and deletes the program, with no program current afterwards. False when there is
    /// none.
    bool deleteObject();

    uint32_t fProgramObject = 0;          ///< GL's name, 0 before there is one
    GL2Shader* fVertexShader = nullptr;   ///< attached, not owned; may be null
    GL2Shader* fFragmentShader = nullptr; ///< attached, not owned; may be null

private:
    void attach(GL2Shader*& place, GL2Shader* shader);
    void detach(GL2Shader*& place);
};
