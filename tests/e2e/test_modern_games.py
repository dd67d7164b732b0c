"""The script that plays as modern interfaces do: a few of its games, and the faults that it must
notice."""

import json
import os
import subprocess
import sys

import pytest

from chesskit import PATIENCE, ROOT, SLOW, installed

pytestmark = pytest.mark.skipif(not installed("stockfish"), reason="no stockfish")

FAKE = """#!/bin/sh
while read -r line; do
    case $line in
        uci) echo uciok ;;
        isready) echo readyok ;;
        *go*) {answer} ;;
        quit) exit ;;
    esac
done
"""


def soak(folder, *arguments, engine=None):
    """The exit code and the printed text."""
    done = subprocess.run(
        [sys.executable, ROOT / "tests/soak/modern_games.py", "--faults", folder / "faults",
         "--json", folder / "games.json", "--time", "300", "--increment", "5", *map(str, arguments)],
        capture_output=True, text=True, timeout=8 * PATIENCE,
        env=os.environ | ({"BRIVOK": str(engine)} if engine else {}))
    return done.returncode, done.stdout + done.stderr


def test_games(tmp_path):
    each, fischer = (1, 0) if SLOW else (2, 1)
    code, text = soak(tmp_path, "--games", 2 * each, "--frc-games", fischer, "--seed", 15)
    assert code == 0, text + "".join(x.read_text("latin-1")
                                     for x in (tmp_path / "faults").glob("*"))
    told = json.loads((tmp_path / "games.json").read_text())
    assert [(x["protocol"], x["fault"]) for x in told["games"]] == [
        *[("uci", "")] * each, *[("winboard", "")] * each, *[("uci", "")] * fischer]
    for what in ("uci ponder hits", "uci ponder misses", "uci lines of play checked"):
        assert told["counts"][what] > 0, told["counts"]


@pytest.mark.parametrize("answer, fault", [
    ("echo info depth 1 score cp 0 pv a1a8; echo bestmove a1a8", "plays bestmove a1a8"),
    ("echo bestmove e2e4", "tells no score before its move"),
    ("echo info depth 1 score cp 0 pv e2e4 score; echo bestmove e2e4", "says 'info"),
    ("exit 3", "ended without 'bestmove'")])
def test_faults(tmp_path, answer, fault):
    engine = tmp_path / "engine"
    engine.write_text(FAKE.format(answer=answer))
    engine.chmod(0o755)
    code, text = soak(tmp_path, "--games", "1", "--frc-games", "0", "--protocol", "uci",
                      engine=engine)
    assert code == 1 and fault in text, text
    conversation = (tmp_path / "faults" / "fault-0.txt").read_text()
    assert "< ucinewgame" in conversation and "< isready" in conversation
