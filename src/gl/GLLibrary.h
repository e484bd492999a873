#pragma once

class GLFunctionTable;

/// The GL library, opened for the life of the process: the slots of the table point into it.
///
/// "libGL.so", the plain name, belongs to a development package; where that one is missing it is
/// "libGL.so.1". Null where there is neither: dlsym then searches the process, which finds a GL that the host
/// opened globally.
void* openGLLibrary();

/// What the library finds under a name that has no slot in the table; null where it finds nothing.
/// Vendor-neutral libraries find something for any name: ask whether the driver has it, too.
void (*findEntryPoint(const char* name))();

/// Whether the current context's OpenGL is of a version, 43 for 4.3, or a later one, or has the extension
/// that brought to earlier ones what is wanted of it.
bool hasVersionOrExtension(const GLFunctionTable& table, int version, const char* extension);
