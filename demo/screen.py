#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Runs a command while tavo-display runs on a private X server, and records the screen.

Writes each picture that differs from the one before to DIR/<number>.png, and a line of JSON with its time
(monotonic clock) and file to DIR/screen.jsonl. The messages of the expectations get a stripe in their
colour, by which soundcheck/screen.py recognises them. The exit status is the command's, or 125 if the
X server or tavo-display failed.
"""

import argparse
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

import numpy as np
from PIL import Image

SIZE = (420, 150)  # pixels; a message is as wide, and less high
INTERVAL = 0.02  # seconds between two pictures
THEME = """import QtQuick 2.15
import "qrc:/tavo/display"
Card {
    Rectangle {
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: 12
        color: (%s)[message.title] || "transparent"
    }
}
"""


class Screen:
    """An X server and its picture, which it keeps in a file: a header, the colours, and the pixels."""

    def __init__(self, folder):
        size = "x".join(map(str, (*SIZE, 24)))
        self.process = subprocess.Popen(
            ["Xvfb", "-displayfd", "1", "-br", "-nocursor", "-nolisten", "tcp", "-screen", "0", size,
             "-fbdir", str(folder)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.name = ":" + self.process.stdout.readline().strip()
        if self.name == ":":
            raise RuntimeError("Xvfb does not start")
        file = folder / "Xvfb_screen0"
        header = np.fromfile(file, dtype=">u4", count=25)
        width, height, line, colours = (int(header[field]) for field in (4, 5, 12, 19))
        pixels = np.memmap(file, mode="r", offset=int(header[0]) + colours * 12,
                           shape=(height, line // 4, 4))
        self.pixels = pixels[:, :width, 2::-1]  # red, green, blue


def write_configuration(folder, expectations):
    messages = json.loads(expectations.read_text(encoding="utf-8"))["display"]["notifications"]
    colours = {item["title"]: item["colour"] for item in messages.values()}
    (folder / "demo.qml").write_text(THEME % json.dumps(colours), encoding="utf-8")
    file = folder / "display.json"
    file.write_text(json.dumps({"theme": "demo.qml", "margin": 0, "width": SIZE[0],
                                "language": "en"}), encoding="utf-8")
    return file


def start_display(program, screen, configuration):
    environment = {name: value for name, value in os.environ.items() if name != "WAYLAND_DISPLAY"}
    environment.update(DISPLAY=screen.name, QT_QPA_PLATFORM="xcb",
                       XDG_RUNTIME_DIR=str(configuration.parent))
    return subprocess.Popen([program, "--config", str(configuration)], env=environment)


def record(screen, folder, is_running):
    last, count = None, 0
    with (folder / "screen.jsonl").open("w", encoding="utf-8") as file:
        while is_running():
            moment, picture = time.monotonic(), screen.pixels.copy()
            if last is None or not np.array_equal(picture, last):
                name = f"{count:04}.png"
                Image.fromarray(picture).save(folder / name)
                file.write(json.dumps({"t": moment, "file": name}) + "\n")
                last, count = picture, count + 1
            time.sleep(INTERVAL)


def run(options, folder):
    processes = []
    try:
        screen = Screen(folder)
        processes.append(screen.process)
        display = start_display(options.program, screen,
                                write_configuration(folder, options.expect))
        processes.append(display)
        command = subprocess.Popen(options.command)
        processes.append(command)
        options.output.mkdir(parents=True, exist_ok=True)
        record(screen, options.output, lambda: command.poll() is None)
        if display.poll() is not None:
            raise RuntimeError(f"tavo-display ended too early with status {display.returncode}")
        return command.returncode
    finally:
        for process in reversed(processes):
            process.terminate()
            process.wait()


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, help="tavo-display")
    parser.add_argument("--expect", type=pathlib.Path, required=True, help="expectations, JSON")
    parser.add_argument("--output", type=pathlib.Path, required=True, metavar="DIR",
                        help="the folder for the pictures")
    parser.add_argument("command", nargs="+", help="the command to run")
    options = parser.parse_args()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda received, frame: sys.exit(128 + received))
    with tempfile.TemporaryDirectory(prefix="tavo-screen-") as folder:
        try:
            return run(options, pathlib.Path(folder))
        except (RuntimeError, OSError) as error:
            print(f"screen: {error}", file=sys.stderr)
            return 125


if __name__ == "__main__":
    sys.exit(main())
