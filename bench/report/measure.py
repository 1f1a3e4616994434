"""Runs the programs of build/bench and reads what they print."""

import glob
import json
import os
import re
import subprocess
import tempfile

PROGRAMS = "build/bench/bench"
NETLINK = os.path.join(PROGRAMS, "linkflap_bench_netlink")
BENCH = os.path.join(PROGRAMS, "linkflap_bench")


class Sample:
    """Repeated measurements of one thing."""

    def __init__(self, values):
        self.values = sorted(values)

    def at(self, share):
        """The value below which that share of all lies."""
        place = share * (len(self.values) - 1)
        low = int(place)
        high = min(low + 1, len(self.values) - 1)
        return self.values[low] + (place - low) * (self.values[high] - self.values[low])

    @property
    def median(self):
        return self.at(0.5)


def available():
    """Bytes of memory that may be had."""
    with open("/proc/meminfo", encoding="utf-8") as lines:
        return next(int(line.split()[1]) for line in lines if "MemAvailable" in line) * 1024


def subjects():
    """The names of all subjects, CASE/ROW/SIDE."""
    listed = subprocess.run([BENCH, "--list"], check=True, capture_output=True, text=True)
    return listed.stdout.split()


def times(prefix, sides, repetitions, seconds):
    """Nanoseconds of one operation of each side: a Sample each. The sides take turns, in random
    order, in one process."""
    names = "|".join(sides)  # plain words: nothing to escape
    ran = subprocess.run(
        [BENCH, f"--benchmark_filter=^{prefix}/({names})/manual_time$",
         f"--benchmark_repetitions={repetitions}", f"--benchmark_min_time={seconds}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"],
        check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    values = {}
    for run in json.loads(ran.stdout)["benchmarks"]:
        if run["run_type"] == "iteration":
            side = run["run_name"].split("/")[2]
            values.setdefault(side, []).append(run["operation"] * 1e9)
    return {side: Sample(found) for side, found in values.items()}


def callgrind(command, within=lambda whole: whole):
    """What the command printed, and the totals of its marked stretches: lists by their names.
    `within` puts callgrind's command line into another."""
    with tempfile.TemporaryDirectory() as folder:
        ran = subprocess.run(
            within(["valgrind", "--tool=callgrind", "--instr-atstart=no",
                    f"--callgrind-out-file={folder}/out", *command]),
            check=True, capture_output=True, text=True)
        totals = {}
        for path in glob.glob(f"{folder}/out.*"):
            with open(path, encoding="utf-8", errors="replace") as dump:
                text = dump.read()
            name = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M)
            total = re.search(r"^totals: (\d+)", text, re.M)
            if name and total:
                totals.setdefault(name.group(1), []).append(int(total.group(1)))
    return ran.stdout, totals


def counts(names):
    """Instructions of one operation of each of these subjects."""
    printed, totals = callgrind([BENCH, "--count", *names])
    operations = dict(line.rsplit(" ", 1) for line in printed.splitlines())
    return {name: totals[name][0] / int(operations[name]) for name in names}


def netlink(rounds, count):
    """Case 16: Samples by side, instructions by side, and how a burst ended: (whole, messages,
    promised). None where no namespace with links of its own can be had."""
    links = "ip link add near type veth peer name far && ip link set near up && ip link set far up"

    def inside(command):
        return ["unshare", "--net", "--map-root-user", "sh", "-c", f'{links} && exec "$@"', "sh",
                *command]

    try:
        ran = subprocess.run(inside([NETLINK, str(rounds)]), check=True, text=True,
                             capture_output=True)
    except subprocess.CalledProcessError:
        return None
    values = {"ours": [], "libmnl": []}
    burst = None
    for words in map(str.split, ran.stdout.splitlines()):
        if words[0] in values:
            values[words[0]].append(float(words[1]))
        elif words[0] in ("burst", "lost"):
            burst = (words[0] == "burst", int(words[1]), int(words[2]))
    instructions = {}
    if count:
        printed, totals = callgrind([NETLINK, "4"], inside)
        messages = sum(int(line.split()[1]) for line in printed.splitlines()
                       if line.startswith("messages"))
        instructions = {side: sum(found) / messages for side, found in totals.items()}
    return {side: Sample(found) for side, found in values.items()}, instructions, burst


def memory(side, profiles, interfaces):
    """Bytes of one interface: allocated, resident."""
    ran = subprocess.run([BENCH, "--memory", side, str(profiles), str(interfaces)], check=True,
                         capture_output=True, text=True)
    allocated, resident = ran.stdout.split()
    return float(allocated), float(resident)
