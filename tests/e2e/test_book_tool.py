"""The command line of the book builder."""

import os
import random
import re
import resource
import signal
import struct
import subprocess
import time

import pytest

from chesskit import BOOK_TOOL, PATIENCE, run_tool

RECORD = struct.Struct("<QIIII")
GAMES = """\
[Event "?"]
[WhiteElo "2100"]
[Result "1-0"]

1. e4! e5 2. Nf3 Nc6? 1-0

[Event "?"]
[BlackElo "1900"]
[Result "0-1"]

1. e4 $3 {once more} e5 2. f4 (2. Nf3!! Nf6) exf4 0-1

[Event "?"]
[Result "1/2-1/2"]

1. e4!! c5 2. Nf3 1/2-1/2

[Event "?"]
[Result "1-0"]

1. e4 e5
2. Ke3 1-0

[Event "?"]
[Result "*"]

1. e4 *

[Event "?"]
[SetUp "1"]
[FEN "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1"]
[Result "1-0"]

1. e4 1-0
"""


@pytest.fixture
def run(tmp_path):
    """Runs the tool in an empty folder. Returns its output, or its errors if it has to fail."""
    def call(*arguments, data="", fails=False, **more):
        done = run_tool(BOOK_TOOL, *arguments, code=int(fails), input=data, cwd=tmp_path, **more)
        return done.stderr if fails else done.stdout

    return call


def records(path):
    return list(RECORD.iter_unpack(path.read_bytes()))


def table(text):
    """Move -> (annotation, White, Black, draws, score, chance), in the order of the lines."""
    line = r"^(\S+) +([!?]*) +(\d+) +(\d+) +(\d+) +\d+ +(-?\d+) +([\d.]+) %$"
    return {move: (mark, int(white), int(black), int(draws), int(score), float(chance))
            for move, mark, white, black, draws, score, chance in re.findall(line, text, re.M)}


def test_build_show_check_merge(run, tmp_path):
    (tmp_path / "games.pgn").write_text(GAMES, newline="\r\n")
    assert re.findall(r"(\d+) (.*)", run("build", "games.pgn", "-o", "a.bin")) == [
        ("6", "games read"), ("3", "counted"),
        ("1", "skipped: not normal chess from the start position"), ("1", "skipped: broken"),
        ("1", "skipped: no result"), ("8", "positions, 8 records in a.bin")]
    book = records(tmp_path / "a.bin")
    assert [r[0] for r in book] == sorted(r[0] for r in book) and len(book) == 8
    # Two games say "!!", one "!".
    assert table(run("show", "a.bin")) == {"e4": ("!!", 1, 1, 1, 0, 100)}
    assert list(table(run("show", "a.bin", "--moves", "e2e4")).items()) == [
        ("c5", ("", 0, 0, 1, 0, 100)), ("e5", ("", 1, 1, 0, 0, 0))]
    two = table(run("show", "a.bin", "--fen",
                    "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq e6 0 2"))
    assert list(two.items()) == [("Nf3", ("", 1, 0, 0, 1, 100)), ("f4", ("", 0, 1, 0, -1, 0))]
    assert table(run("show", "a.bin", "--moves", "1.e4 e5 2. Nf3"))["Nc6"][:2] == ("?", 1)
    assert "no move" in run("show", "a.bin", "--moves", "d4")

    text = run("check", "a.bin")
    assert "8 records" in text and "8 of them reachable" in text and "11 games" in text
    assert "reachable" not in run("check", "a.bin", "--quick")

    run("build", "-", "-o", "b.bin", "--plies", "2", data=GAMES.replace("!!", "!"))
    assert len(records(tmp_path / "b.bin")) == 3
    run("merge", "-o", "a.bin", "b.bin", "a.bin")
    # Four games say "!". The broken game counts: its fault comes after two plies.
    assert table(run("show", "a.bin")) == {"e4": ("!", 3, 2, 2, 6, 100)}
    run("check", "a.bin")
    assert len(records(tmp_path / "a.bin")) == 8

    # An en passant square matters only if a pawn can capture there.
    after_e4 = "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq"
    found = run("lookup", "a.bin", data=f"{after_e4} e3 0 1\n{after_e4} -\n{after_e4[:-4]}- -\n")
    assert [x[17:] for x in found.splitlines()] == ["3 2 2 !", "3 2 2 !", "0 0 0 -"]
    assert sorted(x.name for x in tmp_path.iterdir()) == ["a.bin", "b.bin", "games.pgn"]


@pytest.mark.parametrize("options, count", [
    ([], 8), (["--white-only"], 4), (["--black-only"], 4), (["--plies", "1"], 1),
    (["--min-games", "2"], 2), (["--min-games", "2", "--black-only"], 1),
    (["--min-score", "50"], 6),  # all but f4 and, for Black, Nc6
    (["--min-score", "51", "--white-only"], 1), (["--min-elo", "2000"], 6),
    (["--min-elo", "2200"], 3), (["--min-elo", "1900"], 8)])
def test_filters(run, tmp_path, options, count):
    run("build", "-", "-o", "a.bin", *options, data=GAMES)
    assert len(records(tmp_path / "a.bin")) == count


def pawn_walks(count):
    """Games of single pawn steps in random order; no pawn meets another."""
    rng = random.Random(5)
    for _ in range(count):
        steps = [[f"{file}{rank}" for rank in ranks for file in rng.sample("abcdefgh", 8)]
                 for ranks in ((3, 4), (6, 5))]
        moves = " ".join(f"{white}{rng.choice(['', '', '', '!', '?'])} {black}"
                         for white, black in zip(*steps))
        yield f"{moves} {rng.choice(['1-0', '0-1', '1/2-1/2'])}\n"


def test_spilling_changes_nothing(run, tmp_path):
    games = list(pawn_walks(4000))  # twice the moves that one megabyte holds
    (tmp_path / "one.pgn").write_text("".join(games[:1500]))
    (tmp_path / "two.pgn").write_text("".join(games[1500:]))
    run("build", "one.pgn", "two.pgn", "-o", "whole.bin")
    run("build", "two.pgn", "one.pgn", "-o", "spilled.bin", "--memory", "1")
    assert (tmp_path / "whole.bin").read_bytes() == (tmp_path / "spilled.bin").read_bytes()
    run("build", "one.pgn", "-o", "one.bin")
    run("build", "two.pgn", "-o", "two.bin")
    run("merge", "two.bin", "one.bin", "-o", "merged.bin")
    assert ([r[:4] for r in records(tmp_path / "merged.bin")]
            == [r[:4] for r in records(tmp_path / "whole.bin")])
    assert not list(tmp_path.glob("*part*"))


def test_faulty_books(run, tmp_path):
    good = [(1, 1, 0, 0, 0), (7, 0, 1, 2, 32), (1 << 63, 0, 0, 1, 0)]
    cases: list[tuple[str, list, bytes, str | None]] = [
        ("good", good, b"", None), ("empty", [], b"", None),
        ("cut", good, b"\0" * 23, r"record 4 \(byte 72\): the file ends"),
        ("order", [good[1], good[0]], b"", r"record 2 \(byte 24\): its key is below"),
        ("twice", [good[0], good[0]], b"", r"record 2 \(byte 24\): its key is the same"),
        ("no games", [(1, 0, 0, 0, 0)], b"", r"record 1 \(byte 0\): it has no games"),
        ("mark", [(1, 1, 0, 0, 3)], b"", r"record 1 \(byte 0\): its annotation 3")]
    for name, rows, tail, message in cases:
        (tmp_path / name).write_bytes(b"".join(RECORD.pack(*r) for r in rows) + tail)
        if message is None:
            assert "sound" in run("check", name)
        else:
            assert re.search(message, run("check", name, fails=True)), name
            assert re.search(message, run("merge", name, "good", "-o", "out", fails=True)), name
    run("merge", "good", "good", "good", "-o", "out")
    assert records(tmp_path / "out")[1] == (7, 0, 3, 6, 32)
    (tmp_path / "full").write_bytes(RECORD.pack(1, 2**32 - 1, 0, 0, 0))
    run("merge", "good", "full", "-o", "out")
    assert records(tmp_path / "out")[0][1] == 2**32 - 1


def test_books_of_other_programs(run, tmp_path):
    """They are recognised wherever a book is read; damaged books of ours are not taken for them."""
    theirs = struct.Struct(">QHHI")  # key, move, weight, what was learnt
    e4, g1f3, d8q = 12 << 6 | 28, 6 << 6 | 21, 4 << 12 | 51 << 6 | 59
    rng = random.Random(7)
    keys = sorted(rng.getrandbits(64) for _ in range(297))
    rows = [(key, rng.choice((e4, g1f3, d8q)), rng.getrandbits(16), 0)
            for key in [keys[0], *keys, keys[-1]]]

    def save(name, layout, rows, tail=b""):
        (tmp_path / name).write_bytes(b"".join(layout.pack(*r) for r in rows) + tail)

    save("good", RECORD, [(1, 1, 0, 0, 0), (1 << 63, 0, 0, 1, 0)])
    for count in 2, 3, 299:  # 48 bytes and multiples are whole records of both formats
        save("theirs", theirs, rows[-count:])
        for command in (["check", "theirs"], ["check", "--quick", "theirs"], ["show", "theirs"],
                        ["lookup", "theirs"], ["merge", "good", "theirs", "-o", "out"]):
            said = run(*command, fails=True)
            assert "theirs: is a book in the format of other programs" in said, command
            assert said.count("\n") == 1
    assert not (tmp_path / "out").exists()

    # Bytes in neither format are a damaged book of ours.
    for name, broken in (("order", rows[::-1]), ("move", [*rows, (2**64 - 1, 5 << 12 | e4, 1, 0)]),
                         ("stays", [*rows, (2**64 - 1, 65, 1, 0)])):
        save(name, theirs, broken)
        assert "record 1 (byte 0): its annotation" in run("check", name, fails=True), name
    save("cut", theirs, rows, b"\0" * 8)
    assert "record 1 (byte 0): its annotation" in run("check", "cut", fails=True)

    # Books of ours that are in order in both formats, whole and cut to 32 bytes and to 16.
    both = [(0x80 << 56 | 1, 1, 1, 0x80, 1), (0xFF << 56 | 0x90, 2, 0, 0x91, 0)]
    save("both", RECORD, both)
    assert "sound" in run("check", "both")
    for size in 32, 16:
        (tmp_path / "piece").write_bytes((tmp_path / "both").read_bytes()[:size])
        assert "the file ends inside it" in run("check", "piece", fails=True)


def test_failures_leave_nothing(run, tmp_path):
    (tmp_path / "games.pgn").write_text(GAMES)
    (tmp_path / "folder").mkdir()
    (tmp_path / "old.bin").write_bytes(b"old")
    before = sorted(tmp_path.rglob("*"))
    build = ("build", "games.pgn", "-o", "old.bin")
    for arguments, message in [
            (["build", "games.pgn", "missing.pgn", "-o", "old.bin"], "missing.pgn: No such file"),
            (["build", "folder", "-o", "old.bin"], "folder: is a folder"),
            (["build", "games.pgn", "-o", "folder"], "not a plain file"),
            (["build", "games.pgn", "-o", "/dev/null"], "not a plain file"),
            (["build", "games.pgn", "-o", "nowhere/a.bin"], "No such file"),
            ([*build, "--min-elo", "3000", "--white-only", "--min-games", "4"], "no position"),
            (["build", "-", "-o", "old.bin"], "no game counts"),
            ([*build, "--white-only", "--black-only"], "excludes"), ([*build, "--plies", "0"], ""),
            (["merge", "missing.bin", "-o", "old.bin"], "No such file"),
            (["check", "missing.bin"], "No such file"), (["show", "missing.bin"], "No such file"),
            (["show", "old.bin", "--moves", "e4 e4"], "illegal move: e4"),
            (["show", "old.bin", "--fen", "4k3/8/8/8/8/8/4R3/4K3 w - - 0 1"], "not a playable"),
            (["show", "old.bin", "--fen", "nonsense"], "not a playable"),
            ([], ""), (["dance"], "")]:
        assert message in run(*arguments, fails=True)
    # The third broken game is shown with its place, the sixth is not.
    broken = "\n".join(f"1. e{n} 1-0" for n in range(5, 9)) + "\n\n1. e4 e5 2. Nf6 1-0\n" * 2
    text = run("build", "-", "-o", "old.bin", data=broken, fails=True)
    assert "standard input:3: illegal move: 1. e7" in text and text.count("illegal") == 5

    # The disk is full while the book is written.
    (tmp_path / "walks.pgn").write_text("".join(pawn_walks(300)))
    before = sorted([*before, tmp_path / "walks.pgn"])
    text = run("build", "walks.pgn", "-o", "old.bin", fails=True,
               preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (9999, 9999)))
    assert "File too large" in text
    assert sorted(tmp_path.rglob("*")) == before
    assert (tmp_path / "old.bin").read_bytes() == b"old"


def wait_until(condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.01)


def test_interrupt_leaves_nothing(tmp_path):
    # While it reads games there is no file to remove.
    process = subprocess.Popen([BOOK_TOOL, "build", "-", "-o", "a.bin"], cwd=tmp_path,
                               stdin=subprocess.PIPE)
    assert process.stdin
    process.stdin.write(GAMES.encode())
    process.stdin.flush()
    time.sleep(0.2)
    process.send_signal(signal.SIGINT)
    process.wait(PATIENCE)
    assert process.returncode != 0 and not list(tmp_path.iterdir())

    # While it writes a book there is one.
    os.mkfifo(tmp_path / "pipe")
    process = subprocess.Popen([BOOK_TOOL, "merge", "pipe", "-o", "a.bin"], cwd=tmp_path)
    with open(tmp_path / "pipe", "wb") as pipe:
        pipe.write(RECORD.pack(1, 1, 0, 0, 0))
        pipe.flush()
        wait_until(lambda: len(list(tmp_path.iterdir())) == 2)
        process.send_signal(signal.SIGINT)
        time.sleep(0.1)
    assert process.wait(PATIENCE) == 128 + signal.SIGINT
    assert [x.name for x in tmp_path.iterdir()] == ["pipe"]
