# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# Makes this folder a package, which comes before Python's D-Bus bindings of the same name.
