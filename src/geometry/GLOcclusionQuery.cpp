#include "geometry/GLOcclusionQuery.h"

#include "gl/GLFunctionTable.h"

#include <climits>
#include <new>

namespace {

GLFunctionTable& gl() {
    return *GLFunctionTable::fpGlobalFunctionTable;
}

} // namespace

GLOcclusionQuery::GLOcclusionQuery() {
    GLint bits = 0;
    if (gl().usable(kCapOcclusionQuery)) {
        fUseARB = true;
        gl().glGetQueryivARB(GL_SAMPLES_PASSED_ARB, GL_QUERY_COUNTER_BITS_ARB, &bits);
    } else if (gl().usable(kCapNVOcclusionQuery)) {
        gl().glGetIntegerv(GL_PIXEL_COUNTER_BITS_NV, &bits);
    }
    fCounterBits = static_cast<uint32_t>(bits);
}

GLOcclusionQuery::~GLOcclusionQuery() {
    reset();
}

void GLOcclusionQuery::reset() {
    if (fNames) {
        const auto count = static_cast<GLsizei>(fCount);
        if (fUseARB)
            gl().glDeleteQueriesARB(count, fNames.get());
        else
            gl().glDeleteOcclusionQueriesNV(count, fNames.get());
    }
    fNames.reset();
    fCount = 0;
}

bool GLOcclusionQuery::generateQueries(unsigned n) {
    if (fCounterBits == 0 || n == 0 || n > INT_MAX)
        return false;
    reset();
    fNames.reset(new (std::nothrow) uint32_t[n]());
    if (!fNames)
        return false;
    fCount = n;
    if (fUseARB)
        gl().glGenQueriesARB(static_cast<GLsizei>(n), fNames.get());
    else
        gl().glGenOcclusionQueriesNV(static_cast<GLsizei>(n), fNames.get());
    return true;
}

bool GLOcclusionQuery::beginQuery(unsigned i) {
    if (i >= fCount)
        return false;
    if (fUseARB)
        gl().glBeginQueryARB(GL_SAMPLES_PASSED_ARB, fNames[i]);
    else
        gl().glBeginOcclusionQueryNV(fNames[i]);
    return true;
}

bool GLOcclusionQuery::endQuery(unsigned i) {
    if (i >= fCount)
        return false;
    if (fUseARB)
        gl().glEndQueryARB(GL_SAMPLES_PASSED_ARB);
    else
        gl().glEndOcclusionQueryNV();
    return true;
}

void GLOcclusionQuery::completeQueryRenders() {
    if (fCount != 0 && !fUseARB)
        gl().glFlush();
}

bool GLOcclusionQuery::queryIsAvailable(unsigned i) const {
    if (i >= fCount)
        return false;
    GLint available = 0;
    if (fUseARB)
        gl().glGetQueryObjectivARB(fNames[i], GL_QUERY_RESULT_AVAILABLE_ARB, &available);
    else
        gl().glGetOcclusionQueryivNV(fNames[i], GL_PIXEL_COUNT_AVAILABLE_NV, &available);
    return available > 0;
}

bool GLOcclusionQuery::waitForQueriesToProcess() const {
    if (fCount == 0)
        return false;
    while (!queryIsAvailable(fCount - 1)) {
    }
    return true;
}

uint32_t GLOcclusionQuery::sampleCount(unsigned i) const {
    if (i >= fCount)
        return 0;
    GLuint samples = 0;
    if (fUseARB)
        gl().glGetQueryObjectuivARB(fNames[i], GL_QUERY_RESULT_ARB, &samples);
    else
        gl().glGetOcclusionQueryuivNV(fNames[i], GL_PIXEL_COUNT_NV, &samples);
    return samples;
}
