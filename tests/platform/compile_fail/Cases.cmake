# Each case of these sources is compiled on its own. It must not compile, and the compiler must give
# the stated reason. The nearest correct code must compile.
#
# The result depends only on the compiler, so builds with a sanitizer leave the cases out.
if(VELMOR_SANITIZE)
  return()
endif()

set(case_options -std=c++20 -I${PROJECT_SOURCE_DIR}/platform)
set(case_includes "")
if(VELMOR_PRECOMPILE)
  # All cases include the same headers. They are precompiled here.
  set(case_header ${CMAKE_CURRENT_BINARY_DIR}/Cases.h)
  file(CONFIGURE OUTPUT ${case_header} CONTENT
    "#include <string>\n#include \"Zel/Format/Format.h\"\n#include \"Zel/Types/AttributeTable.h\"\n")
  # Both compilers look for a precompiled header under this name.
  add_custom_command(OUTPUT ${case_header}.gch
    COMMAND ${CMAKE_CXX_COMPILER} ${case_options} -MD -MF ${case_header}.d -MT ${case_header}.gch
      -x c++-header ${case_header} -o ${case_header}.gch
    DEPENDS ${case_header} DEPFILE ${case_header}.d VERBATIM)
  add_custom_target(compile_cases ALL DEPENDS ${case_header}.gch)
  set(case_includes -include ${case_header})
endif()

# velmor_case(SUITE FILE NUMBER NAME REASON): the case CASE == NUMBER of FILE.
function(velmor_case suite file number name reason)
  set(compile ${CMAKE_CXX_COMPILER} ${case_options} ${case_includes} -fsyntax-only -DCASE=${number})
  set(source ${CMAKE_CURRENT_SOURCE_DIR}/compile_fail/${file})
  add_test(NAME ${suite}Refuses.${name} COMMAND ${compile} ${source})
  # Tests the reason instead of the compiler's status: a case that fails for another reason shows
  # nothing.
  set_tests_properties(${suite}Refuses.${name} PROPERTIES PASS_REGULAR_EXPRESSION "${reason}")
  add_test(NAME ${suite}Takes.${name} COMMAND ${compile} -DRIGHT ${source})
endfunction()
include(${CMAKE_CURRENT_LIST_DIR}/FormatCases.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/AttributeCases.cmake)
