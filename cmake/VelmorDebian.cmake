# The Debian packages, as scripts/package builds them by CPack:
#
#   libvelmortcamclihelper1       the two libraries, in one package because they have one version
#   libvelmortcamclihelper-dev    the files to build a program with them
#   tcamshow                      the program
#
# This file alone installs the files that only a Debian package has.
set(VELMOR_MAINTAINER "VelmorTcamCliHelper maintainers <maintainers@velmor.example>" CACHE STRING
  "Who maintains the Debian packages")
set(velmor_debian_revision 1)
set(velmor_runtime_package libvelmortcamclihelper${PROJECT_VERSION_MAJOR})
set(velmor_dev_package libvelmortcamclihelper-dev)
set(velmor_tool_package tcamshow)

# velmor_gzipped(FILE NAME): makes a configured and compressed copy. The compressed file holds no
# time and no name, so that equal sources make equal packages.
function(velmor_gzipped file name)
  configure_file(${file} ${PROJECT_BINARY_DIR}/debian/${name} @ONLY)
  execute_process(COMMAND gzip -9n --force --keep ${PROJECT_BINARY_DIR}/debian/${name}
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

velmor_gzipped(${CMAKE_CURRENT_LIST_DIR}/debian/changelog changelog.Debian)
foreach(component runtime dev tool)
  set(doc ${CMAKE_INSTALL_DATADIR}/doc/${velmor_${component}_package})
  install(FILES ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz
    ${CMAKE_CURRENT_LIST_DIR}/debian/copyright DESTINATION ${doc} COMPONENT ${component})
endforeach()

velmor_gzipped(${PROJECT_SOURCE_DIR}/docs/tcamshow.1 tcamshow.1)
install(FILES ${PROJECT_BINARY_DIR}/debian/tcamshow.1.gz
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES tools/tcamshow/completion/tcamshow.zsh
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions RENAME _tcamshow COMPONENT tool)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmor-tcam-cli-helper)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${VELMOR_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev tool)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${velmor_debian_revision})
set(CPACK_DEBIAN_PACKAGE_SOURCE velmor-tcam-cli-helper)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

# The dev package needs the libraries of exactly this version and revision.
set(same "(= ${PROJECT_VERSION}-${velmor_debian_revision})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${velmor_runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The first line of each description is the package's summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "text rows and usage model of a switch's TCAM - libraries
The shared library with which a network switch's command line shows what its
ternary content-addressable memory holds: one entry in, the table's text out.
It also has the model of the memory's usage and of its summary.

With it come the runtimes that it stands on.")
# The dependency that other packages get from the libraries' files, and a trigger that renews the
# loader's cache. The trigger replaces the scripts that CPack makes for it.
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/shlibs @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/debian/shlibs;${CMAKE_CURRENT_LIST_DIR}/debian/triggers")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${velmor_dev_package})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${velmor_runtime_package} ${same}")
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "text rows and usage model of a switch's TCAM - development files
The shared library with which a network switch's command line shows what its
ternary content-addressable memory holds.

This package has the headers, and the files by which CMake and pkg-config find
the library.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${velmor_tool_package})
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${velmor_runtime_package} (>= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "print what a switch's TCAM holds, from a snapshot
tcamshow reads a snapshot of a network switch's ternary content-addressable
memory and prints it as the switch's own show commands do: the IPv4, IPv6 and
MAC tables, the usage by feature and the summary; or as JSON Lines.

It imports filter sets of packet-classification research and OpenConfig ACLs.")
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/Finish.cmake)
include(CPack)
