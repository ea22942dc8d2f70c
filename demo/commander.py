#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Runs a command, and calls a fleet of two devices beside it, as a person would.

Each device is a session bus, a host and tavo-fleet. One call rings both. Then one device is cut off while
another call goes out, and catches up when it is back. A cancel ends that call on both.

Begins when the timeline has the event `begun`. Writes to the timeline what is typed, what the commands print
and return, and what the devices tell the broker; in the end, the event `fleet over`. The exit status is the
command's, or 125 if the fleet failed.
"""

import argparse
import json
import pathlib
import signal
import subprocess
import sys
import tempfile
import threading
import time

from fleet.devices import Broker, Device
from fleet.proxy import Proxy
from person import Shell, Timeline

FAILED = 125


class Fleet:
    """A broker and two devices. One of them can be cut off."""

    def __init__(self, options, folder):
        broker = Broker(folder)
        broker.start()
        self.link = Proxy(broker.port)
        allow = {"sounds": {"folder": str(options.sounds.resolve())}}
        for name, port in (("hall", broker.port), ("porch", self.link.port)):
            Device(name, options.programs, folder, port, allow=allow).start()
        # A configuration and a variable of its own, as others may be there.
        url = f"mqtt://127.0.0.1:{broker.port}"
        (folder / "tavo").mkdir()
        (folder / "tavo" / "fleet.json").write_text(json.dumps({"broker": {"url": url}}))
        self.environment = {"XDG_CONFIG_HOME": str(folder), "TAVO_BROKER": url}

    def cut_off(self):
        """The broker notices at once. The device comes back when it is reconnected."""
        self.link.stall(True)
        self.link.cut()

    def reconnect(self):
        self.link.stall(False)


def watch(timeline, shell):
    """Writes what the devices tell the broker to the timeline, from now on."""
    process = subprocess.Popen(["tavo", "fleet", "watch", "--json"], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, text=True, **shell.options)

    def follow():
        for line in process.stdout:
            told = json.loads(line)
            take(timeline, told["device"], told["subject"], told["value"])

    threading.Thread(target=follow, daemon=True).start()
    return process


def take(timeline, device, subject, value):
    if subject == "online":
        timeline.note("fleet online" if value == 1 else "fleet away", id=device)
    elif subject == "answer":
        kind = next((kind for kind in ("shown", "done") if kind in value), "refused")
        timeline.note("fleet answered", id=f"{value['id']} on {device}", kind=kind)
    elif subject == "event":
        timeline.note("fleet ended", id=f"{value['id']} on {device}", kind=value["end"])


def act(timeline, shell, fleet):
    def call(name, arguments):
        timeline.note("fleet called", id=name)
        return shell.type(name, f"tavo fleet {arguments} --reply-timeout 30")

    for device in ("hall", "porch"):
        timeline.wait_for("fleet online", device)
    call("dinner", "show --group all --id dinner --timeout 2000 --sound bell Dinner "
         "'It is ready'").wait()
    for device in ("hall", "porch"):
        timeline.wait_for("fleet ended", f"dinner on {device}")

    time.sleep(1)  # so that the picture shows them one after the other
    fleet.cut_off()
    timeline.wait_for("fleet away", "porch")
    rain = call("rain", "show --group all --id rain --timeout 0 Rain 'Close the windows'")
    timeline.wait_for("fleet answered", "rain on hall")
    time.sleep(3)  # to be seen
    timeline.note("fleet reconnected", id="porch")
    fleet.reconnect()
    rain.wait()
    time.sleep(2)  # to be read
    call("dry", "cancel --group all --id dry rain").wait()
    for device in ("hall", "porch"):
        timeline.wait_for("fleet ended", f"rain on {device}")


def run(options, folder):
    fleet = Fleet(options, folder)
    command = subprocess.Popen(options.command)
    timeline = Timeline(options.timeline, command)
    shell = Shell(timeline, options.sounds, options.programs, **fleet.environment)
    watching, failure = None, None
    try:
        timeline.wait_for("begun", timeout=60)
        watching = watch(timeline, shell)
        act(timeline, shell, fleet)
    except TimeoutError as error:
        failure = error
    except BaseException:
        command.terminate()
        raise
    finally:
        timeline.note("fleet over")
        status = command.wait()
        if watching:
            watching.terminate()
            watching.wait()
    if failure:
        raise failure
    return status


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--timeline", type=pathlib.Path, required=True,
                        help="the file that the demo's module writes")
    parser.add_argument("--sounds", type=pathlib.Path, required=True,
                        help="the devices' sounds, and the working folder of the commands")
    parser.add_argument("--programs", type=pathlib.Path, required=True,
                        help="the folder with tavo, tavo-host and tavo-fleet")
    parser.add_argument("command", nargs="+", help="the command to run")
    options = parser.parse_args()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda received, frame: sys.exit(128 + received))
    with tempfile.TemporaryDirectory(prefix="tavo-fleet-", ignore_cleanup_errors=True) as folder:
        try:
            return run(options, pathlib.Path(folder))
        except (RuntimeError, OSError) as error:  # one of them is TimeoutError
            print(f"commander: {error}", file=sys.stderr)
            return FAILED


if __name__ == "__main__":
    sys.exit(main())
