#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Prints a timeline in readable form while it is being written, until standard input ends."""

import json
import pathlib
import select
import sys

INTERVAL = 0.1  # seconds between two reads of the file
TEXTS = {
    "begun": "the script begins, music plays",
    "sent": "{id}: sent",
    "queued": "{id}: queued",
    "refused": "{id}: refused",
    "cancelling": "{id}: cancel sent",
    "started": "{id}: started",
    "ended": "{id}: ended, {kind}",
    "ducked": "main audio ducked",
    "acquired": "audio resource acquired",
    "released": "audio resource released",
    "restored": "main audio restored",
    "display sent": "{id}: sent to the display, {limit}",
    "display opened": "{id}: queued for the display",
    "display refused": "{id}: refused by the display",
    "display shown": "{id}: on display",
    "display hidden": "{id}: off the display",
    "display closing": "{id}: close sent",
    "display cancelling": "{id}: cancel sent",
    "display closed": "{id}: ended, {kind}",
    "display told": "{id}: ended, {kind}",
    "fleet online": "{id}: online",
    "fleet away": "{id}: away",
    "fleet reconnected": "{id}: reconnected",
    "fleet called": "{id}: called on all devices",
    "fleet answered": "{id}: {kind}",
    "fleet ended": "{id}: ended, {kind}",
    "fleet over": "the fleet is over",
    "over": "the script is over",
    "typed": "$ {line}",
    "printed": "    {line}",
    "returned": "    exit status {status} of {id}",
}


def describe(event):
    text = TEXTS.get(event["event"], event["event"])
    timeout = event.get("timeout", 0)
    return text.format(id=event.get("id", ""), kind=event.get("kind", "as the next line says"),
                       limit=f"for {timeout:g} s" if timeout > 0 else "until it is closed",
                       line=event.get("line", ""), status=event.get("status", ""))


class Follower:
    def __init__(self, path):
        self._path = pathlib.Path(path)
        self._read = 0
        self._begin = None

    def show_new(self):
        if not self._path.exists():
            return
        with self._path.open(encoding="utf-8") as file:
            file.seek(self._read)
            for line in iter(file.readline, ""):
                if not line.endswith("\n"):
                    break  # still being written
                self._read += len(line.encode())
                self._show(json.loads(line))

    def _show(self, event):
        if self._begin is None:
            self._begin = event["t"]
        print(f"  {event['t'] - self._begin:7.3f} s  {describe(event)}", flush=True)


def main():
    follower = Follower(sys.argv[1])
    while not select.select([sys.stdin], [], [], INTERVAL)[0]:
        follower.show_new()
    follower.show_new()


if __name__ == "__main__":
    main()
