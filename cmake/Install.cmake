# What `cmake --install` puts in place: the two libraries, the Cg runtime, their public headers, the viewer with its
# shaders, the documents, and a CMake package and
# pkg-config's files. Everything finds its neighbours by relative paths, so that an installed tree can be moved as a whole.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The library's headers include each other as "gl/X.h", and hosts include <orlogl.h> or <orlogl/gl/X.h>.
set(library_headers ${CMAKE_INSTALL_INCLUDEDIR}/orlogl)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/OrloGL)

install(TARGETS orlohost EXPORT OrloGLTargets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS orlogl EXPORT OrloGLTargets INCLUDES DESTINATION ${library_headers} ${CMAKE_INSTALL_INCLUDEDIR})
set_target_properties(orlogl PROPERTIES INSTALL_RPATH "$ORIGIN")

install(DIRECTORY host/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN *.h)
# Every header of src/ but those that only the library's own sources include.
set(not_private)
foreach(header IN LISTS orlo_private_headers)
  list(APPEND not_private PATTERN ${header} EXCLUDE)
endforeach()
install(DIRECTORY src/ DESTINATION ${library_headers}
  FILES_MATCHING PATTERN *.h PATTERN *.inc
  ${not_private})

if(TARGET orloview)
  file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  install(TARGETS orloview)
  set_target_properties(orloview PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
  install(DIRECTORY share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/orlogl)
endif()

set(described_libraries orlogl orlohost)
if(TARGET Cg)
  install(TARGETS orlocg Cg CgGL)
  list(APPEND described_libraries orlocg-runtime)
endif()
install(DIRECTORY cg/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN *.h)

install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES examples/minimal.cpp DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

file(RELATIVE_PATH ORLOGL_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(library IN LISTS described_libraries)
  configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

install(EXPORT OrloGLTargets NAMESPACE OrloGL:: DESTINATION ${package_folder})
# So that -DOrloGL_DIR=<build folder> takes the package from where it was built.
export(EXPORT OrloGLTargets NAMESPACE OrloGL:: FILE ${PROJECT_BINARY_DIR}/OrloGLTargets.cmake)
configure_package_config_file(cmake/OrloGLConfig.cmake.in ${PROJECT_BINARY_DIR}/OrloGLConfig.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrloGLConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrloGLConfig.cmake ${PROJECT_BINARY_DIR}/OrloGLConfigVersion.cmake
  DESTINATION ${package_folder})
