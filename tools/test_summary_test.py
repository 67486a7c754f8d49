#!/usr/bin/env python3
"""The summary must call a test by what became of it, whatever word ctest has for that."""

import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import test_summary

# As ctest writes them.
PASSED = '<testcase name="a" status="run"/>'
FAILED = '<testcase name="b" status="fail"><failure message=""/></testcase>'
SKIPPED = (
    '<testcase name="c" status="notrun">'
    '<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/></testcase>'
)
DISABLED = '<testcase name="d" status="disabled"/>'
NOT_BUILT = (
    '<testcase name="e" status="notrun"><skipped message="Unable to find executable"/></testcase>'
)


class TestSummary(unittest.TestCase):
    def run_with(self, text, *options):
        """(exit status, last line) of the summary of a file."""
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "tests.xml"
            path.write_text(text, encoding="utf-8")
            output = io.StringIO()
            with contextlib.redirect_stdout(output):
                status = test_summary.main([str(path), *options])
            return status, (output.getvalue().splitlines() or [""])[-1]

    def summary_of(self, *cases, strict=False):
        text = f"<testsuite>{''.join(cases)}</testsuite>"
        return self.run_with(text, *(["--strict"] if strict else []))

    def test_each_outcome_is_counted(self):
        status, line = self.summary_of(PASSED, PASSED, FAILED, SKIPPED, DISABLED)
        self.assertEqual((1, "2 passed, 1 failed, 2 skipped"), (status, line))

    def test_test_that_could_not_start_has_failed(self):
        self.assertEqual((1, "1 passed, 1 failed, 0 skipped"), self.summary_of(PASSED, NOT_BUILT))

    def test_skipped_is_an_error_only_when_strict(self):
        for case in (SKIPPED, DISABLED):
            self.assertEqual(0, self.summary_of(PASSED, case)[0])
            self.assertEqual(1, self.summary_of(PASSED, case, strict=True)[0])

    def test_nothing_is_an_error_only_when_strict(self):
        self.assertEqual((0, "0 passed, 0 failed, 0 skipped"), self.summary_of())
        self.assertEqual(1, self.summary_of(strict=True)[0])

    def test_passed_is_fine_when_strict(self):
        self.assertEqual(0, self.summary_of(PASSED, strict=True)[0])

    def test_missing_or_broken_file_is_an_error(self):
        self.assertEqual(1, self.run_with("<testsuite>")[0])
        self.assertEqual(1, test_summary.main(["/nonexistent/tests.xml"]))


if __name__ == "__main__":
    unittest.main(buffer=True)
