#!/usr/bin/env python3
"""Hosts with another JSON library than the library's say and send the same as one with its own.

Usage: json_host_test.py RISK_SERVER HOST OTHER_HOST...
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

TIMEOUT = 120
CHECKPOINTS = 7


def run(server: str, host: str, folder: Path) -> tuple[str, list[str]]:
    """What a host prints, and what it sends of its own data, as texts in a fixed order."""
    log = folder / "log"
    with subprocess.Popen(
        [server, "--port", "0", "--console-port", "off", "--log", str(log)], stdout=subprocess.PIPE, text=True
    ) as running:
        url = running.stdout.readline().split()[-1]
        try:
            said = subprocess.run([host, url, str(folder)], capture_output=True, text=True, timeout=TIMEOUT, check=True)
        finally:
            running.terminate()
    sent = []
    for line in log.read_text().splitlines():
        call = json.loads(line)
        body = call.get("request")
        for key in ("SendCheckpointEvent", "SendSessionData"):
            if f"/{key}/" in call["path"]:
                own = {name: body[name] for name in body if name.isupper() or name == "user_data"}
                sent.append(json.dumps(own, ensure_ascii=False))
    return said.stdout, sorted(sent)


def main() -> None:
    server, own, *others = sys.argv[1:]
    results = []
    for host in (own, *others):
        with tempfile.TemporaryDirectory() as name:
            results.append(run(server, host, Path(name)))
    said, sent = results[0]
    checkpoints = [text for text in sent if "checkpoint_type" in text]
    assert len(checkpoints) == CHECKPOINTS, sent
    assert sum("user_data" in text for text in checkpoints) == 2, sent
    assert any('"mark": [1, "two"]' in text for text in checkpoints), sent
    assert any('"contacts": 17' in text for text in sent), sent
    for host, result in zip(others, results[1:]):
        assert result == (said, sent), f"{host}: {result}\ninstead of {(said, sent)}"
        names = subprocess.run(["nm", "-C", host], capture_output=True, text=True, check=True).stdout
        assert "json_3_11_99_10::CheckPoint" in names and "json_abi_diag_v3_11_99" in names, host


main()
