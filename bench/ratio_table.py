#!/usr/bin/env python3
"""Prints the Markdown table of one benchmark run: our times beside the peers', and their ratios.

    claribox_bench --benchmark_out=run.json
    bench/ratio_table.py run.json

Times are milliseconds, minimum / median over the repetitions. A ratio below 1 means that Claribox is faster. With
--check the exit status is 1 where a ratio of minima misses its target.
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
}
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}

Times = collections.namedtuple("Times", "minimum median ns_per_pixel working_kib")


def read_run(path):
    """{(operation, size): {subject: Times}} in the order of the file's first mention."""
    repetitions = collections.defaultdict(lambda: collections.defaultdict(list))
    with open(path, encoding="utf-8") as file:
        for entry in json.load(file)["benchmarks"]:
            if entry["run_type"] == "iteration" and "ns_per_pixel" in entry:
                operation, size, subject = entry["run_name"].split("/")[:3]
                repetitions[operation, size][subject].append(entry)
    return {case: {subject: times_of(entries) for subject, entries in subjects.items()}
            for case, subjects in repetitions.items()}


def times_of(entries):
    times = [entry["real_time"] * MILLISECONDS[entry["time_unit"]] for entry in entries]
    return Times(min(times), statistics.median(times), min(entry["ns_per_pixel"] for entry in entries),
                 entries[0].get("working_KiB"))


def pixels(size):
    width, height = size.split("x")
    return int(width) * int(height)


def rows_of(run):
    """Rows of the table, largest picture first, and the number of targets missed."""
    rows = []
    missed = 0
    for operation, size in sorted(run, key=lambda case: (-pixels(case[1]), case[0])):
        subjects = run[operation, size]
        for ours in sorted(name for name in subjects if name.startswith(OURS)):
            for peer in sorted((name for name in subjects if not name.startswith(OURS)), reverse=True):
                a, b = subjects[ours], subjects[peer]
                ratio = a.minimum / b.minimum
                target = TARGETS.get((operation, peer))
                missed += target is not None and ratio > target
                rows.append([
                    operation.replace("_", " "), size, ours.removeprefix(OURS), pair(a.minimum, a.median),
                    f"{a.ns_per_pixel:.2f}", f"{a.working_kib:.0f}", peer, pair(b.minimum, b.median),
                    pair(ratio, a.median / b.median), "" if target is None else f"{target}"])
    return rows, missed


def pair(first, second):
    return f"{short(first)} / {short(second)}"


def short(number):
    return f"{number:.0f}" if number >= 100 else f"{number:.3g}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("run", help="file of --benchmark_out")
    parser.add_argument("--check", action="store_true", help="fail where a target is missed")
    options = parser.parse_args()
    rows, missed = rows_of(read_run(options.run))
    header = ["operation", "picture", "class", "Claribox, ms", "ns a pixel", "working KiB", "peer", "peer, ms", "ratio",
              "target"]
    for row in [header, ["---"] * len(header), *rows]:
        print("| " + " | ".join(row) + " |")
    if missed:
        print(f"{missed} ratios above their target", file=sys.stderr)
    return 1 if options.check and missed else 0


if __name__ == "__main__":
    sys.exit(main())
