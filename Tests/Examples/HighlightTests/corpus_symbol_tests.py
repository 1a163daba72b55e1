"""The outlines of the languages that come with the engine, held against those that people have reviewed.

A case of the corpus that has a file "symbols" beside its text is compared; `scripts/bless` writes it, for review.

Usage: corpus_symbol_tests.py PROGRAM
"""

import difflib
import subprocess
import unittest

from fixture import PROGRAM, SOURCE

CORPUS = SOURCE / "Tests" / "Corpus"


def outline(language, text):
    return subprocess.run([PROGRAM, "--no-cache", "--packages", SOURCE / "Packages", "--syntax", language,
                           "--format", "symbols", text], capture_output=True, timeout=60)


class CorpusSymbolTests(unittest.TestCase):
    maxDiff = None

    def test_outlines_are_the_reviewed_ones(self):
        reviewed = sorted(CORPUS.glob("*/*/symbols"))
        self.assertTrue(reviewed)
        for path in reviewed:
            folder = path.parent
            with self.subTest(case=f"{folder.parent.name}/{folder.name}"):
                (text,) = folder.glob("text.*")
                result = outline(folder.parent.name, text)
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                difference = "".join(difflib.unified_diff(
                    path.read_text(encoding="utf-8").splitlines(keepends=True),
                    result.stdout.decode().splitlines(keepends=True),
                    "reviewed", "parsed", n=1))
                if difference:
                    self.fail(f"the outline is another one:\n{difference}")


if __name__ == "__main__":
    unittest.main()
