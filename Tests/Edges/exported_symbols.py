#!/usr/bin/env python3
"""The shared library shows what public headers mark with QV_EXPORT, and nothing else.

Usage: exported_symbols.py NM LIBRARY SOURCE_FOLDER PUBLIC_HEADER...
"""

import re
import subprocess
import sys
from pathlib import Path

PREFIXES = ("vtable for ", "typeinfo name for ", "typeinfo for ", "guard variable for ",
            "non-virtual thunk to ", "virtual thunk to ", "covariant return thunk to ", "VTT for ")
MARKED_CLASS = re.compile(r"\b(?:class|struct)\s+QV_EXPORT\s+(\w+)")
MARKED_OTHER = re.compile(r"\bQV_EXPORT\b([^;{]*)")


def marked_names(headers):
    names = set()
    for header in headers:
        text = re.sub(r"//.*", "", header.read_text(encoding="utf-8"))
        names.update(MARKED_CLASS.findall(text))
        for declaration in MARKED_OTHER.findall(MARKED_CLASS.sub("", text)):
            # The name before the parameters; for constants the last word.
            found = re.search(r"(operator\s*\S+?|\w+)\s*\(", declaration) or re.search(r"(\w+)\s*(?:\[\w*\]\s*)?$",
                                                                                       declaration.split("=")[0])
            if found:
                names.add(re.sub(r"\s", "", found.group(1)))
    return names


def main():
    nm, library, source, *public = sys.argv[1:]
    headers = [path for name in public for path in [Path(source) / "Sources" / name] if path.exists()]
    names = marked_names(headers) | {"QVQuorvaneVersion"}
    output = subprocess.run([nm, "-DC", "--defined-only", library], check=True, capture_output=True,
                            text=True).stdout
    symbols = sorted({line.split(maxsplit=2)[2] for line in output.splitlines()})
    problems = []
    for symbol in symbols:
        name = symbol
        for prefix in PREFIXES:
            name = name.removeprefix(prefix)
        # Instances of templates begin with what they answer.
        found = re.search(r"(?:^|\s)((?:\w+::)*quorvane::.*)$", name)
        if not found or not (name.startswith("quorvane::") or "<" in name):
            problems.append(f"not of the namespace: {symbol}")
            continue
        parts = re.findall(r"operator[^\w\s(]+|operator\b[^(]*|[~\w]+(?=::|\(|<|\[|$)",
                           found.group(1).removeprefix("quorvane::").split("(")[0])
        if not any(re.sub(r"\s", "", part) in names for part in parts):
            problems.append(f"not marked in a public header: {symbol}")
    for problem in problems:
        print(problem)
    print(f"{len(symbols)} symbols, {len(problems)} problems")
    return 1 if problems or not symbols else 0


sys.exit(main())
