# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

add_compile_options(-Wall -Wextra -Wpedantic -Werror)

# Assertions guard the order of events in the field too: they stay in every build.
add_compile_definitions(QT_FORCE_ASSERTS QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
