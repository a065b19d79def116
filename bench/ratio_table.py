#!/usr/bin/env python3
"""Prints the Markdown tables of one benchmark run: our times beside the peers', and their ratios; the geometric means
of the ratios that have a target for that; times that have a target of their own; memory; the errors of transforms.

    claribox_bench --benchmark_out=run.json
    bench/ratio_table.py run.json

Times are milliseconds, minimum / median over the repetitions. A ratio below 1 means that Claribox is faster, or errs
less. With --check the exit status is 1 where a ratio of minima, or anything else with a target, misses it.
"""
import argparse
import collections
import json
import statistics
import sys

OURS = "claribox:"

# Highest time ratio that counts as reached, by operation and peer.
TARGETS = {
    ("Blur_radius_3", "filter2D"): 0.3,
    ("Blur_radius_5", "filter2D"): 0.2,
    ("MotionBlur_length_15_degree_30", "filter2D"): 0.1,
    ("DeBlur_radius_3", "filter2D"): 0.3,
    ("DeBlur_radius_10", "filter2D"): 0.25,
    ("Denoise_YUV", "vaguedenoiser"): 0.3,
    ("Denoise_YUV", "plain"): 0.05,
    ("ChGuessMotionDirection", "plain"): 0.05,
    ("GuessMotionDegree", "plain"): 0.15,
    ("DFT_2D", "FFTW"): 0.6,
    ("DeMotionBlur_length_15_degree_30", "FFTW"): 0.35,
}
# Sizes with a side whose largest prime factor is too large for the mixed-radix method.
TARGETS_OF_SIZES = {
    ("DFT_2D", "1124x868", "FFTW"): 1.0,
    ("DFT_2D", "2101x1501", "FFTW"): 1.0,
}
# Highest geometric mean of the time ratios over all sizes.
MEAN_TARGETS = {
    ("DFT_2D", "FFTW"): 0.45,
    ("DFT_1D", "FFTW"): 1.5,
    ("DFT_real", "FFTW"): 0.6,
}
# Longest time of ours, in milliseconds.
TIME_TARGETS = {"DFT_commit": 5.0}
# Most heap memory of a whole call, in bytes a pixel, by the counter that tells it.
MEMORY_TARGETS = {
    ("DeMotionBlur_length_15_degree_30", "4000x3000", "bytes_per_pixel"): 30.0,
    ("DeMotionBlur_length_15_degree_30", "4000x3000", "threaded_bytes_per_pixel"): 48.0,
}
FORMS = {"bytes_per_pixel": "serial", "threaded_bytes_per_pixel": "threaded"}
# Highest ratio of errors, ours to the peer's.
ERROR_TARGET = 1.5
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}

Times = collections.namedtuple("Times", "minimum median ns_per_pixel working_kib")


def read_run(path, counter, summary):
    """{(operation, size): {subject: summary(entries with that counter)}} in the order of the file's first mention."""
    repetitions = collections.defaultdict(lambda: collections.defaultdict(list))
    with open(path, encoding="utf-8") as file:
        for entry in json.load(file)["benchmarks"]:
            if entry["run_type"] == "iteration" and counter in entry:
                operation, size, subject = entry["run_name"].split("/")[:3]
                repetitions[operation, size][subject].append(entry)
    return {case: {subject: summary(entries) for subject, entries in subjects.items()}
            for case, subjects in repetitions.items()}


def times_of(entries):
    times = [entry["real_time"] * MILLISECONDS[entry["time_unit"]] for entry in entries]
    return Times(min(times), statistics.median(times), min(entry["ns_per_pixel"] for entry in entries),
                 entries[0].get("working_KiB"))


def pixels(size):
    width, height = size.split("x")
    return int(width) * int(height)


def meetings(run):
    """(operation, size, our subject, peer, our value, peer's value), largest picture first."""
    for operation, size in sorted(run, key=lambda case: (-pixels(case[1]), case[0])):
        subjects = run[operation, size]
        for ours in sorted(name for name in subjects if name.startswith(OURS)):
            for peer in sorted((name for name in subjects if not name.startswith(OURS)), reverse=True):
                yield operation, size, ours.removeprefix(OURS), peer, subjects[ours], subjects[peer]


def rows_of(run):
    """Rows of the table of times, and the number of targets missed."""
    rows = []
    missed = 0
    for operation, size, ours, peer, a, b in meetings(run):
        ratio = a.minimum / b.minimum
        target = TARGETS_OF_SIZES.get((operation, size, peer), TARGETS.get((operation, peer)))
        missed += is_missed(ratio, target)
        rows.append([
            operation.replace("_", " "), size, ours, pair(a.minimum, a.median), f"{a.ns_per_pixel:.2f}",
            "" if a.working_kib is None else f"{a.working_kib:.0f}", peer, pair(b.minimum, b.median),
            pair(ratio, a.median / b.median), text_of(target)])
    return rows, missed


def mean_rows_of(run):
    """The same for geometric means over the sizes."""
    ratios = collections.defaultdict(list)
    for operation, _, ours, peer, a, b in meetings(run):
        if (operation, peer) in MEAN_TARGETS:
            ratios[operation, ours, peer].append((a.minimum / b.minimum, a.median / b.median))
    rows = []
    missed = 0
    for (operation, ours, peer), pairs in ratios.items():
        means = [statistics.geometric_mean(column) for column in zip(*pairs)]
        target = MEAN_TARGETS[operation, peer]
        missed += is_missed(means[0], target)
        rows.append([operation.replace("_", " "), ours, peer, str(len(pairs)), pair(*means), text_of(target)])
    return rows, missed


def time_rows_of(run):
    """The same for times of ours that have a target."""
    rows = []
    missed = 0
    for (operation, size), subjects in run.items():
        target = TIME_TARGETS.get(operation)
        for subject, times in subjects.items() if target is not None else ():
            missed += is_missed(times.minimum, target)
            rows.append([operation.replace("_", " "), size, subject.removeprefix(OURS),
                         pair(times.minimum, times.median), text_of(target)])
    return rows, missed


def memory_rows_of(run):
    """The same for memory, serial form before threaded."""
    rows = []
    missed = 0
    for (operation, size), subjects in run.items():
        for subject, entry in subjects.items():
            for counter, form in FORMS.items():
                target = MEMORY_TARGETS.get((operation, size, counter))
                missed += is_missed(entry[counter], target)
                rows.append([operation.replace("_", " "), size, subject.removeprefix(OURS), form,
                             f"{entry[counter]:.1f}", text_of(target)])
    return rows, missed


def error_rows_of(run):
    """The same for errors, shortest length first."""
    rows = []
    missed = 0
    for operation, size, ours, peer, a, b in reversed(list(meetings(run))):
        missed += is_missed(a / b, ERROR_TARGET)
        rows.append([operation.replace("_", " "), size.removesuffix("x1"), ours, f"{a:.3g}", peer, f"{b:.3g}",
                     f"{a / b:.2f}", text_of(ERROR_TARGET)])
    return rows, missed


def is_missed(value, target):
    return target is not None and value > target


def text_of(target):
    return "" if target is None else f"{target}"


def pair(first, second):
    return f"{short(first)} / {short(second)}"


def short(number):
    return f"{number:.0f}" if number >= 100 else f"{number:.3g}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("run", help="file of --benchmark_out")
    parser.add_argument("--check", action="store_true", help="fail where a target is missed")
    options = parser.parse_args()
    times = read_run(options.run, "ns_per_pixel", times_of)
    memory = read_run(options.run, "bytes_per_pixel", lambda entries: entries[0])
    errors = read_run(options.run, "relative_error", lambda entries: entries[0]["relative_error"])
    tables = [
        (["operation", "picture", "class", "Claribox, ms", "ns a pixel", "working KiB", "peer", "peer, ms", "ratio",
          "target"], rows_of(times)),
        (["operation", "class", "peer", "sizes", "geometric mean of the ratios", "target"], mean_rows_of(times)),
        (["operation", "picture", "class", "Claribox, ms", "target, ms"], time_rows_of(times)),
        (["operation", "picture", "class", "form", "bytes a pixel", "target"], memory_rows_of(memory)),
        (["operation", "length", "class", "Claribox", "peer", "peer's", "ratio", "target"], error_rows_of(errors)),
    ]
    missed = 0
    for header, (rows, missed_here) in tables:
        missed += missed_here
        for row in [header, ["---"] * len(header), *rows] if rows else ():
            print("| " + " | ".join(row) + " |")
        print()
    if missed:
        print(f"{missed} values above their target", file=sys.stderr)
    return 1 if options.check and missed else 0


if __name__ == "__main__":
    sys.exit(main())
