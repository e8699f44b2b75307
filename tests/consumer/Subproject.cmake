# Builds a project that includes this one as a subdirectory, and checks the result. Builds without
# optimisation and with precompiled headers, because it builds the libraries again.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

# Keeps the objects of an earlier run, but not its configuration.
file(REMOVE_RECURSE ${WORK}/prefix ${WORK}/CMakeCache.txt)
run(${CMAKE_COMMAND} -S ${SOURCE}/tests/consumer/subproject -B ${WORK} ${project_options}
  -DCMAKE_CXX_FLAGS=-O0 -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DVELMOR_PRECOMPILE=ON
  -DVELMOR_SOURCE=${SOURCE} -DVELMOR_EXAMPLE=${SOURCE}/examples/formatter/main.cpp)
run(${CMAKE_COMMAND} --build ${WORK})
run(${WORK}/program OUTPUT printed)
expect_output("the program" "${printed}" ${SOURCE}/examples/formatter/output.txt)

# The program has its own project's options. Only include directories are added.
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

# The outer project neither installs nor tests anything of this one.
run(${CMAKE_COMMAND} --install ${WORK} --prefix ${WORK}/prefix)
file(GLOB_RECURSE installed RELATIVE ${WORK}/prefix ${WORK}/prefix/*)
expect_equal("what is installed" "${installed}" "bin/program")
run(${CMAKE_CTEST_COMMAND} -N --test-dir ${WORK} OUTPUT tests)
if(NOT tests MATCHES "Total Tests: 1\n")
  message(SEND_ERROR "other tests than the project's own:\n${tests}")
endif()
