# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The programs that the measurements of a fleet need."""

import contextlib
import pathlib
import socket
import subprocess
import sys
import tempfile
import time


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


def wait_for(file, text):
    for _ in range(1000):
        if text in file.read_text():
            return
        time.sleep(0.01)
    sys.exit(f"{file} has no {text!r}:\n{file.read_text()}")


def start(folder, name, *command, text=None, **environment):
    log = folder / f"{name}.log"
    process = subprocess.Popen(command, stdout=log.open("w"), stderr=subprocess.STDOUT,
                               env={"PATH": "/usr/sbin:/usr/bin:/bin", "QT_NO_GLIB": "1",
                                    "HOME": str(folder), **environment})
    if text:
        wait_for(log, text)
    return process


@contextlib.contextmanager
def processes_in_a_folder():
    """A temporary folder, and a list of processes that end with the context, the last one first."""
    processes = []
    with tempfile.TemporaryDirectory() as folder:
        try:
            yield pathlib.Path(folder), processes
        finally:
            for process in reversed(processes):
                process.terminate()
            for process in processes:
                process.wait()
