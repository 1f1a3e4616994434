#!/usr/bin/env python3
"""usage: mutate.py [--sample N] [--seed S] [--all] [--only TEXT] [--again] [--without-tests] [BUILD]

Changes the library in one small way at a time (a mutant: a condition negated, a comparison or a
constant replaced, a statement removed or two put in another order, ...) and runs the tests: a mutant
that no test notices is a test that is missing, or changes nothing that could be noticed. Mutated are
`statemachines/` and the notification core of the runtime.

All mutants are built at once, into a copy of the tree in BUILD (default: build/mutation), and each is
chosen when a test program starts (MutationSwitch.h). First the tests run without any, and it is
written down which test reaches which mutant; then, for each mutant of the sample, the tests that
reach it run until the first fails. A test program
that crashes, or takes five times as long as without a mutant and five seconds more, has failed.

The sample: N mutants (default 400) of all files in proportion, at least five of each file that has as
many, drawn by a hash of SEED (default 1) and the mutant's text; so what is drawn in one place does
not depend on changes in another. With --all every mutant, with --only those whose file or text
contains TEXT.

survivors.txt has those that may survive, each with the reason. Those marked there as equivalent make
no difference that a test could notice: of all others that were run, at least 95 % must be killed. Fails
when fewer are, when a survivor is not explained there, and when one that is explained was killed or is
no more. Both figures are printed last, the one of all that were run and the one that counts.

--again takes over from the last run, also one that was ended, what was killed then, and runs the rest:
quick, and right as long as tests have only been added since.

--without-tests runs no test at all, so that nothing can be killed: it shows that this fails.
"""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import re
import resource
import signal
import subprocess
import sys
import time

import generate

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SURVIVORS = os.path.join(ROOT, "tests/mutation/survivors.txt")
CORE = (
    "Notifiee.h Notifiee.cpp Reactor.h State.h Activity.h Activity.cpp Attribute.h BitReverse.h "
    "HashMap.h HashMapGeneric.h HashMapGeneric.cpp LinkQueue.h LinkQueue.cpp ListRaw.h ListRaw.cpp "
    "PtrInterface.h PtrInterface.cpp"
)
PROGRAMS = ["statemachines", "runtime", "introspection"]
HEADERS = {  # parsed once for all files of a program, mutants and all
    "statemachines": "statemachines/LinkFlapSm.h",
    "runtime": "runtime/model/LinkFlapConfig.h",
    "introspection": "introspection/GenericIfs.h",
}
# Programs that are one test each, run when no other test notices a mutant.
WHOLE = {
    "simulate": ["tests/simulation/simulate", "--seeds", "1..2", "--events", "10000"],
    "reliability-memory": ["tests/reliability/reliability-memory"],
    "reliability-reentry": ["tests/reliability/reliability-reentry"],
    "reliability-lives": ["tests/reliability/reliability-lives", "500"],
    "reliability-bursts": ["tests/reliability/reliability-bursts"],
}
JOBS = 2
REQUIRED = 95  # per cent


def mutated_files():
    machines = sorted(os.listdir(os.path.join(ROOT, "statemachines")))
    files = ["statemachines/" + name for name in machines if name.endswith((".cpp", ".h"))]
    return files + ["runtime/vek/" + name for name in CORE.split()]


def put(path, content):
    """Writes a file unless it is that already, so that only what changed is built again."""
    try:
        with open(path, encoding="utf-8") as opened:
            if opened.read() == content:
                return
    except FileNotFoundError:
        os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as opened:
        opened.write(content)


def read(name):
    with open(os.path.join(ROOT, name), encoding="utf-8") as opened:
        return opened.read()


def copy_tree(source):
    """The parts of the tree that the tests need, with the listener of reached mutants added."""
    listed = subprocess.run(
        ["git", "ls-files", "-co", "--exclude-standard", "CMakeLists.txt", "cmake", "runtime",
         "statemachines", "introspection", "tools", "tests", "docs"],
        cwd=ROOT, check=True, capture_output=True, text=True,
    ).stdout.split()  # fmt: skip
    mutated = set(mutated_files())
    for name in listed:
        if name in mutated or not os.path.exists(os.path.join(ROOT, name)):
            continue
        content = read(name)
        if name in [f"tests/{program}/CMakeLists.txt" for program in PROGRAMS]:
            program = name.split("/")[1]
            content += (
                f"target_sources({program}_tests PRIVATE ../mutation/ReachListener.cpp)\n"
                f"target_precompile_headers({program}_tests PRIVATE <gtest/gtest.h>\n"
                f"  ${{PROJECT_SOURCE_DIR}}/{HEADERS[program]})\n"
            )
        put(os.path.join(source, name), content)


def write_mutants(source, dropped):
    """Writes the mutated files; all mutants, those in `dropped` left out."""
    mutants = []
    for name in mutated_files():
        text = read(name)
        content, of_file = generate.written(
            text, generate.parsed(text), dropped, name, len(mutants) + 1
        )
        mutants += of_file
        put(os.path.join(source, name), content)
    return mutants


def failed_to_compile(log, source, mutants):
    """The mutants at whose lines the compiler stopped."""
    by_file = collections.defaultdict(list)
    for mutant in mutants:
        by_file[mutant.file].append(mutant)
    # Each error with the notes that follow it: where the error itself is in no mutant (but in a
    # template that one instantiates), the first note that is in one tells which.
    found = set()
    blamed = True
    for match in re.finditer(r"^(\S+?):(\d+):\d+: (fatal error|error|note):", log, re.M):
        if match.group(3) != "note":
            blamed = False
        elif blamed:
            continue
        line = int(match.group(2))
        for mutant in by_file.get(os.path.relpath(match.group(1), source), []):
            if mutant.lines[0] <= line <= mutant.lines[1]:
                found.add(mutant.key)
                blamed = True
    return found


def build(folder):
    """Builds the tests with all mutants that compile; these mutants."""
    source = os.path.join(folder, "src")
    tree = os.path.join(folder, "tree")
    copy_tree(source)
    # Those that did not compile the last time are left out from the start: a header that is written
    # twice is compiled twice, with all that includes it.
    kept = os.path.join(folder, "dropped.json")
    dropped = set()
    if os.path.exists(kept):
        with open(kept, encoding="utf-8") as opened:
            dropped = {tuple(key) for key in json.load(opened)}
    write_mutants(source, dropped)
    subprocess.run(
        ["cmake", "-S", source, "-B", tree, "-G", "Ninja", "-DCMAKE_CXX_COMPILER=clang++",
         "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-w -ferror-limit=0",
         "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DLINKFLAP_BUILD_AGENT=OFF", "-DLINKFLAP_POOL=OFF"],
        check=True, stdout=subprocess.DEVNULL,
    )  # fmt: skip
    # The libraries first: what does not compile in a header shows in the few files of these.
    for targets in (["linkflap"], ["runtime_tests", "statemachines_tests", "introspection_tests",
                                   "vek-types", "scenario", *WHOLE]):  # fmt: skip
        while True:
            mutants = write_mutants(source, dropped)
            done = subprocess.run(
                ["ninja", "-C", tree, "-j", str(JOBS), "-k", "0", *targets],
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
            )  # fmt: skip
            if done.returncode == 0:
                break
            failing = failed_to_compile(done.stdout, source, mutants)
            if not failing:
                print(done.stdout[-4000:])
                sys.exit("the build failed, and not for a mutant")
            dropped |= failing
            print(f"{len(failing)} mutants that do not compile are dropped", flush=True)
    with open(kept, "w", encoding="utf-8") as opened:
        json.dump(sorted(dropped), opened, indent=1)
    return mutants


def limited():
    """In the child: out of the way of others, and no endless growth."""
    os.setsid()
    os.nice(15)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_AS, (6 << 30, 6 << 30))


def run(command, environment, folder, seconds=600):
    """How a test program ended: its exit status, or "time"."""
    child = subprocess.Popen(
        command, cwd=folder, preexec_fn=limited,
        env={**os.environ, "MALLOC_PERTURB_": "165", **environment},  # what is freed is spoilt
        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
    )  # fmt: skip
    try:
        # Second by second, so that no time counts in which all of this is suspended.
        for _ in range(int(seconds)):
            try:
                return child.wait(1)
            except subprocess.TimeoutExpired:
                pass
        return "time"
    finally:
        try:
            os.killpg(child.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        child.wait()


class Tests:
    """The test programs of the build, and which of their tests reach which mutant."""

    def __init__(self, folder, count):
        self.tree = os.path.join(folder, "tree")
        self.scenarios = os.path.join(folder, "src/tests/scenarios")
        self.reaching = collections.defaultdict(lambda: collections.defaultdict(list))
        self.count = count
        self.limits = {}  # seconds

    def program(self, name):
        return os.path.join(self.tree, f"tests/{name}/{name}_tests")

    def scenario(self, file):
        return ["sh", os.path.join(self.scenarios, "run-scenarios.sh"),
                os.path.join(self.tree, "scenario"), *file]  # fmt: skip

    def find_reaching(self):
        """Runs all tests without a mutant."""
        path = os.path.join(self.tree, "reached")
        with open(path, "wb") as opened:
            opened.write(bytes(self.count + 1))
        environment = {"LINKFLAP_MUTANTS_REACHED": path}
        for name in PROGRAMS:
            open(path + ".tests", "w", encoding="utf-8").close()
            begin = time.monotonic()
            status = run([self.program(name), "--gtest_brief=1"], environment, self.tree)
            if status != 0:
                sys.exit(f"{name}_tests without a mutant: {status}")
            self.limits[name] = 5 + 5 * (time.monotonic() - begin)
            with open(path + ".tests", encoding="utf-8") as lines:
                for line in lines:
                    test, *numbers = line.split()
                    for number in numbers:
                        self.reaching[int(number)][name].append(test)
        begin = time.monotonic()
        for file in sorted(os.listdir(self.scenarios)):
            if not re.fullmatch(r"[a-z].*\.txt", file) or file == "CMakeLists.txt":
                continue
            file = os.path.join(self.scenarios, file)
            self.reached(self.scenario([file]), environment, path, "scenarios", file)
        self.limits["scenarios"] = 5 + 5 * (time.monotonic() - begin)
        for name, command in WHOLE.items():
            begin = time.monotonic()
            self.reached(self.whole(command), environment, path, name, name)
            self.limits[name] = 5 + 5 * (time.monotonic() - begin)

    def whole(self, command):
        return [os.path.join(self.tree, command[0]), *command[1:]]

    def reached(self, command, environment, path, name, test):
        """Runs one test without a mutant, and keeps which it reaches."""
        with open(path, "r+b") as opened:
            opened.write(bytes(self.count + 1))
        status = run(command, environment, self.tree)
        if status != 0:
            sys.exit(f"{test} without a mutant: {status}")
        with open(path, "rb") as opened:
            for number, byte in enumerate(opened.read()):
                if byte:
                    self.reaching[number][name].append(test)

    def killer(self, mutant):
        """The test program that notices the mutant, with how; None when none does."""
        reaching = self.reaching.get(mutant.number, {})
        first = mutant.file.split("/")[0]
        environment = {"LINKFLAP_MUTANT": str(mutant.number)}
        for name in sorted(PROGRAMS, key=lambda name: name != first):
            if name not in reaching:
                continue
            # As many as an environment variable can hold; the rest in further runs.
            tests = reaching[name]
            while tests:
                size = 0
                taken = 0
                while taken < len(tests) and size + len(tests[taken]) < 100000:
                    size += len(tests[taken]) + 1
                    taken += 1
                environment["GTEST_FILTER"] = ":".join(tests[:taken])
                tests = tests[taken:]
                status = run([self.program(name), "--gtest_fail_fast", "--gtest_brief=1"],
                             environment, self.tree, self.limits[name])  # fmt: skip
                if status != 0:
                    return f"{name} {status}"
        if "scenarios" in reaching:
            status = run(self.scenario(reaching["scenarios"]), environment, self.tree,
                         self.limits["scenarios"])  # fmt: skip
            if status != 0:
                return f"scenarios {status}"
        environment.pop("GTEST_FILTER", None)
        for name, command in WHOLE.items():
            if name in reaching:
                status = run(self.whole(command), environment, self.tree, self.limits[name])
                if status != 0:
                    return f"{name} {status}"
        return None


def sampled(mutants, size, seed):
    """At least five of each file, the rest in proportion."""

    def rank(mutant):
        return hashlib.sha256(f"{seed} {mutant.key}".encode()).hexdigest()

    by_file = collections.defaultdict(list)
    for mutant in mutants:
        by_file[mutant.file].append(mutant)
    taken = []
    for of_file in by_file.values():
        quota = max(5, round(size * len(of_file) / len(mutants)))
        taken += sorted(of_file, key=rank)[:quota]
    return sorted(taken, key=lambda mutant: mutant.number)


def read_survivors():
    """The keys of the mutants that may survive, each with whether it is equivalent."""
    listed = {}
    entry = {}
    name = None
    for line in read("tests/mutation/survivors.txt").split("\n") + [""]:
        if line.startswith("#"):
            continue
        if not line.strip():
            if entry:
                missing = [n for n in ("file", "text", "becomes", "reason") if not entry.get(n)]
                if missing:
                    sys.exit(f"survivors.txt: an entry without {' and '.join(missing)}: {entry}")
                key = (entry["file"], entry["text"], entry["becomes"], int(entry.get("nth", 1)))
                if entry.get("kind", "equivalent") != "equivalent":
                    sys.exit(f"survivors.txt: no such kind: {entry}")
                listed[key] = "kind" in entry
            entry = {}
        elif line.startswith(" "):
            entry[name] += " " + line.strip()
        else:
            name, _, value = line.partition(":")
            if name not in ("file", "text", "becomes", "nth", "kind", "reason"):
                sys.exit(f"survivors.txt: no such field: {line}")
            entry[name] = value.strip()
    return listed


def result_of(mutant, killer):
    return f"{killer}: {mutant.file}:{mutant.line}: {mutant.before} => {mutant.after}"


def killers_before(path, chosen):
    """By the number of each mutant that the last run of these killed: how."""
    if not os.path.exists(path):
        return {}
    with open(path, encoding="utf-8") as lines:
        results = [line.rstrip("\n") for line in lines]
    # Both are in the order of the sample, so those that read alike are not mistaken for each other.
    found = {}
    for mutant, result in zip(chosen, results):
        killer = result.split(": ", 1)[0]
        if killer != "None" and result == result_of(mutant, killer):
            found[mutant.number] = killer
    return found


def say(mutant, verdict):
    nth = f"\n    nth: {mutant.nth}" if mutant.nth > 1 else ""
    print(f"{mutant.file}:{mutant.line}: {verdict}\n    text: {mutant.before}\n"
          f"    becomes: {mutant.after}{nth}", flush=True)  # fmt: skip


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--sample", type=int, default=400)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--only", default="")
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--without-tests", action="store_true")
    parser.add_argument("build", nargs="?", default=os.path.join(ROOT, "build/mutation"))
    options = parser.parse_args()
    folder = os.path.abspath(options.build)
    os.nice(10)

    begin = time.monotonic()
    mutants = build(folder)
    tests = Tests(folder, len(mutants))
    if not options.without_tests:
        tests.find_reaching()
    built = time.monotonic() - begin
    chosen = mutants if options.all else sampled(mutants, options.sample, options.seed)
    chosen = [m for m in chosen if options.only in m.file or options.only in m.before]
    print(f"{len(mutants)} mutants built in {built:.0f} s, {len(chosen)} of them to be run", flush=True)

    listed = read_survivors()
    keys = {mutant.key for mutant in mutants}
    failed = False
    for key in listed:
        if key not in keys:
            failed = True
            print(f"survivors.txt: no such mutant: {key}")
    killed = equivalent = explained = 0
    results = os.path.join(folder, "results.txt")
    before = killers_before(results, chosen) if options.again else {}

    def killer_of(mutant):
        return before.get(mutant.number) or tests.killer(mutant)

    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool, open(results, "w", encoding="utf-8") as log:
        for mutant, killer in zip(chosen, pool.map(killer_of, chosen)):
            print(result_of(mutant, killer), file=log, flush=True)
            if killer is not None:
                killed += 1
                if mutant.key in listed:
                    failed = True
                    say(mutant, f"explained in survivors.txt, and yet KILLED by {killer}")
            elif listed.get(mutant.key):
                equivalent += 1
            elif mutant.key in listed:
                explained += 1
            else:
                failed = True
                reached = mutant.number in tests.reaching
                say(mutant, "SURVIVED" if reached else "SURVIVED: reached by no test")
    if before:
        print(f"{len(before)} were killed by the last run and have not been run again")
    noticeable = len(chosen) - equivalent
    rate = 100 * killed / max(1, noticeable)
    failed = failed or rate < REQUIRED
    print(
        f"{len(chosen)} mutants, {killed} killed ({100 * killed / max(1, len(chosen)):.1f} %), "
        f"{equivalent} equivalent, {explained} other survivors explained, "
        f"{noticeable - killed - explained} not ({time.monotonic() - begin:.0f} s)\n"
        f"{killed} of {noticeable} that are not equivalent killed ({rate:.1f} %): "
        f"{'FAILED' if failed else 'ok'}"
    )
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
