# The targets PCRE2::8BIT and PCRE2::16BIT: regular expressions over UTF-8 and UTF-16.
find_path(PCRE2_INCLUDE_DIR pcre2.h)
find_library(PCRE2_8_LIBRARY pcre2-8)
find_library(PCRE2_16_LIBRARY pcre2-16)
if(PCRE2_INCLUDE_DIR)
  file(STRINGS ${PCRE2_INCLUDE_DIR}/pcre2.h lines REGEX "#define PCRE2_(MAJOR|MINOR) ")
  string(REGEX REPLACE ".*MAJOR +([0-9]+).*MINOR +([0-9]+).*" "\\1.\\2" PCRE2_VERSION "${lines}")
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(PCRE2 REQUIRED_VARS PCRE2_8_LIBRARY PCRE2_16_LIBRARY PCRE2_INCLUDE_DIR
                                  VERSION_VAR PCRE2_VERSION)
if(PCRE2_FOUND AND NOT TARGET PCRE2::16BIT)
  foreach(width 8 16)
    add_library(PCRE2::${width}BIT UNKNOWN IMPORTED)
    set_target_properties(PCRE2::${width}BIT PROPERTIES IMPORTED_LOCATION ${PCRE2_${width}_LIBRARY}
                          INTERFACE_INCLUDE_DIRECTORIES ${PCRE2_INCLUDE_DIR})
  endforeach()
endif()
