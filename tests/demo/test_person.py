# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""demo/person.py ends the host whatever goes wrong, and ends when the host ends."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

PERSON = pathlib.Path(__file__).resolve().parents[2] / "demo" / "person.py"

# Stand-ins for a host whose script is over, and for tavo.
HOST = 'echo \'{"t": 1, "event": "over"}\' >>"$0"; sleep 2'
REFUSING = "#!/bin/sh\necho 'tavo: no host is there' >&2\nexit 69\n"


class PersonTest(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.folder = pathlib.Path(self._folder.name)
        self.timeline = self.folder / "timeline.jsonl"
        self.timeline.touch()

    def run_person(self, *host, timeout="30"):
        return subprocess.run(
            [sys.executable, "-B", str(PERSON), "--timeline", str(self.timeline),
             "--sounds", self._folder.name, "--programs", self._folder.name, "--timeout", timeout,
             "--", *host], capture_output=True, text=True, timeout=60, check=False)

    def events(self, name):
        events = map(json.loads, self.timeline.read_text().splitlines())
        return [{key: value for key, value in event.items() if key not in ("t", "event")}
                for event in events if event["event"] == name]

    def test_returns_the_status_of_a_host_that_ends_too_early(self):
        self.assertEqual(self.run_person("sh", "-c", "exit 3").returncode, 3)

    def test_fails_when_a_host_ends_too_early_with_success(self):
        self.assertEqual(self.run_person("true").returncode, 1)

    def test_fails_and_ends_the_host_when_the_script_does_not_end(self):
        result = self.run_person("sleep", "60", timeout="0.2")
        self.assertEqual(result.returncode, 1)
        self.assertIn("no event over", result.stderr)

    def test_writes_what_a_command_printed_and_returned(self):
        tavo = self.folder / "tavo"
        tavo.write_text(REFUSING)
        tavo.chmod(0o755)
        self.run_person("sh", "-c", HOST, str(self.timeline))
        self.assertEqual(self.events("printed")[0], {"id": "sound", "line": "tavo: no host is there"})
        self.assertEqual(self.events("returned")[0], {"id": "sound", "status": 69})
        self.assertEqual(self.events("queued"), [])


if __name__ == "__main__":
    unittest.main()
