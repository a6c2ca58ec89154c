# Finds libzip as LibZip::LibZip. The package's own configuration file asks for programs that come in
# another package.
find_path(LibZip_INCLUDE_DIR zip.h)
find_library(LibZip_LIBRARY zip)
if(LibZip_INCLUDE_DIR)
  find_file(LibZip_CONFIG zipconf.h HINTS ${LibZip_INCLUDE_DIR})
  file(STRINGS ${LibZip_CONFIG} version REGEX "define LIBZIP_VERSION \"")
  string(REGEX REPLACE ".*\"([^\"]*)\".*" "\\1" LibZip_VERSION "${version}")
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibZip REQUIRED_VARS LibZip_LIBRARY LibZip_INCLUDE_DIR VERSION_VAR LibZip_VERSION)
if(LibZip_FOUND AND NOT TARGET LibZip::LibZip)
  add_library(LibZip::LibZip UNKNOWN IMPORTED)
  set_target_properties(LibZip::LibZip PROPERTIES IMPORTED_LOCATION ${LibZip_LIBRARY}
                        INTERFACE_INCLUDE_DIRECTORIES ${LibZip_INCLUDE_DIR})
endif()
