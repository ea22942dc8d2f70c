#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Checks what was heard and shown in a run against the expectations, and draws a picture of it.

Without a recording, only the timeline is checked and nothing is drawn.

Exit status: 0 if every check passed, 1 if one failed, 2 if the input can't be read.
"""

import argparse
import pathlib
import sys

from soundcheck import check, checks, displaychecks, expectations, picture, recording, screen, timeline


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("recording", type=pathlib.Path, nargs="?",
                        help="folder with recording.json")
    parser.add_argument("--timeline", type=pathlib.Path, required=True, help="JSON lines")
    parser.add_argument("--expect", type=pathlib.Path, required=True, help="expectations, JSON")
    parser.add_argument("--sounds", type=pathlib.Path, required=True, help="sounds.json")
    parser.add_argument("--screen", type=pathlib.Path, help="folder with screen.jsonl")
    parser.add_argument("--picture", type=pathlib.Path, help="write a picture, PNG")
    options = parser.parse_args()
    try:
        tracks = recording.load(options.recording) if options.recording else None
        story = timeline.load(options.timeline)
        expected = expectations.load(options.expect, options.sounds)
        shots = screen.load(options.screen, story.end) if options.screen else []
    except (OSError, ValueError, KeyError) as error:
        print(f"analyse: {type(error).__name__}: {error}", file=sys.stderr)
        return 2
    results = checks.check_all(tracks, story, expected)
    spans = screen.seen(shots, expected.display)
    if options.screen:
        results += screen.check_screen(spans, story.display, expected.display)
    if story.display.notifications:
        begin = min(track.start for track in tracks.values()) if tracks else story.begin
        print("\n".join(displaychecks.table(story.display, expected.display, begin)), end="\n\n")
    print("\n".join(check.table(results)))
    failed = sum(not result.passed for result in results)
    print(f"\n{len(results) - failed} of {len(results)} checks passed, {failed} FAILED" if failed
          else f"\nAll {len(results)} checks passed")
    if options.picture and tracks:
        picture.draw(options.picture, tracks, story, expected, spans, failed)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
