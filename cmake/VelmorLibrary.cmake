# velmor_library(TARGET VERSION_SCRIPT): what both shared libraries have in common.
function(velmor_library target version_script)
  set(script ${CMAKE_CURRENT_SOURCE_DIR}/${version_script})
  target_compile_features(${target} PUBLIC cxx_std_20)
  # Calls between its own exported functions need no detour through the dynamic linker.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:velmor_warnings>)
  target_link_options(${target} PRIVATE -Wl,--version-script=${script})
  set_target_properties(${target} PROPERTIES
    LINK_DEPENDS ${script}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    # Installed as it is.
    BUILD_WITH_INSTALL_RPATH ON)
endfunction()
