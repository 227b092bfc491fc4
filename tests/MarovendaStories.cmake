# marovenda_find_stories(RESULT)
#
# The names of the stories that this folder tells, a function `NAME(stage)` in a story_*.py each. A change of one of these
# files configures again.
function(marovenda_find_stories result)
    file(GLOB tellers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/story_*.py)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${tellers})
    set(names)
    foreach(teller IN LISTS tellers)
        file(STRINGS ${teller} lines REGEX "^def [a-z_]+\\(stage\\)")
        foreach(line IN LISTS lines)
            string(REGEX REPLACE "^def ([a-z_]+).*" "\\1" name ${line})
            list(APPEND names ${name})
        endforeach()
    endforeach()
    set(${result} ${names} PARENT_SCOPE)
endfunction()
