#!/usr/bin/env python3
"""Prints the results of the benchmarks and draws them as one picture.

Usage: report.py EVENTS LIVE COMMAND PICTURE

EVENTS is the JSON of qel-bench. LIVE is the JSON of its benchmarks of live objects. COMMAND is the
JSON of measure_command.py. PICTURE is the SVG to write.
"""

import json
import sys

import picture

EVENTS = ["renewal", "consumable", "free_trial", "introductory_offer", "invalid"]
# Prefix of the names of the receipt benchmarks, by the order of the receipt's entries.
RECEIPTS = {
    "in order": "BM_EventReceipt/",
    "reversed": "BM_EventReceipt/reversed/",
    "random": "BM_EventReceipt/random/",
}
SIZES = [1, 10, 100, 1000, 10000]
PARTS = {
    "date": "BM_Date",
    "product": "BM_Product",
    "digest": "BM_Digest",
    "matching, 1 entry": "BM_Matching/1",
    "matching, 10 entries": "BM_Matching/10",
}


def read_events(path):
    """Returns the CPU time in nanoseconds by benchmark, the minimum of the repetitions; the heap
    allocations by benchmark; and the load of the machine when the benchmarks began."""
    with open(path, encoding="utf-8") as file:
        report = json.load(file)
    times, allocations = {}, {}
    for run in report["benchmarks"]:
        if run["run_type"] == "iteration":
            name = run["run_name"]
            assert run["time_unit"] == "ns", name
            assert not run.get("error_occurred"), run.get("error_message")
            times[name] = min(run["cpu_time"], times.get(name, run["cpu_time"]))
            if "allocs" in run:
                allocations[name] = round(run["allocs"])
    return times, allocations, report["context"]["load_avg"][0]


def print_live_ratios(times):
    """Prints the time of an event of live objects with each date reader."""
    portable = times["BM_EventFoundation/renewal"]
    platform = times["BM_EventFoundationFormatter/renewal"]
    print("One renewal of live Foundation objects")
    print("  {:20} {:8.1f} us".format("portable reader", portable / 1e3))
    print(
        "  {:20} {:8.1f} us   {:5.1f} x the portable reader".format(
            "NSDateFormatter", platform / 1e3, platform / portable
        )
    )


def growth(times, prefix):
    return times[prefix + "10000"] / times[prefix + "1000"]


def print_ratios(times, allocations, command):
    floor = times["BM_Floor/renewal"]
    print("One event, on one core")
    print("  {:20} {:8.0f} ns".format("lower bound", floor))
    for event in EVENTS:
        name = "BM_Event/" + event
        print(
            "  {:20} {:8.0f} ns   {:5.2f} x the bound   {:2} allocations".format(
                event, times[name], times[name] / floor, allocations[name]
            )
        )
    print("Parts of an event")
    for part, name in PARTS.items():
        print("  {:20} {:8.1f} ns".format(part, times[name]))
    print("Growth from 1000 to 10000 entries")
    for order, prefix in RECEIPTS.items():
        print("  {:20} {:8.1f} x".format(order, growth(times, prefix)))
    print("The command, {purchases} purchases, {bytes} bytes".format(**command))
    print("  {:20} {:8.0f} MB/s".format("simdjson alone", command["floor"] / 1e6))
    # Equals the rate of one thread on an idle machine. On a busy machine it is closer to that rate.
    core_rate = command["bytes"] / command["secondsOfOneCore"]
    for threads, rate, base, name in [
        ("one thread", command["one"], command["floor"], "simdjson"),
        ("by its CPU time", core_rate, command["floor"], "simdjson"),
        ("two threads", command["two"], command["one"], "one thread"),
    ]:
        print(
            "  {:20} {:8.0f} MB/s {:5.2f} x {}".format(threads, rate / 1e6, rate / base, name)
        )
    cost = command["secondsOfOneCore"] / command["purchases"]
    print("  {:20} {:8.2f} us of one core".format("one purchase", cost * 1e6))


def draw(times, command):
    floor = times["BM_Floor/renewal"]
    events = [("lower bound", floor, "{:.0f} ns".format(floor))]
    for event in EVENTS:
        time = times["BM_Event/" + event]
        text = "{:.0f} ns, {:.2f} × the bound".format(time, time / floor)
        events.append((event.replace("_", " "), time, text))

    lines = []
    for order, prefix in RECEIPTS.items():
        points = [
            (size, times[prefix + str(size)] / 1e3)
            for size in SIZES
            if prefix + str(size) in times
        ]
        text = "{}: {:.1f} × from 1000 to 10000".format(order, growth(times, prefix))
        lines.append((text, points))

    parts = [(part, times[name], "{:.0f} ns".format(times[name])) for part, name in PARTS.items()]

    one, two, reading = command["one"], command["two"], command["floor"]
    rates = [
        ("simdjson alone", reading, "{:.0f} MB/s".format(reading / 1e6)),
        ("one thread", one, "{:.0f} MB/s, {:.2f} × simdjson".format(one / 1e6, one / reading)),
        ("two threads", two, "{:.0f} MB/s, {:.2f} × one".format(two / 1e6, two / one)),
    ]
    return picture.page(
        [
            picture.bars("One event and its lower bound", events, "lower bound"),
            picture.lines("One event, by receipt entries", "µs", lines),
            picture.bars("Parts of an event", parts),
            picture.bars("The command, with output", rates, "simdjson alone"),
        ]
    )


def main():
    events, live, command_path, drawing = sys.argv[1:]
    times, allocations, load = read_events(events)
    live_times, _, _ = read_events(live)
    with open(command_path, encoding="utf-8") as file:
        command = json.load(file)
    print_ratios(times, allocations, command)
    print_live_ratios(live_times)
    if load > 1:
        print("The machine was not idle (load {:.1f}). Run this again on an idle machine.".format(load))
    with open(drawing, "w", encoding="utf-8") as file:
        file.write(draw(times, command))
    print("Wrote " + drawing)


if __name__ == "__main__":
    main()
