# The headers of libraries that nearly every test includes, read once for all tests of a kind. Only where the compiler
# has them at hand: the product's own sources are compiled as they stand. Qt Test's own are none of them, since they are
# read differently in each folder.
#
# marovenda_share_headers(NAME LIBRARIES target... HEADERS header...): what marovenda_use_headers gives to tests.
function(marovenda_share_headers name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES;HEADERS")
    file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "// Nothing but its headers.\n")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTORCC OFF AUTOUIC OFF)
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

# marovenda_use_headers(NAME FOLDER...): for every executable of these folders.
function(marovenda_use_headers name)
    foreach(folder IN LISTS ARGN)
        get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
        foreach(target IN LISTS targets)
            get_target_property(type ${target} TYPE)
            if(type STREQUAL EXECUTABLE)
                target_precompile_headers(${target} REUSE_FROM ${name})
            endif()
        endforeach()
    endforeach()
endfunction()

set(of_all <algorithm> <functional> <memory> <optional> <vector> <QCoreApplication> <QDateTime> <QDir> <QFile> <QJsonArray>
    <QJsonDocument> <QJsonObject> <QTemporaryDir> <QTimer> <QUrl>)
marovenda_share_headers(headers_of_files LIBRARIES Qt6::Core HEADERS ${of_all})
marovenda_share_headers(headers_of_values
    LIBRARIES marovenda_api
    HEADERS ${of_all} <boost/describe.hpp> <boost/mp11.hpp> <simdjson.h> <QNetworkAccessManager> <QNetworkReply> <QTcpServer>
        <QTcpSocket>)
marovenda_share_headers(headers_of_screens
    LIBRARIES marovenda_modules
    HEADERS ${of_all} <QAccessible> <QGuiApplication> <QImage> <QPainter> <QQmlComponent> <QQmlEngine> <QQuickItem>
        <QQuickView> <QQuickWindow>)
marovenda_use_headers(headers_of_files deployments hard/store session)
marovenda_use_headers(headers_of_values api check hard/decoder hard/tls hard/wire)
marovenda_use_headers(headers_of_screens app hard/people look pictures screens ui)
