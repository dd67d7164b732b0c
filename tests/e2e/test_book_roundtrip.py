"""The builder against a count of the same games by other means: another program replays them, and
positions are told apart by their text, not by keys."""

import os
import subprocess
from collections import defaultdict
from pathlib import Path

import pytest

from test_book_tool import RECORD, TOOL
from uci_engine import ROOT, SLOW, installed

GAMES = Path(os.environ.get("BRIVOK_GAMES", ROOT / "data/book/games.pgn"))
PLIES = 40
RESULTS = ["1-0", "0-1", "1/2-1/2"]


def file_is(row, file, pawn):
    """The row of a placement has the pawn on the file, 0 to 7."""
    squares = "".join("." * int(c) if c.isdigit() else c for c in row)
    return 0 <= file < 8 and squares[file] == pawn


def position_of(epd):
    """The four fields; a square passed over only with an enemy pawn beside the one that did."""
    placement, side, castling, passed = epd.split(" ")[:4]
    if passed != "-":
        row = placement.split("/")[4 if side == "b" else 3]
        file = "abcdefgh".index(passed[0])
        pawn = "p" if side == "b" else "P"
        if not any(file_is(row, beside, pawn) for beside in (file - 1, file + 1)):
            passed = "-"
    return f"{placement} {side} {castling} {passed}"


def count_positions(lines):
    """Position -> [White's wins, Black's wins, draws], each once a game."""
    counts = defaultdict(lambda: [0, 0, 0])
    games, game = 0, []
    for line in [*lines, ""]:
        if line:
            game.append(line)
        elif game:
            result = game[0].rsplit("c1 ", 1)[1].rstrip(";")
            for position in {position_of(epd) for epd in game[1:PLIES + 1]}:
                counts[position][RESULTS.index(result)] += 1
            games, game = games + 1, []
    return games, counts


@pytest.mark.skipif(SLOW, reason="the same games would take minutes")
def test_every_count_is_equal(tmp_path):
    program = installed("pgn-extract")
    assert program, "Debian's pgn-extract is missing"
    replayed = subprocess.run([program, "-s", "-Wepd", GAMES], capture_output=True, text=True,
                              encoding="latin-1", check=True)
    games, counts = count_positions(replayed.stdout.splitlines())

    book = tmp_path / "book.bin"
    text = subprocess.run([TOOL, "build", GAMES, "-o", book, "--plies", str(PLIES)], text=True,
                          capture_output=True, check=True).stdout
    assert f" {games} games read\n" in text and f" {games} counted\n" in text
    assert book.stat().st_size == RECORD.size * len(counts)

    positions = list(counts)
    found = subprocess.run([TOOL, "lookup", book], text=True, capture_output=True, check=True,
                           input="".join(position + "\n" for position in positions)).stdout
    for position, line in zip(positions, found.splitlines(), strict=True):
        assert [int(x) for x in line.split()[1:4]] == counts[position], position
