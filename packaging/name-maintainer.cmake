# Enters a deployment's maintainer, support address and home page in a copy of packaging/debian:
#   cmake -DFILE=deployments/mine.cmake -DDEBIAN=directory -P packaging/name-maintainer.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../deployments/Deployment.cmake)
marovenda_read_deployment("${FILE}")
set(maintainer "${MAROVENDA_MAINTAINER} <${MAROVENDA_SUPPORT_EMAIL}>")

# Replaces what follows START in its lines, up to what matches ENDING, by VALUE.
function(enter file start value ending)
    file(READ "${DEBIAN}/${file}" text)
    string(REGEX REPLACE "(\n${start})[^\n]*(${ending}\n)" "\\1${value}\\2" entered "${text}")
    if(NOT text MATCHES "\n${start}")
        message(FATAL_ERROR "${DEBIAN}/${file} has no line that begins with \"${start}\".")
    endif()
    file(WRITE "${DEBIAN}/${file}" "${entered}")
endfunction()
enter(control "Maintainer: " "${maintainer}" "")
enter(control "Homepage: " "${MAROVENDA_HOMEPAGE}" "")
enter(copyright "Upstream-Contact: " "${maintainer}" "")
enter(changelog " -- " "${maintainer}" "  [A-Z][a-z][a-z], [^\n]*")
