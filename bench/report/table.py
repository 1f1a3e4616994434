"""The table: one line for each row and peer."""

import goals


def number(value):
    """About three digits."""
    if value is None:
        return ""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}"


class Line:
    """One line: ours against one peer, or against a bound."""

    HEAD = ["case", "what", "ours", "peer", "peer's", "ratio", "spread", "instructions", "goal",
            "met"]

    def __init__(self, case, what):
        self.case, self.what = case, what
        self.ours = self.peer = self.peers = self.ratio = self.spread = ""
        self.instructions = self.goal = self.met = ""

    def cells(self):
        return [str(self.case), self.what, self.ours, self.peer, self.peers, self.ratio,
                self.spread, self.instructions, self.goal, self.met]


def verdict(low, middle, high, bound):
    """Whether at most `bound` was reached; "~" marks that the spread reaches across it."""
    met = "yes" if middle <= bound else "NO"
    return met + (" ~" if low <= bound < high else "")


def versus_lines(row, times, counts):
    """`times`: Sample of each side; `counts`: instructions of each side."""
    lines = []
    ours = times["ours"]
    for peer, goal in row.goals.items():
        line = Line(row.case, row.title)
        line.peer = goals.PEERS[peer]
        line.ours = f"{number(ours.median)} ns"
        if peer not in times:
            line.peers = "not measured"
            lines.append(line)
            continue
        theirs = times[peer]
        line.peers = f"{number(theirs.median)} ns"
        low, high = ours.at(0.25) / theirs.at(0.75), ours.at(0.75) / theirs.at(0.25)
        ratio = ours.median / theirs.median
        line.ratio, line.spread = number(ratio), f"{number(low)}-{number(high)}"
        if "ours" in counts and peer in counts:
            share = counts["ours"] / counts[peer]
            line.instructions = (f"{number(counts['ours'])} / {number(counts[peer])}"
                                 f" = {number(share)}")
        if goal is not None:
            kind, factor = goal
            bound = factor if kind == "most" else 1 / factor
            line.goal = (f"at most {factor:g}x" if kind == "most"
                         else f"{factor:g}x faster ({number(bound)})")
            line.met = verdict(low, ratio, high, bound)
        lines.append(line)
    return lines


def flat_lines(row, counts):
    """`counts`: instructions by size, as text."""
    lines = []
    sizes = [size for size in row.sizes if str(size) in counts]
    if not sizes:
        return lines
    first = counts[str(sizes[0])]
    for size in sizes:
        line = Line(row.case, f"{row.title} {size:,}")
        line.instructions = number(counts[str(size)])
        line.ratio = f"{counts[str(size)] / first:.3f}"
        lines.append(line)
    # Fewer for many than for few is no growth.
    growth = max(counts[str(size)] for size in sizes) / first - 1
    lines[-1].goal = f"no more than {row.tolerance:.0%} growth"
    lines[-1].met = "yes" if growth <= row.tolerance + 1e-4 else "NO"
    return lines


def netlink_lines(row, measured):
    """`measured`: of measure.netlink."""
    line = Line(row.case, row.title)
    if measured is None:
        line.ours = "not measured: no network namespace with links of its own"
        return [line]
    times, counts, burst = measured
    if burst is not None:
        whole, messages, promised = burst
        line.what = "messages of one burst"
        line.ours = f"{messages} {'taken' if whole else 'sent, some lost'}"
        line.goal = f"no loss of {promised}"
        line.met = "yes" if whole else "NO"
    return versus_lines(row, times, counts) + [line]


def memory_lines(row, bytes_of):
    """`bytes_of`: (allocated, resident) of each side."""
    lines = []
    ours = bytes_of["ours"]
    for peer in ("hand", "sigc", "boost"):
        line = Line(row.case, row.title)
        line.ours, line.peer = f"{ours[0]:,.0f} B", goals.PEERS[peer]
        line.peers = f"{bytes_of[peer][0]:,.0f} B"
        line.ratio = number(ours[0] / bytes_of[peer][0])
        lines.append(line)
    if row.most is not None:
        lines[0].goal = f"at most {row.most:,.0f} B"
        lines[0].met = "yes" if ours[0] <= row.most else "NO"
    lines[0].spread = f"resident {ours[1]:,.0f} B"
    return lines


def markdown(lines):
    rows = [Line.HEAD, ["---"] * len(Line.HEAD)]
    rows += [line.cells() for line in lines]
    return "".join("| " + " | ".join(cells) + " |\n" for cells in rows)


def text(lines):
    """The same for a terminal: in columns."""
    rows = [Line.HEAD] + [line.cells() for line in lines]
    widths = [max(len(row[i]) for row in rows) for i in range(len(Line.HEAD))]
    return "".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() + "\n"
                   for row in rows)


def summary(lines):
    judged = [line.met for line in lines if line.met]
    met = sum(word.startswith("yes") for word in judged)
    return f"{met} of {len(judged)} goals met"
