# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# tavo_add_module_test(<module> SOURCES <file>... [LIBRARIES <target>...])
#
# Builds the test program <module>_test and adds it to ctest. In its code, TAVO_TESTED_MODULE is the file of
# the module, which tavo_add_module() has made. It has a main() and links GoogleTest and GoogleMock.
function(tavo_add_module_test module)
    cmake_parse_arguments(PARSE_ARGV 1 test "" "" "SOURCES;LIBRARIES")
    set(target ${module}_test)
    add_executable(${target} ${test_SOURCES})
    target_link_libraries(${target} PRIVATE tavo::testing_main GTest::gmock ${test_LIBRARIES})
    target_compile_definitions(${target} PRIVATE TAVO_TESTED_MODULE="$<TARGET_FILE:tavo_${module}>")
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    add_dependencies(${target} tavo_${module})
    add_test(NAME ${target} COMMAND ${target})
    # The host does not use GLib's event loop either.
    set_tests_properties(${target} PROPERTIES ENVIRONMENT QT_NO_GLIB=1)
endfunction()
