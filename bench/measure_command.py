#!/usr/bin/env python3
"""Measures the command, the stages of a line, and other programs that read the same purchases.

Usage: measure_command.py FOLDER FILE

FOLDER contains qel-bench and qel-purchase. FILE contains purchases of make_purchases.py. Writes JSON
to standard output:

    lines, bytes    of FILE
    stages          nanoseconds of a line, by the names that `qel-bench --stages` prints
    rates           bytes of input per second of elapsed time, by program
    cpu             CPU seconds for FILE: alone, beside another process, with two threads
    memory          peak memory in bytes, by number of threads and of times that FILE is read

Times are the least and rates the greatest of several rounds, because other load on the machine only
adds time. Exits with 1 if node or Python writes something else than the command.
"""

import filecmp
import json
import os
import re
import subprocess
import sys
import tempfile
import time

ROUNDS = 5
# The other programs are slow, so they read the first lines only.
LINES_FOR_OTHERS = 25_000

HERE = os.path.dirname(os.path.abspath(__file__))
OTHERS = {
    "node": ["node", os.path.join(HERE, "events.mjs")],
    "Python": ["/usr/bin/python3", os.path.join(HERE, "events.py")],
    # Only reads. It has no digest.
    "jq": ["jq", "-c", ".id"],
}


class Run:
    """A program that runs, with its output in a file."""

    def __init__(self, arguments, output):
        with open(output, "wb") as file:
            self.start = time.perf_counter()
            self.process = subprocess.Popen(arguments, stdout=file, stderr=subprocess.DEVNULL)

    def wait(self):
        """Returns elapsed seconds and CPU seconds."""
        _, status, usage = os.wait4(self.process.pid, 0)
        elapsed = time.perf_counter() - self.start
        self.process.returncode = os.waitstatus_to_exitcode(status)
        if self.process.returncode != 0:
            sys.exit("measure_command.py: a program failed: " + " ".join(self.process.args))
        return elapsed, usage.ru_utime + usage.ru_stime


class Measurement:
    def __init__(self, folder, path, work):
        self.folder, self.path, self.work = folder, path, work

    def output(self, name):
        return os.path.join(self.work, name)

    def command(self, paths, jobs=1):
        command = os.path.join(self.folder, "qel-purchase")
        return [command, "events", "--jobs", str(jobs), *paths]

    def events(self, paths, jobs=1, name="events"):
        return Run(self.command(paths, jobs), self.output(name))

    def stages(self):
        """Returns nanoseconds of a line by stage."""
        command = [os.path.join(self.folder, "qel-bench"), "--stages", self.path]
        text = subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True).stdout
        rows = re.findall(r"^  (\S.*?) +(\d+) ns$", text, re.M)
        return {name: float(nanoseconds) for name, nanoseconds in rows}

    def beside_another(self):
        """Returns the CPU seconds of one of two runs at the same time."""
        runs = [self.events([self.path], name=name) for name in ("events", "other")]
        return min(run.wait()[1] for run in runs)

    def memory(self, paths, jobs):
        """Returns the peak memory in bytes."""
        peak = self.output("peak")
        gnu_time = ["/usr/bin/time", "--format", "%M", "--output", peak]
        Run([*gnu_time, *self.command(paths, jobs)], self.output("events")).wait()
        with open(peak, encoding="ascii") as file:
            return int(file.read()) * 1024

    def rates_of_others(self):
        """Returns bytes of input per second by program. Compares the events with the command's."""
        part = self.output("part.jsonl")
        with open(self.path, "rb") as file, open(part, "wb") as head:
            for _, line in zip(range(LINES_FOR_OTHERS), file):
                head.write(line)
        size = os.path.getsize(part)
        self.events([part]).wait()
        rates = {}
        for name, command in OTHERS.items():
            elapsed, _ = Run([*command, part], self.output(name)).wait()
            rates[name] = size / elapsed
            if name != "jq" and not filecmp.cmp(self.output("events"), self.output(name), False):
                sys.exit("measure_command.py: {} writes other events than the command".format(name))
        return rates


def best(values, choose):
    """Returns the best value of each key of the dictionaries."""
    return {key: choose(value[key] for value in values) for key in values[0]}


def main():
    folder, path = sys.argv[1:]
    size = os.path.getsize(path)
    with open(path, "rb") as file:
        lines = sum(1 for _ in file)
    with tempfile.TemporaryDirectory(dir=os.path.dirname(path)) as work:
        measurement = Measurement(folder, path, work)
        rates, cpu = [], []
        for _ in range(ROUNDS):
            one, alone = measurement.events([path]).wait()
            two, both = measurement.events([path], jobs=2).wait()
            beside = measurement.beside_another()
            others = measurement.rates_of_others()
            rates.append({"one thread": size / one, "two threads": size / two, **others})
            cpu.append({"alone": alone, "beside": beside, "two threads": both})
        memory = {
            "{} threads, {} times".format(jobs, times): measurement.memory([path] * times, jobs)
            for jobs in (1, 2)
            for times in (1, 5)
        }
        result = {
            "lines": lines,
            "bytes": size,
            "stages": measurement.stages(),
            "rates": best(rates, max),
            "cpu": best(cpu, min),
            "memory": memory,
        }
    json.dump(result, sys.stdout, indent=2)
    print()


if __name__ == "__main__":
    main()
