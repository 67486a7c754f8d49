#!/usr/bin/env python3
"""What two runs of one program may differ in, and what they may not."""

import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import compare_logs

ONE, OTHER = "961E2630-C31F-48D9-A194-2470D04FA318", "F2F0EC82-E814-44EA-B449-3DCB0C487766"

SAME = [
    ('{"time":1795409811207,"a":1}', '{"time":1795409811999,"a":1}'),
    (f'{{"keys":"{ONE}","again":"{ONE}"}}', f'{{"keys":"{OTHER}","again":"{OTHER}"}}'),
    (f'{{"idSession":"{ONE}-1795409811205"}}', f'{{"idSession":"{ONE}-1795409811777"}}'),
    (f'"device-{"0" * 32}"', f'"device-{"a" * 32}"'),
    ('"eyJhbGciOiJIUzI1NiJ9.eyJyaXNr.hLO-_w"', '"eyJhbGciOiJIUzI1NiJ9.eyJpYXQi.zTO"'),
    ('["http://127.0.0.1:8080/a","thread 17"]', '["http://127.0.0.1:9090/a","thread 4"]'),
    ('"2023-11-14T22:13:20.123Z"', '"2024-01-01T00:00:00.000Z"'),
    (r'"/a/b/host(+0x8d)[0x56]\n/lib/c.so.6(f+0x1)[0x7f]"', r'"/c/host(+0x9)[0x1]\n/c.so.6(f+0x2)[0x3]"'),
    ("first\nsecond", "second\nfirst"),
]

DIFFERENT = [
    ('{"a":1,"b":2}', '{"b":2,"a":1}'),
    (f'{{"keys":"{ONE}","again":"{ONE}"}}', f'{{"keys":"{ONE}","again":"{OTHER}"}}'),
    ('{"device_id":"no_device_id"}', f'{{"device_id":"device-{"0" * 32}"}}'),
    ('{"amount":12.5}', '{"amount":12.50}'),
    ('{"year":2030}', '{"year":2031}'),
    ("once", "once\nonce"),
    ("once", ""),
    (r'"/a/host(f+0x8d)[0x56]"', r'"/a/host(g+0x8d)[0x56]"'),
]


class CompareLogs(unittest.TestCase):
    def compare(self, before, after):
        """The exit status of comparing folders that hold these files."""
        with tempfile.TemporaryDirectory() as folder:
            for side, files in (("before", before), ("after", after)):
                (Path(folder) / side).mkdir()
                for name, text in files.items():
                    (Path(folder) / side / name).write_text(text, encoding="utf-8")
            with contextlib.redirect_stdout(io.StringIO()):
                return compare_logs.main([f"{folder}/before", f"{folder}/after"])

    def test_identifiers_times_and_the_order_of_calls_may_differ(self):
        for before, after in SAME:
            with self.subTest(before):
                self.assertEqual(0, self.compare({"a.jsonl": before}, {"a.jsonl": after}))

    def test_everything_else_may_not(self):
        for before, after in DIFFERENT:
            with self.subTest(before):
                self.assertEqual(1, self.compare({"a.jsonl": before}, {"a.jsonl": after}))

    def test_log_that_one_side_lacks_differs_and_no_log_at_all_is_no_success(self):
        self.assertEqual(1, self.compare({"a.jsonl": "x", "b.jsonl": "x"}, {"a.jsonl": "x"}))
        self.assertEqual(2, self.compare({}, {}))


if __name__ == "__main__":
    unittest.main(buffer=True)
