#!/usr/bin/env python3
"""Words that no file of the project may hold: leftovers, and paths of one developer's machine.

Usage: check_words.py [ROOT]

Looks through what git tracks or would track. Prints file:line: word, exits with 1 if there is any.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

# Spelt in halves, so that this file passes its own check.
LEFTOVERS = ["TO" + "DO", "FIX" + "ME"]

# Folders that stand on every machine: to sit in one of them says nothing about whose it is.
EVERYWHERE = {"/", "/tmp", "/home", "/root", "/usr", "/usr/src", "/usr/local", "/var", "/srv", "/opt"}

# Where the tree is walked because git cannot list it.
SKIPPED_FOLDERS = {".git", "build", "__pycache__", ".cache"}


def machine_paths(root):
    """Absolute paths that name this very machine: of the checkout, and of the folder around it."""
    return [path for path in (str(root), str(root.parent)) if path not in EVERYWHERE]


def forbidden_pattern(root):
    words = [rf"\b{word}\b" for word in LEFTOVERS]
    paths = [rf"(?<![\w.-]){re.escape(path)}/" for path in machine_paths(root)]
    return re.compile("|".join(words + paths))


def project_files(root):
    """Every file that is, or would be, a part of the project."""
    listing = subprocess.run(
        ["git", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        capture_output=True,
        check=False,
    )
    if listing.returncode == 0:
        names = [os.fsdecode(name) for name in listing.stdout.split(b"\0") if name]
        return sorted(root / name for name in names if (root / name).is_file())
    found = []
    for folder, folders, names in os.walk(root):
        folders[:] = [name for name in folders if name not in SKIPPED_FOLDERS]
        found.extend(Path(folder) / name for name in names)
    return sorted(found)


def check_file(root, path, pattern):
    data = path.read_bytes()
    if b"\0" in data:
        return []
    lines = data.decode("utf-8", errors="replace").splitlines()
    where = path.relative_to(root).as_posix()
    return [
        f"{where}:{number}: '{match.group(0)}' does not belong here"
        for number, line in enumerate(lines, start=1)
        for match in pattern.finditer(line)
    ]


def main(arguments):
    root = Path(arguments[0] if arguments else Path(__file__).parent.parent).resolve()
    pattern = forbidden_pattern(root)
    files = project_files(root)
    problems = [problem for path in files for problem in check_file(root, path, pattern)]
    for problem in problems:
        print(problem)
    print(f"{len(files)} files, {len(problems)} forbidden words")
    if not files:
        print(f"no files to check under {root}")
        return 1
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
