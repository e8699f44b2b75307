# velmor_library(TARGET VERSION_SCRIPT): sets the options that both shared libraries have in common.
function(velmor_library target version_script)
  set(script ${CMAKE_CURRENT_SOURCE_DIR}/${version_script})
  target_compile_features(${target} PUBLIC cxx_std_20)
  # A library calls its own exported functions directly, without the dynamic linker.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition
    # Nothing runs when a library is loaded, except in the sources of velmor_runs_at_load.
    $<$<CXX_COMPILER_ID:Clang>:-Wglobal-constructors>
    $<$<CXX_COMPILER_ID:Clang>:-Wexit-time-destructors>)
  if(VELMOR_COVERAGE)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/CoverageAtAbort.cpp)
  endif()
  if(VELMOR_DEBUG_INFO)
    # Paths are relative to the repository. The code stays the same. `cmake --install --strip`
    # leaves the debug information out.
    target_compile_options(${target} PRIVATE -g -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  endif()
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:velmor_warnings>)
  target_link_options(${target} PRIVATE -Wl,--version-script=${script})
  set_target_properties(${target} PROPERTIES
    LINK_DEPENDS ${script}
    # No header needs it, and without it both libraries can share their precompiled headers.
    DEFINE_SYMBOL ""
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    # Built with the rpath that it is installed with.
    BUILD_WITH_INSTALL_RPATH ON)
endfunction()

# velmor_runs_at_load(SOURCE...): marks sources that construct objects when their library is loaded.
# The test LoadTime.WhatIsConstructedIsKnown lists these objects.
function(velmor_runs_at_load)
  set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS
    $<$<CXX_COMPILER_ID:Clang>:-Wno-global-constructors>
    $<$<CXX_COMPILER_ID:Clang>:-Wno-exit-time-destructors>)
  foreach(source ${ARGN})
    cmake_path(ABSOLUTE_PATH source)
    cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    set_property(GLOBAL APPEND PROPERTY VELMOR_RUNS_AT_LOAD ${source})
  endforeach()
endfunction()
