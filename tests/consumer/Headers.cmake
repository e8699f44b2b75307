# Builds a source file that includes every installed header.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

run(${CMAKE_COMMAND} -S ${SOURCE}/tests/consumer/headers -B ${WORK} ${project_options}
  -DCMAKE_PREFIX_PATH=${INSTALLED})
run(${CMAKE_COMMAND} --build ${WORK})
