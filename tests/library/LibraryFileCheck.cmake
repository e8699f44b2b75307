# Checks the library's file: cmake -DLIBRARY=... -DREADELF=... -P LibraryFileCheck.cmake
execute_process(COMMAND ${READELF} -SW ${LIBRARY} OUTPUT_VARIABLE sections RESULT_VARIABLE failed)
if(failed)
  message("skipped: no readelf")
  return()
endif()

if(DEFINED INITIALIZERS)
  # The platform: this many units construct objects at load.
  execute_process(COMMAND ${NM} --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols)
  string(REGEX MATCHALL "_GLOBAL__sub_I[^\n]*" initializers "${symbols}")
  list(LENGTH initializers count)
  if(NOT count EQUAL INITIALIZERS)
    message(FATAL_ERROR "static initialisation in: ${initializers}")
  endif()
  return()
endif()

# One section with two descriptors of 40 bytes. The loader relocates it, so it is writable.
if(NOT sections MATCHES "\\.corvex_logmsg +PROGBITS +[0-9a-f]+ +[0-9a-f]+ 000050 00 +WA")
  message(FATAL_ERROR "the log section is not one of 80 bytes:\n${sections}")
endif()
execute_process(COMMAND ${READELF} -rW ${LIBRARY} OUTPUT_VARIABLE relocations)
string(REGEX MATCH "\\.corvex_logmsg +PROGBITS +([0-9a-f]+)" unused "${sections}")
math(EXPR begin "0x${CMAKE_MATCH_1}")
# The texts are in the file: each relocation's addend is the address of its text.
string(REGEX MATCH "\\.rodata +PROGBITS +([0-9a-f]+) +([0-9a-f]+)" unused "${sections}")
math(EXPR rodata "0x${CMAKE_MATCH_1} - 0x${CMAKE_MATCH_2}")
string(ASCII 1 one)
string(ASCII 2 two)
set(expected_texts
  "VELMOR_UNEXPECTED_RESTART"
  "Unexpected restart of Velmor agent %s occurred"
  "Unexpected restart of the Velmor agent occurred."
  "${two}"
  "severity"
  "VELMOR_CONFIG_CHANGE"
  "Configuration change requires the Velmor agent %s to restart"
  "Configuration change requires the switch ASIC to be reconfigured, requiring the Velmor agent to restart."
  "${one}"
  "severity")
foreach(word RANGE 9)
  math(EXPR address "${begin} + 8 * ${word}" OUTPUT_FORMAT HEXADECIMAL)
  string(REPLACE "0x" "" digits ${address})
  math(EXPR field "${word} % 5")
  string(REGEX MATCH "\n0*${digits} +[0-9a-f]+ +R_X86_64_(RELATIVE|64) +([0-9a-f]+)" relocated
    "${relocations}")
  if(field EQUAL 4 AND relocated)
    message(FATAL_ERROR "the severity at ${address} is relocated")
  elseif(field EQUAL 4)
    continue()
  elseif(NOT relocated)
    message(FATAL_ERROR "the pointer at ${address} is not relocated")
  endif()
  math(EXPR offset "0x${CMAKE_MATCH_2} - ${rodata}")
  list(GET expected_texts ${word} expected)
  string(LENGTH "${expected}" length)
  math(EXPR length "${length} + 1")
  string(HEX "${expected}" expected_bytes)
  file(READ ${LIBRARY} bytes OFFSET ${offset} LIMIT ${length} HEX)
  if(NOT bytes STREQUAL "${expected_bytes}00")
    message(FATAL_ERROR "the pointer at ${address} is to ${bytes}, not to \"${expected}\"")
  endif()
endforeach()
execute_process(COMMAND ${READELF} -x .corvex_logmsg ${LIBRARY} OUTPUT_VARIABLE bytes)
string(REGEX MATCHALL "\n *0x[0-9a-f]+ ([0-9a-f]+ ?)+" rows "${bytes}")
string(REGEX REPLACE "\n *0x[0-9a-f]+ " "" bytes "${rows}")
string(REGEX REPLACE "[^0-9a-f]" "" bytes "${bytes}")
foreach(severity 3 6)
  math(EXPR at "2 * (32 + 40 * (${severity} / 6))")
  string(SUBSTRING "${bytes}" ${at} 16 word)
  if(NOT word STREQUAL "0${severity}00000000000000")
    message(FATAL_ERROR "the severity is ${word} in place of ${severity}: ${bytes}")
  endif()
endforeach()

# Functions that run at load: the compiler's own, and one for each of the two units that construct
# objects.
execute_process(COMMAND ${NM} --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols)
string(REGEX MATCHALL "_GLOBAL__sub_I[^\n]*" initializers "${symbols}")
list(LENGTH initializers count)
if(NOT count EQUAL 2)
  message(FATAL_ERROR "static initialisation in other units: ${initializers}")
endif()
# A sanitizer adds one function for each unit.
if(NOT SANITIZE AND NOT sections MATCHES "\\.init_array +INIT_ARRAY +[0-9a-f]+ +[0-9a-f]+ 0000(18|10) ")
  message(FATAL_ERROR "something else runs at load:\n${sections}")
endif()
