# Changes one value of the demo deployment at a time; configuring must say which one is wrong.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(READ ${SOURCE}/deployments/demo.cmake demo)
set(failed 0)

function(write_deployment name value)
    string(REGEX REPLACE "set\\(MAROVENDA_${name} [^\n]*\\)" "" text "${demo}")
    if(NOT value STREQUAL "UNSET")
        string(APPEND text "set(MAROVENDA_${name} \"${value}\")\n")
    endif()
    file(WRITE ${WORK}/deployment.cmake "${text}")
endfunction()

function(expect good name value)
    write_deployment(${name} "${value}")
    execute_process(
        COMMAND ${CMAKE_COMMAND} -DSOURCE=${SOURCE} -DFILE=${WORK}/deployment.cmake
            -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/check.cmake
        RESULT_VARIABLE code OUTPUT_VARIABLE said ERROR_VARIABLE said)
    # Messages are wrapped.
    string(REGEX REPLACE "[ \n]+" " " said "${said}")
    if(good AND NOT code EQUAL 0)
        message(SEND_ERROR "refused: ${name} \"${value}\": ${said}")
    elseif(NOT good AND (code EQUAL 0 OR NOT said MATCHES "MAROVENDA_${name}"))
        message(SEND_ERROR "not refused by name: ${name} \"${value}\": ${said}")
    elseif(NOT good AND NOT value STREQUAL "UNSET" AND NOT value STREQUAL "")
        string(FIND "${said}" "${value}" at)
        if(at EQUAL -1)
            message(SEND_ERROR "the value is not named: ${name} \"${value}\": ${said}")
        endif()
    endif()
endfunction()

expect(TRUE BASE_URL "https://service.example/")
expect(TRUE BASE_URL "https://service.example:8443/app/")
expect(TRUE BASE_URL "http://127.0.0.1:9999/")
expect(TRUE BASE_URL "http://localhost/")
expect(TRUE BASE_URL "http://[::1]:80/")
foreach(url IN ITEMS "http://example.com/" "http://127.0.0.1.example.com/" "http://localhost.example.com/"
        "http://127.0.0.1@example.com/" "https://service.example" "https://service.example/app" "https:///" "ftp://x/"
        "service.example/" "https://service.example/?a=/" "https://user@service.example/" "https://a b/")
    expect(FALSE BASE_URL "${url}")
endforeach()
foreach(name IN ITEMS BASE_URL TRACKING_URL SUPPORT_EMAIL WAREHOUSE_STREET WAREHOUSE_CITY WAREHOUSE_ZIP WAREHOUSE_PHONE
        DEVELOPER_SITE DEVELOPER_SITE_TEXT DEVELOPER_EMAIL)
    expect(FALSE ${name} "UNSET")
    expect(FALSE ${name} "")
endforeach()
expect(FALSE TRACKING_URL "http://track.example/")
expect(FALSE TRACKING_URL "https://track.example")
expect(FALSE WAREHOUSE_ZIP "33166")
expect(FALSE WAREHOUSE_ZIP "33166-001A")

# The whole way, through the build's own configuring.
write_deployment(BASE_URL "http://example.com/")
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja -DMAROVENDA_DEPLOYMENT=${WORK}/deployment.cmake
    RESULT_VARIABLE code OUTPUT_VARIABLE said ERROR_VARIABLE said)
if(code EQUAL 0 OR NOT said MATCHES "MAROVENDA_BASE_URL" OR NOT said MATCHES "http://example.com/")
    message(SEND_ERROR "configured for http://example.com/: ${said}")
endif()
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja -DMAROVENDA_DEPLOYMENT=no-such-deployment
    RESULT_VARIABLE code OUTPUT_VARIABLE said ERROR_VARIABLE said)
if(code EQUAL 0 OR NOT said MATCHES "no-such-deployment")
    message(SEND_ERROR "configured without a deployment: ${said}")
endif()
