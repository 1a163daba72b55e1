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

    def test_functions_of_javascript_are_known_to_those_before_them(self):
        text = "function outer() {\n  function f() { %sg() }\n  function g() {}\n}\nx = %sg();\n"
        self.assert_definition("javascript", text % ("¦", ""), "3:12: function g in outer")
        self.assert_definition("javascript", text % ("", "¦"), None)

    def test_what_an_arrow_function_is_given_is_no_argument_of_the_function_around_it(self):
        self.assert_definition("javascript", "function f(a) {\n  g((x) => ¦x)\n}\n", "2:6: variable x in f")

    def test_variables_of_javascript_end_with_their_function(self):
        self.assert_occurrences("javascript", "function f() {\n  let a = 1;\n  return ¦a.a;\n}\na = 2;\n",
                                "2:7", "3:10", "3:12")

    def test_imported_names_of_javascript_are_defined_by_their_import(self):
        self.assert_definition("javascript", "import { a as b } from 'c';\nuse(¦b)\n", "1:15: variable b")

    def test_each_name_of_a_declaration_of_javascript_is_found(self):
        text = "function f() {\n  let a = 1, { b } = g,\n    c\n  return [%s]\n}\n"
        self.assert_definition("javascript", text % "¦a", "2:7: variable a in f")
        self.assert_definition("javascript", text % "¦b", "2:16: variable b in f")
        self.assert_definition("javascript", text % "¦c", "3:5: variable c in f")
        self.assert_occurrences("javascript", text % "¦a", "2:7", "4:11")

    def test_what_catch_is_given_is_found(self):
        self.assert_definition("javascript", "try {} catch (e) { log(¦e) }\n", "1:15: variable e")
        self.assert_definition("typescript", "try {} catch (e: unknown) { log(¦e) }\n", "1:15: variable e")

    # TypeScript

    def test_what_the_parameters_of_a_type_are_called_is_seen_nowhere(self):
        self.assert_definition("typescript", "function f(a: (b: string) => void) {\n  return ¦b\n}\n", None)
        self.assert_definition("typescript", "function f(a: (b: string) => void) {\n  return ¦a\n}\n",
                               "1:12: argument a in f")

    def test_types_of_typescript_are_defined(self):
        self.assert_definition("typescript", "interface Point { x: number }\nlet p: ¦Point\n",
                               "1:11: interface Point")
        self.assert_occurrences("typescript", "type Key = string\nlet k: ¦Key, l: Key[]\n",
                                "1:6", "2:8", "2:16")

    # C and C++

    def test_variables_of_c_end_with_their_function(self):
        text = "int f(void) {\n    char *a = 0;\n    return %sa;\n}\nint g(void) { return %sa; }\n"
        self.assert_definition("c", text % ("¦", ""), "2:11: variable a in f")
        self.assert_definition("c", text % ("", "¦"), None)
        self.assert_occurrences("c", text % ("¦", ""), "2:11", "3:12")

    def test_what_only_looks_like_a_variable_of_c_is_none(self):
        self.assert_definition("c", "void f(void) { x = y *¦z; }\n", None)
        self.assert_definition("c", "int f(void) { return ¦z; }\n", None)
        self.assert_definition("c", "void f(void) { if (x) y = 1; else ¦z = 2; }\n", None)
        self.assert_definition("cpp", "void f() { std::cin >> ¦z; throw z; }\n", None)

    def test_what_loops_and_conditions_declare_is_found(self):
        self.assert_definition("c", "void f(void) {\n    for (int i = 0; ¦i < 9; i++) {}\n}\n", "2:14: variable i in f")
        self.assert_definition("cpp", "void f() {\n    for (const auto &x : y) g(¦x);\n}\n",
                               "2:22: variable x in f")
        self.assert_definition("cpp", "void f() {\n    if (auto p = g(); ¦p) {}\n}\n", "2:14: variable p in f")

    def test_variables_of_cpp_may_have_types_with_arguments(self):
        self.assert_definition("cpp", "void f() {\n    std::vector<int> v{1};\n    g(¦v);\n}\n",
                               "2:22: variable v in f")

    # Python

    def test_variables_of_python_belong_to_their_function(self):
        self.assert_definition("python", "def f(a):\n    b = a\n    return ¦b\n", "2:5: variable b in f")
        self.assert_definition("python", "def f(a):\n    b = a\nprint(¦b)\n", None)
        self.assert_definition("python", "def f(a):\n    b = ¦a\n", "1:7: argument a in f")

    def test_the_first_of_several_assignments_in_a_function_of_python_counts(self):
        self.assert_definition("python", "def f():\n    b = 1\n    b = 2\n    return ¦b\n",
                               "2:5: variable b in f")

    def test_what_python_imports_is_found_with_and_without_another_name(self):
        text = "import os.path, sys\nfrom a import (b,\n    c as d)\nuse(%s)\n"
        self.assert_definition("python", text % "¦os", "1:8: variable os")
        self.assert_definition("python", text % "¦sys", "1:17: variable sys")
        self.assert_definition("python", text % "¦b", "2:16: variable b")
        self.assert_definition("python", text % "¦d", "3:10: variable d")
        self.assert_definition("python", text % "¦c", None)

    def test_members_of_python_are_found_behind_a_dot(self):
        self.assert_definition("python", "class A:\n    x = 1\n\n    def m(self):\n        return self.¦x\n",
                               "2:5: property x")

    def test_occurrences_of_python_end_with_the_function(self):
        self.assert_occurrences("python", "def f(a):\n    return ¦a\na = 1\n", "1:7", "2:12")

    # Shell

    def test_a_dollar_sign_is_no_part_of_a_name(self):
        self.assert_definition("shell", "A=1\necho $¦A\n", "1:1: variable A")
        self.assert_definition("shell", "A=1\necho ${¦A}\n", "1:1: variable A")
        self.assert_occurrences("shell", "A=1\necho $¦A ${A} ${A:-x} A\n", "1:1", "2:7", "2:11", "2:16")

    def test_local_variables_of_shell_are_seen_within_their_function_alone(self):
        text = "f() {\n    local a=1\n    echo $%sa\n}\necho $%sa\n"
        self.assert_definition("shell", text % ("¦", ""), "2:11: variable a in f")
        self.assert_definition("shell", text % ("", "¦"), None)

    def test_commands_of_shell_are_defined_by_their_functions(self):
        self.assert_definition("shell", "greet() { :; }\n¦greet you\n", "1:1: function greet")

    # YAML

    def test_aliases_of_yaml_are_defined_by_the_nearest_anchor_before(self):
        text = "a: &x 1\nb: *%sx\nc: &x 2\nd: *%sx\n"
        self.assert_definition("yaml", text % ("¦", ""), "1:5: reference x")
        self.assert_definition("yaml", text % ("", "¦"), "3:5: reference x")

    def test_occurrences_of_an_anchor_of_yaml_are_its_aliases(self):
        self.assert_occurrences("yaml", "a: &x 1\nb: *¦x\nc: [*x, x]\n", "1:5", "2:5", "3:6")


if __name__ == "__main__":
    unittest.main()
