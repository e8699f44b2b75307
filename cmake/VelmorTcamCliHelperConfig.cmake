# find_package(VelmorTcamCliHelper) gives the targets Velmor::Platform and Velmor::TcamCliHelper.
include(${CMAKE_CURRENT_LIST_DIR}/VelmorTcamCliHelperTargets.cmake)
