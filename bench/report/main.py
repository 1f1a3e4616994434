"""usage: main.py [--quick] [--no-million] [--no-counts] [CASE...], called by bench/run."""

import argparse
import os
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor

import goals
import measure
import page
import table

MILLION_NEEDS = 10 * 2 ** 30  # bytes, for all sides of a row at once
MEMORY_SIDES = ("ours", "hand", "sigc", "boost")


def arguments():
    parser = argparse.ArgumentParser(prog="bench/run")
    parser.add_argument("case", nargs="*", type=int)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--no-million", action="store_true")
    parser.add_argument("--no-counts", action="store_true")
    parser.add_argument("--write", action="store_true",
                        help="write docs/performance/ also when not everything is measured")
    return parser.parse_args()


def tried(what, otherwise, *arguments):
    """What failed is said and left out; the rest is measured all the same."""
    try:
        return what(*arguments)
    except (subprocess.CalledProcessError, KeyError, ValueError) as failure:
        say(f"not measured: {failure}")
        return otherwise


def say(what):
    print(what, file=sys.stderr, flush=True)


def sides_of(row, known):
    prefix = f"{row.case}/{row.key}/"
    return [name[len(prefix):] for name in known if name.startswith(prefix)]


def counted(rows, known):
    """Instructions by subject; as many rows at a time as there are processors."""
    batches = []
    for row in rows:
        if isinstance(row, goals.Flat):
            sizes = [str(size) for size in row.sizes]
            batches += [[f"{row.case}/{row.key}/{size}"] for size in reversed(sizes)]
        elif isinstance(row, goals.Versus) and row.counted:
            batches.append([f"{row.case}/{row.key}/{side}" for side in sides_of(row, known)])
    found = {}
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for counts in pool.map(lambda names: tried(measure.counts, {}, names),
                               [names for names in batches if names]):
            found.update(counts)
    return found


def measured(row, known, counts, options):
    """The lines of a row, and what the plots need: times by side, or bytes by side."""
    if isinstance(row, goals.LinkMessages):
        found = measure.netlink(6 if options.quick else 60, not options.no_counts)
        return table.netlink_lines(row, found), None
    if isinstance(row, goals.Memory):
        interfaces = 20000 if options.quick else 100000
        found = {side: measure.memory(side, row.profiles, interfaces) for side in MEMORY_SIDES}
        return table.memory_lines(row, found), found
    mine = {name.split("/")[2]: value for name, value in counts.items()
            if name.startswith(f"{row.case}/{row.key}/")}
    if isinstance(row, goals.Flat):
        return table.flat_lines(row, mine), None
    # One batch on a million interfaces takes seconds, one that is costly to prepare many times as
    # long as what is measured.
    repetitions = 3 if options.quick else 5 if row.million else 9
    seconds = 0.01 if row.costly else 0.02 if options.quick else 0.05
    found = measure.times(f"{row.case}/{row.key}", sides_of(row, known), repetitions, seconds)
    return table.versus_lines(row, found, mine), found


def main():
    options = arguments()
    known = measure.subjects()
    rows = [row for row in goals.ROWS if not options.case or row.case in options.case]
    if measure.available() < MILLION_NEEDS and not options.quick and not options.no_million:
        say("too little memory for a million interfaces")
        options.no_million = True
    if options.quick or options.no_million:
        rows = [row for row in rows if not getattr(row, "million", False)]
        for row in rows:
            if isinstance(row, goals.Flat):
                row.sizes = [size for size in row.sizes if size < goals.MILLION]
    if os.getloadavg()[0] > 0.5:
        say(f"this machine is busy (load {os.getloadavg()[0]:.1f}): the times will show it")
    begun = time.monotonic()
    # Order: first the counts, which do not suffer from running side by side, as the times would.
    counts = {}
    if not options.no_counts:
        say("instruction counts ...")
        counts = counted(rows, known)
    lines, plotted = [], {}
    for row in rows:
        say(f"{time.monotonic() - begun:4.0f} s  {row.case}: {row.title}")
        found, values = tried(measured, ([], None), row, known, counts, options)
        lines += found
        if values is not None:
            plotted[row.case, row.profiles if row.case == 8 else row.key] = values
    print(table.text(lines), end="")
    print(table.summary(lines))
    if options.write or not (options.case or options.quick):
        page.write(lines, plotted)


if __name__ == "__main__":
    main()
