# Builds the examples with find_package, and runs them.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

run(${CMAKE_COMMAND} -S ${SOURCE}/examples -B ${WORK} ${project_options}
  -DCMAKE_PREFIX_PATH=${INSTALLED})
run(${CMAKE_COMMAND} --build ${WORK})
if(FLAGS MATCHES "-fsanitize")
  # A sanitizer replaces dlopen, and its version does not use the program's rpath.
  set(ENV{LD_LIBRARY_PATH} ${INSTALLED}/${LIB})
endif()
foreach(example dlopen formatter json usage)
  run(${WORK}/${example}/${example} OUTPUT printed)
  expect_output(${example} "${printed}" ${SOURCE}/examples/${example}/output.txt)
endforeach()
