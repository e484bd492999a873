#pragma once

#include "orlohost/Export.h"
#include "orlohost/koString.h"

/// What a host sets once, before the first start-up context, and the library reads.
class ORLOHOST_API HWEnvironment {
public:
    /// Where the host is installed: Cg shaders are looked for in "/bin/Cg/" below it.
    static koString::IString orlo_path;

    /// Whether the index records of a group come in blocks that share one index store (see
    /// GeometryDataIndex). Change it between scenes only.
    static bool orlo_block_allocate_strips;

    /// Keeps NV fragment programs from being used.
    static bool disable_hwr_texture_shader_flag;
};

/// The value of an environment variable, null when it is not set.
ORLOHOST_API const char* OrloGetEnv(const char* name);
