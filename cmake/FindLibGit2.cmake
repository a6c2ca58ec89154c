# Finds libgit2 as LibGit2::LibGit2; Debian's package has no configuration file for CMake.
find_path(LibGit2_INCLUDE_DIR git2.h)
find_library(LibGit2_LIBRARY git2)
if(LibGit2_INCLUDE_DIR)
  file(STRINGS ${LibGit2_INCLUDE_DIR}/git2/version.h version REGEX "define LIBGIT2_VERSION ")
  string(REGEX REPLACE ".*\"([^\"]*)\".*" "\\1" LibGit2_VERSION "${version}")
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibGit2 REQUIRED_VARS LibGit2_LIBRARY LibGit2_INCLUDE_DIR VERSION_VAR LibGit2_VERSION)
if(LibGit2_FOUND AND NOT TARGET LibGit2::LibGit2)
  add_library(LibGit2::LibGit2 UNKNOWN IMPORTED)
  set_target_properties(LibGit2::LibGit2 PROPERTIES IMPORTED_LOCATION ${LibGit2_LIBRARY}
                        INTERFACE_INCLUDE_DIRECTORIES ${LibGit2_INCLUDE_DIR})
endif()
