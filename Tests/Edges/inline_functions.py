#!/usr/bin/env python3
"""What public headers define in place, hosts can link: it calls nothing that the library keeps to itself.

A program that includes them all is made of every such function, called or not.

Usage: inline_functions.py COMPILER LIBRARY WORK_FOLDER INCLUDE_FOLDER... -- PUBLIC_HEADER...
"""

import re
import subprocess
import sys
from pathlib import Path

# What such functions may miss, and why no host gets there.
ALLOWED = {
    "quorvane::QVPositionChunk::absolute": "where a new match starts; only the library derives from matches",
    "quorvane::QVSubmatchStore::clear()": "only the library has stores of children",
    "quorvane::QVMatchPool::addSlab()": "only the library takes pieces of a pool",
    "quorvane::QVMatchPool::allocateWithCare(unsigned long)": "only the library takes pieces of a pool",
}


def main():
    compiler, library, work, *rest = sys.argv[1:]
    includes, headers = rest[:rest.index("--")], rest[rest.index("--") + 1:]
    folder = Path(work)
    folder.mkdir(parents=True, exist_ok=True)
    source = folder / "main.cpp"
    source.write_text("".join(f"#include <{header}>\n" for header in headers) + "int main() {}\n",
                      encoding="utf-8")
    result = subprocess.run(
        [compiler, "-std=c++20", "-O0", "-fkeep-inline-functions", *(f"-I{folder}" for folder in includes), source,
         library, "-o", folder / "program"], capture_output=True, text=True)
    missing = set(re.findall(r"undefined reference to [`'](.*)'", result.stderr))
    if result.returncode != 0 and not missing:
        print(result.stderr)
        return 1
    problems = [f"hosts can't link what calls {name}" for name in sorted(missing - ALLOWED.keys())]
    problems += [f"nothing calls {name} any more; take it from the list" for name in ALLOWED.keys() - missing]
    for problem in problems:
        print(problem)
    print(f"{len(headers)} headers, {len(problems)} problems")
    return 1 if problems or not headers else 0


sys.exit(main())
