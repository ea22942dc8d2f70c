# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# tavo_add_test(<name> SOURCES <file>... [LIBRARIES <target>...] [ENVIRONMENT <NAME=value>...]
#               [LABELS <label>...] [TIMEOUT <seconds>])
#
# Builds the test program tests/<name>; each of its tests is one of ctest's.
function(tavo_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 test "" "TIMEOUT" "SOURCES;LIBRARIES;ENVIRONMENT;LABELS")
    if(NOT test_TIMEOUT)
        set(test_TIMEOUT 60)
    endif()
    add_executable(${name} ${test_SOURCES})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${name} PRIVATE ${test_LIBRARIES} GTest::gmock GTest::gtest Qt5::Test)
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    set(environment QT_NO_GLIB=1
        "TSAN_OPTIONS=ignore_noninstrumented_modules=1:suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp:halt_on_error=1"
        ${test_ENVIRONMENT})
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT ${test_TIMEOUT} LABELS "${test_LABELS}" ENVIRONMENT "${environment}")
endfunction()
