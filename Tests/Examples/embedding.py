#!/usr/bin/env python3
"""The embedding example prints what the README promises, and the README quotes the file that is built.

Usage: embedding.py PROGRAM SOURCE_FOLDER
"""

import re
import subprocess
import sys
from pathlib import Path

program, source = sys.argv[1], Path(sys.argv[2])
readme = (source / "README.md").read_text(encoding="utf-8")
example = (source / "Examples/Embedding/main.cpp").read_text(encoding="utf-8")

quoted = re.search(r"```cpp\n(.*?)```", readme, re.DOTALL)
if not quoted or quoted.group(1) != example:
    sys.exit("The README's example is not Examples/Embedding/main.cpp")

# The keystroke made 42 of 41.
expected = "identifier.key: answer\nvalue.number: 42\ncomment: # so far\n"
if f"```\n{expected}```" not in readme:
    sys.exit("The README does not show what the example prints")
result = subprocess.run([program], cwd=source, capture_output=True, text=True)
print(result.stdout, result.stderr)
if result.returncode != 0 or result.stdout != expected:
    sys.exit(f"exit code {result.returncode}; expected:\n{expected}")

missing = subprocess.run([program, "no/such/file.xml"], cwd=source, capture_output=True, text=True)
if missing.returncode != 1 or not missing.stderr:
    sys.exit("A file that is not there is no error")
