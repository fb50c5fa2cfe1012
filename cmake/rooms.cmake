# A room is one target for one folder. Its headers are reachable only through its target: they are
# linked into a folder of the build tree that the target alone exports, so that an include which the
# target's links do not cover does not build.

# room(<target> FOLDER <folder> [HEADERS ...] [SOURCES ...] [LINKS ...] [PRIVATE_LINKS ...])
# FOLDER is relative to the project and is the prefix of the headers in #include lines.
function(room target)
    cmake_parse_arguments(ROOM "" "FOLDER" "HEADERS;SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    set(include_root ${CMAKE_BINARY_DIR}/rooms/${target})
    foreach(header IN LISTS ROOM_HEADERS)
        get_filename_component(folder ${include_root}/${ROOM_FOLDER}/${header} DIRECTORY)
        file(MAKE_DIRECTORY ${folder})
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${ROOM_FOLDER}/${header}
             ${include_root}/${ROOM_FOLDER}/${header} SYMBOLIC)
    endforeach()
    if(ROOM_SOURCES)
        add_library(${target} STATIC ${ROOM_SOURCES})
        # Any room may become a part of the media library, and none is replaced there by another.
        set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
        target_compile_options(${target} PRIVATE -fno-semantic-interposition)
        target_include_directories(${target} PUBLIC ${include_root})
        target_link_libraries(${target} PUBLIC ${ROOM_LINKS} PRIVATE ${ROOM_PRIVATE_LINKS})
    else()
        add_library(${target} INTERFACE)
        target_include_directories(${target} INTERFACE ${include_root})
        target_link_libraries(${target} INTERFACE ${ROOM_LINKS})
    endif()
    if(ROOM_FOLDER MATCHES "^engine/")
        in_engine_layer(${target} ${ROOM_FOLDER})
    endif()
endfunction()

# test_room(<target> SOURCES ... LINKS ... [TIMEOUT seconds] [LABELS ...]): one test program.
function(test_room target)
    cmake_parse_arguments(ROOM "" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
    add_executable(${target} ${ROOM_SOURCES})
    target_link_libraries(${target} PRIVATE test_support ${ROOM_LINKS})
    target_precompile_headers(${target} REUSE_FROM test_support)
    if(NOT ROOM_TIMEOUT)
        set(ROOM_TIMEOUT 120)
    endif()
    if(NOT ROOM_LABELS)
        set(ROOM_LABELS unit)  # an empty value would swallow the next property
    endif()
    set(support ${PROJECT_SOURCE_DIR}/tests/support)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES TEST_PREFIX "${target}."
        PROPERTIES TIMEOUT ${ROOM_TIMEOUT} LABELS "${ROOM_LABELS}"
        ENVIRONMENT "LSAN_OPTIONS=suppressions=${support}/leaks.supp:print_suppressions=0"
        ENVIRONMENT_MODIFICATION "TSAN_OPTIONS=set:suppressions=${support}/races.supp")
endfunction()
