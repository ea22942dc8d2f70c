# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Counts the host's instructions for a desktop notification that is opened and closed across a bus."""

import os
import pathlib
import re

from dbus.bus import Bus
from dbus.notify import on_one_processor

START_SECONDS = 60
FEW, MANY = 250, 2250


def count(build, profile, environment):
    """Instructions for each notification. Starting and stopping the host don't count."""
    with on_one_processor():
        few = _instructions(build, f"{profile}.few", environment, FEW)
        many = _instructions(build, profile, environment, MANY)
    return round((many - few) / (MANY - FEW))


def _instructions(build, profile, environment, notifications):
    build = pathlib.Path(build).resolve()
    with Bus(str(build / "benchmarks/tavo_notify_client")) as bus:
        # The client goes on only while the host rests. Otherwise, several calls might come in one turn.
        os.sched_setscheduler(bus.client.process.pid, os.SCHED_IDLE, os.sched_param(0))
        bus.start(["env", *(f"{name}={value}" for name, value in environment.items()),
                   "valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}",
                   str(build / "bin/tavo-host")], START_SECONDS)
        body_bytes = 6
        bus.client.ask("bodies", notifications, body_bytes)
        bus.server.wait_until_quiet()
        bus.server.stop()
    return int(re.search(r"^totals: (\d+)", pathlib.Path(profile).read_text(), re.M)[1])
