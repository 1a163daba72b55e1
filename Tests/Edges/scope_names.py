#!/usr/bin/env python3
"""The page of scope names lists what the packages use, and beside each name the languages that use it.

Usage: scope_names.py SOURCE_FOLDER
"""

import re
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

# Languages that are read as another one with more to it: they are told only where that one is not.
BASES = {"C++": "C", "TypeScript": "JavaScript"}


def names_of_languages(source):
    """Each language's names of scopes and captures, by what the package folder is called."""
    names = {}
    for path in sorted(source.glob("Packages/*/Syntaxes/*.xml")):
        language = path.parents[1].name.replace("CPP", "C++")
        for element in ElementTree.parse(path).iter():
            if element.tag in ("scope", "capture") and element.get("name"):
                names.setdefault(language, set()).add(element.get("name"))
    return names


def names_of_row(cell):
    """`a.b`, `.c` stands for a.b and a.c; `a.…`, here "a.", for all that begin so and have more words."""
    names = []
    for name in re.findall(r"`([^`]+)`", cell):
        if name.startswith("."):
            name = names[0].rsplit(".", 1)[0] + name
        names.append(name.removesuffix("…"))
    return names


def told_languages(cell, families):
    if cell == "all":
        return families
    languages = set(re.split(r", | and ", cell.removeprefix("all but ")))
    return families - languages if cell.startswith("all but ") else languages


def problems_of(source):
    languages = names_of_languages(source)
    families = set(languages) - set(BASES)
    page = source / "Documentation/ScopeNames.md"
    rows = {}
    owners = {}
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        cells = [cell.strip() for cell in line.split("|")]
        if len(cells) == 5 and cells[1] not in ("name", "---"):
            rows[number] = told_languages(cells[3], families)
            for name in names_of_row(cells[1]):
                if owners.setdefault(name, number) != number:
                    yield f"line {number}: {name} stands in line {owners[name]} too"
    users = {}
    used_names = set()
    for language, names in languages.items():
        for name in sorted(names):
            words = name.split(".")
            beginnings = [name]
            for count in range(len(words) - 1, 0, -1):
                beginning = ".".join(words[:count])
                beginnings += [beginning + ".", beginning]
            listed = next((beginning for beginning in beginnings if beginning in owners), None)
            if listed is None:
                yield f"{name}, which {language} uses, is not listed"
            else:
                used_names.add(listed)
                users.setdefault(owners[listed], set()).add(language)
    for name in sorted(set(owners) - used_names):
        yield f"line {owners[name]}: no language uses {name}"
    for number, told in rows.items():
        used = users.get(number, set())
        used = {language for language in used if BASES.get(language) not in used}
        if used != told:
            yield f"line {number}: used by {', '.join(sorted(used))}"


def main():
    problems = list(problems_of(Path(sys.argv[1])))
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
