# A program compiled by Clang in a tree that another compiler builds: only Clang has a fuzzer guided by coverage.
find_program(MAROVENDA_CLANG NAMES clang++ clang++-19 clang++-14)
if(NOT MAROVENDA_CLANG)
    message(WARNING "Without Clang the reader is tried with known documents and not fuzzed")
endif()

# marovenda_add_clang_program(NAME LIKE target SOURCES source... OPTIONS option...): compiles sources as they are
# compiled for the target, and links Qt Core, simdjson and ICU.
function(marovenda_add_clang_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LIKE" "SOURCES;OPTIONS")
    # The compiler looks there by itself, and has to in its own order.
    set(folders "$<FILTER:$<TARGET_PROPERTY:${arg_LIKE},INCLUDE_DIRECTORIES>,EXCLUDE,^/usr/include/?$>")
    set(definitions "$<TARGET_PROPERTY:${arg_LIKE},COMPILE_DEFINITIONS>")
    foreach(source IN LISTS arg_SOURCES)
        get_filename_component(stem ${source} NAME_WE)
        get_filename_component(source ${source} ABSOLUTE)
        set(object ${CMAKE_CURRENT_BINARY_DIR}/${name}-${stem}.o)
        add_custom_command(OUTPUT ${object}
            COMMAND ${CMAKE_CXX_COMPILER_LAUNCHER} ${MAROVENDA_CLANG} -std=c++20 -fPIC ${arg_OPTIONS}
                "-I$<JOIN:${folders},;-I>" "-D$<JOIN:${definitions},;-D>"
                -MMD -MF ${object}.d -c ${source} -o ${object}
            DEPENDS ${source}
            DEPFILE ${object}.d
            COMMAND_EXPAND_LISTS
            VERBATIM)
        list(APPEND objects ${object})
    endforeach()
    set(program ${CMAKE_BINARY_DIR}/bin/tests/${name})
    add_custom_command(OUTPUT ${program}
        COMMAND ${MAROVENDA_CLANG} ${arg_OPTIONS} ${objects}
            $<TARGET_FILE:Qt6::Core> $<TARGET_FILE:simdjson::simdjson> $<TARGET_FILE:ICU::uc> -o ${program}
        DEPENDS ${objects}
        VERBATIM)
    add_custom_target(${name} ALL DEPENDS ${program})
endfunction()
