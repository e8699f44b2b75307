# Configures with absolute directories, which would stop the installation from being moved. Each is
# refused by its name.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

foreach(directory CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
  execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK} ${project_options}
      -DVELMOR_BUILD_TESTS=OFF -DVELMOR_BUILD_TOOLS=OFF
      -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_INSTALL_INCLUDEDIR=include -D${directory}=/elsewhere
    OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE status)
  if(status EQUAL 0 OR NOT error MATCHES "${directory} is \"/elsewhere\"")
    message(SEND_ERROR "${directory} may be absolute: ${status}\n${output}${error}")
  endif()
endforeach()
