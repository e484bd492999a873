# The target docs: the reference, build/<preset>/docs/html/index.html. Fails at a member without a word.

find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  add_custom_target(docs COMMAND ${CMAKE_COMMAND} -E echo "The reference is made by Doxygen; on Debian: apt install doxygen"
                    COMMAND ${CMAKE_COMMAND} -E false VERBATIM)
  return()
endif()

list(TRANSFORM orlo_private_headers PREPEND "*/" OUTPUT_VARIABLE private_patterns)
list(JOIN private_patterns " " private_patterns)
configure_file(cmake/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(docs COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile VERBATIM)
