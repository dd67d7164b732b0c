"""Some of the recorded searches over pipes; all of them are replayed by tests/records_test.cpp."""

import json
import re

import pytest

from chesskit import ROOT, WinBoard


def masked(lines):
    """The lines with times and node rates set to 0."""
    return [re.sub(r"\b(time|nps) \d+", r"\1 0", line) for line in lines]


@pytest.mark.parametrize("file, name", [
    ("search", "castled"), ("search", "nocastle playout"), ("game", "go again without a position")])
def test_record(start, file, name):
    records = json.loads((ROOT / f"tests/data/{file}.json").read_text())
    record = next(r for r in records if name in (r.get("name"), r.get("kind")))
    if "config" in record:  # only WinBoard reads the file
        engine = start(WinBoard, ini="\n".join(record["config"]))
        engine.send("uci")
        engine.wait("uciok")
    else:
        engine = start()
    engine.send(*record.get("setoption", []))
    for step in record.get("steps", [record]):
        if "position" in step:
            engine.send(step["position"])
        engine.ready()
        reply = engine.go(step["go"])
        *info, _, best = step["output"]
        assert masked(reply.info) == masked(info)
        assert reply.lines[-1] == best
