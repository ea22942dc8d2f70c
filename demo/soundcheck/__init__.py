# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Holds recordings of two devices against the timeline of what was to be heard on them."""
