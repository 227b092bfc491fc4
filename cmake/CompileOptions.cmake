# What every target of ours is compiled with.

add_compile_options(-Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual)
add_compile_definitions(
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_FOREACH
    QT_DEPRECATED_WARNINGS_SINCE=0x060400)

if(MAROVENDA_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()

if(MAROVENDA_DEV)
    add_compile_options(-O1)
    # A layout is then read when the app starts, instead of being compiled to C++ before.
    set(MAROVENDA_QML_OPTIONS NO_CACHEGEN)
    find_program(MAROVENDA_MOLD mold)
    find_program(MAROVENDA_LLD ld.lld)
    if(MAROVENDA_MOLD)
        add_link_options(-fuse-ld=mold)
    elseif(MAROVENDA_LLD)
        add_link_options(-fuse-ld=lld)
    endif()
endif()

# The same sources make the same executable, wherever they are built; nothing in it tells where that was.
if(NOT MSVC)
    add_compile_options(
        $<$<CONFIG:Release>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>
        $<$<CONFIG:Release>:-ffile-prefix-map=${CMAKE_BINARY_DIR}=build>)
endif()

# Hardening of the builds that customers run; tests/hard/hardening reads it back from the executables.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT MSVC)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    add_compile_options(-fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
    if(UNIX AND NOT APPLE)
        # The executable itself tells how each of its sources was compiled.
        add_compile_options(-frecord-gcc-switches)
        add_link_options(-pie -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
endif()

# Libraries are looked for where the system has them. Without this, CMake keeps room in the executables of the build folder
# for the run path that Qt proposes for the installed ones, and the dynamic loader reads that room as the current folder.
set(CMAKE_INSTALL_RPATH "")
