# The precompiled headers that the tests use. They do not contain Qt Test, which reads its headers differently in each folder.

# _use_headers(NAME FOLDER...): for every executable of these folders.
function(_use_headers name)
    foreach(folder IN LISTS ARGN)
        get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
        foreach(target IN LISTS targets)
            get_target_property(type ${target} TYPE)
            if(type STREQUAL EXECUTABLE)
                marovenda_use_headers(${name} ${target})
            endif()
        endforeach()
    endforeach()
endfunction()

_use_headers(headers_of_files deployments hard/store session)
_use_headers(headers_of_values api check hard/decoder hard/tls hard/wire)
_use_headers(headers_of_screens app hard/people look pictures screens ui)
