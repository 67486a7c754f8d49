#!/usr/bin/env python3
"""The first minute with ./dev: help, wrong options, how far a build is, and Ctrl-C."""

import os
import shutil
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent

WAITS_FOR_CTRL_C = """
import signal, sys
signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGINT])
print("begun", flush=True)
signal.sigwait([signal.SIGINT])
sys.exit(2)
"""


class FirstMinute(unittest.TestCase):
    """The script in a folder of its own, with a build tool that says what a test tells it to."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        shutil.copy(PROJECT / "dev", self.root)
        (self.root / "CMakePresets.json").touch()
        os.utime(self.root / "CMakePresets.json", (0, 0))  # the build is configured
        (self.root / "build" / "plain").mkdir(parents=True)
        (self.root / "build" / "plain" / "build.ninja").touch()
        (self.root / "build" / "plain" / "CMakeCache.txt").write_text("QUORVANCE_QT:STRING=ON\n")
        (self.root / "bin").mkdir()
        self.put("dpkg-query", 'shift 2; for name; do echo "installed $name"; done')

    def put(self, name, text):
        program = self.root / "bin" / name
        program.write_text("#!/bin/bash\n" + text + "\n")
        program.chmod(0o755)

    def start(self, *arguments, output=subprocess.PIPE):
        path = f"{self.root / 'bin'}:{os.environ['PATH']}"
        return subprocess.Popen(
            [self.root / "dev", *arguments],
            env={**os.environ, "PATH": path},
            stdout=output,
            stderr=output,
            text=True,
            start_new_session=True,
            # Who runs the tests in the background may have them ignore it.
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
        )

    def run_dev(self, *arguments):
        """(exit status, standard output, standard error)"""
        process = self.start(*arguments)
        out, error = process.communicate(timeout=60)
        return process.returncode, out, error

    def test_help_is_told_at_once_and_wrong_options_in_one_line(self):
        self.put("cmake", "echo built; exit 1")
        for arguments in (["demo", "--help"], ["demo", "x.json", "-h"], ["--help"]):
            status, out, error = self.run_dev(*arguments)
            self.assertEqual((status, error), (0, ""))
            self.assertTrue(out.startswith("usage: ./dev "), out)
        for arguments in (
            ["demo", "--nonsense"],
            ["demo", "--server", "--stay", "--stray"],
            ["demo", "--qt", "--script", "day", "--stay"],
        ):
            status, out, error = self.run_dev(*arguments)
            self.assertEqual((status, out), (2, ""))
            self.assertRegex(error, r"\Adev: demo: --\w+: no such option, see [^\n]*\n\Z")

    def test_a_build_without_a_terminal_tells_each_tenth_and_all_faults(self):
        self.put("cmake", 'for i in {1..40}; do echo "plain [$i/40] x"; done; echo FAILED: y; exit 1')
        status, out, error = self.run_dev("demo")
        self.assertEqual((status, out), (1, ""))
        lines = error.splitlines()
        self.assertEqual(lines[0], "building plain: 10 % (4 of 40 steps)")
        self.assertEqual((len(lines), lines[-1]), (11, "FAILED: y"))

    def test_ctrl_c_in_a_build_ends_it_on_a_terminal_too(self):
        # The shell forgets a signal that comes while it starts a program: this one waits for it.
        self.put("cmake", f"exec python3 -c '{WAITS_FOR_CTRL_C}'")
        terminal = os.openpty()
        for reader, writer in (os.pipe(), terminal):
            process = self.start("demo", output=writer)
            os.close(writer)
            self.assertIn(b"begun", os.read(reader, 100))
            os.killpg(process.pid, signal.SIGINT)
            self.assertEqual(process.wait(timeout=60), 130)
            os.close(reader)


if __name__ == "__main__":
    unittest.main()
