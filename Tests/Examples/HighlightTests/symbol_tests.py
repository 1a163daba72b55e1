"""What quorvane-highlight tells of a document's structure: the outline, definitions and occurrences.

Usage: symbol_tests.py PROGRAM
"""

import json
import unittest

from fixture import HighlightCase

# A language with types, functions that have arguments, local variables and comments.
NESTED = """<syntax name="nested">
    <scopes>
        <scope name="comment"><expression>//\\ ?(.*)</expression><capture number="1" name="content"/></scope>
        <scope name="class">
            <starts-with>
                <expression>class\\ (\\w+)\\ \\{</expression><capture number="1" name="name"/>
            </starts-with>
            <ends-with><expression>\\}</expression></ends-with>
            <subscopes><include syntax="self"/></subscopes>
            <symbol type="class"><context behavior="subtree"/></symbol>
        </scope>
        <scope name="function">
            <starts-with>
                <expression>fun\\ (\\w+)</expression><capture number="1" name="name"/>
            </starts-with>
            <ends-with><expression>;</expression></ends-with>
            <subscopes>
                <scope name="argument.identifier">
                    <expression>%\\w+</expression><symbol type="argument"/>
                </scope>
                <include syntax="self"/>
            </subscopes>
            <symbol type="method"><context behavior="subtree"/></symbol>
        </scope>
        <scope name="block">
            <starts-with><expression>\\[</expression></starts-with>
            <ends-with><expression>\\]</expression></ends-with>
            <subscopes><include syntax="self"/></subscopes>
            <symbol type="block"><context behavior="subtree"/></symbol>
        </scope>
        <scope name="variable">
            <expression>let\\ (\\w+)</expression><capture number="1" name="identifier"/>
            <symbol type="variable" scope="local" name-selector="identifier"/>
        </scope>
        <scope name="identifier"><expression>\\w+</expression></scope>
    </scopes>
</syntax>
"""

TEXT = b"""// Holds
// things.
class A {
    // Says "it".
    fun f %a let b b;
    [ let c ]
}
let d
d
"""


class SymbolTests(HighlightCase):
    def run_nested(self, *arguments, text=TEXT):
        nested = self.write("nested.xml", NESTED)
        return self.run_program("--syntax-file", nested, "--syntax=nested", *arguments, "-", text=text)

    def output(self, *arguments, text=TEXT):
        result = self.run_nested(*arguments, text=text)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout.decode()

    # The outline

    def test_the_outline_is_one_symbol_a_line_below_what_it_stands_in(self):
        # The nearest line of a comment comes first.
        self.assertEqual(
            self.output("--format", "symbols"),
            "class A 3:1 to 7:2: things.\n"
            '  method f 5:5 to 5:22 in A: Says "it".\n'
            "    argument %a 5:11 to 5:13 in f\n"
            "    variable b 5:14 to 5:19 in f\n"
            "  block - 6:5 to 6:14 in A\n"
            "    variable c 6:7 to 6:12 in -\n"
            "variable d 8:1 to 8:6\n",
        )

    def test_a_text_without_symbols_has_an_empty_outline(self):
        self.assertEqual(self.output("--format=symbols", text=b"x"), "")
        self.assertEqual(self.output("--format=symbols", "--json", text=b"x"), "[]\n")

    def test_programs_get_an_array_of_objects(self):
        symbols = json.loads(self.output("--format=symbols", "--json"))
        self.assertEqual(
            symbols[:3],
            [
                {"name": "A", "kind": "class", "range": {"location": 20, "length": 65}, "parent": None,
                 "comment": "things.\nHolds\n"},
                {"name": "f", "kind": "method", "range": {"location": 52, "length": 17}, "parent": "A",
                 "comment": 'Says "it".'},
                {"name": "%a", "kind": "argument", "range": {"location": 58, "length": 2}, "parent": "f",
                 "comment": None},
            ],
        )
        self.assertEqual([(symbol["name"], symbol["parent"]) for symbol in symbols[3:]],
                         [("b", "f"), (None, "A"), ("c", ""), ("d", None)])

    def test_ranges_count_units_of_utf16_and_names_are_escaped(self):
        text = "\U0001f600 // \t\"\\\U0001f600\nclass A { }".encode()
        self.assertEqual(
            json.loads(self.output("--format=symbols", "--json", text=text)),
            [{"name": "A", "kind": "class", "range": {"location": 12, "length": 11}, "parent": None,
              "comment": '"\\\U0001f600'}],
        )

    def test_objects_are_for_the_outline_alone(self):
        self.assert_fails(self.run_nested("--json"), 2, "--format symbols", "--help")

    # Definitions

    def test_a_definition_is_told_with_its_place(self):
        self.assertEqual(self.output("--definition", "5:20"), "standard input:5:18: variable b in f\n")
        self.assertEqual(self.output("--definition=9:1"), "standard input:8:5: variable d\n")
        file = self.write("a.nested", TEXT)
        nested = self.write("nested.xml", NESTED)
        result = self.run_program("--syntax-file", nested, "--syntax=nested", "--definition=5:12", file)
        self.assertEqual(result.stdout.decode(), f"{file}:5:11: argument %a in f\n")

    def test_where_nothing_is_defined_that_is_told(self):
        for place, text, reason in (
            ("3:1", TEXT, "there is no identifier at 3:1"),
            ("1:2", b" x", "nothing defines the identifier at 1:2"),
        ):
            with self.subTest(place=place):
                result = self.run_nested("--definition", place, text=text)
                self.assert_fails(result, 1)
                self.assertEqual(result.stderr.decode(), f"quorvane-highlight: standard input: {reason}\n")

    # Occurrences

    def test_occurrences_are_told_with_their_lines(self):
        self.assertEqual(
            self.output("--occurrences", "5:18"),
            "standard input:5:18:     fun f %a let b b;\nstandard input:5:20:     fun f %a let b b;\n",
        )
        self.assertEqual(self.output("--occurrences=9:1"),
                         "standard input:8:5: let d\nstandard input:9:1: d\n")

    def test_where_no_identifier_stands_that_is_told(self):
        result = self.run_nested("--occurrences", "3:1")
        self.assert_fails(result, 1)
        self.assertEqual(result.stderr.decode(),
                         "quorvane-highlight: standard input: there is no identifier at 3:1\n")

    # Places

    def test_places_must_be_in_the_text(self):
        for option in ("--definition", "--occurrences"):
            with self.subTest(option=option):
                self.assert_fails(self.run_nested(option, "99:1"), 2, "no character at 99:1")
                self.assert_fails(self.run_nested(option, "x"), 2, option, "LINE:COLUMN", "--help")

    def test_one_question_is_asked_at_a_time(self):
        self.assert_fails(self.run_nested("--definition=1:1", "--occurrences=1:1"), 2, "one at a time")


if __name__ == "__main__":
    unittest.main()
