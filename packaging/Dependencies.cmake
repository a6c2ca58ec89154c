# Read by cpack: finds out which packages hold the libraries of the programs. Those of the browser's
# module are only recommended, because it is loaded at run time and everything else works without.
# (CPACK_DEBIAN_PACKAGE_SHLIBDEPS would make them dependencies of the whole package.)

if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

set(work ${CPACK_PACKAGE_DIRECTORY}/_CPack_Packages/dependencies)
file(MAKE_DIRECTORY ${work}/debian)
file(TOUCH ${work}/debian/control) # dpkg-shlibdeps wants one, be it empty
set(arguments "")
foreach(program IN LISTS CPACK_QUILLBASE_PROGRAMS)
  list(APPEND arguments -e${program})
endforeach()
foreach(module IN LISTS CPACK_QUILLBASE_MODULES)
  list(APPEND arguments -dRecommends -e${module})
endforeach()
execute_process(COMMAND dpkg-shlibdeps -O ${arguments} WORKING_DIRECTORY ${work}
                OUTPUT_VARIABLE found ERROR_VARIABLE messages RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "dpkg-shlibdeps does not know the dependencies (${status}):\n${messages}")
endif()
foreach(field Depends Recommends)
  if(found MATCHES "shlibs:${field}=([^\n]+)")
    string(TOUPPER ${field} variable)
    list(APPEND CPACK_DEBIAN_PACKAGE_${variable} ${CMAKE_MATCH_1})
    list(JOIN CPACK_DEBIAN_PACKAGE_${variable} ", " CPACK_DEBIAN_PACKAGE_${variable})
  endif()
endforeach()
