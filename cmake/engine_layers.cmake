# The engine's folders from the ground up, as expressions. A room links, and so includes, rooms of
# its own folder, of the lines above its own, and of folders within its own; folders of one line
# stand side by side and do not know each other.
set(ENGINE_LAYERS
    "engine/base"
    "engine/base/av engine/base/system engine/plan"
    "engine/files"
    "engine/outputs/asf"
    "engine/outputs/live"
    "engine/sources engine/sources/[a-z]+ engine/filters engine/encoders engine/outputs engine/outputs/[a-z]+"
    "engine/pipeline"
    "engine/prepare"
    "engine/media"
    "engine/object_model")

# in_engine_layer(<target> <folder>): the check below knows the target as part of that folder.
function(in_engine_layer target folder)
    set_property(GLOBAL APPEND PROPERTY ENGINE_TARGETS ${target})
    set_property(GLOBAL PROPERTY ENGINE_FOLDER_OF_${target} ${folder})
endfunction()

function(_engine_rank folder result)
    set(rank 0)
    foreach(line IN LISTS ENGINE_LAYERS)
        string(REPLACE " " ";" folders "${line}")
        foreach(known IN LISTS folders)
            if(folder MATCHES "^${known}$")
                set(${result} ${rank} PARENT_SCOPE)
                return()
            endif()
        endforeach()
        math(EXPR rank "${rank} + 1")
    endforeach()
    message(FATAL_ERROR "${folder} has no place in cmake/engine_layers.cmake")
endfunction()

# Stops at a room that links one above or beside its own folder. The links are the includes: a room's
# headers are reached through its target alone.
function(check_engine_layers)
    get_property(targets GLOBAL PROPERTY ENGINE_TARGETS)
    set(wrong "")
    foreach(target IN LISTS targets)
        get_property(folder GLOBAL PROPERTY ENGINE_FOLDER_OF_${target})
        _engine_rank(${folder} rank)
        set(links "")
        foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
            get_target_property(some ${target} ${property})
            if(some)
                list(APPEND links ${some})
            endif()
        endforeach()
        list(TRANSFORM links REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1")
        list(REMOVE_DUPLICATES links)
        foreach(link IN LISTS links)
            get_property(below GLOBAL PROPERTY ENGINE_FOLDER_OF_${link})
            if(NOT below OR below STREQUAL folder)
                continue()
            endif()
            _engine_rank(${below} below_rank)
            string(FIND "${below}" "${folder}/" within)
            if(below_rank GREATER rank OR (below_rank EQUAL rank AND NOT within EQUAL 0))
                string(APPEND wrong "\n  ${target} (${folder}) links ${link} (${below})")
            endif()
        endforeach()
    endforeach()
    if(wrong)
        message(FATAL_ERROR "Rooms of the engine that link one above or beside them:${wrong}")
    endif()
endfunction()
