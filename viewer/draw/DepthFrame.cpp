#include "draw/DepthFrame.h"

#include "draw/GL.h"

#include <initializer_list>

namespace orloview {

void beginDepthFrame(int side) {
    gl().glViewport(0, 0, side, side);
    gl().glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    gl().glDepthMask(GL_TRUE);
    gl().glClear(GL_DEPTH_BUFFER_BIT);
    for (const GLenum capability : {GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST, GL_BLEND})
        gl().glDisable(capability);
    gl().glEnable(GL_DEPTH_TEST);
    gl().glDepthFunc(GL_LEQUAL);
    gl().glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

} // namespace orloview
