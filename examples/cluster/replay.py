#!/usr/bin/python3
"""Replays a large file of purchases on the workers of a Dask Distributed cluster.

OUTPUT is identical to the output of one plain run over INPUT. Every worker opens INPUT under the
same path. If a worker dies, other workers repeat its partitions.
Exit status: 0 all lines were read, 1 some were rejected, 2 the replay failed.
"""

import argparse
import collections
import itertools
import os
import shlex
import subprocess
import sys

from distributed import Client


def partitions(path, size):
    """Yields the offset and length of each partition: `size` bytes, up to the next newline."""
    with open(path, "rb") as file:
        total = file.seek(0, os.SEEK_END)
        start = 0
        while start < total:
            file.seek(min(start + size, total) - 1)
            file.readline()
            yield start, file.tell() - start
            start = file.tell()


def piped(command, path, start, length):
    """Runs on a worker. Pipes one partition to a command; returns its exit status and output."""
    part = ["dd", "if=" + path, "bs=1M", "iflag=skip_bytes,count_bytes", "status=none",
            "skip={}".format(start), "count={}".format(length)]
    with subprocess.Popen(part, stdout=subprocess.PIPE) as source:
        process = subprocess.run(command, stdin=source.stdout, capture_output=True, check=False)
    if source.returncode != 0 or process.returncode not in (0, 1):
        raise RuntimeError("reading {} ended with {}, {} with {}: {}".format(
            path, source.returncode, command, process.returncode, process.stderr.decode()))
    return process.returncode, process.stdout


def count_newlines(path, start, length):
    """Runs on a worker. Returns the number of newlines in one partition."""
    return int(piped(["wc", "-l"], path, start, length)[1])


def events(command, path, start, length, first_line):
    """Runs on a worker. Returns the exit status and the output for one partition."""
    numbered = [*shlex.split(command), "--jobs", "1", "--first-line", str(first_line)]
    return piped(numbered, path, start, length)


def results(client, command, path, parts, ahead):
    """Yields the results of all partitions in order. At most `ahead` partitions are in progress at a
    time, so that memory does not grow with the file."""
    counts = client.gather([client.submit(count_newlines, path, *part) for part in parts])
    pending = collections.deque()
    for part, first_line in zip(parts, itertools.accumulate(counts, initial=1)):
        pending.append(client.submit(events, command, path, *part, first_line, retries=2))
        if len(pending) == ahead:
            yield pending.popleft().result()
    while pending:
        yield pending.popleft().result()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("input")
    parser.add_argument("output")
    parser.add_argument("--scheduler", help="address of the cluster's scheduler; by default starts a cluster on this machine")
    parser.add_argument("--workers", type=int, default=os.cpu_count(), help="number of workers on this machine")
    parser.add_argument("--command", default="qel-purchase events", help="command for the workers")
    parser.add_argument("--partition-size", type=int, default=32 << 20, help="in bytes")
    options = parser.parse_args()

    cluster = {"n_workers": options.workers, "threads_per_worker": 1, "dashboard_address": None}
    if options.scheduler:
        cluster = {"address": options.scheduler}
    path, unfinished, status = os.path.abspath(options.input), options.output + ".part", 0
    parts = list(partitions(path, options.partition_size))
    with Client(**cluster) as client, open(unfinished, "wb") as output:
        ahead = 4 * sum(client.nthreads().values())
        for part_status, text in results(client, options.command, path, parts, ahead):
            status = max(status, part_status)
            output.write(text)
    os.replace(unfinished, options.output)
    return status


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Exception as error:  # reports every kind of failure
        print("replay:", error, file=sys.stderr)
        sys.exit(2)
