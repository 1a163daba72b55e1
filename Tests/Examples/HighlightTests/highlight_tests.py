"""Runs quorvane-highlight as people do: what it prints, what it says when something is wrong, and how it ends.

Usage: highlight_tests.py PROGRAM
"""

import re
import subprocess
import unittest

from fixture import PROGRAM, SOURCE, THEME, TINY, HighlightCase

# Another one, for what has more than one language.
OTHER = """<syntax name="other">
    <detectors><extension priority="1.0">other</extension></detectors>
    <scopes><scope name="keyword"><expression>\\bif\\b</expression></scope></scopes>
</syntax>
"""

ESCAPES = re.compile(rb"\x1b\[[0-9;]*m")


class HighlightTests(HighlightCase):
    # What is printed

    def test_the_tree_is_one_node_a_line_with_captures_around_the_children(self):
        tree = self.tree(text=b'a "x\\q" \t// c\n')
        self.assertEqual(
            tree,
            "Root tiny.root -\n"
            "  Unknown tiny.unknown [0,1]\n"
            "  Whitespace tiny.whitespace [1,1]\n"
            "  StartEnd string [2,1] end[6,1]\n"
            "    @1 string.start [2,1]\n"
            "    Unknown tiny.unknown [3,1]\n"
            "    Match string.escape [4,2]\n"
            "      @1 string.escaped [5,1]\n"
            "    @end 1 string.end [6,1]\n"
            "  Whitespace tiny.whitespace [7,2]\n"
            "  Match comment [9,4]\n"
            "  Newline tiny.newline [13,1]\n",
        )

    def test_a_region_that_is_open_at_the_end_of_the_text_ends_there(self):
        self.assertEqual(
            self.tree(text=b'"x'),
            "Root tiny.root -\n"
            "  StartEnd string [0,1] end[2,0]\n"
            "    @1 string.start [0,1]\n"
            "    Unknown tiny.unknown [1,1]\n",
        )

    def test_an_empty_text_has_a_root_alone(self):
        self.assertEqual(self.tree(text=b""), "Root tiny.root -\n")
        self.assertEqual(self.succeed("--syntax", "tiny", "-").stdout, b"")

    def test_locations_count_units_of_utf16(self):
        self.assertIn("Match comment [3,2]", self.tree(text="\U0001f600 //".encode()))

    def test_plain_searching_gives_the_same_tree(self):
        text = b'"a" "\\"" // "\n"' * 20
        self.assertEqual(self.tree(text=text), self.tree("--plain", text=text))

    def coloured(self, *arguments, text=b'x "y\\n" // z\n'):
        theme = self.write("colours.css", THEME)
        return self.succeed("--syntax", "tiny", "--theme", theme, *arguments, "-", text=text).stdout

    def test_no_colours_go_where_no_terminal_is(self):
        self.assertEqual(self.coloured(), b'x "y\\n" // z\n')
        self.assertEqual(self.coloured("--color=auto"), b'x "y\\n" // z\n')
        self.assertEqual(self.coloured("--color=never"), b'x "y\\n" // z\n')

    def test_colours_are_escapes_around_the_text(self):
        self.assertEqual(
            self.coloured("--color=truecolor"),
            b'x \x1b[1;38;2;255;0;0m"y\\n"\x1b[0m \x1b[4;38;2;0;255;0;48;2;0;0;255m// z\x1b[0m\n',
        )

    def test_fewer_colours_are_the_nearest_ones(self):
        self.assertEqual(
            self.coloured("--color", "256"),
            b'x \x1b[1;38;5;196m"y\\n"\x1b[0m \x1b[4;38;5;46;48;5;21m// z\x1b[0m\n',
        )
        self.assertEqual(
            self.coloured("--color", "16"), b'x \x1b[1;31m"y\\n"\x1b[0m \x1b[4;32;44m// z\x1b[0m\n'
        )

    def test_the_terminal_tells_how_many_colours_it_has_and_asking_wins_over_no_color(self):
        for terminal, colours, code in (
            ("xterm", "", b"\x1b[1;31m"),
            ("xterm-256color", "", b"\x1b[1;38;5;196m"),
            ("xterm", "truecolor", b"\x1b[1;38;2;255;0;0m"),
            ("dumb", "", b"\x1b[1;31m"),
        ):
            with self.subTest(terminal=terminal, colours=colours):
                self.environment.update(TERM=terminal, COLORTERM=colours, NO_COLOR="1")
                self.assertIn(code, self.coloured("--color=always"))

    def test_colours_end_before_a_line_does(self):
        output = self.coloured("--color=16", text=b'"a\nb"')
        self.assertEqual(output, b'\x1b[1;31m"a\x1b[0m\n\x1b[1;31mb"\x1b[0m')

    def test_colours_leave_every_text_as_it_is(self):
        for text in ("", "\n", "a\r\nb\rc", '"\U0001f600é\u2028" //\t', '"""//"""\n//"\n\n', "\0\x7f"):
            with self.subTest(text=text):
                output = self.coloured("--color=256", text=text.encode())
                self.assertEqual(ESCAPES.sub(b"", output).decode(), text)

    def test_attributes_are_listed_run_by_run(self):
        self.assertEqual(
            self.coloured("--format=attributes"),
            b"0 2\n"
            b"2 5 color=#ff0000 bold class=string\n"
            b"7 1\n"
            b"8 4 color=#00ff00 background=#0000ff underline class=comment\n"
            b"12 1\n",
        )

    def test_a_page_holds_the_text_by_lines_and_the_theme(self):
        page = self.coloured("--format=html", text=b'a < "b"\r\n\n// c & d').decode()
        lines = re.findall(r'<span class="line">(.*)\n</span>', page)
        self.assertEqual(lines, ['a &lt; <span class="c0">&quot;b&quot;</span>', "",
                                 '<span class="c1">// c &amp; d</span>'])
        self.assertIn(".c0{color:#ff0000;font-weight:bold;}", page)
        self.assertIn(".c1{color:#00ff00;background:#0000ff;text-decoration:underline;}", page)
        self.assertIn("body{background:#101010;color:#eeeeee}", page)
        self.assertNotIn("prefers-color-scheme", page)
        self.assertTrue(page.startswith("<!DOCTYPE html>"))

    def test_a_page_without_a_theme_follows_the_reader(self):
        page = self.succeed("--syntax", "tiny", "--format=html", "-", text=b'"a"').stdout.decode()
        self.assertIn("@media screen and (prefers-color-scheme:dark)", page)
        self.assertEqual(len(re.findall(r"^\.c0\{", page, re.MULTILINE)), 2)

    def test_themes_have_names_and_files(self):
        for theme in ("Dusk", "Daylight", SOURCE / "Packages/Themes/Themes/Dusk.css"):
            with self.subTest(theme=theme):
                output = self.succeed("--syntax", "tiny", "--theme", theme, "--color=256", "-", text=b'"a"').stdout
                self.assertRegex(output, rb'^\x1b\[[0-9;]+m"a"\x1b\[0m$')

    def test_a_theme_that_nobody_knows_and_one_that_is_broken_are_told(self):
        self.assert_fails(self.run_tiny("--syntax=tiny", "--theme=nosuch", "-"), 2, "nosuch")
        broken = self.write("broken.css", "string { color }\n")
        self.assert_fails(self.run_tiny("--syntax=tiny", "--theme", broken, "-"), 1, broken,
                          "Missing property separator at line 1")

    def test_files_are_printed_one_behind_the_other(self):
        a = self.write("a.tiny", "// a\n")
        b = self.write("b.tiny", "// b\n")
        output = self.succeed(a, "-", b, "--syntax", "tiny", text=b"// -\n").stdout
        self.assertEqual(ESCAPES.sub(b"", output), b"// a\n// -\n// b\n")

    def test_help_goes_to_the_standard_output(self):
        result = self.run_program("--help")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        for option in ("--packages", "--no-cache", "--syntax-file", "--syntax ", "--format", "--list", "--explain LINE:COLUMN",
                       "--json", "--definition LINE:COLUMN", "--occurrences LINE:COLUMN", "--max-line", "--stats",
                       "--trace", "--repeat"):
            self.assertIn(option, result.stdout.decode())

    # Text that comes in

    def test_bytes_that_are_no_utf8_become_replacement_characters(self):
        output = self.succeed("--syntax", "tiny", "-", text=b"a\xff\xc3(b").stdout
        self.assertEqual(output.decode(), "a\ufffd\ufffd(b")

    def test_a_byte_order_mark_stays_in_the_text(self):
        self.assertEqual(
            self.tree(text=b"\xef\xbb\xbf//"),
            "Root tiny.root -\n  Unknown tiny.unknown [0,1]\n  Match comment [1,2]\n",
        )
        self.assertEqual(self.statistics(text=b"\xef\xbb\xbfa")[0]["units"], "2")

    def test_a_longer_line_than_allowed_is_unknown_text(self):
        text = b"//34567\n//345678\n"
        whole = "  Match comment [0,7]\n  Newline tiny.newline [7,1]\n  Match comment [8,8]\n"
        cut = "  Match comment [0,7]\n  Newline tiny.newline [7,1]\n  Unknown tiny.unknown [8,8]\n"
        end = "  Newline tiny.newline [16,1]\n"
        root = "Root tiny.root -\n"
        self.assertEqual(self.tree(text=text), root + whole + end)
        self.assertEqual(self.tree("--max-line", "8", text=text), root + whole + end)
        self.assertEqual(self.tree("--max-line", "7", text=text), root + cut + end)
        self.assertEqual(self.tree("--max-line=7", text=text), root + cut + end)

    def test_lines_of_ten_thousand_units_are_the_longest_unless_told_otherwise(self):
        text = b"//" + b"x" * 9998
        self.assertIn("Match comment [0,10000]", self.tree(text=text))
        self.assertIn("Unknown tiny.unknown [0,10001]", self.tree(text=text + b"x"))
        self.assertIn("Match comment [0,10001]", self.tree("--max-line", "0", text=text + b"x"))

    # Languages

    def test_the_name_of_a_file_tells_its_language(self):
        file = self.write("some.tiny", "// x")
        self.assertIn(b"Match comment [0,4]", self.succeed("--format", "tree", file).stdout)

    def test_the_content_tells_where_the_name_does_not(self):
        file = self.write("some", "#!tiny\n// x")
        self.assertIn(b"Match comment [7,4]", self.succeed("--format", "tree", file).stdout)
        self.assertIn(b"Match comment [7,4]", self.succeed("--format", "tree", "-", text=b"#!tiny\n// x").stdout)

    def test_the_packages_of_the_source_tree_need_no_option(self):
        folder = SOURCE / "Tests" / "Corpus" / "json" / "sample"
        result = self.run_program("--format", "tree", folder / "text.json")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(result.stdout, (folder / "tree").read_bytes())

    def test_a_language_that_is_named_wins_over_what_the_file_tells(self):
        other = self.write("other.xml", OTHER)
        file = self.write("some.tiny", "if // x")
        tree = self.succeed("--syntax-file", other, "--syntax", "other", "--format", "tree", file).stdout
        self.assertIn(b"Match keyword [0,2]", tree)
        self.assertNotIn(b"comment", tree)

    def test_syntax_files_may_be_given_many_times_and_need_no_packages(self):
        other = self.write("other.xml", OTHER)
        files = [self.write("a.tiny", "// x"), self.write("b.other", "if")]
        result = self.run_program(
            "--syntax-file", self.tiny, f"--syntax-file={other}", "--format", "tree", *files
        )
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertIn(b"Match comment [0,4]", result.stdout)
        self.assertIn(b"Match keyword [0,2]", result.stdout)

    def test_a_later_syntax_file_replaces_one_of_the_same_name(self):
        newer = self.write("newer.xml", TINY.replace("//.*", "\\#.*"))
        self.assertIn("Match comment [3,2]", self.tree("--syntax-file", newer, text=b"// #x"))

    def test_files_that_are_no_syntaxes_are_passed_over_in_packages(self):
        self.write("Packages/Tiny/Syntaxes/notes.txt", "not a syntax")
        self.write("Packages/Tiny/Themes/theme.xml", "<not-a-syntax/>")
        self.write("Packages/a file", "between the packages")
        self.assertIn("comment", self.tree(text=b"//"))

    # What is wrong

    def test_a_file_that_is_missing_is_named(self):
        missing = self.folder / "missing.tiny"
        self.assert_fails(self.run_tiny(missing), 1, missing)

    def test_a_folder_is_no_file(self):
        self.assert_fails(self.run_tiny(self.folder), 1, self.folder)

    def test_what_comes_before_the_file_that_is_missing_is_printed(self):
        a = self.write("a.tiny", "a\n")
        result = self.run_tiny(a, self.folder / "missing.tiny")
        self.assertEqual((result.returncode, result.stdout), (1, b"a\n"))
        self.assertEqual(len(result.stderr.splitlines()), 1)

    def test_a_syntax_that_nobody_knows_is_named(self):
        self.assert_fails(self.run_tiny("--syntax", "nosuch", "-"), 2, "nosuch")

    def test_a_file_that_nothing_fits_asks_for_a_syntax(self):
        file = self.write("some.unknown", "text")
        self.assert_fails(self.run_tiny(file), 2, file, "--syntax")
        self.assert_fails(self.run_tiny("-", text=b"text"), 2, "--syntax")

    def test_packages_that_are_missing_are_named(self):
        missing = self.folder / "Nowhere"
        self.assert_fails(self.run_program("--packages", missing, "-"), 1, missing)

    def test_a_package_file_that_is_no_xml_is_told_with_its_place_and_the_rest_works(self):
        self.write("Packages/Bad/package.json", '{"identifier": "bad"}')
        bad = self.write("Packages/Bad/Syntaxes/bad.xml", "<syntax name='bad'>\n<scopes>\n</syntax>\n")
        result = self.run_tiny("--syntax", "tiny", "--format", "tree", "-", text=b"//")
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"comment", result.stdout)
        self.assertRegex(result.stderr.decode(),
                         r"^quorvane-highlight: warning: " + re.escape(str(bad)) + r": \{3, \d+\}: .+\n$")

    def test_a_package_without_a_manifest_is_told(self):
        self.write("Packages/Bad/Syntaxes/bad.xml", TINY)
        result = self.run_tiny("--syntax", "tiny", "-")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(
            result.stderr.decode(),
            f"quorvane-highlight: warning: {self.packages}/Bad/package.json: No such file or directory\n",
        )

    # What is kept

    def test_what_was_read_is_kept_and_found_again(self):
        first = self.succeed("--syntax", "tiny", "--format", "tree", "-", text=b'"a" // x')
        entries = sorted(self.cache.glob("quorvane/*.archive"))
        self.assertEqual(len(entries), 1)
        second = self.succeed("--syntax", "tiny", "--format", "tree", "-", text=b'"a" // x')
        self.assertEqual((second.stdout, second.stderr), (first.stdout, first.stderr))
        self.assertEqual(sorted(self.cache.glob("quorvane/*")), entries)

    def test_a_cache_that_is_damaged_or_can_not_be_written_does_no_harm(self):
        self.tree(text=b"//")
        (entry,) = self.cache.glob("quorvane/*")
        good = entry.read_bytes()
        entry.write_bytes(good[:100])
        self.assertIn("comment", self.tree(text=b"//"))
        self.assertEqual(entry.read_bytes(), good)
        self.environment["XDG_CACHE_HOME"] = str(self.tiny)
        self.assertIn("comment", self.tree(text=b"//"))

    def test_nothing_is_kept_where_that_is_asked_for(self):
        self.assertIn("comment", self.tree("--no-cache", text=b"//"))
        self.assertFalse(self.cache.exists())

    def test_programs_that_run_at_once_share_what_is_kept(self):
        file = self.write("a.tiny", "// x")
        command = [PROGRAM, "--packages", str(self.packages), "--format", "tree", str(file)]
        programs = [
            subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment)
            for _ in range(8)
        ]
        results = {program.communicate(timeout=60) for program in programs}
        self.assertEqual(len(results), 1)
        (output, errors), = results
        self.assertIn(b"comment", output)
        self.assertEqual(errors, b"")
        self.assertEqual(len(list(self.cache.glob("quorvane/*"))), 1)

    def test_the_error_of_a_definition_is_printed_as_it_stands(self):
        bad = self.write(
            "bad.xml", '<syntax name="bad">\n<scopes>\n<scope name="it">\n</scope>\n</scopes>\n</syntax>\n'
        )
        result = self.run_program("--syntax-file", bad, "--syntax", "bad", "-")
        self.assert_fails(result, 1, bad)
        self.assertRegex(
            result.stderr.decode(),
            r"^quorvane-highlight: .*/bad\.xml: Missing expression for scope it, \{3, \d+\}\n$",
        )

    def test_a_syntax_without_a_name_is_an_error(self):
        bad = self.write("bad.xml", "<syntax><scopes/></syntax>")
        self.assert_fails(self.run_program("--syntax-file", bad, "--syntax", "bad", "-"), 1, bad)

    def test_a_syntax_file_that_is_missing_is_named(self):
        missing = self.folder / "missing.xml"
        self.assert_fails(self.run_program("--syntax-file", missing, "--syntax", "x", "-"), 1, missing)

    def test_a_leaf_whose_pattern_is_bad_is_a_warning_and_the_rest_works(self):
        bad = self.write(
            "bad.xml",
            """<syntax name="bad"><scopes>
            <scope name="broken"><expression>(</expression></scope>
            <scope name="number"><expression>\\d+</expression></scope>
            </scopes></syntax>""",
        )
        result = self.run_program("--syntax-file", bad, "--syntax", "bad", "--format", "tree", "-", text=b"(42")
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"Match number [1,2]", result.stdout)
        error = result.stderr.decode()
        self.assertEqual(len(error.splitlines()), 1, error)
        self.assertTrue(
            error.startswith(
                f"quorvane-highlight: warning: {bad}: Invalid regular expression for scope broken, {{0, 0}}: "
                "Error compiling regular expression"
            ),
            error,
        )

    def test_options_that_are_wrong_are_told_and_lead_to_the_help(self):
        for arguments, part in (
            ([], "file"),
            (["--nosuch", "-"], "--nosuch"),
            (["--nosuch=1", "-"], "--nosuch"),
            (["-x"], "-x"),
            (["--format", "pdf", "-"], "pdf"),
            (["--color", "mauve", "-"], "mauve"),
            (["--edit-benchmark", "0", "-"], "--edit-benchmark"),
            (["-", "--theme"], "--theme"),
            (["--format=", "-"], "format"),
            (["--max-line", "many", "-"], "many"),
            (["--max-line", "-1", "-"], "-1"),
            (["--max-line", "8 ", "-"], "--max-line"),
            (["--repeat", "0", "-"], "--repeat"),
            (["--repeat", "99999999999999999999", "-"], "--repeat"),
            (["-", "--syntax"], "--syntax"),
            (["-", "--syntax-file"], "--syntax-file"),
            (["-", "--packages"], "--packages"),
            (["-", "--repeat"], "--repeat"),
        ):
            with self.subTest(arguments=arguments):
                self.assert_fails(self.run_program(*arguments), 2, part, "--help")

    def test_behind_two_hyphens_all_are_files(self):
        self.assert_fails(self.run_tiny("--syntax", "tiny", "--", "--help"), 1, "--help")

    # Figures

    def test_figures_are_names_and_values_on_the_standard_error_stream(self):
        values, names = self.statistics(text=b"a\r\nb\rc\n//\xf0\x9f\x98\x80")
        self.assertEqual(
            names,
            ["units", "lines", "load-ms", "parse-ms", "symbols-ms", "nodes", "attributes-ms", "runs",
             "tree-bytes-per-unit", "peak-rss-mb"],
        )
        # a CR LF b CR c LF / / and two halves of a character.
        self.assertEqual(values["units"], "11")
        self.assertEqual(values["lines"], "4")
        # The root; three times unknown text and a line ending; the comment.
        self.assertEqual(values["nodes"], "8")
        # All but the comment, and the comment.
        self.assertEqual(values["runs"], "2")
        for name in ("load-ms", "parse-ms", "symbols-ms", "attributes-ms", "tree-bytes-per-unit", "peak-rss-mb"):
            self.assertGreater(float(values[name]), 0, name)

    def test_a_line_ending_at_the_end_begins_no_line(self):
        self.assertEqual(self.statistics(text=b"a\n")[0]["lines"], "1")
        self.assertEqual(self.statistics(text=b"")[0]["lines"], "0")

    def test_a_tree_has_no_figures_of_colours(self):
        names = self.statistics("--format=tree", text=b"a")[1]
        self.assertNotIn("runs", names)

    def test_edits_are_timed_beside_the_text_alone_and_leave_no_trace(self):
        result = self.succeed("--syntax=tiny", "--edit-benchmark=20", "-", text=b'a "b" // c\n' * 30)
        self.assertEqual(result.stdout, b'a "b" // c\n' * 30)
        names = [line.split(": ")[0] for line in result.stderr.decode().splitlines()]
        self.assertEqual(names, ["edit-us-median", "edit-us-p99", "move-us-median", "move-us-p99"])
        self.assertEqual(self.run_tiny("--syntax=tiny", "--edit-benchmark=3", "-").returncode, 0)

    def test_repeating_prints_the_text_once(self):
        result = self.succeed("--syntax", "tiny", "--repeat", "3", "--stats", "-", text=b"a // b")
        self.assertEqual(ESCAPES.sub(b"", result.stdout), b"a // b")
        self.assertEqual(len(result.stderr.splitlines()), 10)
        self.assertEqual(self.tree("--repeat=3", text=b"a // b"), self.tree(text=b"a // b"))

    def test_what_is_coloured_again_looks_as_it_did(self):
        text = b'a "b" // c\n' * 3
        once = self.succeed("--syntax=tiny", "--format=attributes", "-", text=text).stdout
        again = self.succeed("--syntax=tiny", "--format=attributes", "--repeat=3", "-", text=text).stdout
        self.assertIn(b"color=", once)
        self.assertEqual(again, once)


if __name__ == "__main__":
    unittest.main()
