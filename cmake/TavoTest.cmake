# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# Debug builds compile test programs without optimisation: that is faster, and their own code takes little
# time to run.
set(TAVO_TEST_OPTIONS "$<$<CONFIG:Debug>:-O0>")

# All test programs but those that are slow or need sound.
add_custom_target(fast_tests)

# tavo_add_test(<name> SOURCES <file>... [LIBRARIES <target>...] [ENVIRONMENT <NAME=value>...]
#               [LABELS <label>...] [TIMEOUT <seconds>] [RESOURCE_LOCK <name>] [ALONE])
#
# Builds the test program tests/<name> and adds each of its tests to ctest. Tests with a lock of the same
# name do not run at the same time; with ALONE, no other test does.
function(tavo_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 test "ALONE" "TIMEOUT;RESOURCE_LOCK" "SOURCES;LIBRARIES;ENVIRONMENT;LABELS")
    if(NOT test_TIMEOUT)
        set(test_TIMEOUT 60)
    endif()
    add_executable(${name} ${test_SOURCES})
    if(NOT "slow" IN_LIST test_LABELS AND NOT "sound" IN_LIST test_LABELS)
        add_dependencies(fast_tests ${name})
    endif()
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${name} PRIVATE ${test_LIBRARIES} GTest::gmock GTest::gtest Qt5::Test)
    target_compile_options(${name} PRIVATE ${TAVO_TEST_OPTIONS})
    # Tested code that a test program is built of. Some names in it are of one file.
    set(tested ${test_SOURCES})
    list(FILTER tested INCLUDE REGEX "^${PROJECT_SOURCE_DIR}/src/.*cpp$")
    set_source_files_properties(${tested} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    if(TAVO_SANITIZE MATCHES "undefined")
        set_source_files_properties(${tested} PROPERTIES COMPILE_OPTIONS -fsanitize=undefined)
    endif()
    target_precompile_headers(${name} REUSE_FROM test_headers)
    # This file is mostly empty, and faster to compile without the precompiled header.
    set_source_files_properties("${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/mocs_compilation.cpp"
        PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    set(environment QT_NO_GLIB=1
        "ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1"
        "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
        UBSAN_OPTIONS=print_stacktrace=1
        "TSAN_OPTIONS=ignore_noninstrumented_modules=1:atexit_sleep_ms=0:suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp:halt_on_error=1"
        ${test_ENVIRONMENT})
    if(TAVO_SANITIZE STREQUAL "thread")
        list(APPEND environment "LD_PRELOAD=${CMAKE_BINARY_DIR}/tests/libqt_order.so")
    endif()
    # Some parameters print as text that ctest can't have in the name of a test.
    gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT ${test_TIMEOUT})
    # Slow tests start first. One that starts last would run alone at the end.
    set(cost 0)
    if("slow" IN_LIST test_LABELS)
        set(cost 100)
    endif()
    # gtest_discover_tests() keeps only the first element of a property that is a list, so lists are set in
    # a file that ctest reads after the tests.
    set(properties_file "${CMAKE_CURRENT_BINARY_DIR}/${name}_properties.cmake")
    file(WRITE "${properties_file}" "if(${name}_TESTS)
    set_tests_properties(\${${name}_TESTS} PROPERTIES
        LABELS [==[${test_LABELS}]==] ENVIRONMENT [==[${environment}]==]
        RESOURCE_LOCK [==[${test_RESOURCE_LOCK}]==] RUN_SERIAL ${test_ALONE} COST ${cost})
endif()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${properties_file}")
endfunction()
