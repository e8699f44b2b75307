# The files that `cmake --install` installs, and their places. Headers keep the paths that they are
# included by, below include/velmor. The exported targets and the pkg-config files name that
# directory. With --component:
#
#   runtime   the two libraries, as programs load them
#   dev       headers, the names that a linker looks for, the CMake package, the pkg-config files
#   tool      tcamshow, its manual page and its completions
include(CMakePackageConfigHelpers)

# An installation can be moved as a whole, so its directories must be relative.
foreach(directory CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
  if(IS_ABSOLUTE "${${directory}}")
    message(FATAL_ERROR
      "${directory} is \"${${directory}}\": give a path below the prefix, such as \"lib\"")
  endif()
endforeach()

set(velmor_include ${CMAKE_INSTALL_INCLUDEDIR}/velmor)
set(velmor_package ${CMAKE_INSTALL_LIBDIR}/cmake/VelmorTcamCliHelper)

set_target_properties(VelmorPlatform PROPERTIES EXPORT_NAME Platform)
set_target_properties(VelmorTcamCliHelper PROPERTIES EXPORT_NAME TcamCliHelper)
install(TARGETS VelmorPlatform VelmorTcamCliHelper EXPORT VelmorTcamCliHelperTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT dev
  INCLUDES DESTINATION ${velmor_include})

install(DIRECTORY platform/ DESTINATION ${velmor_include} COMPONENT dev
  FILES_MATCHING PATTERN "*.h"
  # Private headers, and directories without a header.
  PATTERN "platform/Sobrel" EXCLUDE
  PATTERN "platform/pravo" EXCLUDE
  PATTERN "Trelix/ParseIp.h" EXCLUDE
  PATTERN "Trelix/TextOut.h" EXCLUDE
  PATTERN "Zel/Collections/RbTreeBlocks.h" EXCLUDE
  PATTERN "Zel/Format/FormatDigits.h" EXCLUDE
  PATTERN "Zel/Format/LineText.h" EXCLUDE)
install(DIRECTORY VelmorTcamManagerBase DESTINATION ${velmor_include} COMPONENT dev
  FILES_MATCHING PATTERN "*.h"
  PATTERN "*Assertions.h" EXCLUDE
  PATTERN "*Cells.h" EXCLUDE
  PATTERN "*Descriptors.h" EXCLUDE
  PATTERN "*Reading.h" EXCLUDE
  PATTERN "*Row.h" EXCLUDE
  PATTERN "*Trace.h" EXCLUDE)

install(EXPORT VelmorTcamCliHelperTargets NAMESPACE Velmor:: DESTINATION ${velmor_package}
  COMPONENT dev)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VelmorTcamCliHelperConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_SOURCE_DIR}/cmake/VelmorTcamCliHelperConfig.cmake
  ${PROJECT_BINARY_DIR}/VelmorTcamCliHelperConfigVersion.cmake
  DESTINATION ${velmor_package} COMPONENT dev)

# The pkg-config files name all paths relative to themselves, so that the installation can be moved.
set(velmor_pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH velmor_pc_to_prefix /prefix/${velmor_pkgconfig} /prefix)
string(REGEX REPLACE "/$" "" velmor_pc_to_prefix "${velmor_pc_to_prefix}")
foreach(name velmor-platform velmor-tcam-cli-helper)
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${velmor_pkgconfig} COMPONENT dev)
endforeach()

if(TARGET tcamshow)
  file(RELATIVE_PATH velmor_bin_to_lib
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(tcamshow PROPERTIES INSTALL_RPATH "$ORIGIN/${velmor_bin_to_lib}")
  install(TARGETS tcamshow RUNTIME COMPONENT tool)
  install(FILES tools/tcamshow/completion/tcamshow.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME tcamshow
    COMPONENT tool)
  if(NOT VELMOR_DEBIAN_PACKAGES)
    install(FILES docs/tcamshow.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
    install(FILES tools/tcamshow/completion/tcamshow.zsh
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions RENAME _tcamshow COMPONENT tool)
  endif()
endif()
if(VELMOR_DEBIAN_PACKAGES)
  include(${CMAKE_CURRENT_LIST_DIR}/VelmorDebian.cmake)
endif()
