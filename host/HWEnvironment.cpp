#include "orlohost/HWEnvironment.h"

#include <cstdlib>

koString::IString HWEnvironment::orlo_path;
bool HWEnvironment::orlo_block_allocate_strips = false;
bool HWEnvironment::disable_hwr_texture_shader_flag = false;

const char* OrloGetEnv(const char* name) {
    return name ? std::getenv(name) : nullptr;
}
