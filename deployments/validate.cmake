# Checks a deployment file without configuring a build: cmake -DFILE=deployments/mine.cmake -P deployments/validate.cmake
cmake_minimum_required(VERSION 3.25)
if(NOT DEFINED FILE)
    message(FATAL_ERROR "usage: cmake -DFILE=deployments/mine.cmake -P deployments/validate.cmake")
endif()
get_filename_component(FILE "${FILE}" ABSOLUTE)
include(${CMAKE_CURRENT_LIST_DIR}/Deployment.cmake)
marovenda_check_deployment("${FILE}")
message(STATUS "${FILE} is a valid deployment.")
