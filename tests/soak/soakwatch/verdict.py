# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Whether what a host used at its quiet points stays what it was."""

import statistics

# At a quiet point everything has ended, so the numbers are those of the first one, exactly.
EXACT = {"fds": "file descriptors", "threads": "threads"}

# The heap in use is counted by the byte, but tables don't shrink and caches fill up in the first
# minutes. Growth that goes on is not forgiven, however small: see steady_growth().
HEAP_ALLOWANCE = 256 * 1024

# A host at rest wakes up for nothing. A device that still closes and the sampling itself are seen.
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


# Less than this in all may be one buffer that was doubled; a leak gets there if it is given time.
LEAST_RISE = 32 * 1024
LEAST_AGREEMENT = 0.85
LEAST_POINTS = 5


def steady_growth(values):
    """Bytes from one point to the next, or None when the values don't keep rising.

    Of all pairs of points behind the first third, nearly each must have risen: noise rises and falls,
    and a table that was enlarged once rises once, but a leak goes on.
    """
    later = values[len(values) // 3:]
    if len(later) < LEAST_POINTS:
        return None
    pairs = [(later[j] - later[i], j - i) for i in range(len(later)) for j in range(i + 1, len(later))]
    agreement = (sum(rise > 0 for rise, _ in pairs) - sum(rise < 0 for rise, _ in pairs)) / len(pairs)
    slope = statistics.median(rise / distance for rise, distance in pairs)
    largest_step = max(b - a for a, b in zip(later, later[1:]))
    goes_on = later[-1] - later[0] - largest_step > LEAST_RISE / 2
    rise = slope * (len(later) - 1)
    return slope if agreement > LEAST_AGREEMENT and rise > LEAST_RISE and goes_on else None


def shortened(values, most=12):
    step = max(1, len(values) // most)
    return " ".join(str(value) for value in values[::step])
