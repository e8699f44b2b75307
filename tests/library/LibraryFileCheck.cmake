# Looks at the library's file: cmake -DLIBRARY=... -DREADELF=... -P LibraryFileCheck.cmake
execute_process(COMMAND ${READELF} -SW ${LIBRARY} OUTPUT_VARIABLE sections RESULT_VARIABLE failed)
if(failed)
  message("skipped: no readelf")
  return()
endif()

if(DEFINED INITIALIZERS)
  # The platform: only so many units have something to construct.
  execute_process(COMMAND ${NM} --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols)
  string(REGEX MATCHALL "_GLOBAL__sub_I[^\n]*" initializers "${symbols}")
  list(LENGTH initializers count)
  if(NOT count EQUAL INITIALIZERS)
    message(FATAL_ERROR "static initialisation in: ${initializers}")
  endif()
  execute_process(COMMAND ${READELF} --dyn-syms -W ${LIBRARY} OUTPUT_VARIABLE dynamic)
  if(dynamic MATCHES "UNIQUE")
    message(FATAL_ERROR "unique symbols:\n${dynamic}")
  endif()
  return()
endif()

# Two descriptors of 40 bytes, one section, writable by the loader that relocates it.
if(NOT sections MATCHES "\\.corvex_logmsg +PROGBITS +[0-9a-f]+ +[0-9a-f]+ 000050 00 +WA")
  message(FATAL_ERROR "the log section is not one of 80 bytes:\n${sections}")
endif()
execute_process(COMMAND ${READELF} -rW ${LIBRARY} OUTPUT_VARIABLE relocations)
string(REGEX MATCH "\\.corvex_logmsg +PROGBITS +([0-9a-f]+)" unused "${sections}")
math(EXPR begin "0x${CMAKE_MATCH_1}")
foreach(word RANGE 9)
  math(EXPR address "${begin} + 8 * ${word}" OUTPUT_FORMAT HEXADECIMAL)
  string(REPLACE "0x" "" digits ${address})
  math(EXPR field "${word} % 5")
  string(REGEX MATCH "\n0*${digits} +[0-9a-f]+ +R_X86_64_(RELATIVE|64)" relocated "${relocations}")
  if(field EQUAL 4 AND relocated)
    message(FATAL_ERROR "the severity at ${address} is relocated")
  elseif(NOT field EQUAL 4 AND NOT relocated)
    message(FATAL_ERROR "the pointer at ${address} is not relocated")
  endif()
endforeach()

# What runs at load: the compiler's own entry and one each of the two units that have something to
# construct, in the order of the units.
execute_process(COMMAND ${NM} --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols)
string(REGEX MATCHALL "_GLOBAL__sub_I[^\n]*" initializers "${symbols}")
list(LENGTH initializers count)
if(NOT count EQUAL 2)
  message(FATAL_ERROR "static initialisation in other units: ${initializers}")
endif()
# A sanitizer registers each unit too.
if(NOT SANITIZE AND NOT sections MATCHES "\\.init_array +INIT_ARRAY +[0-9a-f]+ +[0-9a-f]+ 0000(18|10) ")
  message(FATAL_ERROR "something else runs at load:\n${sections}")
endif()

# A unique symbol would keep the library mapped after dlclose.
execute_process(COMMAND ${READELF} --dyn-syms -W ${LIBRARY} OUTPUT_VARIABLE dynamic)
if(dynamic MATCHES "UNIQUE")
  message(FATAL_ERROR "unique symbols:\n${dynamic}")
endif()
