# The compiler options of all our targets.

add_compile_options(-Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual)
add_compile_definitions(
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_FOREACH
    QT_DEPRECATED_WARNINGS_SINCE=0x060400)

# GCC takes the classes of several sources that are compiled as one for classes of a header.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-subobject-linkage)
endif()

if(MAROVENDA_SANITIZE)
    add_compile_options(-fsanitize=${MAROVENDA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${MAROVENDA_SANITIZE})
    if(MAROVENDA_SANITIZE STREQUAL "thread")
        # Qt's headers have fences, which ThreadSanitizer does not see.
        add_compile_options(-Wno-tsan)
    endif()
    # Reports name lines, for which this much is enough; it is written and linked faster.
    add_compile_options(-g1)
    # Layouts as byte code compile faster than as C++; the release builds have them as C++.
    set(QT_QMLCACHEGEN_ARGUMENTS --only-bytecode)
endif()
define_property(TARGET PROPERTY QT_QMLCACHEGEN_ARGUMENTS INITIALIZE_FROM_VARIABLE QT_QMLCACHEGEN_ARGUMENTS)

if(MAROVENDA_DEV)
    add_compile_options(-O1)
    # The app parses its layouts when it starts, instead of containing them compiled to C++.
    set(MAROVENDA_QML_OPTIONS NO_CACHEGEN)
endif()

# Customers get what the system's own linker makes; the fastest one will do for the other builds.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    find_program(MAROVENDA_MOLD mold)
    find_program(MAROVENDA_LLD ld.lld)
    if(MAROVENDA_MOLD)
        add_link_options(-fuse-ld=mold)
    elseif(MAROVENDA_LLD)
        add_link_options(-fuse-ld=lld)
    endif()
endif()

# Reproducible builds: the executables do not contain the path of the build.
if(NOT MSVC)
    add_compile_options(
        $<$<CONFIG:Release>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>
        $<$<CONFIG:Release>:-ffile-prefix-map=${CMAKE_BINARY_DIR}=build>)
endif()

# Hardens the builds that customers run; tests/packaging/hardening.py checks the executables.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT MSVC)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    add_compile_options(-fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
    # Marks where indirect jumps may land, and guards return addresses, on processors that check it.
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
        add_compile_options(-fcf-protection=full)
    elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
        add_compile_options(-mbranch-protection=standard)
    endif()
    if(UNIX AND NOT APPLE)
        # Records the compiler's options in the executables.
        add_compile_options(-frecord-gcc-switches)
        add_link_options(-pie -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
endif()

# Use the system's library path only. Without this, CMake reserves space for an installed run path, which the dynamic loader
# takes for the current directory.
set(CMAKE_INSTALL_RPATH "")
