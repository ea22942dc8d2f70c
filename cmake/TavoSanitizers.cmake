# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

if(TAVO_SANITIZE)
    add_compile_options(-fsanitize=${TAVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TAVO_SANITIZE})
endif()
# Clang counts the source's own conditions and nothing that a compiler adds to them. The counters live
# in a mapped file, so a process that is killed, that aborts or leaves by _exit() has counted as well.
if(TAVO_COVERAGE)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "TAVO_COVERAGE needs clang")
    endif()
    add_compile_options(-fprofile-instr-generate -fcoverage-mapping
                        "SHELL:-mllvm -runtime-counter-relocation")
    add_link_options(-fprofile-instr-generate)
endif()
# Clang's sanitizer runtimes live in the program, not in the libraries it loads, so a library with
# sanitized code can't promise to have no undefined symbols.
if(NOT TAVO_SANITIZE)
    add_link_options(-Wl,--no-undefined)
endif()
