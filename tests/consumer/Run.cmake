# Shared by the scripts of this directory.
cmake_minimum_required(VERSION 3.25)

# run(COMMAND... [OUTPUT variable] [DIRECTORY directory]): fails the test if the command fails.
function(run)
  cmake_parse_arguments(ARG "" "OUTPUT;DIRECTORY" "" ${ARGN})
  if(ARG_DIRECTORY)
    list(APPEND where WORKING_DIRECTORY ${ARG_DIRECTORY})
  endif()
  execute_process(COMMAND ${ARG_UNPARSED_ARGUMENTS} ${where}
    OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    list(JOIN ARG_UNPARSED_ARGUMENTS " " command)
    message(FATAL_ERROR "${command}: ${status}\n${output}${error}")
  endif()
  if(ARG_OUTPUT)
    set(${ARG_OUTPUT} "${output}" PARENT_SCOPE)
  endif()
endfunction()

# Expects that a command printed the contents of a file.
function(expect_output what printed file)
  file(READ ${file} expected)
  if(NOT printed STREQUAL expected)
    message(SEND_ERROR "${what} prints\n${printed}in place of\n${expected}")
  endif()
endfunction()

function(expect_equal what got expected)
  if(NOT got STREQUAL expected)
    message(SEND_ERROR "${what}: got\n  ${got}\nin place of\n  ${expected}")
  endif()
endfunction()

# Options to configure a project that uses this build. Without optimisation, to save time.
set(project_options -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER} "-DCMAKE_CXX_FLAGS=${FLAGS}"
  -DCMAKE_BUILD_TYPE=)
