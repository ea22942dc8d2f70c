# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Judges whether a host uses the same at all quiet points."""

import statistics

# At a quiet point everything has ended, so these are exactly what they were at the first one.
EXACT = {"fds": "file descriptors", "threads": "threads"}

# The heap may grow by this much, since tables do not shrink and caches fill up in the first minutes. Steady
# growth is always a finding, see steady_growth().
HEAP_ALLOWANCE = 256 * 1024

# A host at rest does not wake up. This is for a device that is still closing, and for the sampling itself.
IDLE_SLEEPS = 20
IDLE_CPU = 0.1


def judge(quiet):
    findings = []
    if len(quiet) < 2:
        return findings
    first = quiet[0]
    for key, name in EXACT.items():
        values = [sample[key] for sample in quiet]
        if values[-1] > first[key]:
            findings.append(f"{name} rose from {first[key]} to {values[-1]} "
                            f"(at the quiet points: {shortened(values)})")
    heap = [sample["heap"] for sample in quiet]
    grown = steady_growth(heap)
    if grown is not None:
        findings.append(f"the heap in use grows steadily, by {grown:.0f} bytes from one quiet point "
                        f"to the next ({shortened(heap)})")
    elif max(heap) - heap[0] > HEAP_ALLOWANCE:
        findings.append(f"the heap in use rose by {max(heap) - heap[0]} bytes ({shortened(heap)})")
    restless = [sample for sample in quiet
                if sample["idle_sleeps"] > IDLE_SLEEPS or sample["idle_cpu"] > IDLE_CPU]
    if len(restless) > 1:
        findings.append(f"the host was restless at {len(restless)} of {len(quiet)} quiet points: "
                        f"{restless[-1]['idle_sleeps']} wake-ups, {restless[-1]['idle_cpu']} s of "
                        "processor time in a second")
    return findings


# A total growth of less than this may be a buffer that was doubled. A leak grows beyond it, given time.
MIN_RISE = 32 * 1024
MIN_AGREEMENT = 0.85
MIN_POINTS = 5


def steady_growth(values):
    """Returns the growth from one point to the next in bytes, or None if the values do not rise steadily.

    They do if nearly all pairs of points after the first third rise. Noise rises and falls, and a table
    that is enlarged rises once, but a leak keeps rising.
    """
    later = values[len(values) // 3:]
    if len(later) < MIN_POINTS:
        return None
    pairs = [(later[j] - later[i], j - i) for i in range(len(later)) for j in range(i + 1, len(later))]
    agreement = (sum(rise > 0 for rise, _ in pairs) - sum(rise < 0 for rise, _ in pairs)) / len(pairs)
    slope = statistics.median(rise / distance for rise, distance in pairs)
    max_step = max(b - a for a, b in zip(later, later[1:]))
    is_steady = later[-1] - later[0] - max_step > MIN_RISE / 2
    rise = slope * (len(later) - 1)
    return slope if agreement > MIN_AGREEMENT and rise > MIN_RISE and is_steady else None


def shortened(values, max_count=12):
    step = max(1, len(values) // max_count)
    return " ".join(str(value) for value in values[::step])
