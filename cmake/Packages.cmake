# Debian packages by CPack, one for each component of Install.cmake; scripts/package makes them.

set(ORLOGL_PACKAGER "The OrloGL authors <orlogl@example.org>" CACHE STRING "Who the Debian packages say maintains them")

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development viewer cg)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT ${ORLOGL_PACKAGER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each has its own
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE orlogl)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# dpkg-shlibdeps finds our own libraries where they were built, and tells no package of theirs: each names them itself.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF) # nothing there is linked
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(library_package liborlogl${ORLOGL_SOVERSION})
set(same_version "(= ${PROJECT_VERSION})")
set(made ${PROJECT_BINARY_DIR}/packages)

# What every Debian package has: a changelog, dated by SOURCE_DATE_EPOCH where that is set, and the license in Debian's form.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${made}/changelog "orlogl (${PROJECT_VERSION}) unstable; urgency=medium

  * OrloGL ${PROJECT_VERSION}; CHANGELOG.md in liborlogl-dev tells what is new.

 -- ${ORLOGL_PACKAGER}  ${date}
")
execute_process(COMMAND gzip -9nf ${made}/changelog COMMAND_ERROR_IS_FATAL ANY)
file(READ LICENSE license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]+)\n+(.*[^\n])\n*$" license "${license}")
string(REPLACE "\n\n" "\n.\n" license "${CMAKE_MATCH_2}")
string(REPLACE "\n" "\n " license "${license}")
file(WRITE ${made}/copyright "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: OrloGL

Files: *
Copyright: ${CMAKE_MATCH_1}
License: Expat
 ${license}
")

# package(COMPONENT NAME SECTION SYNOPSIS DESCRIPTION [DEPENDS ...] [RECOMMENDS ...] [SUGGESTS ...] [LIBRARIES NAME...])
# LIBRARIES: what it holds for others to link.
function(package component name section synopsis description)
  cmake_parse_arguments(arg "" "DEPENDS;RECOMMENDS;SUGGESTS" "LIBRARIES" ${ARGN})
  string(TOUPPER CPACK_DEBIAN_${component} settings)
  set(${settings}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(${settings}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(${settings}_DESCRIPTION "${synopsis}\n${description}" PARENT_SCOPE)
  foreach(others DEPENDS RECOMMENDS SUGGESTS)
    set(${settings}_PACKAGE_${others} "${arg_${others}}" PARENT_SCOPE)
  endforeach()
  install(FILES ${made}/copyright ${made}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  if(arg_LIBRARIES)
    set(shlibs "")
    foreach(library IN LISTS arg_LIBRARIES)
      string(APPEND shlibs "${library} ${ORLOGL_SOVERSION} ${name} (>= ${PROJECT_VERSION})\n")
    endforeach()
    file(WRITE ${made}/${component}/shlibs "${shlibs}")
    file(WRITE ${made}/${component}/triggers "activate-noawait ldconfig\n")
    # CPack would write scripts that call ldconfig, as the trigger does; not where it is told of some, here or not.
    set(${settings}_PACKAGE_CONTROL_EXTRA ${made}/${component}/shlibs ${made}/${component}/triggers none/postinst none/postrm
        PARENT_SCOPE)
  endif()
endfunction()

package(library ${library_package} libs "hardware rendering back end for 3D content creation"
"OrloGL turns scene data (geometry groups, particles, lights, cameras,
textures) into OpenGL calls and gives pictures back. It links no OpenGL:
every entry point is found at run time."
  RECOMMENDS "libgl1, libglu1-mesa"
  SUGGESTS libcg-orlogl
  LIBRARIES liborlogl liborlohost)
package(development liborlogl-dev libdevel "hardware rendering back end for 3D content creation - development"
"Headers, a CMake package, files of pkg-config, documents and an example
for hosts that draw by OrloGL."
  DEPENDS "${library_package} ${same_version}, libcg-orlogl ${same_version}, libx11-dev, libgl-dev")
package(viewer orloview graphics "viewer for glTF, OBJ, PLY, STL and other 3D models"
"OrloView shows models in a window and writes pictures of them, with
shadows, skies and many samples a pixel; desktops get thumbnails of
models from it. With it comes orlocg, which compiles Cg shaders to GLSL."
  DEPENDS "${library_package} ${same_version}, libgl1"
  RECOMMENDS "libcg-orlogl ${same_version}, libgl1-mesa-dri, libglu1-mesa, fonts-dejavu-core, webp-pixbuf-loader"
  SUGGESTS xvfb)
package(cg libcg-orlogl libs "Cg runtime of OrloGL"
"libCg.so and libCgGL.so, with the functions that a rendering back end
needs, for machines that have no other Cg runtime. Programs open both by
these plain names; Cg is compiled to GLSL."
  RECOMMENDS libgl1
  LIBRARIES libCg libCgGL)

file(WRITE ${made}/libcg-orlogl "# Programs open the plain names at run time, as they would another Cg runtime's.
libcg-orlogl: link-to-shared-library-in-wrong-package
libcg-orlogl: lacks-unversioned-link-to-shared-library
# Its two libraries belong together.
libcg-orlogl: package-name-doesnt-match-sonames
")
install(FILES ${made}/libcg-orlogl DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT cg)

include(CPack)
