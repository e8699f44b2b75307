# Builds a project that this one is a part of, and looks at what became of it. Without optimisation:
# the libraries are built once more.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

# The objects of an earlier run serve again; what it configured does not.
file(REMOVE_RECURSE ${WORK}/prefix ${WORK}/CMakeCache.txt)
run(${CMAKE_COMMAND} -S ${SOURCE}/tests/consumer/subproject -B ${WORK} ${project_options}
  -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=-O0 -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
  -DVELMOR_SOURCE=${SOURCE} -DVELMOR_EXAMPLE=${SOURCE}/examples/formatter/main.cpp)
run(${CMAKE_COMMAND} --build ${WORK})
run(${WORK}/program OUTPUT printed)
expect_output("the program" "${printed}" ${SOURCE}/examples/formatter/output.txt)

# The program is compiled as its own project says: the directories of headers are all that is added.
file(READ ${WORK}/compile_commands.json commands)
string(JSON count LENGTH "${commands}")
math(EXPR last "${count} - 1")
foreach(index RANGE ${last})
  string(JSON file GET "${commands}" ${index} file)
  string(JSON command GET "${commands}" ${index} command)
  if(file STREQUAL "${SOURCE}/examples/formatter/main.cpp")
    set(own "${command}")
  elseif(command MATCHES "-Werror")
    message(SEND_ERROR "a warning would stop the build of the project around it:\n${command}")
  endif()
endforeach()
string(REGEX MATCHALL " -[^ Ioc][^ ]*" options "${own}")
expect_equal("the program's options" "${options}" " -O0; -std=gnu++20")

# Nothing of this project is installed with the project around it, or is tested by it.
run(${CMAKE_COMMAND} --install ${WORK} --prefix ${WORK}/prefix)
file(GLOB_RECURSE installed RELATIVE ${WORK}/prefix ${WORK}/prefix/*)
expect_equal("what is installed" "${installed}" "bin/program")
run(${CMAKE_CTEST_COMMAND} -N --test-dir ${WORK} OUTPUT tests)
if(NOT tests MATCHES "Total Tests: 1\n")
  message(SEND_ERROR "other tests than the project's own:\n${tests}")
endif()
