# Changes one value of the demo deployment at a time; configuring must say which one is wrong, and show a right one.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(READ ${SOURCE}/deployments/demo.cmake demo)

function(write_deployment name value)
    string(REGEX REPLACE "set\\(MAROVENDA_${name} [^\n]*\\)" "" text "${demo}")
    if(NOT value STREQUAL "UNSET")
        string(APPEND text "set(MAROVENDA_${name} [=[${value}]=])\n")
    endif()
    file(WRITE ${WORK}/deployment.cmake "${text}")
endfunction()

# What the check says of the file written last, in one line.
function(check code said)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -DFILE=${WORK}/deployment.cmake -P ${SOURCE}/deployments/validate.cmake
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    set(${code} "${result}" PARENT_SCOPE)
    set(${said} "${output}" PARENT_SCOPE)
endfunction()

function(accept name)
    foreach(value IN LISTS ARGN)
        write_deployment(${name} "${value}")
        check(code said)
        if(NOT code EQUAL 0)
            message(SEND_ERROR "refused: ${name} \"${value}\": ${said}")
        endif()
    endforeach()
endfunction()

function(refuse name)
    foreach(value IN LISTS ARGN)
        write_deployment(${name} "${value}")
        check(code said)
        string(REGEX REPLACE "[ \n]+" " " line "${value}")
        string(FIND "${said}" "MAROVENDA_${name} is \"${line}\"; it must be" at)
        if(code EQUAL 0 OR at EQUAL -1 OR NOT said MATCHES "as in \"")
            message(SEND_ERROR "not refused by name: ${name} \"${value}\": ${said}")
        endif()
    endforeach()
endfunction()

function(miss name value words)
    write_deployment(${name} "${value}")
    check(code said)
    string(FIND "${said}" "MAROVENDA_${name} ${words}" at)
    if(code EQUAL 0 OR at EQUAL -1)
        message(SEND_ERROR "not refused by name: ${name} \"${value}\": ${said}")
    endif()
endfunction()

accept(BASE_URL "https://service.example/" "https://service.example:8443/app/" "http://127.0.0.1:9999/" "http://localhost/"
    "https://localhost/" "http://[::1]:80/" "https://[2001:db8::1]/")
refuse(BASE_URL "http://example.com/" "http://127.0.0.1.example.com/" "http://localhost.example.com/"
    "http://127.0.0.1@example.com/" "https://service.example" "https://service.example/app" "https:///" "ftp://x/"
    "service.example/" "https://service.example/?a=/" "https://service.example/#/" "https://user@service.example/"
    "https://a b/" "https://service.example:x/" "https://service.example/a b/" " https://service.example/")
accept(TRACKING_URL "https://track.example/" "https://track.example/t/n/")
refuse(TRACKING_URL "http://track.example/" "https://track.example" "https://track.example/t" "https:///" "track.example/"
    "https://track.example/?n=/" "https://127.0.0.1@track.example/")
accept(HOMEPAGE "UNSET" "https://company.example/" "https://company.example/app/")
refuse(HOMEPAGE "http://company.example/" "https://company.example" "company.example")
accept(SUPPORT_EMAIL "soporte+app@mail.company.example")
accept(DEVELOPER_EMAIL "hola@corvandel.example")
foreach(name IN ITEMS SUPPORT_EMAIL DEVELOPER_EMAIL)
    refuse(${name} "soporte" "soporte@" "@company.example" "soporte@company" "mailto:soporte@company.example"
        "Soporte <soporte@company.example>" "a b@company.example" "a@b@company.example" "soporte@company..example"
        "soporte@company.example?subject=a" "soporte@company.example ")
endforeach()
accept(DEVELOPER_SITE "https://corvandel.example/" "https://corvandel.example" "https://corvandel.example/es?a=b#c")
refuse(DEVELOPER_SITE "not a URL" "http://corvandel.example/" "corvandel.example" "https://" "javascript:alert(1)"
    "https://user@corvandel.example/")
accept(WAREHOUSE_ZIP "33166-0012")
refuse(WAREHOUSE_ZIP "33166" "33166-001A" "33166-00123" "331660012" " 33166-0012")
accept(WAREHOUSE_PHONE "+1 305 555 0142" "+13055550142" "+1 (305) 555-0142" "+507 6000.0000")
refuse(WAREHOUSE_PHONE "305 555 0142" "+1 305" "+0 305 555 0142" "+1 305 555 0142 0142 01" "1 305 555 0142" "+1 305 555 CALL"
    "++13055550142" "001 305 555 0142")
foreach(name IN ITEMS WAREHOUSE_STREET WAREHOUSE_CITY DEVELOPER_SITE_TEXT)
    accept(${name} "Ñandú \"8\" & Cía. ?")
    refuse(${name} "  " " Miami" "Miami ")
endforeach()
foreach(name IN ITEMS BASE_URL TRACKING_URL SUPPORT_EMAIL WAREHOUSE_STREET WAREHOUSE_CITY WAREHOUSE_ZIP WAREHOUSE_PHONE
        DEVELOPER_SITE DEVELOPER_SITE_TEXT DEVELOPER_EMAIL)
    miss(${name} "UNSET" "is not set.")
    miss(${name} "" "is not set.")
    miss(${name} "a\nb" "holds a line break")
endforeach()
miss(WAREHOUSE_POSTCODE "33166-0012" "is no value of a deployment.")

# All wrong values are named at once, also one whose text CMake would take for a list.
file(WRITE ${WORK}/deployment.cmake "set(MAROVENDA_BASE_URL [[http://a;b/]])\nset(MAROVENDA_WAREHOUSE_ZIP 33166)\n")
check(code said)
string(REPLACE ";" "," said "${said}")
foreach(words IN ITEMS "MAROVENDA_BASE_URL is \"http://a,b/\"" "MAROVENDA_WAREHOUSE_ZIP is \"33166\""
        "MAROVENDA_SUPPORT_EMAIL is not set")
    string(FIND "${said}" "${words}" at)
    if(at EQUAL -1)
        message(SEND_ERROR "not named among others: ${words}: ${said}")
    endif()
endforeach()

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
