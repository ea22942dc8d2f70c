# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# tavo_add_explorer_test(<program> [<option>...])
#
# Makes a test of an explorer's run with these bounds, in one working process. Not for the
# ThreadSanitizer: there is one thread.
function(tavo_add_explorer_test program)
    if(TAVO_SANITIZE STREQUAL "thread")
        return()
    endif()
    add_test(NAME ${program} COMMAND ${program} --jobs 1 --hang-seconds 60 ${ARGN})
    set_tests_properties(${program} PROPERTIES
        COST 100
        LABELS explorer
        TIMEOUT 300)
endfunction()
