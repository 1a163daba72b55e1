#!/usr/bin/env python3
"""Includes go one way: from examples to hosts' helpers, the engine, the platform and the libraries.

Usage: include_directions.py SOURCE_FOLDER [PUBLIC_HEADER...]
"""

import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)

# What a folder may include beside itself.
BELOW = {
    "Examples": {"Host", "Quorvane", "Platform"},
    "Host": {"Quorvane", "Platform"},
    "Quorvane": {"Platform"},
    "Platform": set(),
}

# The layers of headers inside the engine, from the bottom; the first line that fits a header counts. Sources
# may reach sideways and up.
LAYERS = [
    (r"Quorvane(Errors|Version)", 0),
    (r"Categories/", 0),
    (r"Text/QV(MutableRLEArray|RLEArray|RunSequence|LineRun|\w*Selection|\w*RangeArray|\w*Index)", 0),
    (r"Packages/QVLoadable|Packages/QVPackageLock", 1),
    (r"XML/|RegularExpressions/", 1),
    (r"Selectors/QV(SimpleSelector|Selectable|ClassText)", 1),
    (r"Styles/QV(Theme|MutableTheme)", 9),
    (r"Styles/", 2),
    (r"Scopes/", 3),
    (r"Matches/", 4),
    (r"Selectors/", 5),
    (r"Formatters/|Detectors/|EditorConfig/", 6),
    (r"Completions/QVCompletion(Operation|Controller)", 12),
    (r"Completions/", 6),
    (r"Symbols/QVSymbol(Documentation)?Behavior", 6),
    (r"Syntaxes/", 7),
    (r"Parsers/|Symbols/", 8),
    (r"Packages/", 9),
    (r"Text/\w*(Layout|LineFragment|Typesetter|Component)", 11),
    (r"Text/", 10),
]

# Libraries whose value types are part of the engine's own; all others stay behind the platform's sources.
HOUSEHOLD = re.compile(r"boost/(smart_ptr/intrusive_(ptr|ref_counter)|container/|unordered/)|sanitizer/")
MAY_USE_LIBRARIES = re.compile(r"Platform/.*\.cpp$|Quorvane/RegularExpressions/.*\.cpp$|"
                               r"Quorvane/RegularExpressions/PCRE2\.h$|Quorvane/EditorConfig/.*\.cpp$|"
                               r"Host/.*\.cpp$")

# A string's formats take whatever converts to an argument, and an argument holds strings: no forward
# declaration can cut this one.
KNOWN_CIRCLES = {("Platform/Foundation/NSString.h", "Platform/Foundation/QVFormatArgument.h")}

problems = []


def layer_of(header):
    inside = header.removeprefix("Quorvane/")
    for pattern, layer in LAYERS:
        if re.match(pattern, inside):
            return layer
    problems.append(f"{header}: its folder has no layer yet; give it one in {Path(__file__).name}")
    return 0


def find_circle(graph):
    """A path of headers that include one another in a circle, or nothing."""
    done, path = set(), []

    def visit(header):
        if header in path:
            return path[path.index(header):] + [header]
        if header in done:
            return None
        path.append(header)
        for included in graph.get(header, ()):
            if circle := visit(included):
                return circle
        path.pop()
        done.add(header)
        return None

    for header in sorted(graph):
        if circle := visit(header):
            return circle
    return None


def main():
    source = Path(sys.argv[1])
    public = set(sys.argv[2:])
    roots = {"Examples": source / "Examples"} | {name: source / "Sources" / name
                                                 for name in ("Host", "Quorvane", "Platform")}
    graph = {}
    count = 0
    for folder, root in roots.items():
        for file in sorted(root.rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            count += 1
            name = f"{folder}/{file.relative_to(root).as_posix()}"
            for kind, included in INCLUDE.findall(file.read_text(encoding="utf-8")):
                top = included.split("/")[0]
                if kind == '"':
                    if folder != "Examples" and "/" not in included:
                        problems.append(f'{name}: "{included}" is not named from the root of the sources')
                        continue
                    if top in BELOW and top != folder and top not in BELOW[folder]:
                        problems.append(f"{name}: {folder} must not include {included}")
                    if top == "Tests":
                        problems.append(f"{name}: includes the test header {included}")
                    if file.suffix == ".h":
                        if (name, included) in KNOWN_CIRCLES:
                            continue
                        graph.setdefault(name, set()).add(included)
                        if name in public and included not in public:
                            problems.append(f"{name} is public and includes {included}, which is private")
                        if folder == top == "Quorvane" and layer_of(included) > layer_of(name):
                            problems.append(f"{name}: the header includes {included}, of a layer above its own")
                else:
                    of_library = "/" in included or included.endswith(".h")
                    if of_library and folder in ("Quorvane", "Platform", "Host"):
                        if HOUSEHOLD.match(included):
                            continue
                        if name in public:
                            problems.append(f"{name}: the public header needs <{included}>")
                        elif not MAY_USE_LIBRARIES.match(name):
                            problems.append(f"{name}: <{included}> belongs into a source of Platform")
    if circle := find_circle(graph):
        problems.append("headers include one another: " + " -> ".join(circle))
    for problem in dict.fromkeys(problems):
        print(problem)
    print(f"{count} files, {len(set(problems))} problems")
    # A run that finds no files has looked in the wrong place.
    return 1 if problems or count == 0 else 0


sys.exit(main())
