# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Checks the recordings of two devices, and what was on a display, against expectations."""
