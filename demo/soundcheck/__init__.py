# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Holds recordings of two devices, and what was seen of a display, against what was to be there."""
