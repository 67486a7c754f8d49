#!/usr/bin/env python3
"""What counts as a line of code, as a test, and as too long."""

import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import report_sizes

# (text, lines of code)
COUNTED = [
    ("", 0),
    ("\n\n", 0),
    ("int a;\n", 1),
    ("// why\nint a;  // what\n", 1),
    ("/* one\n   two */\nint a;\n", 1),
    ("int a; /* one\n two */ int b;\n", 2),
    ('auto a = "// no comment";\n', 1),
    ('auto a = "/*";\nint b;\nauto c = "*/";\n', 3),
    ('auto a = R"(/*\n)";\nint b;  // */\n', 3),
    ("char a = '\"';\n// why\nchar b = '\"';\n", 2),
]


class ReportSizes(unittest.TestCase):
    def report(self, function, files):
        """(exit status, output) of a report about a small tree."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            output = io.StringIO()
            with contextlib.redirect_stdout(output):
                status = function(Path(folder))
            return status, output.getvalue()

    def test_blank_lines_and_comments_are_no_code(self):
        for text, lines in COUNTED:
            with self.subTest(text):
                self.assertEqual(lines, report_sizes.code_lines(text))

    def test_share_knows_tests_by_name_and_by_folder(self):
        line = "int a;\n"
        files = {"src/a/b.cpp": line * 6, "src/a/b_test.cpp": line, "test/c.h": line}
        _, output = self.report(report_sizes.report_share, files)
        self.assertEqual("2 of 8 lines are tests: 25.0 %\n", output)

    def test_limits_are_the_last_length_allowed(self):
        at_limit = {"src/a.cpp": "\n" * 400, "include/a.h": "\n" * 200}
        self.assertEqual((0, ""), self.report(report_sizes.report_long, at_limit))
        for name, lines in (("src/a.cpp", 401), ("include/a.h", 201)):
            status, output = self.report(report_sizes.report_long, {name: "\n" * lines})
            self.assertEqual(1, status)
            self.assertTrue(output.startswith(f"{name}: {lines} lines"), output)


if __name__ == "__main__":
    unittest.main(buffer=True)
