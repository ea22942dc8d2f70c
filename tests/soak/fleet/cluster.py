#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Devices and commanders at the two nodes of an ejabberd cluster, one of which is killed. scripts/cluster-test runs
this."""

import argparse
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

from fleet.devices import Device, free_port, start, wait_until
from fleet.proxy import Proxy

ADDRESS = "127.0.0.1"
CALLS = 20
USER, PASSWORD = "fleet", "anything"  # of nobody: ejabberd lets in all that say one


def listens(port):
    with open("/proc/net/tcp", encoding="ascii") as table:
        return any(line.split()[1].endswith(f":{port:04X}") and line.split()[3] == "0A"
                   for line in list(table)[1:])


class Cluster:
    """The nodes of an ejabberd that speaks only MQTT, on loopback."""

    def __init__(self, folder):
        self.folder = folder
        self.log = open(folder / "cluster.log", "ab")
        epmd_port = free_port()
        self.environment = dict(os.environ, HOME=str(folder), ERL_EPMD_PORT=str(epmd_port),
                                ERL_EPMD_ADDRESS=ADDRESS, ERL_LIBS="/usr/lib/x86_64-linux-gnu")
        # The nodes would start one that stays.
        start(["epmd", "-address", ADDRESS, "-port", str(epmd_port)], self.log,
              env=self.environment)
        wait_until(lambda: listens(epmd_port), "the start of epmd")

    def erlang(self, name):
        return ["erl", "-noinput", "-name", f"{name}@{ADDRESS}", "-setcookie", "cluster-test",
                "-start_epmd", "false", "-kernel", "inet_dist_use_interface", "{127,0,0,1}"]

    def ask(self, node, module, function, arguments):
        """Calls a function at a node; fails unless it gives ok."""
        expression = (f"case rpc:call('{node.name}@{ADDRESS}', {module}, {function}, [{arguments}]) "
                      "of ok -> halt(0); Other -> io:format(\"~p~n\", [Other]), halt(1) end.")
        done = subprocess.run(self.erlang("control") + ["-hidden", "-eval", expression],
                              env=self.environment, capture_output=True, text=True, timeout=60)
        if done.returncode:
            raise RuntimeError(f"{module}:{function}: {done.stdout}{done.stderr}")


class Node:
    """One node. It is also what a client at its port calls the broker."""

    def __init__(self, cluster, name):
        self.name = name
        self.port = free_port()
        folder = cluster.folder / name
        folder.mkdir()
        configuration = folder / "ejabberd.yml"
        configuration.write_text(
            "hosts: [localhost]\nloglevel: warning\nauth_method: anonymous\nanonymous_protocol: login_anon\n"
            "allow_multiple_connections: true\n"
            f"listen:\n  - {{port: {self.port}, ip: '{ADDRESS}', module: mod_mqtt, backlog: 4096}}\n"
            "modules:\n  mod_mqtt: {max_queue: 10000}\n")
        environment = dict(cluster.environment, EJABBERD_CONFIG_PATH=str(configuration),
                           EJABBERD_LOG_PATH=str(folder / "ejabberd.log"))
        self.process = start(cluster.erlang(name) +
                             ["+P", "250000", "-mnesia", "dir", f'"{folder}/mnesia"', "-s", "ejabberd"],
                             cluster.log, env=environment, cwd=folder)
        wait_until(lambda: listens(self.port), f"the start of node {name}")

    def kill(self):
        self.process.kill()
        self.process.wait()

    def memory(self):
        """In KiB."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii")
        return next(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmRSS"))


class Commander:
    def __init__(self, build, node, password_file):
        self.command = [build / "bin/tavo", "fleet", "--broker", f"mqtt://{ADDRESS}:{node.port}",
                        "--user", USER, "--password-file", password_file]

    def show(self, device, text):
        """Starts a process that shows a message on a device, and ends with 0 if that has answered."""
        return subprocess.Popen(self.command + ["show", "--device", device, "--timeout", "0",
                                                "--reply-timeout", "60", text],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def listed(self):
        output = subprocess.run(self.command + ["--json", "list"], check=True,
                                capture_output=True, timeout=60).stdout
        return {device["device"]: device for device in json.loads(output)["devices"]}


class Table:
    def __init__(self):
        self.all_good = True

    def add(self, what, is_good, result):
        self.all_good = self.all_good and is_good
        print(f"{what:<58} {result}{'' if is_good else '   WRONG'}", flush=True)


def calls(table, what, commander, device, texts):
    begin = time.monotonic()
    answered = 0
    for text in texts:
        process = commander.show(device, text)
        output = process.communicate(timeout=90)[0]
        answered += process.returncode == 0
        if process.returncode:
            print(output)
    table.add(what, answered == len(texts),
              f"{answered} of {len(texts)} answered, {(time.monotonic() - begin) / len(texts):.2f} s each")


def fully_listed(commander, name):
    device = commander.listed().get(name)
    return device is not None and device["online"] and "display" in device["state"]


def measure_memory(table, build, node, count):
    before = node.memory()
    simulated = subprocess.Popen([build / "benchmarks/tavo_simulated_fleet", str(node.port), "0", str(count),
                                  USER, PASSWORD],
                                 stdout=subprocess.PIPE, text=True)
    times = [float(simulated.stdout.readline().split()[1]) for _ in range(2)]
    time.sleep(5)
    table.add(f"memory of a node with {count} devices", True,
              f"{(node.memory() - before) / count:.0f} KiB a device, connected in {times[0]:.1f} s")
    simulated.kill()
    simulated.wait()


def run(build, folder, count):
    table = Table()
    cluster = Cluster(folder)
    first = Node(cluster, "first")
    second = Node(cluster, "second")
    cluster.ask(second, "ejabberd_cluster", "join", f"'first@{ADDRESS}'")
    wait_until(lambda: listens(second.port), "joining")
    table.add("two nodes joined", True, "yes")
    password_file = folder / "password"
    password_file.write_text(PASSWORD)
    at_first, at_second = (Commander(build, node, password_file) for node in (first, second))

    balancer = Proxy(first.port)  # as in front of the brokers of a region

    def device(name, port):
        return Device(name, build / "bin", folder, port, broker={
            "url": f"mqtt://{ADDRESS}:{port}", "user": USER, "passwordFile": str(password_file),
            "reconnect": {"min": 50, "max": 500}})

    porch, hall = device("porch", balancer.port), device("hall", second.port)
    porch.start()
    hall.start()
    wait_until(lambda: fully_listed(at_first, "porch"), "the connection of porch")
    wait_until(lambda: fully_listed(at_second, "hall"), "the connection of hall")

    texts = [f"call {i}" for i in range(CALLS)]
    calls(table, "commander at the second, device at the first node", at_second, "porch", texts)
    calls(table, "commander at the first, device at the second node", at_first, "hall", texts)
    crosses = fully_listed(at_second, "porch")
    table.add("the second node has the first one's retained states", True, "yes" if crosses else "no")

    begin = time.monotonic()
    first.kill()
    balancer.target = second.port
    process = at_second.show("porch", "during the loss")
    good = process.wait(90) == 0
    table.add("a call during the loss of the first node", good,
              f"{'answered' if good else 'not answered'} {time.monotonic() - begin:.1f} s after it")
    wait_until(lambda: fully_listed(at_second, "porch"), "the return of porch")
    table.add("the device has said everything again at the second node", True,
              f"{time.monotonic() - begin:.1f} s after the loss")
    more = [f"later call {i}" for i in range(CALLS)]
    calls(table, "calls after the loss", at_second, "porch", more)

    for caller, wanted in (porch, texts + ["during the loss"] + more), (hall, texts):
        shown = caller.messages()
        once = sum(shown[text] == 1 for text in wanted)
        table.add(f"shown by {caller.name} exactly once", once == len(wanted) == sum(shown.values()),
                  f"{once} of {len(wanted)}")
    if count:
        measure_memory(table, build, second, count)
    return 0 if table.all_good else 1


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--devices", type=int, default=0)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        return run(arguments.build.resolve(), pathlib.Path(folder), arguments.devices)


if __name__ == "__main__":
    sys.exit(main())
