# Checks a deployment file and turns it into the source behind Deployment.h.
# A deployment file holds one set() for each of these and nothing else.
set(MAROVENDA_DEPLOYMENT_VALUES
    BASE_URL TRACKING_URL SUPPORT_EMAIL
    WAREHOUSE_STREET WAREHOUSE_CITY WAREHOUSE_ZIP WAREHOUSE_PHONE
    DEVELOPER_SITE DEVELOPER_SITE_TEXT DEVELOPER_EMAIL)
set(_marovenda_deployment_dir ${CMAKE_CURRENT_LIST_DIR})

function(_marovenda_read_deployment file)
    if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
        message(FATAL_ERROR "MAROVENDA_DEPLOYMENT: there is no file \"${file}\".")
    endif()
    foreach(name IN LISTS MAROVENDA_DEPLOYMENT_VALUES)
        unset(MAROVENDA_${name})
        unset(MAROVENDA_${name} CACHE)
    endforeach()
    include("${file}")
    foreach(name IN LISTS MAROVENDA_DEPLOYMENT_VALUES)
        if("${MAROVENDA_${name}}" STREQUAL "")
            message(FATAL_ERROR "${file}: MAROVENDA_${name} is not set.")
        endif()
        if("${MAROVENDA_${name}}" MATCHES "[\n\r]")
            message(FATAL_ERROR "${file}: MAROVENDA_${name} holds a line break: \"${MAROVENDA_${name}}\".")
        endif()
        set(MAROVENDA_${name} "${MAROVENDA_${name}}" PARENT_SCOPE)
    endforeach()
endfunction()

# Stops configuring, naming the value, when the file is not a usable deployment.
function(marovenda_check_deployment file)
    _marovenda_read_deployment("${file}")
    set(url "${MAROVENDA_BASE_URL}")
    set(loopback "127\\.[0-9]+\\.[0-9]+\\.[0-9]+|localhost|\\[::1\\]")
    if(url MATCHES "[ \t]" OR NOT url MATCHES "^https?://[^/?#@]+/([^?#]*/)?$")
        message(FATAL_ERROR "${file}: MAROVENDA_BASE_URL is \"${url}\"; it must be an address with a host, "
                            "without query, fragment or user, that ends in \"/\".")
    endif()
    if(NOT url MATCHES "^https://" AND NOT url MATCHES "^http://(${loopback})(:[0-9]+)?/")
        message(FATAL_ERROR "${file}: MAROVENDA_BASE_URL is \"${url}\"; only a loopback address may do without "
                            "https, because passwords travel in the clear otherwise.")
    endif()
    if(NOT MAROVENDA_TRACKING_URL MATCHES "^https://[^ \t]+/$")
        message(FATAL_ERROR "${file}: MAROVENDA_TRACKING_URL is \"${MAROVENDA_TRACKING_URL}\"; it must be an "
                            "https address that ends in \"/\".")
    endif()
    if(NOT MAROVENDA_WAREHOUSE_ZIP MATCHES "^[0-9][0-9][0-9][0-9][0-9]-[0-9][0-9][0-9][0-9]$")
        message(FATAL_ERROR "${file}: MAROVENDA_WAREHOUSE_ZIP is \"${MAROVENDA_WAREHOUSE_ZIP}\"; it must be five "
                            "digits, a hyphen and four digits.")
    endif()
endfunction()

# An object library TARGET, linked whatever the order, that defines the functions of Deployment.h with the values of FILE.
function(marovenda_add_deployment target file)
    _marovenda_read_deployment("${file}")
    foreach(name IN LISTS MAROVENDA_DEPLOYMENT_VALUES)
        string(REPLACE "\\" "\\\\" MAROVENDA_${name} "${MAROVENDA_${name}}")
        string(REPLACE "\"" "\\\"" MAROVENDA_${name} "${MAROVENDA_${name}}")
        string(REPLACE "?" "\\?" MAROVENDA_${name} "${MAROVENDA_${name}}") # "??/" would be another character
    endforeach()
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}/Deployment.cpp)
    configure_file(${_marovenda_deployment_dir}/Deployment.cpp.in ${source} @ONLY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    add_library(${target} OBJECT ${source})
    target_link_libraries(${target} PUBLIC marovenda_deployment_api PRIVATE Qt6::Core)
endfunction()

# Finds the file that MAROVENDA_DEPLOYMENT names, checks it and stores its path in the variable RESULT.
function(marovenda_choose_deployment result)
    set(MAROVENDA_DEPLOYMENT "demo" CACHE STRING
        "Deployment: the name of a file in deployments/ without its ending, or the path of a .cmake file")
    if(MAROVENDA_DEPLOYMENT MATCHES "^[A-Za-z0-9_-]+$")
        set(file ${_marovenda_deployment_dir}/${MAROVENDA_DEPLOYMENT}.cmake)
    else()
        get_filename_component(file "${MAROVENDA_DEPLOYMENT}" ABSOLUTE BASE_DIR ${CMAKE_SOURCE_DIR})
    endif()
    marovenda_check_deployment("${file}")
    set(${result} "${file}" PARENT_SCOPE)
endfunction()
