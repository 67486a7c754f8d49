#!/usr/bin/env python3
"""The word check must find what it forbids and must leave everything else alone."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import check_words


class CheckWords(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve() / "desk" / "project"
        self.root.mkdir(parents=True)

    def problems(self, text):
        path = self.root / "a.cpp"
        path.write_text(text, encoding="utf-8")
        pattern = check_words.forbidden_pattern(self.root)
        return check_words.check_file(self.root, path, pattern)

    def test_leftovers_are_found_as_whole_words(self):
        for word in check_words.LEFTOVERS:
            self.assertEqual(1, len(self.problems(f"int a;\n// {word}: later\n")))
            self.assertEqual([], self.problems(f"int {word}S;\n"))

    def test_paths_of_this_machine_are_found(self):
        self.assertIn("a.cpp:2:", self.problems(f'\nf("{self.root}/a.cpp");\n')[0])
        self.assertEqual(1, len(self.problems(f'f("{self.root.parent}/other");\n')))

    def test_common_paths_are_left_alone(self):
        self.assertEqual([], self.problems('f("/tmp/x", "/usr/share/x", "/proc/self", "/");\n'))

    def test_binary_files_are_left_alone(self):
        self.assertEqual([], self.problems("\0" + check_words.LEFTOVERS[0]))

    def test_ignored_files_are_not_looked_at(self):
        subprocess.run(["git", "init", "-q", str(self.root)], check=True)
        (self.root / ".gitignore").write_text("/out/\n", encoding="utf-8")
        (self.root / "out").mkdir()
        (self.root / "out" / "a.txt").write_text(check_words.LEFTOVERS[0], encoding="utf-8")
        self.assertEqual(0, check_words.main([str(self.root)]))
        (self.root / "b.txt").write_text(check_words.LEFTOVERS[0], encoding="utf-8")
        self.assertEqual(1, check_words.main([str(self.root)]))

    def test_empty_project_is_an_error(self):
        self.assertEqual(1, check_words.main([str(self.root)]))


if __name__ == "__main__":
    unittest.main(buffer=True)
