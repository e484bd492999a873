#pragma once

#include "gl/Export.h"

#include <cstdint>
#include <vector>

class GLLight;

/// The GL light units of the context that is current when it is made, and which light sits on each. All but
/// destroying it needs the table and a current context.
class ORLOGL_API GLLighting {
public:
    /// Asks how many units there are (8 where GL doesn't say) and switches separate specular colour on where
    /// it is offered.
    GLLighting();

    /// Neither unbinds nor deletes the lights.
    ~GLLighting();

    GLLighting(const GLLighting&) = delete;
    GLLighting& operator=(const GLLighting&) = delete;

    /// Puts a light on a unit and binds it, or disables the unit when null. A unit beyond the last is
    /// ignored. Take a light off before it ends.
    void bind(unsigned int unit, GLLight* light);

    /// Takes every light off its unit and disables all units, also the empty ones.
    void unbindAll();

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLLighting;

    std::vector<GLLight*> fLightSlots; ///< by GL's number of lights; null where none is bound
};
