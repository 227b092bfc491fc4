# Read by CMake in the trees of tests/mutate (CMAKE_PROJECT_INCLUDE): the product's libraries are compiled source by source and
# with precompiled headers, so that a changed source is compiled in a second or two.
function(marovenda_share_headers_of_product)
    set(of_all <QCoreApplication> <QDateTime> <QDir> <QFile> <QJsonObject> <QPointer> <QProperty> <QTimer> <QUrl>
        <algorithm> <functional> <memory> <optional> <thread> <vector>)
    set(of_service <QNetworkAccessManager> <QNetworkReply> <boost/describe.hpp> <boost/mp11.hpp> <simdjson.h>)
    set(of_screens <QGuiApplication> <QImage> <QPainter> <QQmlEngine> <QQuickItem> <QQuickWindow>)
    target_precompile_headers(marovenda_api PRIVATE ${of_all} ${of_service})
    target_precompile_headers(marovenda_session PRIVATE ${of_all})
    target_precompile_headers(marovenda_ui PRIVATE ${of_all} ${of_screens})
    target_precompile_headers(marovenda_app PRIVATE ${of_all} ${of_screens})
    target_precompile_headers(marovenda_account PRIVATE ${of_all} ${of_service} ${of_screens})
    target_precompile_headers(marovenda_logistics PRIVATE ${of_all} ${of_service} ${of_screens})
    set_target_properties(marovenda_api marovenda_session marovenda_ui marovenda_app marovenda_account marovenda_logistics
        PROPERTIES UNITY_BUILD OFF)
endfunction()
cmake_language(DEFER CALL marovenda_share_headers_of_product)

function(marovenda_add_mutated_layouts)
    add_library(mutated_layouts MODULE ${CMAKE_SOURCE_DIR}/tests/mutation/layouts.cpp)
    target_link_libraries(mutated_layouts PRIVATE Qt6::Core)
endfunction()
cmake_language(DEFER CALL marovenda_add_mutated_layouts)
