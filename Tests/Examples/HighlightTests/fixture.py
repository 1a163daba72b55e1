"""What tests of quorvane-highlight share: a small language, a theme, and how the program is run.

Usage of the tests: TESTS PROGRAM
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)
SOURCE = pathlib.Path(__file__).resolve().parents[3]

# A language with a region that has captures at both ends, a leaf with a capture and a plain leaf.
TINY = """<?xml version="1.0" encoding="UTF-8"?>
<syntax name="tiny">
    <detectors>
        <extension priority="1.0">tiny</extension>
        <match-content lines="1" priority="0.9">^#!tiny</match-content>
    </detectors>
    <scopes>
        <scope name="string">
            <starts-with>
                <expression>(")</expression>
                <capture number="1" name="string.start"/>
            </starts-with>
            <ends-with>
                <expression>(")</expression>
                <capture number="1" name="string.end"/>
            </ends-with>
            <subscopes>
                <scope name="string.escape">
                    <expression>\\\\(.)</expression>
                    <capture number="1" name="string.escaped"/>
                </scope>
            </subscopes>
        </scope>
        <scope name="comment"><expression>//.*</expression></scope>
    </scopes>
</syntax>
"""

# Colours whose places in all palettes are known: pure red is 196 of the 256 and nearest to 31 of the sixteen.
THEME = """meta { -theme-interface-style: dark; }
meta.document { background: #101010; }
meta.text { color: #eeeeee; }
string { color: #ff0000; font-weight: bold; }
comment { color: #00ff00; background: #0000ff; text-decoration: underline solid; }
"""


class HighlightCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.tiny = self.write("Packages/Tiny/Syntaxes/tiny.xml", TINY)
        self.write("Packages/Tiny/package.json", '{"identifier": "tiny"}')
        self.cache = self.folder / "cache"
        self.environment = {**os.environ, "XDG_CACHE_HOME": str(self.cache)}
        self.packages = self.folder / "Packages"

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def run_program(self, *arguments, text=b""):
        return subprocess.run([PROGRAM, *map(str, arguments)], input=text, capture_output=True, timeout=60,
                              env=self.environment)

    def run_tiny(self, *arguments, text=b""):
        return self.run_program("--packages", self.packages, *arguments, text=text)

    def succeed(self, *arguments, text=b""):
        result = self.run_tiny(*arguments, text=text)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result

    def tree(self, *arguments, text=b""):
        result = self.succeed("--syntax", "tiny", "--format", "tree", *arguments, "-", text=text)
        self.assertEqual(result.stderr, b"")
        return result.stdout.decode()

    def statistics(self, *arguments, text=b""):
        """The names and values of --stats, in order."""
        result = self.succeed("--syntax", "tiny", "--stats", *arguments, "-", text=text)
        pairs = [line.split(": ") for line in result.stderr.decode().splitlines()]
        self.assertTrue(all(len(pair) == 2 for pair in pairs), pairs)
        return dict(pairs), [pair[0] for pair in pairs]

    def assert_fails(self, result, exit_code, *parts):
        """One line on the standard error stream that begins with the program's name, and no output."""
        error = result.stderr.decode()
        self.assertEqual(result.returncode, exit_code, error)
        self.assertEqual(len(error.splitlines()), 1, error)
        self.assertTrue(error.startswith("quorvane-highlight: ") and error.endswith("\n"), error)
        for part in parts:
            self.assertIn(str(part), error)
        self.assertEqual(result.stdout, b"")
