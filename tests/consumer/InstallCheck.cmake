# Installs the build tree, moves the whole elsewhere, and builds the example and a source that
# includes every header against it.
function(run)
  cmake_parse_arguments(ARG "" "OUTPUT" "" ${ARGN})
  execute_process(COMMAND ${ARG_UNPARSED_ARGUMENTS}
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    list(JOIN ARG_UNPARSED_ARGUMENTS " " command)
    message(FATAL_ERROR "${command}: ${status}\n${output}")
  endif()
  if(ARG_OUTPUT)
    set(${ARG_OUTPUT} "${output}" PARENT_SCOPE)
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first)
file(RENAME ${WORK}/first ${WORK}/prefix)
set(options -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${FLAGS}
  -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_PREFIX_PATH=${WORK}/prefix)

run(${CMAKE_COMMAND} -S ${SOURCE}/examples/formatter -B ${WORK}/formatter ${options})
run(${CMAKE_COMMAND} --build ${WORK}/formatter)
run(${WORK}/formatter/formatter OUTPUT output)
if(NOT output MATCHES "^Id .*\n17        .10     . TCP   .*8000-8099.*permit\n$")
  message(FATAL_ERROR "the example prints\n${output}")
endif()

run(${CMAKE_COMMAND} -S ${SOURCE}/tests/consumer/headers -B ${WORK}/headers ${options})
run(${CMAKE_COMMAND} --build ${WORK}/headers)

run(${WORK}/prefix/${BIN}/tcamshow ip ${SOURCE}/examples/acl.jsonl OUTPUT installed)
run(${TCAMSHOW} ip ${SOURCE}/examples/acl.jsonl OUTPUT built)
if(NOT installed STREQUAL built)
  message(FATAL_ERROR "the installed tcamshow prints\n${installed}")
endif()
