# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""One statement about a run, and whether it holds."""

import dataclasses


@dataclasses.dataclass
class Check:
    subject: str
    statement: str
    passed: bool
    measured: str
    expected: str


def columns(rows):
    """The rows as lines of text with aligned columns."""
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    return ["  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip()
            for row in rows]


def table(checks):
    """The checks as lines of text."""
    return columns([("", "subject", "statement", "measured", "expected")] + [
        ("ok" if check.passed else "FAILED", check.subject, check.statement, check.measured,
         check.expected) for check in checks])
