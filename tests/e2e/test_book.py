"""The opening book, played from under both protocols. This file computes the keys of its records by
itself, so that a book stays valid from one version to the next."""

import re
import struct

import pytest

from chesskit import START, WinBoard, squares

WORD = 2**64 - 1
NOTE = re.compile(r"## (This position|and there are|\([a-h])")


def random_keys(seed=9, words=27):
    state = []
    for _ in range(words):
        state.append(seed)
        seed = (seed << 5 | seed >> 59) + 97 & WORD
    a, b, c = 0, 10, 21
    while True:
        x, y, z = state[a], state[b], state[c]
        state[a] = (x << 5 | x >> 59) + (y << 3 | y >> 61) + (z >> 11 | z << 53) & WORD
        yield state[a]
        a, b, c = ((i - 1) % words for i in (a, b, c))


def key(*moves):
    """The key after quiet moves from the start; kings and rooks must not move."""
    draw = random_keys()
    keys = {(man, f"{file}{rank}"): next(draw) for man in "PpNnKkRrQqBb"
            for rank in range(8, 0, -1) for file in "abcdefgh"}
    men = squares(START)
    for move in moves:
        men[move[2:]] = men.pop(move[:2])
    for _ in range(64 + 16):  # en passant squares, then castling rights
        value = next(draw)
    for square, man in men.items():
        value ^= keys[man, square]
    return value ^ WORD * (len(moves) % 2)


def write(path, book):
    """`book` maps a line of moves to White's wins, Black's wins, draws and annotation."""
    records = sorted((key(*line.split()), *counts) for line, counts in book.items())
    path.write_bytes(b"".join(struct.pack("<Q4I", *record) for record in records))


@pytest.fixture(autouse=True)
def book(tmp_path):
    write(tmp_path / "libro.bin", {"e2e4": (10, 2, 5, 2), "a2a3": (0, 9, 0, 0),
                                   "e2e4 e7e5 g1f3": (3, 0, 0, 0), "d2d4 b8c6": (1, 4, 1, 0)})
    write(tmp_path / "other.bin", {"b2b4": (1, 0, 0, 0)})


def answer(engine, *lines):
    engine.send(*lines)
    return engine.wait("move ")


def test_winboard(start, tmp_path):
    engine = start(WinBoard, ini="CreateLog: true\nLogInSingleFile: true\n")
    assert answer(engine, "go") == ["0 1 0 0 e4 (Book move)", "", "move e2e4"]
    assert answer(engine, "usermove e7e5") == ["", "0 1 0 0 Nf3 (Book move)", "", "move g1f3"]
    engine.send("easy", "sd 1")
    assert "move " in answer(engine, "usermove b8c6")[-1]  # on its own from here
    engine.wait("")
    assert answer(engine, "new", "usermove d2d4")[0] == "0 1 0 0 Nc6 (Book move)"
    assert "Book" not in str(answer(engine, f"setboard {START}", "sd 1", "go"))
    assert answer(engine, "new", "go")[-3:] == ["0 1 0 0 e4 (Book move)", "", "move e2e4"]
    engine.finish()
    log = (tmp_path / "brivoklog.txt").read_text()
    assert "Hint" not in log.partition("easy")[0], "nothing to ponder on after a book move"
    notes = [line for line in log.splitlines() if NOTE.match(line)]
    first = ["## This position has been played 26 times",
             "## and there are 2 possible moves in the book",
             "## (a2a3) +     0 -     9 =     0 score    -9",
             "## (e2e4!) +    10 -     2 =     5 score    30"]
    assert notes[:6] == first + ["## This position has been played 3 times",
                                 "## and there are 1 possible moves in the book"]
    assert notes[7:] == ["## This position don't have moves in the book",
                         "## This position has been played 6 times",
                         "## and there are 1 possible moves in the book",
                         "## (b8c6) +     1 -     4 =     1 score     3", *first]


@pytest.mark.parametrize("ini, move, note", [
    ("OPNBookFile: Other.BIN\n", "b4", 0), ("OPNBookFile: none.bin\n", None, 1),
    ("OpeningsBook: false\nOPNBookFile: none.bin\n", None, 0), ("OpeningsBook: TRUE\n", "e4", 0)])
def test_settings(start, tmp_path, ini, move, note):
    engine = start(WinBoard, ini=ini + "CreateLog: true\nLogInSingleFile: true\n")
    said = answer(engine, "easy", "sd 1", "go")
    assert [x for x in said if "Book" in x] == ([f"0 1 0 0 {move} (Book move)"] if move else [])
    engine.finish()
    log = (tmp_path / "brivoklog.txt").read_text()
    assert log.count("## I can't open file none.bin!\n") == note


def test_uci(start):
    engine = start(options={"BookFile": "other.bin"})
    for go in ("go depth 1", "go movetime 10000", "go wtime 1000 btime 1000"):
        assert engine.go(go, "position startpos").lines == ["", "bestmove e2e4 "]
    assert engine.go("go depth 1", "position startpos moves d2d4").best == "b8c6"
    for position in (f"position fen {START}", "position startpos moves e2e4 e7e5 g1f3"):
        assert len(engine.go("go depth 3", position).lines) > 2
    engine.set("OwnBook", "false")
    assert engine.go("go depth 3", "position startpos").info
    engine.set("OwnBook", "true")
    assert not engine.go("go depth 3").info
