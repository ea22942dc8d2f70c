# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

if(TAVO_SANITIZE)
    add_compile_options(-fsanitize=${TAVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TAVO_SANITIZE})
endif()
# Clang counts the conditions in the source and nothing that the compiler adds. The counters are in a mapped
# file, so a process counts even if it is killed, aborts or calls _exit().
if(TAVO_COVERAGE)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "TAVO_COVERAGE needs clang")
    endif()
    add_compile_options(-fprofile-instr-generate -fcoverage-mapping
                        "SHELL:-mllvm -runtime-counter-relocation")
    add_link_options(-fprofile-instr-generate)
endif()
# Clang links the sanitizer runtime only into programs, so libraries have undefined symbols.
if(NOT TAVO_SANITIZE)
    add_link_options(-Wl,--no-undefined)
endif()
