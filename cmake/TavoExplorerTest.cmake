# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# tavo_add_explorer_test(<program> [<option>...])
#
# Adds a test that runs an explorer with these options, in one process. Not under ThreadSanitizer, since
# explorers have one thread.
function(tavo_add_explorer_test program)
    if(TAVO_SANITIZE STREQUAL "thread")
        return()
    endif()
    add_test(NAME ${program} COMMAND ${program} --jobs 1 --hang-seconds 60 ${ARGN})
    add_dependencies(fast_tests ${program})
    set_tests_properties(${program} PROPERTIES
        COST 100
        LABELS explorer
        TIMEOUT 300)
endfunction()
