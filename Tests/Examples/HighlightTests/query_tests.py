"""What the languages that come with the engine tell of a name: where it is defined and where else it stands.

In each text a caret (¦) stands before the name that is asked for, and is not part of the text.

Usage: query_tests.py PROGRAM
"""

import unittest

from fixture import SOURCE, HighlightCase


class QueryTests(HighlightCase):
    def ask(self, question, language, marked):
        before, after = marked.split("¦")
        line = before.count("\n") + 1
        column = len(before) - (before.rfind("\n") + 1) + 1
        return self.run_program("--no-cache", "--packages", SOURCE / "Packages", "--syntax", language,
                                f"{question}={line}:{column}", "-", text=(before + after).encode())

    def assert_definition(self, language, marked, expected):
        """The place and the symbol, or nothing where nothing is defined."""
        result = self.ask("--definition", language, marked)
        if expected is None:
            self.assertEqual(result.stdout, b"")
            self.assertIn(b"nothing defines", result.stderr)
        else:
            self.assertEqual((result.stderr, result.stdout.decode()), (b"", f"standard input:{expected}\n"))

    def assert_occurrences(self, language, marked, *places):
        """The places as LINE:COLUMN, in order."""
        result = self.ask("--occurrences", language, marked)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        found = [":".join(line.split(":")[1:3]) for line in result.stdout.decode().splitlines()]
        self.assertEqual(found, list(places))

    # JavaScript

    def test_arguments_of_javascript_are_seen_within_their_function_alone(self):
        self.assert_definition("javascript", "function f(a) {\n  return ¦a\n}\n", "1:12: argument a in f")
        self.assert_definition("javascript", "function f(a) {}\nb = ¦a\n", None)


if __name__ == "__main__":
    unittest.main()
