# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Who types at the demo's host ends with it, and ends it, whatever goes wrong."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

PERSON = pathlib.Path(__file__).resolve().parents[2] / "demo" / "person.py"

# Stand in for the host, whose module has ended its script, and for the command line.
HOST = 'echo \'{"t": 1, "event": "over"}\' >>"$0"; sleep 2'
REFUSING = "#!/bin/sh\necho 'tavo: no host is there' >&2\nexit 69\n"


class PersonTest(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.folder = pathlib.Path(self._folder.name)
        self.timeline = self.folder / "timeline.jsonl"
        self.timeline.touch()

    def run_person(self, *host, within="30"):
        return subprocess.run(
            [sys.executable, "-B", str(PERSON), "--timeline", str(self.timeline),
             "--sounds", self._folder.name, "--programs", self._folder.name, "--within", within,
             "--", *host], capture_output=True, text=True, timeout=60, check=False)

    def told(self, event):
        events = map(json.loads, self.timeline.read_text().splitlines())
        return [{key: value for key, value in told.items() if key not in ("t", "event")}
                for told in events if told["event"] == event]

    def test_has_the_status_of_a_host_that_ends_too_early(self):
        self.assertEqual(self.run_person("sh", "-c", "exit 3").returncode, 3)

    def test_fails_when_a_host_ends_too_early_without_a_failure(self):
        self.assertEqual(self.run_person("true").returncode, 1)

    def test_fails_and_ends_the_host_when_the_script_does_not_end(self):
        result = self.run_person("sleep", "60", within="0.2")
        self.assertEqual(result.returncode, 1)
        self.assertIn("nothing is known of over", result.stderr)

    def test_tells_what_a_command_printed_and_returned(self):
        tavo = self.folder / "tavo"
        tavo.write_text(REFUSING)
        tavo.chmod(0o755)
        self.run_person("sh", "-c", HOST, str(self.timeline))
        self.assertEqual(self.told("printed")[0], {"id": "sound", "line": "tavo: no host is there"})
        self.assertEqual(self.told("returned")[0], {"id": "sound", "status": 69})
        self.assertEqual(self.told("queued"), [])


if __name__ == "__main__":
    unittest.main()
