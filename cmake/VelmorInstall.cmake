# What `cmake --install` puts where. Headers keep the paths that they are included by, below
# include/velmor, which the exported targets name.
include(CMakePackageConfigHelpers)

set(velmor_include ${CMAKE_INSTALL_INCLUDEDIR}/velmor)
set(velmor_package ${CMAKE_INSTALL_LIBDIR}/cmake/VelmorTcamCliHelper)

set_target_properties(VelmorPlatform PROPERTIES EXPORT_NAME Platform)
set_target_properties(VelmorTcamCliHelper PROPERTIES EXPORT_NAME TcamCliHelper)
# The libraries find each other wherever the whole is moved to.
set_target_properties(VelmorPlatform VelmorTcamCliHelper PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS VelmorPlatform VelmorTcamCliHelper EXPORT VelmorTcamCliHelperTargets
  INCLUDES DESTINATION ${velmor_include})

install(DIRECTORY platform/ DESTINATION ${velmor_include} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY VelmorTcamManagerBase DESTINATION ${velmor_include}
  FILES_MATCHING PATTERN "*.h"
  # The library's own.
  PATTERN "*Assertions.h" EXCLUDE
  PATTERN "*Cells.h" EXCLUDE
  PATTERN "*Descriptors.h" EXCLUDE
  PATTERN "*Reading.h" EXCLUDE
  PATTERN "*Row.h" EXCLUDE
  PATTERN "*Trace.h" EXCLUDE)

install(EXPORT VelmorTcamCliHelperTargets NAMESPACE Velmor:: DESTINATION ${velmor_package})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VelmorTcamCliHelperConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_SOURCE_DIR}/cmake/VelmorTcamCliHelperConfig.cmake
  ${PROJECT_BINARY_DIR}/VelmorTcamCliHelperConfigVersion.cmake
  DESTINATION ${velmor_package})

if(TARGET tcamshow)
  file(RELATIVE_PATH velmor_bin_to_lib
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(tcamshow PROPERTIES INSTALL_RPATH "$ORIGIN/${velmor_bin_to_lib}")
  install(TARGETS tcamshow)
endif()
