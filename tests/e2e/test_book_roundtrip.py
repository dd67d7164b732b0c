"""The book builder against another count of the same games: another program replays them, and text,
not keys, tells positions apart."""

import os
from collections import defaultdict
from pathlib import Path

import pytest

from chesskit import BOOK_TOOL, ROOT, SLOW, installed, run_tool, squares
from test_book_tool import RECORD

GAMES = Path(os.environ.get("BRIVOK_GAMES", ROOT / "data/book/games.pgn"))
PLIES = 40
RESULTS = ["1-0", "0-1", "1/2-1/2"]


def position_of(epd):
    """The first four fields. The en passant square stays only if an enemy pawn stands beside the
    pawn."""
    placement, side, castling, passed = epd.split(" ")[:4]
    if passed != "-":
        pawn, rank = ("p", 4) if side == "b" else ("P", 5)
        men, file = squares(placement), ord(passed[0])
        if pawn not in (men.get(f"{chr(beside)}{rank}") for beside in (file - 1, file + 1)):
            passed = "-"
    return f"{placement} {side} {castling} {passed}"


def count_positions(lines):
    """Position -> [White's wins, Black's wins, draws]; a game counts once for each position."""
    counts: dict[str, list[int]] = defaultdict(lambda: [0, 0, 0])
    game: list[str] = []
    games = 0
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
    replayed = run_tool(program, "-s", "-Wepd", GAMES)
    games, counts = count_positions(replayed.stdout.splitlines())

    book = tmp_path / "book.bin"
    text = run_tool(BOOK_TOOL, "build", GAMES, "-o", book, "--plies", PLIES).stdout
    assert f" {games} games read\n" in text and f" {games} counted\n" in text
    assert book.stat().st_size == RECORD.size * len(counts)

    positions = list(counts)
    found = run_tool(BOOK_TOOL, "lookup", book, input="".join(x + "\n" for x in positions)).stdout
    for position, line in zip(positions, found.splitlines(), strict=True):
        assert [int(x) for x in line.split()[1:4]] == counts[position], position
