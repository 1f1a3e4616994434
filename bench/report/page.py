"""What docs/performance.md shows: the table, the machine it was measured on, the plots."""

import datetime
import os
import platform
import re
import subprocess

import goals
import plot
import table

PAGE = "docs/performance.md"
FOLDER = "docs/performance"
BEGIN, END = "<!-- measured: begin -->", "<!-- measured: end -->"

SIDES = {"ours": "this library"} | {side: goals.PEERS[side]
                                    for side in ("hand", "hand-by-name", "sigc", "boost")}


def first_line(*command):
    try:
        return subprocess.run(command, check=True, capture_output=True,
                              text=True).stdout.splitlines()[0].strip()
    except (OSError, subprocess.CalledProcessError, IndexError):
        return "unknown"


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    return platform.machine()


def packages():
    names = ["libsigc++-3.0-dev", "libboost-dev", "libspdlog-dev", "libasio-dev", "qtbase5-dev",
             "libmnl-dev"]
    return ", ".join(f"{name} {first_line('dpkg-query', '-W', '-f=${Version}', name)}"
                     for name in names)


def circumstances():
    with open("/proc/meminfo", encoding="utf-8") as lines:
        memory = int(next(lines).split()[1]) / 2 ** 20
    kernel = platform.release().split("-")[0]
    return (f"Measured {datetime.date.today()} at commit "
            f"{first_line('git', 'describe', '--always', '--dirty')}, on {processor()}, "
            f"{os.cpu_count()} processors, {memory:.0f} GiB; Linux {kernel}; "
            f"{first_line('g++', '--version')}, -O2; {packages()}.\n")


def save(name, text):
    with open(os.path.join(FOLDER, name), "w", encoding="utf-8") as out:
        out.write(text)


def flap_plot(plotted):
    sizes = sorted(int(key) for case, key in plotted if case == 3)
    series = [(name, [(size, plotted[3, str(size)][side].median) for size in sizes
                      if side in plotted[3, str(size)]])
              for side, name in SIDES.items()]
    return plot.chart("Cost of an accepted flap, 1 profile", "interfaces, in random order",
                      "nanoseconds", series, log=True)


def memory_plot(plotted):
    profiles = sorted(key for case, key in plotted if case == 8)
    series = [(name, [(count, plotted[8, count][side][0]) for count in profiles])
              for side, name in SIDES.items() if side in plotted[8, profiles[0]]]
    return plot.chart("Memory of an interface, 10 stamps in each profile", "profiles", "bytes",
                      series, log=False)


def write(lines, plotted):
    """Replaces what was measured last."""
    os.makedirs(FOLDER, exist_ok=True)
    measured = circumstances() + "\n" + table.markdown(lines) + "\n" + table.summary(lines) + ".\n"
    save("table.md", measured)
    if sum(case == 3 for case, _ in plotted) > 1:
        save("flap-cost.svg", flap_plot(plotted))
    if sum(case == 8 for case, _ in plotted) > 1:
        save("memory.svg", memory_plot(plotted))
    with open(PAGE, encoding="utf-8") as page:
        text = page.read()
    replaced = re.sub(f"{BEGIN}.*{END}", lambda _: f"{BEGIN}\n{measured}{END}", text, flags=re.S)
    with open(PAGE, "w", encoding="utf-8") as page:
        page.write(replaced)
    print(f"written: {PAGE}, {FOLDER}/")
