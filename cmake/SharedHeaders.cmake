# Precompiles headers of libraries once for all targets that use them. The product's own targets use them with
# MAROVENDA_PRECOMPILE only; otherwise each source is compiled as it stands, which shows a missing include.

# _marovenda_share_headers(NAME LIBRARIES target... HEADERS header...) precompiles headers under NAME.
function(_marovenda_share_headers name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES;HEADERS")
    file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "// Precompiled headers only.\n")
    add_library(${name} OBJECT EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTORCC OFF AUTOUIC OFF)
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

set(_of_files <algorithm> <functional> <memory> <optional> <vector> <QCoreApplication> <QDateTime> <QDir> <QFile> <QJsonArray>
    <QJsonDocument> <QJsonObject> <QTemporaryDir> <QTimer> <QUrl>)
_marovenda_share_headers(headers_of_files LIBRARIES Qt6::Core HEADERS ${_of_files})
_marovenda_share_headers(headers_of_values
    LIBRARIES Qt6::Core Qt6::Network Boost::headers simdjson::simdjson
    HEADERS ${_of_files} <boost/describe.hpp> <boost/mp11.hpp> <simdjson.h> <QNetworkAccessManager> <QNetworkReply>
        <QTcpServer> <QTcpSocket>)
_marovenda_share_headers(headers_of_screens
    LIBRARIES Qt6::Core Qt6::Network Qt6::Gui Qt6::Qml Qt6::Quick
    HEADERS ${_of_files} <QAccessible> <QGuiApplication> <QImage> <QPainter> <QQmlComponent> <QQmlEngine> <QQuickItem>
        <QQuickView> <QQuickWindow> <QtQml/qqmlprivate.h>)

# marovenda_use_headers(NAME target...) lets targets use the headers precompiled under NAME.
function(marovenda_use_headers name)
    foreach(target IN LISTS ARGN)
        target_precompile_headers(${target} REUSE_FROM ${name})
    endforeach()
endfunction()
