#!/usr/bin/python3
"""Draws one picture for each family from a saved run: plot.py RUN DOCUMENT

Each row is an operation; the dots are this library's time to the bare way's and to the best peer's,
the ticks are the limits. Left of 1 the library is ahead. Pictures and run are kept in the folder
charts beside the document, in which the pictures and the table of the run (RUN with the ending .md)
replace what stands between its marks.
"""

import csv
import math
import pathlib
import re
import shutil
import sys

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot, ticker

OURS = "this library"
BARE = "bare"
BLUE, ORANGE = "#0072B2", "#D55E00"  # told apart by everyone

# The same run gives the same files.
matplotlib.rcParams.update({"svg.hashsalt": "portinglayer", "svg.fonttype": "none"})


class Operation:
    def __init__(self, line):
        self.name = line["operation"]
        self.limits = (float(line["limit to bare"]), float(line["limit to peer"]))
        self.times = {}

    def ratios(self):
        """To the bare way and to the best peer; None where there is none."""
        peers = [time for way, time in self.times.items() if way not in (OURS, BARE)]
        others = (self.times.get(BARE), min(peers, default=None))
        return tuple(other and self.times[OURS] / other for other in others)


def read(run):
    """The families in the order of the run, each a list of operations."""
    operations, families = {}, {}
    with open(run, encoding="utf-8", newline="") as file:
        for line in csv.DictReader(file, delimiter="\t"):
            name = line["operation"]
            if name not in operations:
                operations[name] = Operation(line)
                families.setdefault(line["family"], []).append(operations[name])
            operations[name].times[line["way"]] = float(line["nanoseconds"])
    return families


def draw(family, operations, file):
    operations = [operation for operation in operations if any(operation.ratios())]
    figure, axes = pyplot.subplots(figsize=(9, 0.9 + 0.3 * len(operations)), layout="constrained")
    kinds = (("to bare", BLUE, "o", 0.12), ("to the best peer", ORANGE, "D", -0.12))
    for which, (label, colour, marker, shift) in enumerate(kinds):
        rows = [(row, operation.ratios()[which]) for row, operation in enumerate(operations)]
        rows = [(row - shift, ratio) for row, ratio in rows if ratio is not None]
        axes.scatter([ratio for _, ratio in rows], [row for row, _ in rows], s=28, color=colour,
                     marker=marker, label=label, zorder=3)
        limits = [(row - shift, operation.limits[which]) for row, operation in enumerate(operations)
                  if operation.limits[which] > 0]
        axes.scatter([limit for _, limit in limits], [row for row, _ in limits], s=90, color=colour,
                     marker="|", linewidths=2, label=f"limit {label}" if limits else None)
    axes.axvline(1, color="#888888", linewidth=1, zorder=1)
    axes.set_xscale("log")
    low, high = axes.get_xlim()
    axes.set_xlim(min(low, 0.5), max(high, 2))
    decades = math.log10(axes.get_xlim()[1] / axes.get_xlim()[0])
    axes.xaxis.set_major_locator(ticker.LogLocator(subs=(1, 2, 5) if decades < 3 else (1,)))
    axes.xaxis.set_major_formatter(ticker.FuncFormatter(lambda value, _: f"{value:g}"))
    axes.xaxis.set_minor_formatter(ticker.NullFormatter())
    axes.set_yticks(range(len(operations)), [operation.name for operation in operations])
    axes.set_ylim(len(operations) - 0.5, -0.5)
    axes.grid(axis="x", color="#dddddd", linewidth=0.6, zorder=0)
    axes.set_title(f"{family}: time of this library, less is better", fontsize=10, loc="left")
    axes.legend(fontsize=8, loc="upper left", bbox_to_anchor=(1, 1))
    figure.savefig(file, metadata={"Date": None})
    pyplot.close(figure)


def replace(document, mark, content):
    marked = re.compile(f"(<!-- {mark} -->\n).*(<!-- end of {mark} -->)", re.DOTALL)
    text = document.read_text(encoding="utf-8")
    document.write_text(marked.sub(lambda m: m[1] + content + m[2], text), encoding="utf-8")


def main():
    run, document = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    folder = document.parent / "charts"
    folder.mkdir(exist_ok=True)
    pictures = ""
    for family, operations in read(run).items():
        name = f"{family.replace(' ', '_')}.svg"
        draw(family, operations, folder / name)
        pictures += f"![{family}](charts/{name})\n\n"
    replace(document, "pictures", pictures)
    replace(document, "table", run.with_suffix(".md").read_text(encoding="utf-8"))
    shutil.copyfile(run, folder / "results.tsv")


if __name__ == "__main__":
    main()
