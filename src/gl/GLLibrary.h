#pragma once

/// The GL library, opened for the life of the process: the slots of the table point into it.
///
/// "libGL.so", the plain name, belongs to a development package; where that one is missing it is
/// "libGL.so.1". Null where there is neither: dlsym then searches the process, which finds a GL that the host
/// opened globally.
void* openGLLibrary();
