# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

if(TAVO_SANITIZE)
    add_compile_options(-fsanitize=${TAVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TAVO_SANITIZE})
endif()
if(TAVO_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()
# Clang's sanitizer runtimes live in the program, not in the libraries it loads, so a library with
# sanitized code can't promise to have no undefined symbols.
if(NOT TAVO_SANITIZE)
    add_link_options(-Wl,--no-undefined)
endif()
