#!/usr/bin/env python3
"""Loading the library runs nothing: no static object has a constructor that does something.

A host pays for what it uses, and the order in which libraries are loaded can't matter.

Usage: static_initialisers.py NM READELF LIBRARY
"""

import re
import subprocess
import sys

# Source files that have initialisers, and why these do no harm.
ALLOWED = {
    "DispatchTimer.cpp": "Asio's service numbers: empty objects, whose addresses are the numbers",
}
# What the compiler's own start-up code puts there.
OF_THE_COMPILER = {"frame_dummy"}


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def main():
    nm, readelf, library = sys.argv[1:]
    section = re.search(r"\.init_array\s+INIT_ARRAY\s+([0-9a-f]+)\s+[0-9a-f]+\s+([0-9a-f]+)",
                        run(readelf, "-SW", library))
    start, size = (int(text, 16) for text in section.groups())
    names = {}
    for line in run(nm, "--defined-only", library).splitlines():
        address, kind, name = line.split(maxsplit=2)
        if kind in "tT":
            names.setdefault(int(address, 16), name)
    # The entries are addresses that the loader shifts: each has a relocation whose addend is the function.
    entries = []
    for line in run(readelf, "-rW", library).splitlines():
        fields = line.split()
        if fields and re.fullmatch(r"[0-9a-f]{8,16}", fields[0]) and start <= int(fields[0], 16) < start + size:
            entries.append(names.get(int(fields[-1], 16), fields[-1]))
    problems = []
    seen = set()
    for name in entries:
        if name in OF_THE_COMPILER:
            continue
        file = name.removeprefix("_GLOBAL__sub_I_")
        seen.add(file)
        if file not in ALLOWED:
            problems.append(f"{name} runs when the library is loaded")
    problems += [f"{file} has no initialiser any more; take it from the list" for file in ALLOWED if
                 file not in seen]
    for problem in problems:
        print(problem)
    print(f"{len(entries)} of {size // 8} entries known, {len(problems)} problems")
    return 1 if problems or len(entries) != size // 8 else 0


sys.exit(main())
