# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The processes of a private fleet, which the demo and the soak use."""
