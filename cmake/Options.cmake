# What a build can choose, and the compiler settings that every target shares. As a part of another project, OrloGL is its
# two libraries alone unless that one asks for more.

option(ORLOGL_BUILD_CG "Build the Cg compiler and runtime" ${PROJECT_IS_TOP_LEVEL})
option(ORLOGL_BUILD_VIEWER "Build the reference viewer and the example hosts; needs ORLOGL_BUILD_CG" ${PROJECT_IS_TOP_LEVEL})
option(ORLOGL_BUILD_TESTS "Build the tests; needs the viewer" ${PROJECT_IS_TOP_LEVEL})
option(ORLOGL_BUILD_BENCH "Build the benchmarks; needs ORLOGL_BUILD_CG" ${PROJECT_IS_TOP_LEVEL})
option(ORLOGL_INSTALL "Put what is built among what \"cmake --install\" puts in place" ${PROJECT_IS_TOP_LEVEL})
option(ORLOGL_TRAP_HOOKS "Read the GL error state before and after every wrapper call" OFF)
option(ORLOGL_SANITIZE "AddressSanitizer and UndefinedBehaviorSanitizer in everything" OFF)
option(ORLOGL_FUZZ "Build the program that fuzzes the readers and compilers, by clang's libFuzzer" OFF)
option(ORLOGL_WERROR "Treat compiler warnings as errors" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Before 1.0 a minor version may break what the one before it offered.
set(ORLOGL_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

# Programs and libraries side by side: the build tree runs without LD_LIBRARY_PATH.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

# need(PACKAGE DEBIAN ...): as find_package(PACKAGE REQUIRED ...), with an error that names what to install.
macro(need package debian)
  find_package(${package} ${ARGN})
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR "OrloGL needs ${package} and finds none; on Debian: apt install ${debian}")
  endif()
endmacro()

# need_module(PREFIX MODULE DEBIAN): the same by pkg-config; what links PkgConfig::PREFIX.
macro(need_module prefix module debian)
  pkg_check_modules(${prefix} IMPORTED_TARGET GLOBAL ${module})
  if(NOT ${prefix}_FOUND)
    message(FATAL_ERROR "OrloGL needs ${module} and finds none; on Debian: apt install ${debian}")
  endif()
endmacro()

# Everything of ours is compiled with these; libraries of others are not.
add_library(orlo_warnings INTERFACE)
# GCC 12 takes the standard library's own copies of strings for overlapping ones (its bug 105329).
target_compile_options(orlo_warnings INTERFACE -Wall -Wextra -Wpedantic
                       $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
                       $<$<BOOL:${ORLOGL_WERROR}>:-Werror>)

if(ORLOGL_SANITIZE)
  set(sanitizers -fsanitize=address,undefined,float-cast-overflow)
  add_compile_options(${sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=undefined,float-cast-overflow)
  add_link_options(${sanitizers})
endif()

if(ORLOGL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
