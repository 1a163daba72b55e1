"""What quorvane-highlight tells of languages, themes and places: --list, --explain, --trace and the progress.

Usage: inspection_tests.py PROGRAM
"""

import os
import pty
import re
import subprocess
import unittest

from fixture import PROGRAM, SOURCE, THEME, HighlightCase

# A language that embeds the tiny one, with a scope of each kind that a place can be told of.
OUTER = """<syntax name="outer">
    <meta><name>Outer</name></meta>
    <detectors><extension priority="1.0">outer</extension></detectors>
    <collections>
        <collection name="words">
            <scope name="word">
                <strings><string>one</string><string>other</string></strings>
            </scope>
        </collection>
    </collections>
    <scopes>
        <include collection="words"/>
        <scope name="embedded">
            <starts-with><expression>&lt;&lt;(\\w*)</expression></starts-with>
            <ends-with><template>\\1&gt;&gt;</template></ends-with>
            <subsyntax name="tiny"/>
        </scope>
        <scope name="quiet" reset-styles="true">
            <starts-with><expression>\\[</expression></starts-with>
            <ends-with><expression>\\]</expression></ends-with>
            <subscopes>
                <scope name="number">
                    <expression>
                        # digits
                        [0-9]+
                          [a-z]?
                    </expression>
                </scope>
            </subscopes>
        </scope>
    </scopes>
</syntax>
"""

CASCADE = """string {
    color: #ff0000; font-weight: bold;
}
string.escape { color: none; background: #00ff00; border-color: red; widht: 3; text-decoration-color: mud; }
comment { font-weight: normal; color: #0000ff; }
embedded, quiet { color: #123456; }
"""


class ListTests(HighlightCase):
    def test_languages_and_themes_are_listed_with_their_files(self):
        outer = self.write("outer.xml", OUTER)
        hidden = self.write("Packages/Tiny/Syntaxes/hidden.xml", '<syntax name="hidden" subsyntax="true"/>')
        plain = self.write("Packages/Tiny/Themes/Plain.css", "string { color: red; }")
        night = self.write("Packages/Tiny/Themes/Night.css",
                           'meta { -theme-display-name: "Deep Night"; -theme-interface-style: dark; }')
        result = self.succeed("--syntax-file", outer, "--list")
        bundled = SOURCE / "Packages/Themes/Themes"
        self.assertEqual(
            [line.split("  ") for line in re.sub("(?<=[^ ])   *", "  ", result.stdout.decode()).splitlines()],
            [
                ["syntaxes:"],
                ["", "hidden", "hidden (embedded only)", str(hidden)],
                ["", "outer", "Outer", str(outer)],
                ["", "tiny", "tiny", str(self.tiny)],
                ["themes:"],
                ["", "Daylight", "Daylight (light)", str(bundled / "Daylight.css")],
                ["", "Dusk", "Dusk (dark)", str(bundled / "Dusk.css")],
                ["", "Night", "Deep Night (dark)", str(night)],
                ["", "Plain", "Plain (light)", str(plain)],
            ],
        )
        self.assertEqual(result.stderr, b"")

    def test_the_columns_of_the_list_stand_below_each_other(self):
        self.write("Packages/Tiny/Syntaxes/long.xml", '<syntax name="longer"/>')
        lines = self.succeed("--list").stdout.decode().splitlines()[1:3]
        self.assertEqual(len({line.index(str(self.folder)) for line in lines}), 1, lines)

    def test_the_list_can_come_before_files(self):
        output = self.succeed("--list", "--syntax=tiny", "-", text=b"text").stdout
        self.assertTrue(output.startswith(b"syntaxes:\n") and output.endswith(b"text"), output)

    def test_a_syntax_file_takes_the_place_of_a_package_of_its_name(self):
        newer = self.write("newer.xml", self.tiny.read_text())
        output = self.succeed("--list", "--syntax-file", newer).stdout.decode()
        self.assertIn(str(newer), output)
        self.assertNotIn(str(self.tiny), output)


class ExplainTests(HighlightCase):
    def explain(self, place, text, *arguments, theme=THEME, syntax="tiny"):
        colours = self.write("colours.css", theme)
        result = self.succeed("--syntax", syntax, "--theme", colours, "--explain", place, *arguments, "-",
                              text=text)
        self.assertEqual(result.stderr, b"")
        return result.stdout.decode().replace(str(colours), "colours.css").replace(str(self.tiny), "tiny.xml")

    def test_scopes_patterns_styles_and_the_look_are_told_with_their_places(self):
        self.assertEqual(
            self.explain("1:6", b'x "y\\n" // z\n'),
            "standard input:1:6: tiny\n"
            "scopes, from the outside in:\n"
            "  tiny.root\n"
            "  string  1:3 to 1:8  tiny.xml:8\n"
            '    begins with (")\n'
            "                at 1:3 to 1:4\n"
            '    ends with (")\n'
            "              at 1:7 to 1:8\n"
            "  string.escape  1:5 to 1:7  tiny.xml:18\n"
            "    matches \\\\(.)\n"
            "    group 1: string.escaped  1:6 to 1:7\n"
            "styles, the last one that speaks wins:\n"
            "  string on string  colours.css:4\n"
            "    color: #ff0000  loses to string on string.escaped, colours.css:4\n"
            "    font-weight: bold  loses to string on string.escaped, colours.css:4\n"
            "  string on string.escape  colours.css:4\n"
            "    color: #ff0000  loses to string on string.escaped, colours.css:4\n"
            "    font-weight: bold  loses to string on string.escaped, colours.css:4\n"
            "  string on string.escaped  colours.css:4\n"
            "    color: #ff0000  wins\n"
            "    font-weight: bold  wins\n"
            "look:\n"
            "  color=#ff0000 bold\n",
        )

    def test_each_property_tells_what_becomes_of_it(self):
        output = self.explain("1:2", b'"\\n" // z', theme=CASCADE)
        styles = output[output.index("styles"):output.index("look")].splitlines()[1:]
        self.assertEqual(
            styles,
            [
                "  string on string  colours.css:1",
                "    color: #ff0000  wins",
                "    font-weight: bold  loses to string on string.escape, colours.css:1",
                "  string on string.escape  colours.css:1",
                "    color: #ff0000  loses to string.escape on string.escape, colours.css:4",
                "    font-weight: bold  wins",
                "  string.escape on string.escape  colours.css:4",
                "    background: #00ff00  wins",
                "    border-color: red  isn't about text",
                "    color: none  takes back what weaker styles say here",
                "    text-decoration-color: mud  is no property, or its value can't be read",
                "    widht: 3  is no property, or its value can't be read",
            ],
        )
        self.assertTrue(output.endswith("look:\n  color=#ff0000 background=#00ff00 bold\n"), output)
        self.assertIn("    font-weight: normal  changes nothing\n", self.explain("1:6", b'"\\n" // z', theme=CASCADE))

    def test_embedded_text_starts_afresh_and_so_does_what_resets(self):
        outer = self.write("outer.xml", OUTER)
        text = b"<<a // b\na>> one [7z]"
        comment = self.explain("1:5", text, "--syntax-file", outer, theme=CASCADE, syntax="outer")
        self.assertTrue(comment.startswith("standard input:1:5: tiny\n"), comment)
        self.assertIn(
            "  embedded  1:1 to 2:4  " + f"{outer}:13\n"
            "    begins with <<(\\w*)\n"
            "                at 1:1 to 1:4\n"
            "    ends with the groups of its beginning in \\1>>\n"
            "                                             at 2:1 to 2:4\n"
            "  comment  1:5 to 1:9  tiny.xml:24\n",
            comment,
        )
        self.assertIn(
            "  embedded on embedded  colours.css:6\n"
            "    color: #123456  loses to comment on comment, colours.css:5\n"
            "  tiny starts from plain text, for it is embedded\n"
            "  comment on comment  colours.css:5\n"
            "    color: #0000ff  wins\n"
            "    font-weight: normal  changes nothing\n",
            comment,
        )
        blank = self.explain("1:4", text, "--syntax-file", outer, theme=CASCADE, syntax="outer")
        self.assertIn("    color: #123456  is forgotten further in\n", blank)
        self.assertTrue(blank.endswith("look:\n  plain text\n"), blank)
        number = self.explain("2:11", text, "--syntax-file", outer, theme=CASCADE, syntax="outer")
        self.assertIn("  quiet forgets what is around it\n  quiet on quiet  colours.css:6\n", number)

    def test_scopes_of_collections_have_places_and_patterns_keep_their_lines(self):
        outer = self.write("outer.xml", OUTER)
        text = b"one [7z]"
        word = self.explain("1:1", text, "--syntax-file", outer, syntax="outer")
        self.assertIn(f"  word  1:1 to 1:4  {outer}:6\n    matches \\b(", word)
        number = self.explain("1:6", text, "--syntax-file", outer, syntax="outer")
        self.assertIn(
            f"  number  1:6 to 1:8  {outer}:22\n"
            "    matches # digits\n"
            "            [0-9]+\n"
            "              [a-z]?\n",
            number,
        )

    def test_long_patterns_are_cut(self):
        words = "".join(f"<string>w{number:04}x</string>" for number in range(1000))
        long = self.write(
            "long.xml", f'<syntax name="long"><scopes><scope name="word"><strings>{words}</strings></scope>'
            "</scopes></syntax>"
        )
        output = self.explain("1:1", b"w0001x", "--syntax-file", long, syntax="long")
        (pattern,) = re.findall("    matches (.*)\n", output)
        self.assertEqual((len(pattern), pattern[-1]), (2001, "…"))

    def test_text_that_nothing_matches_is_plain(self):
        self.assertEqual(
            self.explain("2:1", b"// a\r\nb"),
            "standard input:2:1: tiny\n"
            "scopes, from the outside in:\n"
            "  tiny.root\n"
            "  tiny.unknown  2:1 to 2:2\n"
            "    no pattern matched\n"
            "styles, the last one that speaks wins:\n"
            "  none: this is plain text\n"
            "look:\n"
            "  plain text\n",
        )

    def test_columns_count_units_and_line_endings_belong_to_their_lines(self):
        self.assertIn("  comment  1:3 to 1:5", self.explain("1:3", "\U0001f600// ".encode()[:6]))
        self.assertIn("  tiny.newline  1:2 to 2:1", self.explain("1:3", b"a\r\nb"))

    def test_a_place_that_the_text_has_not_is_told(self):
        for place, text, reason in (
            ("3:1", b"a\nb", "the text has 2 lines"),
            ("1:3", b"a\nb", "the line has 2 columns"),
            ("2:2", b"a\nb", "the line has 1 column"),
            ("1:1", b"", "the line has 0 columns"),
            ("2:1", b"a", "the text has 1 line"),
        ):
            with self.subTest(place=place, text=text):
                result = self.run_tiny("--syntax=tiny", "--explain", place, "-", text=text)
                self.assert_fails(result, 2)
                self.assertEqual(
                    result.stderr.decode(),
                    f"quorvane-highlight: standard input: there is no character at {place}: {reason}\n",
                )

    def test_what_is_no_place_is_told(self):
        for word in ("", "3", "3:", ":3", "0:1", "1:0", "1:2:3", "a:b", "-1:1", "1: 1",
                     "99999999999999999999:1"):
            with self.subTest(word=word):
                result = self.run_program(f"--explain={word}", "-")
                self.assert_fails(result, 2)
                self.assertEqual(
                    result.stderr.decode(),
                    f"quorvane-highlight: --explain takes LINE:COLUMN, both from 1, not: {word} (try --help)\n",
                )

    def test_every_look_of_real_files_is_that_of_the_winning_colour(self):
        """Colours that win are those that the runs have, in files with embedded languages and captures."""
        for name in ("html/sample/text.html", "markdown/sample/text.md"):
            file = SOURCE / "Tests/Corpus" / name
            text = file.read_bytes().decode()
            lines = text.splitlines(keepends=True)
            for line in range(1, len(lines) + 1, 5):
                column = len(lines[line - 1]) // 2 + 1
                result = self.run_program("--theme=Dusk", f"--explain={line}:{column}", file)
                self.assertEqual(result.returncode, 0, result.stderr)
                output = result.stdout.decode()
                winners = re.findall(r"^    color: (\S+)  wins$", output, re.MULTILINE)
                looks = re.findall(r"^  (?:.* )?color=(\S+)", output.split("look:\n")[1])
                self.assertEqual(looks, winners, output)


class TraceTests(HighlightCase):
    def trace(self, *arguments, text):
        result = self.succeed("--syntax=tiny", "--trace", *arguments, "-", text=text)
        head, *rows = result.stderr.decode().splitlines()
        self.assertEqual(head.split(), ["ms", "hits", "misses", "scope"])
        return result.stdout, [row.split() for row in rows]

    def test_scopes_are_traced_with_hits_misses_and_places(self):
        output, rows = self.trace(text=b'// a\n"b"\n')
        self.assertEqual(output, b'// a\n"b"\n')
        for row in rows:
            self.assertRegex(row[0], r"^\d+\.\d{3}$")
        # A try is one for the rest of a line: both scopes on the first line, on the second one, and again behind
        # the string; its escape in the string.
        found = {row[3]: (row[1:3], row[4]) for row in rows}
        self.assertEqual(found["comment"], (["1", "2"], f"{self.tiny}:24"))
        self.assertEqual(found["string"], (["1", "2"], f"{self.tiny}:8"))
        self.assertEqual(found["string.escape"], (["0", "1"], f"{self.tiny}:18"))

    def test_the_slowest_come_first(self):
        times = [float(row[0]) for row in self.trace(text=b'// a "b" c\n' * 200)[1]]
        self.assertEqual(times, sorted(times, reverse=True))

    def test_the_tree_is_the_same_with_a_trace(self):
        text = b'"a" "\\"" // "\n"' * 20
        output = self.trace("--format=tree", text=text)[0]
        self.assertEqual(output.decode(), self.tree(text=text))


class ProgressTests(HighlightCase):
    def standard_error_of(self, *arguments, text):
        """What a terminal on the standard error stream gets, and how long the program ran."""
        ours, theirs = pty.openpty()
        self.addCleanup(os.close, ours)
        file = self.write("text.tiny", text)
        program = subprocess.Popen([PROGRAM, "--packages", str(self.packages), *map(str, arguments), str(file)],
                                   stdout=subprocess.DEVNULL, stderr=theirs, env=self.environment)
        os.close(theirs)
        output = b""
        while True:
            try:
                piece = os.read(ours, 65536)
            except OSError:  # the terminal's other end was closed
                break
            if not piece:
                break
            output += piece
        self.assertEqual(program.wait(timeout=60), 0, output)
        return output

    def test_long_work_shows_a_line_that_is_gone_in_the_end(self):
        # Ever more of it, until it takes a second on this machine.
        turns = 100
        output = b""
        while not output:
            output = self.standard_error_of(f"--repeat={turns}", text='"a" // b\n' * 200)
            turns *= 4
        lines = output.split(b"\r")
        self.assertEqual(lines[0], b"")
        self.assertEqual(lines[-1], b"\x1b[K")
        self.assertGreater(len(lines), 2)
        for line in lines[1:-1]:
            self.assertRegex(line.decode(), r"text\.tiny: (parsing|colouring), [1-9]\d*\.\d s\x1b\[K$")
            self.assertLess(len(line), 80 + len(b"\x1b[K"))
        self.assertNotIn(b"\n", output)

    def test_short_work_shows_nothing(self):
        # Unless the machine is so busy that it took a second after all.
        self.assertTrue(any(self.standard_error_of(text="// a") == b"" for _ in range(5)))

    def test_what_is_no_terminal_gets_none(self):
        file = self.write("text.tiny", '"a" // b\n' * 200)
        turns = 100
        elapsed = 0
        while elapsed < 2000:
            result = self.succeed("--format=tree", "--stats", f"--repeat={turns}", file)
            self.assertTrue(result.stderr.startswith(b"units: "), result.stderr)
            self.assertNotIn(b"\r", result.stderr)
            elapsed = turns * float(re.search(rb"parse-ms: (\S+)", result.stderr).group(1))
            turns *= 4


if __name__ == "__main__":
    unittest.main()
