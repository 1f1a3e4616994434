#!/usr/bin/env python3
"""usage: check.py EXPORT EXCEPTIONS ROOT

Holds what llvm-cov counted against the list of what may stay uncovered, and fails when anything else
is uncovered, or when something that is listed is covered after all.

EXPORT is the output of `llvm-cov export`; paths in EXCEPTIONS are relative to ROOT. Prints each file
that has something uncovered, and the figure last.

A line is covered when a test runs it; a branch has two ways, and each counts as one. In a template the
instantiations count together: a way is covered when any instantiation takes it. What no test
instantiates is not compiled and so not counted; nor is what the compiler alone decides, the condition
of an `if constexpr`.

An exception names a place by its text, so that it outlives changes around it:

    file:   runtime/vek/Value.cpp
    text:   if (value < 0) return;
    way:    value < 0, true
    reason: why no test can take it

`text` is the line without its indentation; `way` is the condition, and true or false for the outcome
that no test has, or `line` for a line. Each exception stands for one place: two such places in one
file are listed twice.
"""

import collections
import json
import os
import sys

Place = collections.namedtuple("Place", "file text way")


def covered_lines(segments):
    """For each line with code: whether any region that starts or reaches into it was executed."""
    by_line = collections.defaultdict(list)
    for line, column, count, has_count, is_entry, is_gap in segments:
        by_line[line].append((count, has_count, is_entry, is_gap))
    lines = {}
    before = None  # the segment that reaches into the line from above
    for line in range(min(by_line, default=1), max(by_line, default=0) + 1):
        here = by_line.get(line, [])
        starts = [s for s in here if s[1] and s[2] and not s[3]]
        skipped = bool(here) and not here[0][1] and here[0][2]
        if not skipped and (starts or (before and before[1])):
            counts = [s[0] for s in starts]
            if before and before[1]:
                counts.append(before[0])
            lines[line] = max(counts) > 0
        if here:
            before = here[-1]
    return lines


def covered_ways(branches, source):
    """For each way of each condition, over all instantiations: whether it was taken."""
    ways = collections.defaultdict(bool)
    for line, column, end_line, end_column, true_count, false_count, *_ in branches:
        # Which way these take is settled when they are compiled.
        if source[line - 1][: column - 1].endswith("if constexpr ("):
            continue
        at = (line, column, end_line, end_column)
        ways[at + ("true",)] |= true_count > 0
        ways[at + ("false",)] |= false_count > 0
    return ways


def text_of(source, line, column, end_line, end_column):
    """A condition as it stands in the source, its line breaks made blanks."""
    if line == end_line:
        return source[line - 1][column - 1 : end_column - 1]
    parts = [source[line - 1][column - 1 :]]
    parts += source[line : end_line - 1]
    parts.append(source[end_line - 1][: end_column - 1])
    return " ".join(part.strip() for part in parts)


def read_exceptions(path):
    """The places listed, each with its reason; ends the program when an entry is not whole."""
    listed = []
    entry = {}
    names = ["file", "text", "way", "reason"]

    def finish():
        if not entry:
            return
        missing = [name for name in names if not entry.get(name)]
        if missing:
            sys.exit(f"{path}: an exception without {' and '.join(missing)}: {entry}")
        listed.append((Place(entry["file"], entry["text"], entry["way"]), entry["reason"]))
        entry.clear()

    name = None
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            line = line.rstrip("\n")
            if line.startswith("#"):
                continue
            if not line.strip():
                finish()
            elif line.startswith(" ") and name in entry:  # goes on
                entry[name] += " " + line.strip()
            else:
                name, _, value = line.partition(":")
                if name not in names:
                    sys.exit(f"{path}: no such field: {line}")
                entry[name] = value.strip()
    finish()
    return listed


def uncovered_of(file, root):
    """The lines and ways that a file has, how many each are covered, and the places that are not."""
    with open(file["filename"], encoding="utf-8") as opened:
        source = opened.read().split("\n")
    name = os.path.relpath(file["filename"], root)
    lines = covered_lines(file["segments"])
    ways = covered_ways(file["branches"], source)
    places = []
    for line, covered in lines.items():
        if not covered:
            places.append((line, Place(name, source[line - 1].strip(), "line")))
    for (line, column, end_line, end_column, outcome), taken in ways.items():
        if not taken:
            condition = text_of(source, line, column, end_line, end_column)
            text = source[line - 1].strip()
            places.append((line, Place(name, text, f"{condition}, {outcome}")))
    return lines, ways, sorted(places)


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    export, exceptions, root = sys.argv[1:]
    with open(export, encoding="utf-8") as opened:
        files = json.load(opened)["data"][0]["files"]
    if not files:
        sys.exit(f"{export}: no file was counted")
    listed = read_exceptions(exceptions)
    allowed = collections.Counter(place for place, _ in listed)
    used = collections.Counter()

    failed = False
    total = collections.Counter()
    for file in sorted(files, key=lambda file: file["filename"]):
        lines, ways, places = uncovered_of(file, root)
        total["lines"] += len(lines)
        total["covered lines"] += sum(lines.values())
        total["ways"] += len(ways)
        total["covered ways"] += sum(ways.values())
        if places:
            print(
                f"{places[0][1].file}: lines {sum(lines.values())} of {len(lines)}, "
                f"branches {sum(ways.values())} of {len(ways)}"
            )
        for line, place in places:
            if used[place] < allowed[place]:
                used[place] += 1
                continue
            failed = True
            print(f"  {place.file}:{line}: NOT COVERED: {place.text}\n    way: {place.way}")
    for place, _ in listed:
        if used[place] == 0:
            failed = True
            print(f"{exceptions}: covered after all, or gone: {place.file}: {place.text}: {place.way}")
        else:
            used[place] -= 1

    print(
        f"lines {total['covered lines']} of {total['lines']}, "
        f"branches {total['covered ways']} of {total['ways']}, {len(listed)} exceptions: "
        f"{'FAILED' if failed else 'ok'}"
    )
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
