# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
#
# Memory errors end the process instead of being exploitable. The checks at run time need optimised code.
# Not in builds with sanitizers, which look for the same errors.

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
if(NOT TAVO_SANITIZE)
    add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
    foreach(option -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong -fstack-clash-protection)
        add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:${option}>)
    endforeach()
endif()
