# marovenda_add_tests(NAME TESTS [folder/]Part... PROCESSOR Part... SOURCES file... LIBRARIES target...)
#
# One executable NAME for the Qt Tests folder/tst_Part.cpp, and a CTest tst_Part for each of them. A test sees no display, no
# session bus and none of the user's own directories (see MarovendaTest.h). Those listed as PROCESSOR compute what could differ
# between processors, and get this label: try-packages --test runs them in an emulator.
add_custom_target(tests_processor)
function(marovenda_add_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "TESTS;PROCESSOR;SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/tests)
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} marovenda_test_support Qt6::Test)
    foreach(part IN LISTS arg_TESTS)
        string(REGEX REPLACE "[^/]+$" "tst_\\0" source ${part})
        cmake_path(GET source FILENAME test)
        target_sources(${name} PRIVATE ${source}.cpp)
        add_test(NAME ${test} COMMAND ${name} ${test})
        set_tests_properties(${test} PROPERTIES
            TIMEOUT 300
            ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_QPA_PLATFORMTHEME=generic;QT_QUICK_BACKEND=software;DBUS_SESSION_BUS_ADDRESS=disabled:;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0")
    endforeach()
    foreach(part IN LISTS arg_PROCESSOR)
        set_tests_properties(tst_${part} PROPERTIES LABELS processor)
        add_dependencies(tests_processor ${name})
    endforeach()
endfunction()
