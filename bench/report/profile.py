"""usage: bench/profile SUBJECT [LINES], after a build by bench/run

Where the instructions of one operation of a subject (CASE/ROW/SIDE, as linkflap_bench --list tells)
go: by function, what is inlined into it included, and within each by the file it was inlined from."""

import os
import re
import subprocess
import sys
import tempfile

import measure

ENTRY = re.compile(r"^\s*([\d,]+)\s+(\S+?):(.*?)(?: \[[^\]]*\])?$")


def short(name):
    """Without the arguments of functions and templates."""
    while True:
        cut = re.sub(r"<[^<>]*>", "", name)
        if cut == name:
            break
        name = cut
    return re.sub(r"\(.*?\)(?= const$|$|\+)", "()", name.replace("(anonymous namespace)", "_"))


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        ran = subprocess.run(["valgrind", "--tool=callgrind", "--instr-atstart=no",
                              f"--callgrind-out-file={folder}/out", measure.BENCH, "--count",
                              sys.argv[1]], capture_output=True, text=True)
        if ran.returncode != 0:
            sys.exit(f"no counts of {sys.argv[1]}: is it a subject, and was it built?")
        operations = int(ran.stdout.split()[-1])
        listed = subprocess.run(["callgrind_annotate", "--auto=no", "--show-percs=no",
                                 "--threshold=100", f"{folder}/out.1"], check=True,
                                capture_output=True, text=True).stdout
    functions = {}
    for line in listed.splitlines():
        if found := ENTRY.match(line):
            cost = int(found.group(1).replace(",", "")) / operations
            source = os.path.basename(found.group(2))
            files = functions.setdefault(short(found.group(3)), {})
            files[source] = files.get(source, 0) + cost
    total = sum(sum(files.values()) for files in functions.values())
    print(f"{total:9.1f}  instructions of one operation of {sys.argv[1]}")
    ranked = sorted(functions.items(), key=lambda entry: -sum(entry[1].values()))
    for name, files in ranked[:int(sys.argv[2]) if len(sys.argv) == 3 else 25]:
        parts = ", ".join(f"{source} {cost:.1f}" for source, cost in
                          sorted(files.items(), key=lambda part: -part[1]))
        print(f"{sum(files.values()):9.1f}  {name}  ({parts})")


if __name__ == "__main__":
    main()
