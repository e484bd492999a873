// What windows and pbuffers share: becoming current, swapping, resizing, release.

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"

void GLFrameBuffer::referenceStartupContext() {
    GLStartupContext::fpGlobalGLStartupContext->ref();
    ++fStartupReferences;
}

void GLFrameBuffer::dropStartupContext() {
    // Never more than was taken: a second release would end the start-up context under the host.
    if (fStartupReferences != 0) {
        --fStartupReferences;
        GLStartupContext::fpGlobalGLStartupContext->unref();
    }
    --fsNumInstances_GLFrameBuffer;
}

uint32_t GLFrameBuffer::makeCurrentWindowed() {
    if ((fKind != kWindowed && fKind != kOffscreen) || !fFunctionTable)
        return 0;
    fFunctionTable->glXMakeCurrent(fDisplay, isOffscreen() ? fPbuffer : fDrawable, fContext);
    return 1;
}

void GLFrameBuffer::swapBuffersWindowed() {
    if (fFunctionTable && fDisplay)
        fFunctionTable->glXSwapBuffers(fDisplay, fDrawable);
}

void GLFrameBuffer::resizeWindow(unsigned width, unsigned height) {
    if (!fFunctionTable || !fDisplay)
        return;
    XResizeWindow(fDisplay, fDrawable, width, height);
    fFunctionTable->glXWaitX();
}

void GLFrameBuffer::deleteInternalStateWindowed() {
    const GLStartupContext* startup = GLStartupContext::fpGlobalGLStartupContext;
    if (!startup || !startup->context)
        return;
    if (fContext) {
        if (!fOwnsDrawable) {
            dropStartupContext();
            return;
        }
        fFunctionTable->glXMakeCurrent(fDisplay, None, nullptr);
        fFunctionTable->glXDestroyContext(fDisplay, fContext);
        fContext = nullptr;
    }
    if (fOwnsDrawable) {
        const bool hasGLXWindows = fFunctionTable->usable(kCapGLXWindow);
        if (isOffscreen() && fPbuffer != 0) {
            if (hasGLXWindows) {
                fFunctionTable->glXMakeContextCurrent(fDisplay, None, None, nullptr);
                fFunctionTable->glXDestroyPbuffer(fDisplay, fPbuffer);
            } else {
                XDestroyWindow(fDisplay, fPbuffer);
            }
        } else if (!isOffscreen() && fDrawable != 0) {
            if (hasGLXWindows)
                fFunctionTable->glXDestroyWindow(fDisplay, fDrawable);
            else
                // The pbuffer, 0 for a window: the child window goes with the host's, which owns it.
                XDestroyWindow(fDisplay, fPbuffer);
        }
        fPbuffer = 0;
        fDrawable = 0;
        fOwnsDrawable = false;
    }
    dropStartupContext();
}
