#!/usr/bin/env python3
"""The example that types along tells what a host sees of a document, and the guide quotes its code.

Usage: type_along.py PROGRAM SOURCE_FOLDER
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

program, source = sys.argv[1], Path(sys.argv[2])

guide = (source / "Documentation/Embedding.md").read_text(encoding="utf-8")
example = (source / "Examples/TypeAlong/main.cpp").read_text(encoding="utf-8")
quoted = re.findall(r"```cpp\n(.*?)```", guide, re.DOTALL)
if not quoted:
    sys.exit("The guide quotes nothing")
for block in quoted:
    if block not in example:
        sys.exit(f"The guide's code does not stand in Examples/TypeAlong/main.cpp:\n{block}")

if len(example.splitlines()) > 150:
    sys.exit("The example has grown beyond 150 lines")


def run(folder, text, recording):
    (folder / "typed.js").write_text(text, encoding="utf-8")
    (folder / "recording").write_text(recording, encoding="utf-8")
    return subprocess.run(
        [program, source / "Packages", folder / "typed.js", folder / "recording"],
        capture_output=True, text=True)


with tempfile.TemporaryDirectory() as name:
    folder = Path(name)
    # "let" becomes a comment, the line below it a number: nine letters and six in, three out, one in.
    result = run(folder, "let\n\n\n", "at 0\ntype // note: \npause\nat 13\ntype  \\t42;x\npause\ndelete 3\ntype 7\n")
    print(result.stdout, result.stderr)
    if result.returncode != 0:
        sys.exit(f"exit code {result.returncode}")
    lines = result.stdout.splitlines()
    if not re.fullmatch(r"19 keystrokes on the main thread: median \d+\.\d\d us, 99th percentile \d+\.\d\d us", lines[0]):
        sys.exit("The keystrokes are others")
    for line, what in ((lines[1], "the parse caught up"), (lines[2], "colours came")):
        told = re.fullmatch(what + r" (\d+) times:((?: \d+\+\d+)*)", line)
        if not told or int(told[1]) < 3:
            sys.exit(f"It does not tell how often {what}")
        for location, length in re.findall(r"(\d+)\+(\d+)", told[2]):
            if int(location) + int(length) > 21:
                sys.exit("A range leaves the text")
    if lines[3] != "line 2 of 4:":
        sys.exit("The caret is in another line")
    if not any('"47"' in line and "coloured" in line for line in lines[4:]):
        sys.exit("The number has no colour")

    if run(folder, "", "").returncode != 0:
        sys.exit("An empty recording is no error")
    (folder / "recording").unlink()
    missing = subprocess.run([program, source / "Packages", folder / "typed.js", folder / "recording"],
                             capture_output=True, text=True)
    if missing.returncode != 1 or not missing.stderr:
        sys.exit("A recording that is not there is no error")
