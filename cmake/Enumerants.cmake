# write_enumerants(GL_HEADERS FILE): the enumerants of GL's headers as one string literal, a line "GL_ACCUM 0x0100" for each.
# Of several names for one value the first is of the oldest version, or of a vendor where no version has one.
function(write_enumerants folder output)
  set(all)
  foreach(header gl.h glext.h)
    file(STRINGS ${folder}/GL/${header} lines REGEX "^#define[ \t]+GL_[A-Z0-9_x]+[ \t]+0x[0-9A-Fa-f]+")
    # Masks are the old ones alone: each later extension has a set of its own.
    if(header STREQUAL glext.h)
      list(FILTER lines EXCLUDE REGEX "_BITS?(_[A-Z]+)?[ \t]")
    endif()
    list(TRANSFORM lines REPLACE "^#define[ \t]+([A-Za-z0-9_]+)[ \t]+(0x[0-9A-Fa-f]+).*" "\\1 \\2")
    list(APPEND all ${lines})
  endforeach()
  list(JOIN all "\n" text)
  file(CONFIGURE OUTPUT ${output} CONTENT "R\"(@text@\n)\"\n" @ONLY)
endfunction()
