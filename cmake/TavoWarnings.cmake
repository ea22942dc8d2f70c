# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

add_compile_options(-Wall -Wextra -Wpedantic -Werror)

# Assertions stay in every build, since they check the order of events on devices too.
add_compile_definitions(QT_FORCE_ASSERTS QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

# Sounds in files of more than 2 GiB can be opened with 32-bit processors, too.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_compile_definitions(_FILE_OFFSET_BITS=64)
endif()
