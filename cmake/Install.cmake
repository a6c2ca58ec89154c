# Where the parts of the program go, and the Debian package of them (`cpack` in the build folder).

include(GNUInstallDirs)

# The programs look for their own files in ../lib/quillbase and ../share/quillbase beside their
# folder, wherever that is; so these two are not left to GNUInstallDirs.
set(QUILLBASE_LIB_DIR lib/quillbase)
set(QUILLBASE_SHARE_DIR share/quillbase)
if(QUILLBASE_GUI)
  set(QUILLBASE_PACKAGE quillbase)
else()
  set(QUILLBASE_PACKAGE quillbase-cli)
endif()
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(TARGETS quillbase-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/quillbase-cli.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
# User units: nothing runs before a user enables the timer for a library.
install(FILES packaging/quillbase-backup@.service packaging/quillbase-backup@.timer DESTINATION lib/systemd/user)
install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${QUILLBASE_PACKAGE})
# Made even without a definition in it: a program that finds its share folder knows that it is installed.
install(DIRECTORY DESTINATION ${QUILLBASE_SHARE_DIR}/languages)
install(DIRECTORY ${PROJECT_BINARY_DIR}/languages/ DESTINATION ${QUILLBASE_SHARE_DIR}/languages OPTIONAL
        FILES_MATCHING PATTERN "*.qbl")

if(QUILLBASE_GUI)
  install(TARGETS quillbase RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(TARGETS quillbase-webengine LIBRARY DESTINATION ${QUILLBASE_LIB_DIR})
  install(FILES resources/Tips.rtf resources/KTQBLinks.txt DESTINATION ${QUILLBASE_SHARE_DIR})
  install(DIRECTORY ${PROJECT_BINARY_DIR}/handbook/ DESTINATION ${QUILLBASE_SHARE_DIR}/handbook
          FILES_MATCHING PATTERN "*.html" PATTERN "*.svg" PATTERN "contents.json")
  install(FILES packaging/quillbase.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES packaging/quillbase.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES packaging/org.ktquillbase.Quillbase.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
  install(FILES packaging/quillbase-mime.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages RENAME quillbase.xml)
  set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
  install(FILES resources/icons/quillbase.svg DESTINATION ${icons}/scalable/apps)
  install(FILES packaging/icons/quillbase-symbolic.svg DESTINATION ${icons}/symbolic/apps)
  install(DIRECTORY packaging/icons/ DESTINATION ${icons}/scalable/mimetypes
          FILES_MATCHING PATTERN "application-x-quillbase-*.svg")
endif()

# The package needs no maintainer scripts: on Debian 12 the triggers of shared-mime-info,
# desktop-file-utils, hicolor-icon-theme and man-db renew their caches when it comes and goes.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${QUILLBASE_PACKAGE})
set(CPACK_PACKAGE_CONTACT "KT Quillbase <maintainers@ktquillbase.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/Dependencies.cmake)
set(CPACK_QUILLBASE_PROGRAMS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/quillbase-cli)
if(QUILLBASE_GUI)
  list(APPEND CPACK_QUILLBASE_PROGRAMS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/quillbase)
  set(CPACK_QUILLBASE_MODULES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/quillbase-webengine.so)
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, breeze-icon-theme") # loaded by name, no linker sees them
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS xdg-utils)
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop library for source code")
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Keeps source code in one tree of items: title, description, code, usage and
notes, with stored files, a web page and links to other items. Code is
coloured by the language of the library; a library is one database file with
two folders beside it, and opens at once with 100,000 items in it.

The package holds the program with its window and quillbase-cli, which does
the same on the command line.")
else()
  set(CPACK_DEBIAN_PACKAGE_CONFLICTS quillbase) # which has the same program in it
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "libraries of source code on the command line")
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Makes, reads, changes and checks libraries of source code without a window,
for scripts and editors.")
endif()
include(CPack)
