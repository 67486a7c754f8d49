#!/usr/bin/env python3
"""How large the sources are, and which share of their lines are tests.

Usage: report_sizes.py long|share [ROOT]

long   names each source over 400 lines and each header over 200; exits with 1 if there is any
share  prints the share of test lines in all C++ lines, blank lines and comments left out
"""

import re
import sys
from pathlib import Path

MAX_SOURCE_LINES = 400
MAX_HEADER_LINES = 200
FOLDERS = ["include", "src", "apps", "test", "benchmarks", "fuzz", "examples"]

# Strings are matched too, so that what looks like a comment inside one is none.
COMMENT_OR_STRING = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(?P<tag>[^(\s]*)\(.*?\)(?P=tag)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\'',
    re.DOTALL,
)


def sources(root):
    return [
        path
        for folder in FOLDERS
        for path in sorted((root / folder).rglob("*"))
        if path.suffix in (".h", ".cpp") and path.is_file()
    ]


def read(path):
    return path.read_text(encoding="utf-8", errors="replace")


def code_lines(text):
    """The lines that hold more than blanks and comments."""
    bare = COMMENT_OR_STRING.sub(
        lambda match: "\n" * match.group(0).count("\n")
        if match.group(0).startswith("/")
        else match.group(0),
        text,
    )
    return sum(1 for line in bare.split("\n") if line.strip())


def is_test(root, path):
    relative = path.relative_to(root)
    return relative.parts[0] == "test" or re.search(r"_(test|test_support)$", path.stem) is not None


def report_long(root):
    found = 0
    for path in sources(root):
        limit = MAX_HEADER_LINES if path.suffix == ".h" else MAX_SOURCE_LINES
        lines = read(path).count("\n")
        if lines > limit:
            found += 1
            print(f"{path.relative_to(root).as_posix()}: {lines} lines, more than {limit}")
    return 1 if found else 0


def report_share(root):
    test, everything = 0, 0
    for path in sources(root):
        lines = code_lines(read(path))
        everything += lines
        test += lines if is_test(root, path) else 0
    share = 100.0 * test / everything if everything else 0.0
    print(f"{test} of {everything} lines are tests: {share:.1f} %")
    return 0


def main(arguments):
    reports = {"long": report_long, "share": report_share}
    if not arguments or arguments[0] not in reports:
        print(__doc__, file=sys.stderr)
        return 2
    root = Path(arguments[1] if len(arguments) > 1 else Path(__file__).parent.parent).resolve()
    return reports[arguments[0]](root)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
