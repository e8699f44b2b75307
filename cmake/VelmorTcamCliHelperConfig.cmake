# find_package(VelmorTcamCliHelper): the targets Velmor::Platform and Velmor::TcamCliHelper.
include(${CMAKE_CURRENT_LIST_DIR}/VelmorTcamCliHelperTargets.cmake)
