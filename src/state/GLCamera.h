#pragma once

#include "gl/Export.h"
#include "orlohost/HWInterfaces.h"

/// A host camera that loads itself into the fixed-function matrix stacks.
class ORLOGL_API GLCamera : public IHWCamera {
public:
    GLCamera();
    ~GLCamera() override;
    GLCamera(const GLCamera&) = delete;
    GLCamera& operator=(const GLCamera&) = delete;

    /// Loads projection and view. Needs the table and a current context; leaves the model-view matrix mode
    /// current, which GLLight::bind relies on.
    void bind() override;

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLCamera;
};
