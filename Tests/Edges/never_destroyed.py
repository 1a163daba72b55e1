#!/usr/bin/env python3
"""Nothing of the library is destroyed when the process ends.

Workers run until then, and whoever lets a process end while documents are parsed must not crash: what tasks
reach lives as long as the process does. An object with a destructor of its own would be known by the call
that hands this to the runtime.

Usage: never_destroyed.py NM OBJECT...
"""

import pathlib
import subprocess
import sys

# Source files that have such objects, and why these do no harm.
ALLOWED = {
    "DispatchTimer.cpp": "Asio's key for what belongs to a thread, which its threads hold on to",
}


def main():
    nm, *objects = sys.argv[1:]
    undefined = subprocess.run([nm, "--undefined-only", "--print-file-name", *objects], check=True,
                               capture_output=True, text=True).stdout
    seen = {pathlib.Path(line.rsplit(":", 1)[0]).name.removesuffix(".o")
            for line in undefined.splitlines() if line.endswith(" __cxa_atexit")}
    problems = [f"{file} has an object that is destroyed when the process ends" for file in sorted(seen) if
                file not in ALLOWED]
    problems += [f"{file} has no such object any more; take it from the list" for file in ALLOWED if
                 file not in seen]
    for problem in problems:
        print(problem)
    print(f"{len(objects)} object files, {len(problems)} problems")
    return 1 if problems or not objects else 0


sys.exit(main())
