#!/usr/bin/env python3
"""Prints the results of the benchmarks, draws them, and writes them into a document.

Usage: report.py FOLDER... PICTURE DOCUMENT

Each FOLDER contains the results of a run. PICTURE is the SVG to write. DOCUMENT is a Markdown file;
the lines between the two comments of MARKS are replaced by tables.
"""

import re
import sys

import picture
import results

MARKS = ("<!-- Written by script/bench: -->\n", "<!-- Written by script/bench up to here. -->\n")

BENCH = "build/release/bin/qel-bench"
FOUNDATION_BENCH = "build/foundation/bin/qel-bench"
COMMAND = "build/release/bin/qel-purchase"
FILE = "build/bench/purchases.jsonl"

EVENTS = ["renewal", "consumable", "free_trial", "introductory_offer", "invalid", "mix"]
# Prefix of the names of the receipt benchmarks, by the order of the receipt's entries.
RECEIPTS = {
    "in order": "BM_EventReceipt/",
    "reversed": "BM_EventReceipt/reversed/",
    "random": "BM_EventReceipt/random/",
}
# Numbers of entries of the receipts.
SIZES = [1, 10, 100, 1000, 10000]
PARTS = {
    "parse a date": "BM_Date",
    "multiply two decimals": "BM_Product",
    "MD5 digest": "BM_Digest",
    "match in 1 entry": "BM_Matching/1",
    "match in 10 entries": "BM_Matching/10",
    "message to the monitor": "BM_Message/threads:1",
    "message, two threads": "BM_Message/threads:2",
}


def events_command(threads, times=1):
    """Returns the command that computes the events of FILE, read several times."""
    paths = " ".join([FILE] * times)
    return "{} events --jobs {} {} >events.jsonl".format(COMMAND, threads, paths)


# What the tables say of each program of measure_command.py, and its command.
PROGRAMS = {
    "one thread": ("the command, one thread", events_command(1)),
    "two threads": ("the command, two threads", events_command(2)),
    "node": ("node, same events", "node bench/events.mjs {} >events.jsonl".format(FILE)),
    "Python": ("Python, same events", "python3 bench/events.py {} >events.jsonl".format(FILE)),
    "jq": ("jq, reads only", "jq -c .id {} >ids.txt".format(FILE)),
}


def duration(nanoseconds):
    """Returns a duration with three digits."""
    for limit, unit in ((1e3, "ns"), (1e6, "µs"), (1e9, "ms")):
        if nanoseconds < 0.9995 * limit:
            return "{:.3g} {}".format(nanoseconds / limit * 1e3, unit)
    return "{:.3g} s".format(nanoseconds / 1e9)


def benchmark(name, program=BENCH):
    """Returns the command that runs a benchmark with all its numbers of threads."""
    return "{} --benchmark_filter='^{}$'".format(program, re.sub(r"/threads:\d", "", name))


def event_rows(measured):
    floor = "BM_Floor/renewal"
    yield "lower bound for a renewal", duration(measured.times[floor]), benchmark(floor)
    for event in EVENTS:
        name = "BM_Event/" + event
        text = "{}, {} allocations".format(duration(measured.times[name]), measured.allocations[name])
        if event == "renewal":
            text += ", {:.2f} × the bound".format(measured.ratio(name, floor))
        what = "a thousand purchases in turn" if event == "mix" else event.replace("_", " ")
        yield "event: " + what, text, benchmark(name)
    for order, prefix in RECEIPTS.items():
        for size in (100, 1000, 10000):
            name = prefix + str(size)
            if name in measured.times:
                what = "event, receipt of {} entries, {}".format(size, order)
                yield what, duration(measured.times[name]), benchmark(name)
    for part, name in PARTS.items():
        yield "part: " + part, duration(measured.times[name]), benchmark(name)
    for what, name in (
        ("event of live objects, portable date parser", "BM_EventFoundation/renewal"),
        ("event of live objects, `NSDateFormatter`", "BM_EventFoundationFormatter/renewal"),
    ):
        yield what, duration(measured.times[name]), benchmark(name, FOUNDATION_BENCH)


def stage_rows(measured):
    command = "{} --stages {}".format(BENCH, FILE)
    for name, nanoseconds in measured.command["stages"].items():
        yield "a line: " + name, duration(nanoseconds), command
    ratio = "{:.2f}".format(measured.stage_ratio)
    yield "a line: whole line / values, event and copy", ratio, command


def rate_rows(measured):
    rates = measured.command["rates"]
    for name, rate in rates.items():
        text = "{:.0f} MB/s".format(rate / 1e6)
        if name not in ("one thread", "two threads"):
            times = rates["one thread"] / rate
            text += ", the command with one thread is {:.1f} × as fast".format(times)
        what, command = PROGRAMS[name]
        yield what, text, "time " + command


def cpu_rows(measured):
    command = "python3 bench/measure_command.py build/release/bin " + FILE
    for name, seconds in measured.command["cpu"].items():
        what = "beside another process" if name == "beside" else name
        time = duration(seconds / measured.command["lines"] * 1e9)
        yield "CPU time of a line: " + what, time, command


def memory_rows(measured):
    for name, size in measured.command["memory"].items():
        threads, times = map(int, re.findall(r"\d+", name))
        what = "peak memory, {:.1f} GB of input, {}".format(
            times * measured.command["bytes"] / 1e9, "one thread" if threads == 1 else "two threads"
        )
        command = "/usr/bin/time -v " + events_command(threads, times)
        yield what, "{:.1f} MB".format(size / 1e6), command


def rows(measured):
    """Yields what was measured, the result, and the command that measures it again."""
    for part in (event_rows, stage_rows, rate_rows, cpu_rows, memory_rows):
        yield from part(measured)


def run_rows(runs):
    """Yields a row for each result that the document shows for each run."""
    for what, text in (
        ("lower bound", lambda run: duration(run.times["BM_Floor/renewal"])),
        ("renewal", lambda run: duration(run.times["BM_Event/renewal"])),
        (
            "renewal / lower bound",
            lambda run: "{:.2f}".format(run.ratio("BM_Event/renewal", "BM_Floor/renewal")),
        ),
        ("thousand purchases", lambda run: duration(run.times["BM_Event/mix"])),
        ("whole line", lambda run: duration(run.command["stages"]["whole line"])),
        ("whole line / its parts", lambda run: "{:.2f}".format(run.stage_ratio)),
        ("one thread", lambda run: "{:.0f} MB/s".format(run.command["rates"]["one thread"] / 1e6)),
        ("two threads", lambda run: "{:.0f} MB/s".format(run.command["rates"]["two threads"] / 1e6)),
        ("load at the start", lambda run: "{:.1f}".format(run.load)),
    ):
        yield [what, *map(text, runs)]


def tables(runs, measured):
    """Returns the tables in Markdown."""
    lines = ["| what | result | command |", "|---|---:|---|"]
    for what, result, command in rows(measured):
        lines.append("| {} | {} | `{}` |".format(what, result, command))
    lines += ["", "The runs one by one:", ""]
    lines.append("| | " + " | ".join("run {}".format(i + 1) for i in range(len(runs))) + " |")
    lines.append("|---|" + "---:|" * len(runs))
    lines += ["| " + " | ".join(row) + " |" for row in run_rows(runs)]
    return "\n".join(lines) + "\n"


def event_bars(measured):
    floor = measured.times["BM_Floor/renewal"]
    bars = [("lower bound", floor, duration(floor))]
    for event in EVENTS:
        time = measured.times["BM_Event/" + event]
        text = duration(time)
        if event == "renewal":
            text += ", {:.2f} × the bound".format(time / floor)
        bars.append((event.replace("_", " "), time, text))
    return picture.bars("One event and its lower bound", bars, ["lower bound"])


def receipt_lines(measured):
    times = measured.times
    lines = []
    for order, prefix in RECEIPTS.items():
        names = [(size, prefix + str(size)) for size in SIZES]
        points = [(size, times[name] / 1e3) for size, name in names if name in times]
        growth = measured.ratio(prefix + "10000", prefix + "1000")
        lines.append(("{}: {:.1f} × from 1000 to 10000".format(order, growth), points))
    return picture.lines("One event, by receipt entries", "µs", lines)


def stage_bars(measured):
    stages = [(name, time, duration(time)) for name, time in measured.command["stages"].items()]
    return picture.bars("A line of the command", stages, results.LEAST)


def rate_bars(measured):
    rates = measured.command["rates"]
    one = rates["one thread"]
    bars = []
    for name, rate in rates.items():
        text = "{:.0f} MB/s".format(rate / 1e6)
        if name == "two threads":
            text += ", {:.2f} × one thread".format(rate / one)
        elif name != "one thread":
            text += ", one thread is {:.1f} × as fast".format(one / rate)
        bars.append(("jq, reads only" if name == "jq" else name, rate, text))
    return picture.bars("The command and other programs", bars)


def draw(measured):
    """Returns the SVG of the results."""
    panels = (event_bars, receipt_lines, stage_bars, rate_bars)
    return picture.page([panel(measured) for panel in panels])


def write_tables(document, text):
    """Replaces the lines between the marks of the document."""
    with open(document, encoding="utf-8") as file:
        content = file.read()
    start, end = (content.index(mark) for mark in MARKS)
    content = content[: start + len(MARKS[0])] + "\n" + text + "\n" + content[end:]
    with open(document, "w", encoding="utf-8") as file:
        file.write(content)


def main():
    *folders, drawing, document = sys.argv[1:]
    runs = [results.read_run(folder) for folder in folders]
    measured = results.best(runs)
    for what, result, _ in rows(measured):
        print("{:48} {}".format(what, result))
    for row in run_rows(runs):
        print("{:48} {}".format(row[0], "  ".join(row[1:])))
    if measured.load > 1:
        print("The machine was not idle (load {:.1f}). Run this again.".format(measured.load))
    with open(drawing, "w", encoding="utf-8") as file:
        file.write(draw(measured))
    write_tables(document, tables(runs, measured))
    print("Wrote {} and {}".format(drawing, document))


if __name__ == "__main__":
    main()
