#!/usr/bin/env python3
"""Turns the result files of the benchmark programs into tables, JSON lines and a chart.

    report.py [--json | --markdown] [--svg FILE] RESULT.json...

Every figure is the median of a row's repetitions, as time for one item or one KiB: less is better. The
ratio is ours to the best other library, so below 1 ours is faster. "limit" is what the machine needs at
least and no competitor.
"""
import argparse
import json
import math
import pathlib
import statistics
import sys

OURS, LIMIT = "ours", "limit"
NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
SHOWN = {"item": ("ns/item", 1.0), "byte": ("ns/KiB", 1024.0)}


class Workload:
    """All rows of one workload."""

    def __init__(self, group, name, unit):
        self.group, self.name, self.unit = group, name, unit
        self.times, self.faults = {}, {}

    def add(self, library, row):
        if row.get("error_occurred"):
            self.faults[library] = row["error_message"]
            return
        time = row["real_time"] if "/manual_time" in row["run_name"] else row["cpu_time"]
        per_unit = time * NS[row["time_unit"]] / row["amount"]
        self.times.setdefault(library, []).append(per_unit * SHOWN[row["label"]][1])

    def median(self, library):
        return statistics.median(self.times[library]) if library in self.times else None

    def peers(self):
        """{library: median}, the best one first."""
        names = [name for name in self.times if name not in (OURS, LIMIT)]
        return {name: self.median(name) for name in sorted(names, key=self.median)}

    def best(self):
        return next(iter(self.peers()), None)

    def ratio(self):
        ours, best = self.median(OURS), self.best()
        return ours / self.median(best) if ours is not None and best else None

    def as_json(self):
        return {"group": self.group, "workload": self.name, "unit": self.unit, "ours": self.median(OURS),
                "peers": self.peers(), "best": self.best(), "ratio": self.ratio(), "limit": self.median(LIMIT)}


def load(path):
    """The workloads of one group, in the order of their rows."""
    group = pathlib.Path(path).stem
    rows = [row for row in json.loads(pathlib.Path(path).read_text())["benchmarks"] if row["run_type"] == "iteration"]
    workloads = {}
    for row in sorted(rows, key=lambda row: row["family_index"]):
        name, library = row["run_name"].split("/")[:2]
        unit = SHOWN[row["label"]][0] if "label" in row and row["label"] in SHOWN else "-"
        workload = workloads.setdefault(name, Workload(group, name, unit))
        if workload.unit == "-":
            workload.unit = unit
        workload.add(library, row)
    return list(workloads.values())


def number(value):
    if value is None:
        return "-"
    digits = max(0, 2 - math.floor(math.log10(value))) if value > 0 else 0
    return f"{value:.{min(digits, 3)}f}"


def table(workloads):
    rows = [["workload", "unit", "ours", "best other", "", "ratio", "limit", "the others"]]
    for w in workloads:
        peers = w.peers()
        others = ", ".join(f"{name} {number(time)}" for name, time in list(peers.items())[1:])
        rows.append([w.name, w.unit, number(w.median(OURS)), w.best() or "-", number(peers.get(w.best())),
                     number(w.ratio()), number(w.median(LIMIT)), others])
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    right = {2, 4, 5, 6}
    lines = ["  ".join(cell.rjust(width) if i in right else cell.ljust(width)
                       for i, (cell, width) in enumerate(zip(row, widths))).rstrip() for row in rows]
    lines.insert(1, "-" * max(len(line) for line in lines))
    return "\n".join([f"== {workloads[0].group} =="] + lines)


def markdown(workloads):
    rows = [["workload", "unit", "ours", "best other", "its time", "ratio", "limit"], ["---"] * 2 + ["--:", "---"] + ["--:"] * 3]
    for w in workloads:
        rows.append([w.name, w.unit, number(w.median(OURS)), w.best() or "-", number(w.peers().get(w.best())),
                     number(w.ratio()), number(w.median(LIMIT))])
    return "\n".join(f"| {' | '.join(row)} |" for row in rows)


def chart(workloads):
    """Bars of the ratios on a logarithmic scale; the line in the middle is 1, left of it ours is faster."""
    rated = [w for w in workloads if w.ratio()]
    step, left, width = 18, 280, 600
    span = max([1.0] + [abs(math.log10(w.ratio())) for w in rated])
    middle = left + width / 2
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 90}" height="{step * len(rated) + 40}" '
             'font-family="sans-serif" font-size="12">',
             f'<text x="{middle}" y="16" text-anchor="middle">ours / best other library (left of the line: faster)</text>']
    for i, w in enumerate(rated):
        y, length = 28 + step * i, math.log10(w.ratio()) / span * width / 2
        colour = "#3a7d44" if length <= 0 else "#b5651d"
        parts.append(f'<text x="{left - 8}" y="{y + 11}" text-anchor="end">{w.name}</text>')
        parts.append(f'<rect x="{middle + min(length, 0):.1f}" y="{y}" width="{max(abs(length), 1):.1f}" '
                     f'height="{step - 5}" fill="{colour}"/>')
        parts.append(f'<text x="{left + width + 8}" y="{y + 11}">{number(w.ratio())}</text>')
    parts.append(f'<line x1="{middle}" y1="22" x2="{middle}" y2="{28 + step * len(rated)}" stroke="black"/></svg>')
    return "\n".join(parts) + "\n"


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--json", action="store_true")
    arguments.add_argument("--svg", metavar="FILE")
    arguments.add_argument("--markdown", action="store_true", help="tables as docs/performance.md holds them")
    arguments.add_argument("results", nargs="+")
    options = arguments.parse_args()

    groups = [load(path) for path in options.results]
    workloads = [workload for group in groups for workload in group]
    for group in groups:
        if options.json:
            for workload in group:
                print(json.dumps(workload.as_json(), ensure_ascii=False))
        else:
            print((markdown if options.markdown else table)(group) + "\n")
    if options.svg:
        pathlib.Path(options.svg).write_text(chart(workloads), encoding="utf-8")

    faults = [(w.name, library, text) for w in workloads for library, text in w.faults.items()]
    for name, library, text in faults:
        print(f"{name}/{library}: {text}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
