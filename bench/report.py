#!/usr/bin/env python3
"""Prints the results of the benchmarks, draws them, and writes them into a document.

Usage: report.py FOLDER... PICTURE DOCUMENT

Each FOLDER contains the results of a run. PICTURE is the SVG to write. DOCUMENT is a Markdown file;
the lines between the two comments that MARKS names are replaced by tables.
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


def duration(nanoseconds):
    """Returns a duration with three digits."""
    for limit, unit in ((1e3, "ns"), (1e6, "µs"), (1e9, "ms")):
        if nanoseconds < 0.9995 * limit:
            return "{:.3g} {}".format(nanoseconds / limit * 1e3, unit)
    return "{:.3g} s".format(nanoseconds / 1e9)


def benchmark(name, program=BENCH):
    return "{} --benchmark_filter='^{}$'".format(program, re.sub(r"/threads:\d", "", name))


def event_rows(measured):
    """Yields what was measured, the result, and the command that measures it again."""
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


def command_rows(measured):
    command = measured.command
    stages = "{} --stages {}".format(BENCH, FILE)
    for name, nanoseconds in command["stages"].items():
        yield "a line: " + name, duration(nanoseconds), stages
    yield "a line: whole line / values, event and copy", "{:.2f}".format(measured.stage_ratio), stages

    again = {
        "one thread": "time {} events --jobs 1 {} >events.jsonl".format(COMMAND, FILE),
        "two threads": "time {} events --jobs 2 {} >events.jsonl".format(COMMAND, FILE),
        "node": "time node bench/events.mjs {} >events.jsonl".format(FILE),
        "Python": "time python3 bench/events.py {} >events.jsonl".format(FILE),
        "jq": "time jq -c .id {} >ids.txt".format(FILE),
    }
    one = command["rates"]["one thread"]
    for name, rate in command["rates"].items():
        text = "{:.0f} MB/s".format(rate / 1e6)
        if name not in ("one thread", "two threads"):
            text += ", the command with one thread is {:.1f} × as fast".format(one / rate)
        what = {"one thread": "the command, one thread", "two threads": "the command, two threads"}
        yield what.get(name, name + (", reads only" if name == "jq" else ", same events")), text, again[name]

    for name, seconds in command["cpu"].items():
        text = duration(seconds / command["lines"] * 1e9)
        yield "CPU time of a line: " + (name + " another process" if name == "beside" else name), text, "python3 bench/measure_command.py build/release/bin " + FILE
    for name, size in command["memory"].items():
        threads, times = re.findall(r"\d+", name)
        what = "peak memory, {:.1f} GB of input, {}".format(
            int(times) * command["bytes"] / 1e9, "one thread" if threads == "1" else "two threads"
        )
        paths = " ".join([FILE] * int(times))
        again_memory = "/usr/bin/time -v {} events --jobs {} {} >events.jsonl".format(COMMAND, threads, paths)
        yield what, "{:.1f} MB".format(size / 1e6), again_memory


def run_rows(runs):
    """Yields a row for each result that is compared between the runs."""
    for what, text in (
        ("lower bound", lambda run: duration(run.times["BM_Floor/renewal"])),
        ("renewal", lambda run: duration(run.times["BM_Event/renewal"])),
        ("renewal / lower bound", lambda run: "{:.2f}".format(run.ratio("BM_Event/renewal", "BM_Floor/renewal"))),
        ("thousand purchases", lambda run: duration(run.times["BM_Event/mix"])),
        ("whole line", lambda run: duration(run.command["stages"]["whole line"])),
        ("whole line / its parts", lambda run: "{:.2f}".format(run.stage_ratio)),
        ("one thread", lambda run: "{:.0f} MB/s".format(run.command["rates"]["one thread"] / 1e6)),
        ("two threads", lambda run: "{:.0f} MB/s".format(run.command["rates"]["two threads"] / 1e6)),
        ("load at the start", lambda run: "{:.1f}".format(run.load)),
    ):
        yield [what, *map(text, runs)]


def tables(runs, measured):
    lines = ["| what | result | command |", "|---|---:|---|"]
    for what, result, command in [*event_rows(measured), *command_rows(measured)]:
        lines.append("| {} | {} | `{}` |".format(what, result, command))
    lines += ["", "The runs one by one:", ""]
    lines.append("| | " + " | ".join("run {}".format(i + 1) for i in range(len(runs))) + " |")
    lines.append("|---|" + "---:|" * len(runs))
    lines += ["| " + " | ".join(row) + " |" for row in run_rows(runs)]
    return "\n".join(lines) + "\n"


def draw(measured):
    times, rates = measured.times, measured.command["rates"]
    floor = times["BM_Floor/renewal"]
    events = [("lower bound", floor, duration(floor))]
    for event in EVENTS:
        time = times["BM_Event/" + event]
        text = duration(time)
        if event == "renewal":
            text += ", {:.2f} × the bound".format(time / floor)
        events.append((event.replace("_", " "), time, text))

    lines = []
    for order, prefix in RECEIPTS.items():
        points = [
            (size, times[prefix + str(size)] / 1e3)
            for size in SIZES
            if prefix + str(size) in times
        ]
        growth = times[prefix + "10000"] / times[prefix + "1000"]
        lines.append(("{}: {:.1f} × from 1000 to 10000".format(order, growth), points))

    stages = [(name, time, duration(time)) for name, time in measured.command["stages"].items()]
    one = rates["one thread"]
    texts = {"one thread": "", "two threads": ", {:.2f} × one thread".format(rates["two threads"] / one)}
    bars = [
        (
            "jq, reads only" if name == "jq" else name,
            rate,
            "{:.0f} MB/s".format(rate / 1e6)
            + texts.get(name, ", one thread is {:.1f} × as fast".format(one / rate)),
        )
        for name, rate in rates.items()
    ]
    return picture.page(
        [
            picture.bars("One event and its lower bound", events, ["lower bound"]),
            picture.lines("One event, by receipt entries", "µs", lines),
            picture.bars("A line of the command", stages, results.LEAST),
            picture.bars("The command and other programs", bars),
        ]
    )


def write_tables(document, text):
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
    for what, result, _ in [*event_rows(measured), *command_rows(measured)]:
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
