# Of a target whose files may be compiled together, so many at a time. Names in unnamed namespaces must then
# differ within the target, which they should anyhow: one name for one thing.
function(tamarin_may_be_united target files)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${TAMARIN_UNITY} UNITY_BUILD_BATCH_SIZE ${files})
endfunction()

# tamarin_room(NAME SOURCES file... [USES room...] [LINKS lib...] [COLD])
#
# One room of src/ as the static library tamarin_NAME. Headers are included as "room/file.h", and
# each room publishes an include directory in which only that room is visible; a room therefore
# compiles only against the rooms it USES (and what those use), and an arrow that runs backwards
# does not build. COLD is for rooms that read options and write answers: nothing there is worth -O3, which
# takes half as long again to compile, and the libraries that they use are then read for twice as many files.
function(tamarin_room name)
    cmake_parse_arguments(ROOM "COLD" "" "SOURCES;USES;LINKS" ${ARGN})
    set(view ${CMAKE_BINARY_DIR}/rooms/${name})
    file(MAKE_DIRECTORY ${view})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/src/${name} ${view}/${name} SYMBOLIC)
    add_library(tamarin_${name} STATIC ${ROOM_SOURCES})
    if(ROOM_COLD)
        tamarin_may_be_united(tamarin_${name} 16)
        target_compile_options(tamarin_${name} PRIVATE "${TAMARIN_COLD_OPTIONS}")
    else()
        tamarin_may_be_united(tamarin_${name} 8)
        target_link_libraries(tamarin_${name} PRIVATE tamarin_processor)
    endif()
    target_include_directories(tamarin_${name} PUBLIC ${view})
    target_link_libraries(tamarin_${name} PRIVATE tamarin_flags tamarin_united)
    if(TAMARIN_SANITIZE)
        target_link_options(tamarin_${name} PUBLIC -fsanitize=${TAMARIN_SANITIZE})
    endif()
    foreach(used IN LISTS ROOM_USES)
        target_link_libraries(tamarin_${name} PUBLIC tamarin_${used})
    endforeach()
    target_link_libraries(tamarin_${name} PUBLIC ${ROOM_LINKS})
endfunction()

# Of sanitizer builds, the leak check alone reads this; see the file.
set(TAMARIN_TEST_ENVIRONMENT
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/leaks.supp:print_suppressions=0")

# tamarin_test(NAME SOURCES file... USES room... [LINKS lib...] [OPTIMISED] [SLOW|THREADS])
#
# A GoogleTest program test_NAME whose cases are registered one by one with ctest. Most tests only call the
# rooms, which keep their -O3, and compile soonest without optimisation; OPTIMISED is for those that compute
# much themselves, as plain forms do. SLOW optimises fully, and gives every case the label "slow": ./check
# neither builds nor runs them, ./check --slow does both. The others are built by the target quick_tests.
# THREADS gives the label "threads": ./check --tsan builds (as the target threaded_tests) and runs these alone.
function(tamarin_test name)
    cmake_parse_arguments(TEST "OPTIMISED;SLOW;THREADS" "" "SOURCES;USES;LINKS" ${ARGN})
    add_executable(test_${name} ${TEST_SOURCES} $<TARGET_OBJECTS:tamarin_heard_signals>)
    tamarin_may_be_united(test_${name} 32)
    if(TAMARIN_HAS_GOLD) # half the time of ld, for a program that nobody keeps
        target_link_options(test_${name} PRIVATE -fuse-ld=gold)
    endif()
    target_link_libraries(test_${name} PRIVATE tamarin_flags tamarin_processor tamarin_united
        GTest::gtest_main ${TEST_LINKS})
    if(NOT TEST_SLOW)
        set(level 0)
        if(TEST_OPTIMISED)
            set(level 1)
        endif()
        target_compile_options(test_${name} PRIVATE "${TAMARIN_TEST_OPTIONS_${level}}")
        if(TARGET tamarin_test_headers_${level})
            target_precompile_headers(test_${name} REUSE_FROM tamarin_test_headers_${level})
            target_link_libraries(test_${name} PRIVATE OpenMP::OpenMP_CXX) # g++ tells headers with it apart
        endif()
    endif()
    target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(test_${name} PRIVATE tamarin_test_paths)
    foreach(used IN LISTS TEST_USES)
        target_link_libraries(test_${name} PRIVATE tamarin_${used})
    endforeach()
    set(properties TIMEOUT 300)
    if(TEST_SLOW)
        set(properties TIMEOUT 1800 LABELS slow)
    else()
        add_dependencies(quick_tests test_${name})
    endif()
    if(TEST_THREADS)
        list(APPEND properties LABELS threads)
        add_dependencies(threaded_tests test_${name})
    endif()
    gtest_discover_tests(test_${name} DISCOVERY_TIMEOUT 60
        PROPERTIES ${properties} ENVIRONMENT "${TAMARIN_TEST_ENVIRONMENT}")
endfunction()
