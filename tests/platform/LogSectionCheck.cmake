# Builds LogSectionFixture.cpp with COMPILER and FLAGS into WORK, and checks the section
# .corvex_logmsg: three descriptors of 40 bytes without a hole, each with four relocated pointers.
#
#   cmake -DCOMPILER=g++ "-DFLAGS=-O2 -shared" -DSOURCE=... -DINCLUDE=... -DWORK=... -P <this>
#
# Prints "skipped: ..." if a tool is missing.
find_program(compiler ${COMPILER})
find_program(readelf readelf)
if(NOT compiler OR NOT readelf)
  message("skipped: needs ${COMPILER} and readelf")
  return()
endif()
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
foreach(flag IN LISTS flags)
  if(flag MATCHES "^-fuse-ld=(.*)$")
    find_program(linker_${CMAKE_MATCH_1} ld.${CMAKE_MATCH_1})
    if(NOT linker_${CMAKE_MATCH_1})
      message("skipped: needs ld.${CMAKE_MATCH_1}")
      return()
    endif()
  endif()
endforeach()
file(MAKE_DIRECTORY ${WORK})
set(output ${WORK}/fixture)
execute_process(
  COMMAND ${compiler} -std=c++20 -fvisibility=hidden -I${INCLUDE} ${flags} ${SOURCE} -o ${output}
  RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "cannot build the fixture with ${COMPILER} ${FLAGS}:\n${text}")
endif()

execute_process(COMMAND ${readelf} -S -W ${output} OUTPUT_VARIABLE sections
  COMMAND_ERROR_IS_FATAL ANY)
# [Nr] Name Type Address Offset Size ...
string(REGEX MATCHALL "\\.corvex_logmsg +PROGBITS +[0-9a-f]+ +[0-9a-f]+ +[0-9a-f]+[^\n]*" rows
  "${sections}")
list(LENGTH rows count)
if(NOT count EQUAL 1)
  message(FATAL_ERROR "${count} sections .corvex_logmsg with ${COMPILER} ${FLAGS}:\n${sections}")
endif()
string(REGEX MATCH "PROGBITS +([0-9a-f]+) +[0-9a-f]+ +([0-9a-f]+)" unused "${rows}")
math(EXPR begin "0x${CMAKE_MATCH_1}")
math(EXPR size "0x${CMAKE_MATCH_2}")
if(NOT size EQUAL 120)
  message(FATAL_ERROR "${size} bytes in place of 120 with ${COMPILER} ${FLAGS}:\n${rows}")
endif()

# The words 0 to 3 of each 5 are pointers, with one relocation each.
execute_process(COMMAND ${readelf} -r -W ${output} OUTPUT_VARIABLE relocations
  COMMAND_ERROR_IS_FATAL ANY)
set(pointers 0)
string(REGEX MATCHALL "\n[0-9a-f]+ +[0-9a-f]+ R_X86_64_(RELATIVE|64)" rows "${relocations}")
foreach(row IN LISTS rows)
  string(REGEX MATCH "[0-9a-f]+" address "${row}")
  math(EXPR offset "0x${address} - ${begin}")
  if(offset LESS 0 OR NOT offset LESS 120)
    continue()
  endif()
  math(EXPR word "${offset} % 40")
  if(NOT word MATCHES "^(0|8|16|24)$")
    message(FATAL_ERROR "a relocation at ${offset} with ${COMPILER} ${FLAGS}")
  endif()
  math(EXPR pointers "${pointers} + 1")
endforeach()
if(NOT pointers EQUAL 12)
  message(FATAL_ERROR "${pointers} relocated pointers in place of 12 with ${COMPILER} ${FLAGS}:\n"
    "${relocations}")
endif()
message("3 descriptors with ${COMPILER} ${FLAGS}")
