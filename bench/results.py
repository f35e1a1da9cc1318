"""The results of the benchmarks: one run, or the best of several."""

import json
import os


# The stages whose sum a whole line is compared with.
LEAST = ("simdjson over all values", "event alone", "copy of the output")


class Results:
    """What the benchmarks measured.

    times           nanoseconds of CPU time by benchmark
    allocations     heap allocations by benchmark
    load            load of the machine when the run began
    command         what measure_command.py writes
    """

    def __init__(self, times, allocations, load, command):
        self.times, self.allocations, self.load, self.command = times, allocations, load, command

    def ratio(self, name, base):
        return self.times[name] / self.times[base]

    @property
    def stage_ratio(self):
        """The time of a whole line, divided by the sum of the stages in LEAST."""
        stages = self.command["stages"]
        return stages["whole line"] / sum(stages[name] for name in LEAST)


def read_benchmarks(path):
    """Returns the least CPU time by benchmark, the allocations by benchmark, and the load."""
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


def read_run(folder):
    """Returns the results of the run whose files are in the folder."""
    times, allocations, load = read_benchmarks(os.path.join(folder, "events.json"))
    live_times, _, _ = read_benchmarks(os.path.join(folder, "live.json"))
    with open(os.path.join(folder, "command.json"), encoding="utf-8") as file:
        command = json.load(file)
    return Results({**times, **live_times}, allocations, load, command)


def best(runs):
    """Returns the least times of several runs, and their greatest rates, memory and load.

    Other load on the machine only adds time.
    """

    def least(dictionaries):
        return {key: min(values[key] for values in dictionaries) for key in dictionaries[0]}

    def most(dictionaries):
        return {key: max(values[key] for values in dictionaries) for key in dictionaries[0]}

    commands = [run.command for run in runs]
    command = {
        **commands[0],
        # The stages of one run, because they add up.
        "stages": min((c["stages"] for c in commands), key=lambda stages: stages["whole line"]),
        "rates": most([c["rates"] for c in commands]),
        "cpu": least([c["cpu"] for c in commands]),
        "memory": most([c["memory"] for c in commands]),
    }
    times = least([run.times for run in runs])
    return Results(times, runs[0].allocations, max(run.load for run in runs), command)
