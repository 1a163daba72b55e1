#!/usr/bin/env python3
"""A project outside of the tree builds against the installed package and runs, with CMake and with pkg-config.

Usage: installed_package.py BUILD_FOLDER CONSUMER_FOLDER SYNTAX_FILE WORK_FOLDER COMPILER VERSION PUBLIC_HEADER...
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Werror"]


def run(*command, **options):
    print("+", *command, flush=True)
    return subprocess.run([str(part) for part in command], check=True, text=True, **options)


def expect(condition, message):
    if not condition:
        sys.exit(message)


def check_output(program, version, environment=None):
    output = run(program, stdout=subprocess.PIPE, env=environment).stdout
    print(output, end="")
    expect(output == f"Quorvane {version}: 3 tasks ran in order, <{version}> read back\n", "unexpected output")


def main():
    build, consumer, syntax, work, compiler, version, *headers = sys.argv[1:]
    work = Path(work)
    shutil.rmtree(work, ignore_errors=True)
    first = work / "first"
    run("cmake", "--install", build, "--prefix", first, stdout=subprocess.DEVNULL)
    # An installed tree may be moved: nothing in it may name the place where it was made.
    prefix = work / "installed"
    first.rename(prefix)

    include = prefix / "include" / "quorvane"
    installed = {path.relative_to(include).as_posix() for path in include.rglob("*.h")}
    # The helpers for hosts come with headers of their own, which are no part of the library.
    of_host = {header for header in installed if header.startswith("Host/")}
    expect(of_host, "the helpers for hosts are not installed")
    installed -= of_host
    umbrella = (include / "Quorvane/Quorvane.h").read_text(encoding="utf-8")
    expect(installed == set(headers) | {"Quorvane/Quorvane.h"},
           f"other headers are installed: {sorted(installed ^ set(headers))}")
    for header in headers:
        expect(f'#include "{header}"' in umbrella, f"the umbrella leaves out {header}")

    library = next(prefix.rglob("libquorvane.so"))
    dynamic = run("readelf", "-dW", library, stdout=subprocess.PIPE).stdout
    soname = "libquorvane.so." + ".".join(version.split(".")[:2])
    expect(f"[{soname}]" in dynamic, f"the soname is not {soname}")
    expect((library.parent / soname).exists(), f"there is no {soname}")

    # A compiler cache has no part in this.
    run("cmake", "-S", consumer, "-B", work / "cmake", f"-DCMAKE_PREFIX_PATH={prefix}",
        f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_CXX_FLAGS={' '.join(WARNINGS)}",
        stdout=subprocess.DEVNULL)
    run("cmake", "--build", work / "cmake", stdout=subprocess.DEVNULL)
    check_output(work / "cmake" / "consumer", version)
    tree = run(work / "cmake" / "tree", syntax, stdout=subprocess.PIPE).stdout
    expect(" settings.root " in tree.splitlines()[0], f"the tree of an empty text is {tree}")

    environment = os.environ | {"PKG_CONFIG_PATH": str(library.parent / "pkgconfig")}
    expect(run("pkg-config", "--modversion", "quorvane", env=environment,
               stdout=subprocess.PIPE).stdout.strip() == version, "pkg-config tells another version")
    flags = run("pkg-config", "--cflags", "--libs", "quorvane", env=environment,
                stdout=subprocess.PIPE).stdout.split()
    program = work / "with-pkg-config"
    run(compiler, "-std=c++20", *WARNINGS, Path(consumer) / "main.cpp", *flags, "-o", program)
    check_output(program, version, os.environ | {"LD_LIBRARY_PATH": str(library.parent)})


main()
