#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Runs the demo's host. When the script of the demo's module is over, types commands as a person would.

Writes to the timeline what is typed, what the commands print and their exit statuses, and also what the
commands report about sounds and messages, as the same events that the demo's module writes. Then ends
the host. The exit status is the host's.
"""

import argparse
import json
import os
import pathlib
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time

INTERVAL = 0.02  # seconds between two reads of the timeline
TIMEOUT = 20.0  # seconds
MESSAGES = "/dbus/notifications/"  # the folder of messages that come over the bus
END_KINDS = ("finished", "cancelled", "failed")


class Timeline:
    def __init__(self, path, host):
        self._path, self._host = path, host
        self._lock = threading.Lock()

    def note(self, event, moment=None, **details):
        line = json.dumps({"t": moment or time.monotonic(), "event": event, **details})
        with self._lock, self._path.open("a", encoding="utf-8") as file:
            file.write(line + "\n")

    def wait_for(self, event, name=None, after=0.0, timeout=TIMEOUT):
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline and self._host.poll() is None:
            if self._has(event, name, after):
                return
            time.sleep(INTERVAL)
        raise TimeoutError(f"the timeline has no event {event} {name or ''}".rstrip())

    def _has(self, event, name, after):
        lines = self._path.read_text(encoding="utf-8").splitlines(keepends=True)
        events = [json.loads(line) for line in lines if line.endswith("\n")]
        return any(found["event"] == event and found.get("id") == name and found["t"] > after
                   for found in events)


class Sound:
    """Writes what `tavo sound --json --wait` prints to the timeline."""

    def __init__(self, timeline):
        self._timeline = timeline

    def take(self, line):
        printed = json.loads(line)
        event = printed["event"]
        if event in END_KINDS:
            self._timeline.note("ended", id=printed["id"], kind=event)
        else:
            self._timeline.note(event, id=printed["id"])


class Message:
    """Writes what a command that shows a message prints to the timeline: its number, then its end."""

    def __init__(self, timeline, timeout):
        self._timeline, self._timeout = timeline, timeout
        self._id = None

    def take(self, line):
        if self._id is None:
            self._id = f"{MESSAGES}{int(line)}"
            self._timeline.note("display sent", id=self._id, timeout=self._timeout)
        else:
            self._timeline.note("display told", id=self._id, kind=line)


class Command:
    """A running command."""

    def __init__(self, timeline, name, line, listener, **options):
        self._timeline, self._name, self._listener = timeline, name, listener
        timeline.note("typed", id=name, line=line)
        self._process = subprocess.Popen(
            shlex.split(line.removesuffix("&")), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, **options)
        self._thread = threading.Thread(target=self._follow, daemon=True)
        self._thread.start()

    def _follow(self):
        for line in self._process.stdout:
            self._timeline.note("printed", id=self._name, line=line.rstrip("\n"))
            try:
                if self._listener:
                    self._listener.take(line.strip())
            except (ValueError, KeyError):
                pass  # an error message; the checks find that the event is missing
        self._timeline.note("returned", id=self._name, status=self._process.wait())

    def wait(self):
        """Returns the exit status. Kills a command that does not end."""
        try:
            self._process.wait(TIMEOUT)
        except subprocess.TimeoutExpired:
            self._process.kill()
        self._thread.join()
        return self._process.returncode


class Shell:
    def __init__(self, timeline, folder, programs, **environment):
        path = f"{programs}{os.pathsep}{os.environ['PATH']}"
        self._timeline = timeline
        self.options = {"cwd": folder, "env": dict(os.environ, PATH=path, **environment)}

    def type(self, name, line, listener=None):
        return Command(self._timeline, name, line, listener, **self.options)


def mail_command():
    if shutil.which("notify-send"):
        return "notify-send --print-id --expire-time 5000 Mail 'You have a letter'"
    return "tavo show --timeout 5000 Mail 'You have a letter'"


def act(timeline, shell):
    """Plays a sound. Then plays another one and shows two messages at once, asks for their state, and
    cancels the sound and one message."""
    begin = time.monotonic()
    shell.type("sound", "tavo sound --json --wait --id knock knock.flac", Sound(timeline)).wait()
    timeline.wait_for("restored", after=begin)
    time.sleep(1)  # for the music to be heard again

    bell = shell.type("loop", "tavo sound --json --loop --id bell bell.flac &", Sound(timeline))
    timeline.wait_for("started", "bell")
    door = shell.type("show", "tavo show --wait --timeout 3000 Door 'Somebody rings' &",
                      Message(timeline, 3.0))
    timeline.wait_for("display shown", MESSAGES + "1")
    shell.type("notify", mail_command(), Message(timeline, 5.0)).wait()
    shell.type("list", "tavo list").wait()
    shell.type("status", "tavo status").wait()
    time.sleep(1)  # to be heard
    shell.type("cancel sound", "tavo cancel bell").wait()
    bell.wait()
    door.wait()

    timeline.wait_for("display shown", MESSAGES + "2")
    time.sleep(1)  # to be read
    timeline.note("display cancelling", id=MESSAGES + "2")
    if shell.type("cancel message", f"tavo cancel {MESSAGES}2").wait() == 0:
        timeline.note("display told", id=MESSAGES + "2", kind="cancelled")
    timeline.wait_for("display closed", MESSAGES + "2")
    time.sleep(0.5)  # so that the picture shows the end of the last one


def run(options):
    host = subprocess.Popen(options.host)
    timeline = Timeline(options.timeline, host)
    try:
        timeline.wait_for("over", timeout=options.timeout)
        act(timeline, Shell(timeline, options.sounds, options.programs))
        if options.fleet:
            timeline.wait_for("fleet over")
    except TimeoutError as error:
        print(f"person: {error}", file=sys.stderr)
        return host.poll() or 1
    finally:
        host.terminate()
        host.wait()
    return host.returncode


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--timeline", type=pathlib.Path, required=True,
                        help="the file that the demo's module writes")
    parser.add_argument("--sounds", type=pathlib.Path, required=True,
                        help="the working folder of the commands")
    parser.add_argument("--programs", type=pathlib.Path, required=True,
                        help="the folder with the program tavo")
    parser.add_argument("--fleet", action="store_true",
                        help="end the host only after the event `fleet over`")
    parser.add_argument("--timeout", type=float, default=60.0, metavar="SECONDS",
                        help="how long the module's script may take (60)")
    parser.add_argument("host", nargs="+", help="the command that runs the host")
    options = parser.parse_args()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda received, frame: sys.exit(128 + received))
    return run(options)


if __name__ == "__main__":
    sys.exit(main())
