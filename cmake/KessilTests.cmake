# GoogleTest is built from its sources, with the flags of the preset: the sanitizers and the Windows build need that.
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(target gtest gmock gtest_main gmock_main)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O0>)
    if(KESSIL_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${KESSIL_SANITIZE})
    endif()
endforeach()
include(GoogleTest)

# What the thread sanitizer is for: the programs that kessil_test marks with THREADS, and what they run and load.
add_custom_target(thread_tests DEPENDS hosted_libraries)

# kessil_test(NAME SOURCES ... LINKS ... [PREFIX text] [TIMEOUT seconds] [ENVIRONMENT ...] [SHARDS n] [SLOWEST case]
# [THREADS]): one test program, with one ctest entry per test case, whose name begins with the prefix. ctest runs each
# case in a process of its own, so a case that hangs or dies is only one failure. A program whose cases do neither, and
# take less time than a process each would, runs in n shards instead, each of them one entry. The slowest case, if
# everything else would have to wait for it, is started first. THREADS marks a program that starts threads, or whose
# code under test does: the thread sanitizer gets no other.
function(kessil_test name)
    cmake_parse_arguments(ARG "THREADS" "PREFIX;TIMEOUT;SHARDS;SLOWEST" "SOURCES;LINKS;ENVIRONMENT" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_precompile_headers(${name} REUSE_FROM test_headers)
    target_link_libraries(${name} PRIVATE kessil_flags ${ARG_LINKS} GTest::gmock GTest::gtest GTest::gtest_main)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    if(ARG_THREADS)
        add_dependencies(thread_tests ${name})
    elseif(KESSIL_SANITIZE STREQUAL "thread")
        return()
    endif()
    # ctest takes only one variable of the list from the discovery.
    if(ARG_ENVIRONMENT)
        set_target_properties(${name} PROPERTIES
            CROSSCOMPILING_EMULATOR "${CMAKE_COMMAND};-E;env;${ARG_ENVIRONMENT};${CMAKE_CROSSCOMPILING_EMULATOR}")
    endif()
    if(ARG_SHARDS)
        foreach(shard RANGE 1 ${ARG_SHARDS})
            math(EXPR index "${shard} - 1")
            add_test(NAME ${ARG_PREFIX}${name}.${shard} COMMAND ${name})
            set_tests_properties(${ARG_PREFIX}${name}.${shard} PROPERTIES
                TIMEOUT ${ARG_TIMEOUT} COST 10
                ENVIRONMENT "GTEST_TOTAL_SHARDS=${ARG_SHARDS};GTEST_SHARD_INDEX=${index}")
        endforeach()
        return()
    endif()
    set(others "")
    if(ARG_SLOWEST)
        discover_cases(${name} "${ARG_SLOWEST}" COST 100)
        set(others "-${ARG_SLOWEST}")
    endif()
    discover_cases(${name} "${others}")
endfunction()

# With the arguments of kessil_test: the cases that the filter selects, and properties for them.
macro(discover_cases name filter)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120
        TEST_PREFIX "${ARG_PREFIX}"
        TEST_FILTER "${filter}"
        PROPERTIES TIMEOUT ${ARG_TIMEOUT} ${ARGN})
endmacro()
