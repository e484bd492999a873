# What a build can choose, and the compiler settings that every target shares.

option(ORLOGL_BUILD_VIEWER "Build the reference viewer and the minimal example" ON)
option(ORLOGL_BUILD_TESTS "Build the tests" ON)
option(ORLOGL_BUILD_BENCH "Build the benchmarks" ON)
option(ORLOGL_TRAP_HOOKS "Read the GL error state before and after every wrapper call" OFF)
option(ORLOGL_SANITIZE "AddressSanitizer and UndefinedBehaviorSanitizer in everything" OFF)
option(ORLOGL_WERROR "Treat compiler warnings as errors" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Programs and libraries side by side: the build tree runs without LD_LIBRARY_PATH.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Everything of ours is compiled with these; libraries of others are not.
add_library(orlo_warnings INTERFACE)
target_compile_options(orlo_warnings INTERFACE -Wall -Wextra -Wpedantic
                       $<$<BOOL:${ORLOGL_WERROR}>:-Werror>)

if(ORLOGL_SANITIZE)
  set(sanitizers -fsanitize=address,undefined,float-cast-overflow)
  add_compile_options(${sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=undefined,float-cast-overflow)
  add_link_options(${sanitizers})
endif()
