# Checks a deployment file and generates the source that implements Deployment.h.
# A deployment file consists of one set() for each of these values.
set(MAROVENDA_DEPLOYMENT_VALUES
    BASE_URL TRACKING_URL SUPPORT_EMAIL
    WAREHOUSE_STREET WAREHOUSE_CITY WAREHOUSE_ZIP WAREHOUSE_PHONE
    DEVELOPER_SITE DEVELOPER_SITE_TEXT DEVELOPER_EMAIL)
# Optional. Not compiled in; the packages' metadata contains them.
set(MAROVENDA_DEPLOYMENT_OPTIONAL HOMEPAGE MAINTAINER)
set(_marovenda_deployment_dir ${CMAKE_CURRENT_LIST_DIR})

include(${CMAKE_CURRENT_LIST_DIR}/Addresses.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/Read.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/Check.cmake)

function(_marovenda_find_deployment file)
    if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
        message(FATAL_ERROR "MAROVENDA_DEPLOYMENT: there is no file \"${file}\".")
    endif()
endfunction()

# Sets the optional values that the file has not set.
macro(_marovenda_complete_values)
    if(MAROVENDA_SUPPORT_EMAIL MATCHES "@(.+)$")
        if(MAROVENDA_HOMEPAGE STREQUAL "")
            set(MAROVENDA_HOMEPAGE "https://${CMAKE_MATCH_1}/")
        endif()
        if(MAROVENDA_MAINTAINER STREQUAL "")
            set(MAROVENDA_MAINTAINER "${CMAKE_MATCH_1}")
        endif()
    endif()
endmacro()

# Sets the values of FILE in the caller's scope, as MAROVENDA_BASE_URL and so on, without checking them.
function(marovenda_read_deployment file)
    _marovenda_find_deployment("${file}")
    set(problems "")
    set(unread "")
    _marovenda_read_values("${file}")
    if(NOT problems STREQUAL "")
        message(FATAL_ERROR "${file}:${problems}")
    endif()
    _marovenda_complete_values()
    foreach(name IN LISTS MAROVENDA_DEPLOYMENT_VALUES MAROVENDA_DEPLOYMENT_OPTIONAL)
        set(MAROVENDA_${name} "${MAROVENDA_${name}}" PARENT_SCOPE)
    endforeach()
endfunction()

# Adds an object library TARGET that implements Deployment.h with the values of FILE. Object libraries link in any order.
function(marovenda_add_deployment target file)
    marovenda_read_deployment("${file}")
    foreach(name IN LISTS MAROVENDA_DEPLOYMENT_VALUES)
        string(REPLACE "\\" "\\\\" MAROVENDA_${name} "${MAROVENDA_${name}}")
        string(REPLACE "\"" "\\\"" MAROVENDA_${name} "${MAROVENDA_${name}}")
        string(REPLACE "?" "\\?" MAROVENDA_${name} "${MAROVENDA_${name}}") # "??/" is a trigraph
    endforeach()
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}/Deployment.cpp)
    configure_file(${_marovenda_deployment_dir}/Deployment.cpp.in ${source} @ONLY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    add_library(${target} OBJECT ${source})
    target_link_libraries(${target} PUBLIC marovenda_deployment_api PRIVATE Qt6::Core)
endfunction()

# Finds the file that MAROVENDA_DEPLOYMENT names, checks it, and stores its path in the variable RESULT.
function(marovenda_choose_deployment result)
    set(MAROVENDA_DEPLOYMENT "demo" CACHE STRING
        "Deployment: the name of a file in deployments/ without its extension, or the path of a .cmake file")
    if(MAROVENDA_DEPLOYMENT MATCHES "^[A-Za-z0-9_-]+$")
        set(file ${_marovenda_deployment_dir}/${MAROVENDA_DEPLOYMENT}.cmake)
    else()
        get_filename_component(file "${MAROVENDA_DEPLOYMENT}" ABSOLUTE BASE_DIR ${CMAKE_SOURCE_DIR})
    endif()
    marovenda_check_deployment("${file}")
    set(${result} "${file}" PARENT_SCOPE)
endfunction()
