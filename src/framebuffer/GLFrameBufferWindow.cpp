// Windows, and what they share with pbuffers: becoming current, swapping, resizing, release.

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"

void GLFrameBuffer::referenceStartupContext() {
    GLStartupContext* startup = GLStartupContext::fpGlobalGLStartupContext;
    startup->ref();
    // References on an earlier one are not given back: what was made on it was not released either.
    fStartupReferences = fStartupSerial == startup->serial() ? fStartupReferences + 1 : 1;
    fStartupSerial = startup->serial();
}

void GLFrameBuffer::dropStartupContext() {
    // Never more than was taken: a second release would end the start-up context under the host.
    if (fStartupReferences == 0)
        return;
    --fStartupReferences;
    // Its host may have deleted it, whoever held references.
    if (GLStartupContext* startup = GLStartupContext::living(fStartupSerial))
        startup->unref();
}

uint32_t GLFrameBuffer::assignInWindow(GLXContext context, const WindowWrapper& window,
                                       const koBufferFormat& format, unsigned width, unsigned height) {
    fFunctionTable = GLFunctionTable::fpGlobalFunctionTable;
    if (!fFunctionTable) {
        clearInternalState();
        return kNoContextOrSize;
    }
    if (GLStartupContext::fpGlobalGLStartupContext)
        referenceStartupContext();
    fRequestedFormat = format;
    fActualFormat = format;
    fWindow = window;
    fContext = context;
    fWidth = width;
    fHeight = height;
    fKind = kWindowed;
    fPbuffer = 0;
    fDrawable = window.window();
    fDisplay = window.display();
    fOwnsDrawable = false;
    return kSuccess;
}

void GLFrameBuffer::unassignInWindow() {
    dropStartupContext();
    clearInternalState();
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
    XResizeWindow(fDisplay, fChildWindow != 0 ? fChildWindow : fDrawable, width, height);
    fFunctionTable->glXWaitX();
}

void GLFrameBuffer::deleteInternalStateWindowed() {
    const GLStartupContext* startup = GLStartupContext::fpGlobalGLStartupContext;
    if (!startup || !startup->context)
        return;
    if (fContext) {
        if (!fOwnsDrawable) {
            dropStartupContext();
            --fsNumInstances_GLFrameBuffer;
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
                destroyPbuffer();
            } else {
                XDestroyWindow(fDisplay, fPbuffer);
            }
        } else if (fChildWindow != 0) {
            destroyChildWindow();
        } else if (!isOffscreen() && fDrawable != 0) {
            if (hasGLXWindows)
                fFunctionTable->glXDestroyWindow(fDisplay, fDrawable);
            else
                // Oddity: the pbuffer, 0 for a window: the child window goes with the host's, which owns it.
                XDestroyWindow(fDisplay, fPbuffer);
        }
        fPbuffer = 0;
        fDrawable = 0;
        fOwnsDrawable = false;
    }
    dropStartupContext();
    --fsNumInstances_GLFrameBuffer;
}
