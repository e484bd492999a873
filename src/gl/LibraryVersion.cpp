#include "gl/LibraryVersion.h"

int32_t orloglVersion() {
    return ORLOGL_VERSION;
}
