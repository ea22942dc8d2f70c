# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""What a process uses, from /proc."""

import os
import pathlib

TICKS = os.sysconf("SC_CLK_TCK")


def _memory(process_id):
    """RSS and its parts in kB."""
    wanted = {"Rss": "rss", "Pss": "pss", "Private_Dirty": "private"}
    result = {}
    for line in pathlib.Path(f"/proc/{process_id}/smaps_rollup").read_text().splitlines():
        name, _, rest = line.partition(":")
        if name in wanted:
            result[wanted[name]] = int(rest.split()[0])
    return result


def _threads(process_id):
    """The number of threads, and how often they went to sleep voluntarily."""
    count = sleeps = 0
    for task in pathlib.Path(f"/proc/{process_id}/task").iterdir():
        try:
            status = (task / "status").read_text()
        except OSError:
            continue  # the thread has ended
        count += 1
        sleeps += int(status.partition("\nvoluntary_ctxt_switches:")[2].split()[0])
    return count, sleeps


def sample(process_id):
    """What the process uses now, or None if it has ended."""
    try:
        fields = pathlib.Path(f"/proc/{process_id}/stat").read_text().rpartition(")")[2].split()
        threads, sleeps = _threads(process_id)
        return {**_memory(process_id),
                "fds": len(os.listdir(f"/proc/{process_id}/fd")),
                "threads": threads, "sleeps": sleeps,
                "cpu": (int(fields[11]) + int(fields[12])) / TICKS}
    except (OSError, KeyError, IndexError):
        return None


def describe(process_id):
    """What each thread does and what is open, for a process that is stuck."""
    lines = []
    for task in sorted(pathlib.Path(f"/proc/{process_id}/task").glob("*")):
        try:
            parts = [(task / name).read_text().strip() for name in ("comm", "wchan", "syscall")]
        except OSError:
            continue
        lines.append(f"thread {task.name}: " + "  ".join(parts))
    return lines + descriptors(process_id)


def descriptors(process_id):
    lines = []
    for entry in sorted(pathlib.Path(f"/proc/{process_id}/fd").glob("*")):
        try:
            lines.append(f"descriptor {entry.name}: {os.readlink(entry)}")
        except OSError:
            continue
    return lines
