"""Repeats the recorded searches over UCI: the same info lines, best moves and ponder moves."""

import json
import re

import pytest

from chesskit import ROOT, SLOW, WinBoard


def records():
    for name in ("game", "search"):
        for record in json.loads((ROOT / f"tests/data/{name}.json").read_text()):
            steps = record.get("searches") or record.get("steps") or [record]
            if SLOW and sum(s.get("nodes", 0) for s in steps) > 150000:
                continue
            label = f"{name}-{record.get('id', record.get('name'))}".replace(" ", "-")
            yield pytest.param(record.get("config"), record.get("setoption", []), steps, id=label)


def masked(lines):
    """The lines with times and node rates set to 0."""
    return [re.sub(r"\b(time|nps) \d+", r"\1 0", line).rstrip() for line in lines]


@pytest.mark.parametrize("config, options, steps", records())
def test_record(start, config, options, steps):
    if config:  # some settings exist only in the file, which only WinBoard reads
        engine = start(WinBoard, ini="\n".join(config))
        engine.send("uci")
        engine.wait("uciok")
    else:
        engine = start()
    engine.send(*options)
    for step in steps:
        if "go" not in step:
            engine.send(step["command"])
            continue
        if step["position"]:
            engine.send(step["position"])
        engine.ready()
        reply = engine.go(step["go"])
        assert masked(reply.info) == masked(step["info"])
        assert reply.lines[-1].rstrip() == step["bestmoveLine"].rstrip()
