# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# By default ccache does not cache files that use a precompiled header.
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache$")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=1 ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()

# tavo_reuse_precompiled_headers(<folder> <target>)
#
# Compiles all targets of the folder and its subfolders with the precompiled header of the target.
function(tavo_reuse_precompiled_headers folder source)
    get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type MATCHES "_LIBRARY$|^EXECUTABLE$" AND NOT target STREQUAL source)
            target_precompile_headers(${target} REUSE_FROM ${source})
        endif()
    endforeach()
    get_property(folders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
    foreach(below IN LISTS folders)
        tavo_reuse_precompiled_headers("${below}" ${source})
    endforeach()
endfunction()
