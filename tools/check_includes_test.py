#!/usr/bin/env python3
"""The include check must see every way of breaking the layers: each case is a small tree."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import check_includes

# A tree in which every include is as it should be; each case below adds or replaces one file.
SOUND = {
    "include/quorvance/json.h": "#include <nlohmann/json_fwd.hpp>\n",
    "include/quorvance/quorvance.h": "#include <quorvance/risk.h>\n#include <quorvance/manager.h>\n",
    "include/quorvance/risk.h": "#include <string>\n#include <quorvance/json.h>\n",
    "include/quorvance/manager.h": "#include <quorvance/platform/clock.h>\n",
    "include/quorvance/platform/clock.h": "#include <cstdint>\n",
    "src/base/text.h": "#include <string>\n",
    "src/platform/platform.cpp": '#include "base/text.h"\n',
    "src/platform/linux/linux_clock.cpp": '#include <unistd.h>\n#include "quorvance/platform/clock.h"\n',
    "src/platform/linux/linux_clock.h": "#include <quorvance/platform/clock.h>\n",
    "src/platform/linux/linux_clock_test.cpp": '#include <gtest/gtest.h>\n#include <sys/stat.h>\n'
    '#include "platform/testing/manual_clock.h"\n#include "platform/linux/linux_clock.h"\n',
    "src/platform/linux/http/session.cpp": '#include "platform/linux/threads/thread.h"\n',
    "src/platform/linux/threads/thread.h": "#include <pthread.h>\n",
    "src/platform/testing/manual_clock.h": "#include <quorvance/platform/clock.h>\n",
    "src/model/risk.cpp": '#include "quorvance/risk.h"\n#include <nlohmann/json.hpp>\n',
    "src/model/risk_test.cpp": '#include <gmock/gmock.h>\n#include "platform/testing/manual_clock.h"\n',
    "src/state/session.h": '#include "quorvance/risk.h"\n#include "base/text.h"\n',
    "src/diagnostics/tracing.h": '#include "state/session.h"\n',
    "src/network/call_maker.h": '#include "diagnostics/tracing.h"\n#include "state/session.h"\n',
    "src/device/device_data.h": '#include "state/session.h"\n',
    "src/biometrics/listener.h": '#include "network/call_maker.h"\n',
    "src/core/manager.cpp": '#include "quorvance/manager.h"\n#include "device/device_data.h"\n'
    '#include "biometrics/listener.h"\n',
    "include/quorvance/qt/screen.h": "#include <quorvance/manager.h>\n",
    "src/qt/screen.cpp": '#include <QWidget>\n#include "qt/router.h"\n#include "quorvance/risk.h"\n',
    "src/qt/router.h": "#include <quorvance/qt/screen.h>\n",
    "apps/risk_server/main.cpp": '#include <httplib.h>\n#include "apps/risk_server/tally.h"\n',
    "apps/risk_server/tally.h": "#include <nlohmann/json.hpp>\n",
    "apps/demo_host/main.cpp": "#include <signal.h>\n#include <quorvance/quorvance.h>\n",
    "examples/qt_bank/main.cpp": '#include <QObject>\n#include <quorvance/risk.h>\n#include "bank.h"\n',
    "examples/qt_bank/bank.h": "#include <string>\n",
    "test/refused_code/wrong_text.cpp": '#include "base/text.h"\n#include "test/refused_code/a.h"\n',
    "test/refused_code/a.h": '#include "state/session.h"\n',
    "test/end_to_end_test.cpp": '#include <quorvance/quorvance.h>\n#include "apps/risk_server/tally.h"\n'
    '#include "platform/testing/manual_clock.h"\n',
}

# (what is wrong, the file, what it includes, a part of the complaint)
VIOLATIONS = [
    ("base knows nobody", "src/base/a.cpp", '"state/session.h"', "base may not include state"),
    ("model is above the platform", "src/model/a.cpp", "<quorvance/platform/clock.h>", "may not"),
    ("state records nothing", "src/state/a.cpp", '"diagnostics/tracing.h"', "state may not"),
    ("diagnostics never sends", "src/diagnostics/a.cpp", '"network/call_maker.h"', "may not"),
    ("device is beside network", "src/device/a.cpp", '"network/call_maker.h"', "may not"),
    ("device is beside diagnostics", "src/device/a.h", '"diagnostics/tracing.h"', "may not"),
    ("biometrics is beside device", "src/biometrics/a.h", '"device/device_data.h"', "may not"),
    ("a public header has its layer", "src/network/a.cpp", "<quorvance/manager.h>", "include core"),
    ("the umbrella is for hosts", "src/core/a.cpp", "<quorvance/quorvance.h>", "include umbrella"),
    ("nobody names the Linux folder", "src/core/a.cpp", '"platform/linux/linux_clock.h"', "may not"),
    (
        "the platforms do not meet",
        "src/platform/testing/a.h",
        '"platform/linux/linux_clock.h"',
        "platform/testing may not include platform/linux",
    ),
    ("an example has its own files", "examples/a.cpp", '"qt_bank/bank.h"', "written from the root"),
    ("an example is a host", "examples/qt_bank/a.cpp", '"base/text.h"', "may not"),
    ("doubles are for tests", "src/core/a.cpp", '"platform/testing/manual_clock.h"', "may not"),
    (
        "the Linux folder needs no double",
        "src/platform/linux/a.cpp",
        '"platform/testing/manual_clock.h"',
        "platform/linux may not include platform/testing",
    ),
    (
        "rooms of a platform have layers too",
        "src/platform/linux/threads/a.cpp",
        '"platform/linux/http/session.cpp"',
        "threads may not include platform/linux/http",
    ),
    (
        "a room does not see the whole platform",
        "src/platform/linux/http/a.cpp",
        '"platform/linux/linux_clock.h"',
        "platform/linux/http may not include platform/linux",
    ),
    ("an unknown room", "src/platform/linux/odd/a.cpp", "<string>", "not in the include table"),
    ("tests keep to the layers", "src/model/a_test.cpp", '"core/x.h"', "not there"),
    ("tests of model see no state", "src/model/a_test.cpp", '"state/session.h"', "may not"),
    ("system headers stay below", "src/core/a.cpp", "<unistd.h>", "system headers"),
    ("curl stays below", "src/network/a.cpp", "<curl/curl.h>", "system headers"),
    ("base has no system either", "src/base/a.cpp", "<sys/random.h>", "system headers"),
    ("gtest is for tests", "src/model/a.cpp", "<gtest/gtest.h>", "only for tests"),
    ("the server library is for apps", "src/network/a.cpp", "<httplib.h>", "only for apps"),
    ("hosts get the light JSON header", "include/quorvance/json.h", "<nlohmann/json.hpp>", "json_fwd"),
    ("hosts get nothing internal", "include/quorvance/risk.h", '"base/text.h"', "nothing internal"),
    ("hosts get no system header", "include/quorvance/risk.h", "<sys/types.h>", "no system header"),
    ("headers keep their layer", "include/quorvance/risk.h", "<quorvance/manager.h>", "model may not"),
    ("a header without a folder", "include/quorvance/stray.h", "<string>", "belongs to no folder"),
    ("a public folder of no layer", "include/quorvance/odd/a.h", "<string>", "not in the include table"),
    ("an unknown folder", "src/misc/a.cpp", "<string>", "not in the include table"),
    ("an unknown platform", "src/platform/other/a.cpp", "<string>", "not in the include table"),
    ("the server is not the library", "apps/risk_server/main.cpp", "<quorvance/risk.h>", "nothing of"),
    ("the host is outside", "apps/demo_host/main.cpp", '"core/x.h"', "not there"),
    ("the host sees no source", "apps/demo_host/main.cpp", '"base/text.h"', "may not include base"),
    (
        "the apps do not meet",
        "apps/demo_host/main.cpp",
        '"apps/risk_server/tally.h"',
        "demo_host may not include",
    ),
    ("spanning tests stay outside", "test/a_test.cpp", '"state/session.h"', "may not include state"),
    ("snippets need no test", "test/refused_code/a.cpp", "<gtest/gtest.h>", "only for tests"),
    ("written from the root", "src/state/a.cpp", '"session.h"', "written from the root"),
    ("no way around by dots", "src/base/a.cpp", '"base/../state/session.h"', "written from the root"),
    ("a header that does not exist", "src/state/a.cpp", "<quorvance/none.h>", "no public header"),
    ("Qt stays in its component", "src/core/a.cpp", "<QObject>", "only for src/qt"),
    ("the library knows no component", "src/core/a.cpp", "<quorvance/qt/screen.h>", "may not include qt"),
    ("the component is a host", "src/qt/a.cpp", '"base/text.h"', "qt may not include base"),
    ("hosts need no Qt to read it", "include/quorvance/qt/a.h", "<QWidget>", "no system header"),
    ("blanks hide nothing", "src/base/a.cpp", '"state/session.h"  // why', "base may not include"),
]


class CheckIncludes(unittest.TestCase):
    def problems(self, files):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return check_includes.check_tree(Path(folder))[1]

    def test_sound_tree_has_no_problem(self):
        self.assertEqual([], self.problems(SOUND))

    def test_each_violation_is_found_where_it_stands(self):
        for what, name, included, complaint in VIOLATIONS:
            with self.subTest(what):
                files = {**SOUND, name: f"#pragma once\n  #  include {included}\n"}
                found = [p for p in self.problems(files) if p.startswith(f"{name}:")]
                self.assertEqual(1, len(found), found)
                self.assertIn(complaint, found[0])

    def test_line_of_the_include_is_told(self):
        files = {**SOUND, "src/base/a.cpp": '// a\n\n#include "state/session.h"\n'}
        self.assertTrue(self.problems(files)[0].startswith("src/base/a.cpp:3: "))

    def test_header_of_two_folders_is_refused(self):
        files = {**SOUND, "src/state/risk.cpp": ""}
        self.assertTrue(any("could belong to each" in p for p in self.problems(files)))

    def test_what_is_made_for_tests_stays_with_tests(self):
        support = {**SOUND, "src/base/text_test_support.h": "#include <string>\n"}
        include = '#include "base/text_test_support.h"\n'
        self.assertEqual([], self.problems({**support, "src/model/b_test.cpp": include}))
        self.assertEqual(1, len(self.problems({**support, "src/model/b.cpp": include})))

    def test_arrows_have_no_circle(self):
        for folder, below in check_includes.ARROWS.items():
            for other in below:
                self.assertNotIn(folder, check_includes.closure(other))

    def test_empty_tree_is_an_error(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(1, check_includes.main([folder]))


if __name__ == "__main__":
    unittest.main(buffer=True)
