# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Measures what the module for attention costs a program that notifies across a bus.

Two hosts run at the same time, each on its own bus: one without the module, and one with it, a history and
a hundred rules. They are called in turns, and each turn waits until both have finished their work. The
history is written after the replies: the processor time of the whole host, until it is written, has a figure
of its own.
"""

import argparse
import contextlib
import json
import pathlib
import statistics
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from dbus import bus, notify  # noqa: E402

RULES = 100
ROUNDS = 11
CALLS_IN_TURN = 200
CALLS_AT_ONCE = 200  # no source may have more than 5,000 open
OPEN_BEFORE = 100
START_SECONDS = 10
WRITTEN_SECONDS = 0.3  # the history is written within 250 ms


def rule(number):
    """None applies to what the client sends, so each notification is compared with all of them."""
    when = [{"source": [f"program{number}", "mail*"]},
            {"category": [f"im.{number}*"]},
            {"words": [f"parcel{number}", "door"]},
            {"minPriority": "Urgent"},
            {"pattern": f"^(alarm|fire) {number}"}]
    return {"name": f"rule {number}", "when": when[number % len(when)], "then": {"mute": True}}


def settings():
    return {"eachSource": {"messages": 100000, "seconds": 1}, "groupFrom": 0,
            "rules": [rule(number) for number in range(RULES)]}


@contextlib.contextmanager
def hosts(servers):
    """The arguments that start the two hosts."""
    with tempfile.TemporaryDirectory() as name, servers.host() as plain:
        folder = pathlib.Path(name)
        file = folder / "attention.json"
        file.write_text(json.dumps(settings()))
        module = {"name": "attention", "config": {
            "settings": str(file), "history": {"file": str(folder / "history.db")}}}
        with servers.host(module) as attention:
            yield {"plain": plain, "attention": attention}


def wait_until_written(buses):
    for each in buses.values():
        each.server.wait_until_quiet()
    time.sleep(WRITTEN_SECONDS)
    for each in buses.values():
        each.server.wait_until_quiet()


def measure(servers):
    """Seconds by what and host: medians."""
    seen = {}
    with hosts(servers) as arguments, contextlib.ExitStack() as stack:
        buses = {name: stack.enter_context(bus.Bus(servers.client())) for name in arguments}
        for name, each in buses.items():
            each.start(arguments[name], START_SECONDS)
            each.client.ask("open", OPEN_BEFORE, notify.OPEN_TIMEOUT_MS)
        wait_until_written(buses)
        for _ in range(ROUNDS):
            for what, command in (("single", ("roundtrip", CALLS_IN_TURN)),
                                  ("many", ("open", CALLS_AT_ONCE, notify.OPEN_TIMEOUT_MS))):
                for name, each in buses.items():
                    before = each.server.processor_seconds()
                    answer = each.client.ask(*command)
                    wait_until_written(buses)
                    seen.setdefault((what, name), []).append(answer.get("median", answer.get("each")))
                    seen.setdefault((f"{what} processor", name), []).append(
                        (each.server.processor_seconds() - before) / command[1])
    return {key: statistics.median(values) for key, values in seen.items()}


def table(figures, title):
    yield f"{title}:"
    for what, name in (("single", "one after the other"), ("many", "many at once"),
                       ("single processor", "the host's processor time, one after the other"),
                       ("many processor", "the host's processor time, many at once")):
        plain, attention = figures[(what, "plain")], figures[(what, "attention")]
        yield (f"  {name}: {plain * 1e6:.1f} us without, {attention * 1e6:.1f} us with, "
               f"ratio {attention / plain:.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, help="the build folder")
    servers = notify.Notifications(parser.parse_args().build)
    print("\n".join(table(measure(servers), "Notify with a history and 100 rules")))
    with notify.on_one_processor():
        print("\n".join(table(measure(servers), "The same on one processor")))


if __name__ == "__main__":
    main()
