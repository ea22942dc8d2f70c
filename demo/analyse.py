#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Checks what was heard in a run against what should have been, and draws a picture of it.

Exit status: 0 when every check passed, 1 when one failed, 2 when the input can't be read.
"""

import argparse
import pathlib
import sys

from soundcheck import checks, expectations, picture, recording, timeline


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("recording", type=pathlib.Path, help="folder with recording.json")
    parser.add_argument("--timeline", type=pathlib.Path, required=True, help="JSON lines")
    parser.add_argument("--expect", type=pathlib.Path, required=True, help="expectations, JSON")
    parser.add_argument("--sounds", type=pathlib.Path, required=True, help="sounds.json")
    parser.add_argument("--picture", type=pathlib.Path, help="write a picture, PNG")
    options = parser.parse_args()
    try:
        tracks = recording.load(options.recording)
        story = timeline.load(options.timeline)
        expected = expectations.load(options.expect, options.sounds)
    except (OSError, ValueError, KeyError) as error:
        print(f"analyse: {type(error).__name__}: {error}", file=sys.stderr)
        return 2
    results = checks.check_all(tracks, story, expected)
    print("\n".join(checks.table(results)))
    failed = sum(not check.passed for check in results)
    print(f"\n{len(results) - failed} of {len(results)} checks passed, {failed} FAILED" if failed
          else f"\nAll {len(results)} checks passed")
    if options.picture:
        picture.draw(options.picture, tracks, story, expected, failed)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
