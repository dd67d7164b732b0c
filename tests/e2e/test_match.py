"""The match script: its games, its ratings, and the faults that it must notice."""

import json
import math
import subprocess
import sys

import pytest

from chesskit import BRIVOK, PATIENCE, ROOT, SLOW, Standing, installed

pytestmark = pytest.mark.skipif(
    SLOW or not (installed("stockfish") and installed("pgn-extract")),
    reason="stockfish or pgn-extract is missing, or the engine too slow")

FAKE = """#!/bin/sh
while read -r line; do
    case $line in
        uci) echo uciok ;;
        isready) echo readyok ;;
        go*) {answer} ;;
        quit) exit ;;
    esac
done
"""


def match(folder, engine, *arguments):
    """The exit code, the JSON and the printed text."""
    command = [sys.executable, ROOT / "tests/soak/match.py", "--engine", engine, "--games", "1",
               "--opponents", "stockfish", "--nodes", "50", "--time", "500", "--grace", "9000",
               "--json", folder / "match.json", "--pgn", folder / "match.pgn", *arguments]
    done = subprocess.run(command, capture_output=True, text=True, timeout=4 * PATIENCE)
    assert (folder / "match.json").exists(), done
    return done.returncode, json.loads((folder / "match.json").read_text()), done.stdout


def test_games(tmp_path):
    code, found, text = match(tmp_path, BRIVOK, "--protocol", "both", "--ponder", "on")
    assert code == 0 and "pgn-extract agrees" in text, text
    assert [(x["protocol"], x["ponder"], x.get("fault")) for x in found["games"]] == [
        ("uci", True, None), ("winboard", True, None)]
    total = found["tables"][-1]["rows"]["all games"]
    assert total["games"] == total["won"] + total["drawn"] + total["lost"] == 2
    assert (tmp_path / "match.pgn").read_text().count("[Event ") == 2


@pytest.mark.parametrize("fault, answer", [
    ("illegal", "echo bestmove a1a8"), ("crash", "exit 3"), ("time", "sleep 1; echo bestmove x")])
def test_faults(tmp_path, fault, answer):
    engine = tmp_path / "engine"
    engine.write_text(FAKE.format(answer=answer))
    engine.chmod(0o755)
    late = ["--grace", "100"] if fault == "time" else []
    code, found, _ = match(tmp_path, engine, "--protocol", "uci", "--ponder", "off", *late)
    total = found["tables"][-1]["rows"]["all games"]
    assert code == 1 and total["lost"] == 1
    assert {x: total[x] for x in ("illegal", "time", "crash")} == {
        "illegal": 0, "time": 0, "crash": 0, fault: 1}


def test_rating():
    assert [round(x) for x in Standing(60, 30, 10).rating()] == [191, 130, 253]
    middle, low, high = Standing(4, 0, 0).rating()
    assert middle == high == math.inf and -100 < low < 100
    assert Standing(3, 8, 3).rating()[0] == 0
