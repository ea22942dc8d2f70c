# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# Makes the folder a package of its own: Python's bindings of D-Bus have the same name.
