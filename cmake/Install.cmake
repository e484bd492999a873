# What `cmake --install` puts in place: the two libraries, the Cg runtime, their public headers, the programs with shaders,
# manual pages and what a desktop wants to know of them, the documents, and a CMake package and pkg-config's files.
# Everything finds its neighbours by relative paths, so that an installed tree can be moved as a whole. The components are
# the Debian packages of Packages.cmake.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Among the system's own folders the loader finds the libraries, and whatever package has documents names their folder.
set(is_of_system FALSE)
set(documents ${CMAKE_INSTALL_DOCDIR})
set(zsh_functions ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
if(CMAKE_INSTALL_PREFIX STREQUAL /usr)
  set(is_of_system TRUE)
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/liborlogl-dev)
  set(zsh_functions ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
endif()

# beside(TARGET PATH): the target looks for our libraries at PATH, $ORIGIN being where it lies itself.
function(beside target path)
  if(NOT is_of_system)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH ${path})
  endif()
endfunction()

# The library's headers include each other as "gl/X.h", and hosts include <orlogl.h> or <orlogl/gl/X.h>.
set(library_headers ${CMAKE_INSTALL_INCLUDEDIR}/orlogl)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/OrloGL)

set(library_parts LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS orlohost EXPORT OrloGLTargets ${library_parts} INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS orlogl EXPORT OrloGLTargets ${library_parts}
  INCLUDES DESTINATION ${library_headers} ${CMAKE_INSTALL_INCLUDEDIR})
beside(orlogl $ORIGIN)

install(DIRECTORY host/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN *.h)
# Every header of src/ but those that only the library's own sources include.
set(not_private)
foreach(header IN LISTS orlo_private_headers)
  list(APPEND not_private PATTERN ${header} EXCLUDE)
endforeach()
install(DIRECTORY src/ DESTINATION ${library_headers} COMPONENT development
  FILES_MATCHING PATTERN *.h PATTERN *.inc
  ${not_private})

set(described_libraries orlogl:development orlohost:development)
if(TARGET Cg)
  # The plain names are what programs open.
  install(TARGETS Cg CgGL COMPONENT cg)
  beside(CgGL $ORIGIN)
  install(TARGETS orlocg COMPONENT viewer)
  set(programs orlocg)
  list(APPEND described_libraries orlocg-runtime:cg)
endif()
install(DIRECTORY cg/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT cg FILES_MATCHING PATTERN *.h)

if(TARGET orloview)
  file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  install(TARGETS orloview COMPONENT viewer)
  list(APPEND programs orloview)
  beside(orloview $ORIGIN/${libraries_from_programs})
  install(DIRECTORY share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/orlogl COMPONENT viewer)

  set(desktop viewer/desktop/orloview)
  foreach(file ${desktop}.desktop:applications ${desktop}.svg:icons/hicolor/scalable/apps
               ${desktop}.thumbnailer:thumbnailers ${desktop}.xml:mime/packages)
    string(REPLACE : ";" file ${file})
    list(POP_BACK file folder)
    install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder} COMPONENT viewer)
  endforeach()
endif()

# From what --help prints.
if(programs)
  need(Python3 python3 COMPONENTS Interpreter)
  set(manuals ${PROJECT_BINARY_DIR}/manuals)
  foreach(program IN LISTS programs)
    set(page ${manuals}/${program}.1.gz)
    add_custom_command(OUTPUT ${page}
      COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/cmake/manual.py $<TARGET_FILE:${program}> ${PROJECT_VERSION} ${manuals}
      DEPENDS ${program} cmake/manual.py VERBATIM)
    list(APPEND pages ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT viewer)
    install(FILES ${manuals}/bash/${program} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT viewer)
    install(FILES ${manuals}/zsh/_${program} DESTINATION ${zsh_functions} COMPONENT viewer)
  endforeach()
  add_custom_target(manuals ALL DEPENDS ${pages})
endif()

install(FILES LICENSE DESTINATION ${documents} COMPONENT license)
install(FILES README.md CHANGELOG.md DESTINATION ${documents} COMPONENT development)
install(DIRECTORY docs DESTINATION ${documents} COMPONENT development)
install(FILES examples/minimal.cpp DESTINATION ${documents}/examples COMPONENT development)

file(RELATIVE_PATH ORLOGL_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(library IN LISTS described_libraries)
  string(REPLACE : ";" library ${library})
  list(POP_BACK library component)
  configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endforeach()

install(EXPORT OrloGLTargets NAMESPACE OrloGL:: DESTINATION ${package_folder} COMPONENT development)
# So that -DOrloGL_DIR=<build folder> takes the package from where it was built.
export(EXPORT OrloGLTargets NAMESPACE OrloGL:: FILE ${PROJECT_BINARY_DIR}/OrloGLTargets.cmake)
configure_package_config_file(cmake/OrloGLConfig.cmake.in ${PROJECT_BINARY_DIR}/OrloGLConfig.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrloGLConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrloGLConfig.cmake ${PROJECT_BINARY_DIR}/OrloGLConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)
