# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# ccache takes a file with a precompiled header only when it is told to.
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache$")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=1 ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()

# tavo_reuse_precompiled_headers(<folder> <target>)
#
# Compiles every library and module of the folder and the folders in it with the target's precompiled
# header. Programs go without: they are a single file.
function(tavo_reuse_precompiled_headers folder source)
    get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type MATCHES "^(STATIC|SHARED|MODULE)_LIBRARY$" AND NOT target STREQUAL source)
            target_precompile_headers(${target} REUSE_FROM ${source})
        endif()
    endforeach()
    get_property(folders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
    foreach(below IN LISTS folders)
        tavo_reuse_precompiled_headers("${below}" ${source})
    endforeach()
endfunction()
