"""Tests of the replay on a cluster: two worker processes, and what comes out of them.

Usage: cluster_test.py TOOL PROJECT [unittest options]

TOOL is the built command, PROJECT the folder that holds examples/. Exits with 77 where Dask
Distributed is not installed.
"""

import importlib.util
import os
import shlex
import subprocess
import sys
import tempfile
import unittest

TOOL = sys.argv.pop(1)
PROJECT = sys.argv.pop(1)
REPLAY = os.path.join(PROJECT, "examples", "cluster", "replay.py")
EXAMPLES = os.path.join(PROJECT, "examples", "purchases.jsonl")

# A run that takes longer hangs. One takes a few seconds, most of them to start the workers.
TIMEOUT = 240

# Stands in for the command on the workers. The first one to come after four others kills its own
# worker, as the kernel does where memory runs out; it leaves the worker's number in the file
# `killed`. A folder can be made once only, which settles who is the first.
DEADLY_COMMAND = """#!/bin/sh
cd {folder}
echo >>started
if [ "$(wc -l <started)" -gt 4 ] && mkdir once 2>/dev/null; then
  echo $PPID >killed
  kill -KILL $PPID
  exit 1
fi
exec {tool} "$@"
"""


def purchases():
    """Purchases for some 30 partitions of 64 KiB, and a few lines that cannot be read."""
    with open(EXAMPLES, "rb") as file:
        examples = file.read()
    odd = b'{"id":"odd","unknown":1}\n\n   \nno JSON\n\xef\xbb\xbf{}\n'
    # At the start a byte-order mark is skipped; the last line ends with the file.
    return b"\xef\xbb\xbf" + (examples + odd) * 40 + b'{"id":"last"'


class ReplayTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="qel-cluster-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.input = self.path("purchases.jsonl")

    def path(self, name):
        return os.path.join(self.folder, name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def plain_run(self):
        return subprocess.run(
            [TOOL, "events", self.input], capture_output=True, timeout=TIMEOUT, check=False
        )

    def replay(self, command):
        """Replays the input on two workers and gives the exit status."""
        return subprocess.run(
            [sys.executable, REPLAY, "--workers", "2", "--partition-size", "65536"]
            + ["--command", command, self.input, self.path("events.jsonl")],
            cwd=self.folder,
            env={**os.environ, "DASK_TEMPORARY_DIRECTORY": self.folder},
            stdin=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
            timeout=TIMEOUT,
            check=False,
        )

    def assert_same_as_plain_run(self, replay):
        plain = self.plain_run()
        self.assertEqual(plain.returncode, 1)
        # The last whole line is one of those that cannot be read.
        number = self.read("purchases.jsonl").count(b"\n")
        self.assertIn('"error":{{"line":{},'.format(number).encode(), plain.stdout)
        self.assertEqual(replay.returncode, 1, replay.stderr.decode())
        self.assertEqual(self.read("events.jsonl"), plain.stdout)

    def test_two_workers_give_what_one_plain_run_gives(self):
        self.write("purchases.jsonl", purchases())
        self.assert_same_as_plain_run(self.replay(shlex.quote(TOOL) + " events"))

    def test_a_worker_killed_in_the_middle_changes_nothing(self):
        self.write("purchases.jsonl", purchases())
        script = DEADLY_COMMAND.format(
            folder=shlex.quote(self.folder), tool=shlex.quote(os.path.abspath(TOOL))
        )
        self.write("deadly", script.encode())
        os.chmod(self.path("deadly"), 0o755)
        self.assert_same_as_plain_run(self.replay(shlex.quote(self.path("deadly")) + " events"))

        killed = int(self.read("killed"))
        self.assertFalse(os.path.exists("/proc/{}".format(killed)))
        # More than the partitions: those that were lost ran again.
        partitions = -(-os.path.getsize(self.input) // 65536)
        self.assertGreater(len(self.read("started")), partitions)

    def test_an_empty_file_gives_an_empty_one(self):
        self.write("purchases.jsonl", b"")
        replay = self.replay(shlex.quote(TOOL) + " events")
        self.assertEqual(replay.returncode, 0, replay.stderr.decode())
        self.assertEqual(self.read("events.jsonl"), b"")

    def test_a_command_that_fails_leaves_no_output(self):
        self.write("purchases.jsonl", b"{}\n")
        replay = self.replay(shlex.quote(TOOL) + " events --no-such-option")
        self.assertEqual(replay.returncode, 2)
        self.assertIn(b"--no-such-option", replay.stderr)
        self.assertFalse(os.path.exists(self.path("events.jsonl")))


if __name__ == "__main__":
    if importlib.util.find_spec("distributed") is None:
        print("Dask Distributed is not installed (Debian: python3-distributed)")
        sys.exit(77)
    unittest.main()
