#!/usr/bin/env python3
"""Measures the throughput of the command, and that of simdjson alone.

Usage: measure_command.py FOLDER FILE

FOLDER contains qel-bench and qel-purchase. FILE contains purchases. Writes JSON to standard output:

    purchases, bytes        number of lines and bytes of FILE
    floor, one, two         bytes per second: simdjson alone, one thread, two threads
    secondsOfOneCore        CPU time of the run with one thread, in seconds

Each value is the best of several rounds, because other load on the machine only adds time.
"""

import json
import os
import resource
import subprocess
import sys
import tempfile
import time

ROUNDS = 9


def floor(folder, path):
    command = [os.path.join(folder, "qel-bench"), "--parse-floor", path]
    # "N bytes per second"
    return float(subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout.split()[0])


def run(folder, path, jobs):
    """Runs the command, with its output in a file. Returns the elapsed time and the CPU time in seconds."""
    command = [os.path.join(folder, "qel-purchase"), "events", "--jobs", str(jobs), path]
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with tempfile.TemporaryFile(dir=os.path.dirname(path)) as output:
        start = time.perf_counter()
        subprocess.run(command, stdout=output, stderr=subprocess.DEVNULL, check=True)
        elapsed = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return elapsed, used


def main():
    folder, path = sys.argv[1:]
    size = os.path.getsize(path)
    with open(path, "rb") as file:
        purchases = sum(1 for _ in file)

    floors, ones, twos = [], [], []
    for _ in range(ROUNDS):
        floors.append(floor(folder, path))
        ones.append(run(folder, path, 1))
        twos.append(run(folder, path, 2))
    result = {
        "purchases": purchases,
        "bytes": size,
        "floor": max(floors),
        "one": size / min(elapsed for elapsed, _ in ones),
        "two": size / min(elapsed for elapsed, _ in twos),
        "secondsOfOneCore": min(used for _, used in ones),
    }
    json.dump(result, sys.stdout, indent=2)
    print()


if __name__ == "__main__":
    main()
