#!/usr/bin/env python3
"""Which folder may include which: the layers of the library, as data, and the check of every file.

Usage: check_includes.py [ROOT]

Prints each include that points the wrong way as file:line: reason, and exits with 1 if there is any.
"""

import re
import sys
from pathlib import Path

# --- the table ---------------------------------------------------------------------------------

# A folder may include itself, the folders named here and whatever those may include.
ARROWS = {
    "base": [],
    "platform": ["base"],
    "platform/linux": [
        "platform/linux/bus",
        "platform/linux/crash",
        "platform/linux/desktop",
        "platform/linux/facts",
        "platform/linux/hardware",
        "platform/linux/http",
        "platform/linux/motion",
        "platform/linux/permissions",
        "platform/linux/routes",
        "platform/linux/storage",
        "platform/linux/threads",
    ],
    "platform/linux/bus": ["platform/linux/facts"],
    "platform/linux/crash": ["platform/linux/storage", "platform/linux/threads"],
    "platform/linux/desktop": ["platform/linux/bus"],
    "platform/linux/facts": ["platform/linux/storage"],
    "platform/linux/hardware": ["platform/linux/motion"],
    "platform/linux/http": ["platform/linux/threads"],
    "platform/linux/motion": ["platform/linux/facts", "platform/linux/threads"],
    "platform/linux/permissions": ["platform/linux/bus"],
    "platform/linux/routes": ["platform/linux/bus"],
    "platform/linux/storage": ["platform/linux/threads"],
    "platform/linux/threads": ["platform"],
    "platform/testing": ["platform"],
    "model": ["base"],
    "state": ["model", "platform"],
    "diagnostics": ["state"],
    "network": ["diagnostics"],
    "device": ["state"],
    "biometrics": ["network"],
    "core": ["biometrics", "device"],
    "c_interface": ["core"],
    # A library of its own, above the public headers alone.
    "qt": [],
}

LIBRARY = [folder for folder in ARROWS if folder != "qt"]

# Public headers without a source of their own: the folder as which each counts. Any other public
# header counts as the folder under src/ that holds a file of the same stem.
HEADERS_WITHOUT_SOURCE = {
    "quorvance/json.h": "base",
    "quorvance/json_builder.h": "base",
    "quorvance/json_conversion.h": "base",
    "quorvance/check_point_base.h": "model",
    "quorvance/check_point_parser.h": "model",
    "quorvance/add_payment_method.h": "model",
    "quorvance/standard_library.h": "base",
    "quorvance/status.h": "diagnostics",
    # Each platform has its own; whoever is above the platform may call it.
    "quorvance/alternate_stack.h": "platform",
    "quorvance/vocabulary.h": "base",
    "quorvance/crash_model.h": "diagnostics",
    "quorvance/screen_listener.h": "biometrics",
    "quorvance/c.h": "c_interface",
    "quorvance/quorvance.h": "umbrella",
}

# Public headers of classes that are compiled into the host, who needs JSON values whole.
WHOLE_JSON_HEADERS = {
    "include/quorvance/check_point.h",
    "include/quorvance/platform/face_detection.h",
    "include/quorvance/platform/user_data.h",
}

# Where a header of neither the language nor the JSON package may be included.
THIRD_PARTY = {
    "gtest": "tests",
    "gmock": "tests",
    "benchmark": "benchmarks",
    "httplib.h": "apps and test",
}

# Of Qt: what is public, and what its own tests make touches with.
QT_HEADER = re.compile(r"Q[A-Z]\w*|(Qt\w+|qpa|private)/\w+(\.h)?")

CHECKED_FOLDERS = ["include", "src", "apps", "test", "benchmarks", "fuzz", "examples"]
SUFFIXES = {".h", ".cpp"}

STANDARD_HEADERS = set(
    """
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
    cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine
    csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque
    exception execution filesystem format forward_list fstream functional future initializer_list
    iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
    mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
    semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf
    string string_view syncstream system_error thread tuple type_traits typeindex typeinfo
    unordered_map unordered_set utility valarray variant vector version cxxabi.h stddef.h stdint.h
    """.split()
)

# --- where a file belongs ----------------------------------------------------------------------


def closure(folder):
    """The folder itself and everything that it may include."""
    seen = set()
    waiting = [folder]
    while waiting:
        current = waiting.pop()
        if current not in seen:
            seen.add(current)
            waiting.extend(ARROWS[current])
    return seen


def is_test(path):
    """Tests, benchmarks and what only they share: x_test.cpp, x_test_support.h, x_benchmark.cpp."""
    return re.search(r"_(test|test_support|benchmark)$", path.stem) is not None


def source_folder(parts):
    """The folder of the table for a path below src/, None when the table has no such folder."""
    folder = "/".join(parts[:-1])
    return folder if folder in ARROWS else None


def is_linux(folder):
    """Whether the folder is the Linux platform or one of its rooms."""
    return folder == "platform/linux" or folder.startswith("platform/linux/")


class Tree:
    """The files of one project root and the folder of the table that each counts as."""

    def __init__(self, root):
        self.root = Path(root)
        self.stems = {}
        for path in sorted((self.root / "src").rglob("*")):
            folder = source_folder(path.relative_to(self.root / "src").parts)
            if path.suffix in SUFFIXES and folder:
                stem = re.sub(r"_test$", "", path.stem)
                self.stems.setdefault(stem, set()).add(folder)

    def public_folder(self, name):
        """The folder as which the public header "quorvance/..." counts, and what is wrong if none."""
        if name in HEADERS_WITHOUT_SOURCE:
            return HEADERS_WITHOUT_SOURCE[name], None
        parts = name.split("/")
        if len(parts) > 2:
            if parts[1] in ARROWS:
                return parts[1], None
            return None, f"public folder '{parts[1]}' is not in the include table"
        folders = self.stems.get(Path(name).stem, set())
        if len(folders) == 1:
            return next(iter(folders)), None
        if folders:
            return None, f"<{name}> could belong to each of {', '.join(sorted(folders))}"
        return None, (
            f"<{name}> belongs to no folder: no file under src/ has its stem, "
            "and HEADERS_WITHOUT_SOURCE in tools/check_includes.py does not name it"
        )

    def place(self, path):
        """(kind, folder, problem): kind is public, source, app, test, refused, bench or fuzz."""
        parts = path.relative_to(self.root).parts
        if parts[0] == "include":
            folder, problem = self.public_folder("/".join(parts[1:]))
            return "public", folder, problem
        if parts[0] == "src":
            folder = source_folder(parts[1:])
            problem = None if folder else "this folder is not in the include table"
            return "source", folder, problem
        if parts[0] == "apps":
            return "app", parts[1], None
        if parts[0] == "examples":
            return "app", parts[0], None
        # Snippets that stand for code of the library, wherever that is.
        if parts[:2] == ("test", "refused_code"):
            return "refused", None, None
        return {"test": "test", "benchmarks": "bench", "fuzz": "fuzz"}[parts[0]], None, None


# --- the rules ---------------------------------------------------------------------------------


def problem_of_angled(kind, folder, test, may_include_json, name):
    """What is wrong with including <name>, a header that is not the project's own."""
    is_light = name == "nlohmann/json_fwd.hpp"
    if kind == "public" and name.startswith("nlohmann/") and not (is_light or may_include_json):
        return "a public header includes no JSON header but <nlohmann/json_fwd.hpp>"
    if name in STANDARD_HEADERS or name.startswith("nlohmann/"):
        return None
    top = name.split("/")[0]
    if top in THIRD_PARTY:
        allowed = {
            "tests": test or kind == "test",
            "benchmarks": kind == "bench" or test,
            "apps and test": kind in ("app", "test"),
        }[THIRD_PARTY[top]]
        return None if allowed else f"<{name}> is only for {THIRD_PARTY[top]}"
    if kind == "public":
        return f"a public header includes no system header: <{name}>"
    if QT_HEADER.fullmatch(name):
        allowed = folder in ("qt", "examples") or kind in ("test", "bench")
        return None if allowed else f"Qt is only for src/qt: <{name}>"
    # What tests share may fork and make folders.
    if kind == "source" and not is_linux(folder) and not (test and folder == "platform/testing"):
        return f"system headers are only for src/platform/linux: <{name}>"
    return None


def allowed_folders(kind, folder, test):
    """The folders of the library whose headers a file may include."""
    if kind in ("public", "source"):
        if folder == "umbrella":
            return set(LIBRARY)
        return closure(folder) | ({"platform/testing"} if test else set())
    if kind == "test" or (kind == "app" and test):
        return {"platform/testing"}
    if kind in ("bench", "fuzz", "refused"):
        return set(LIBRARY)
    return set()


def problem_of_public(kind, folder, test, tree, name):
    """What is wrong with including the public header "quorvance/..."."""
    # The build gives a host the doubles under this name.
    if kind == "test" and name.startswith("quorvance/testing/"):
        name = name.replace("quorvance/testing/", "platform/testing/")
        return None if (tree.root / "src" / name).is_file() else f"there is no double <{name}>"
    if not (tree.root / "include" / name).is_file():
        return f"there is no public header <{name}>"
    if kind == "app" and folder not in ("demo_host", "examples") and not test:
        return f"apps/{folder} includes nothing of the library"
    if kind not in ("public", "source"):
        return None
    target, problem = tree.public_folder(name)
    if problem or folder == "qt":
        return problem
    if target not in allowed_folders(kind, folder, test):
        return f"{folder} may not include {target}: <{name}>"
    return None


def problem_of_internal(kind, folder, test, tree, name):
    """What is wrong with including "name", written from src/ or from the project's root."""
    if kind == "public":
        return f'a public header includes nothing internal: "{name}"'
    parts = tuple(name.split("/"))
    if (tree.root / "src" / name).is_file() and ".." not in parts:
        target = source_folder(parts)
        if is_test(Path(name)) and not (test or kind in ("test", "bench", "fuzz")):
            return f'only tests include what is made for tests: "{name}"'
        if target not in allowed_folders(kind, folder, test):
            return f'{folder or kind} may not include {target or "an unknown folder"}: "{name}"'
        return None
    if (tree.root / name).is_file() and ".." not in parts:
        own = f"apps/{folder}/" if kind == "app" else None
        if kind == "app" and name.startswith(own):
            return None
        if kind == "refused" and name.startswith("test/refused_code/"):
            return None
        if kind == "test" and name.startswith(("test/", "apps/")):
            return None
        if kind in ("bench", "fuzz") and name.startswith(("benchmarks/", "fuzz/")):
            return None
        return f'{folder or kind} may not include "{name}"'
    return f'"{name}" is not there: includes are written from the root'


def is_beside_in_example(tree, path, name):
    """Whether an example with a folder of its own, which builds alone, includes a file beside it."""
    parts = path.relative_to(tree.root).parts
    is_own_project = parts[0] == "examples" and len(parts) == 3
    return is_own_project and "/" not in name and (path.parent / name).is_file()


INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(<([^>]+)>|"([^"]+)")', re.MULTILINE)


def check_file(tree, path):
    """The problems of one file, each as text."""
    where = path.relative_to(tree.root).as_posix()
    kind, folder, problem = tree.place(path)
    if problem:
        return [f"{where}:1: {problem}"]
    test = is_test(path)
    text = path.read_text(encoding="utf-8", errors="replace")
    problems = []
    for match in INCLUDE.finditer(text):
        angled = match.group(2) is not None
        name = match.group(2) or match.group(3)
        if not angled and is_beside_in_example(tree, path, name):
            problem = None
        elif name.startswith("quorvance/"):
            problem = problem_of_public(kind, folder, test, tree, name)
        elif angled:
            problem = problem_of_angled(kind, folder, test, where in WHOLE_JSON_HEADERS, name)
        else:
            problem = problem_of_internal(kind, folder, test, tree, name)
        if problem:
            line = text.count("\n", 0, match.start()) + 1
            problems.append(f"{where}:{line}: {problem}")
    return problems


def check_tree(root):
    """(number of files, problems) of a project."""
    tree = Tree(root)
    files = [
        path
        for folder in CHECKED_FOLDERS
        for path in sorted((tree.root / folder).rglob("*"))
        if path.suffix in SUFFIXES and path.is_file()
    ]
    return len(files), [problem for path in files for problem in check_file(tree, path)]


def main(arguments):
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    count, problems = check_tree(root)
    for problem in problems:
        print(problem)
    print(f"{count} files, {len(problems)} includes that point the wrong way")
    if count == 0:
        print(f"no files to check under {root}")
        return 1
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
