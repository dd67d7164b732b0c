"""Hostile and broken input. After all of it the engine answers "isready" and quits with code 0."""

import random
import time

import pytest

from chesskit import MIDDLE, SLOW, Brivok, talk


@pytest.mark.parametrize("go", ["depth 6", "nodes 50000", "movetime 200", "wtime 5000 btime 5000"])
def test_end_of_input_lets_a_limited_search_finish(tmp_path, go):
    position = f"uci\nposition fen {MIDDLE}\n"
    output = talk(f"{position}go {go}\n".encode(), tmp_path)
    assert output.count("bestmove") == 1 and "info depth 3" in output
    if "time" not in go:  # as with an open pipe
        engine = Brivok(tmp_path)
        best = engine.go("go " + go, position.split("\n")[1]).best
        engine.finish()
        assert f"\nbestmove {best} " in output


@pytest.mark.parametrize("go", ["infinite", "ponder", "", "depth", "ponder movetime 100"])
def test_end_of_input_ends_an_unlimited_search(tmp_path, go):
    assert "uciok" in talk(f"uci\nposition fen {MIDDLE}\ngo {go}\n".encode(), tmp_path)


@pytest.mark.parametrize("data, last", [
    (b"", ""), (b"\n", ""), (b"uci", "uciok\n"), (b"uci\nisready", "readyok\n"),
    (b"uci\nquit", "uciok\n"), (b"uci\n\0", "uciok\n"), (b"uci\n   ", "uciok\n"),
    (b"uci\r\nisready\r\n", "readyok\n"),
    (b"uci\nposition startpos moves e2e4 e7e5\r\ngenmoves\r\nisready\r\n", "readyok\n")])
def test_last_lines(tmp_path, data, last):
    output = talk(data, tmp_path)
    assert output.endswith(last) if last else output == ""
    if b"genmoves" in data:
        assert "f1b5" in output


def test_carriage_returns(engine):
    engine.raw(b"setoption name Ponder value false\r\nisready\r\n")
    assert engine.wait("readyok")[-1] == "readyok"
    assert "f1b5" in engine.moves("position startpos moves e2e4 e7e5\r")
    assert engine.go("go depth 4\r").ponder is None


def test_half_a_line_does_not_hold_a_search(engine):
    engine.start("go movetime 300", "position fen " + MIDDLE)
    engine.raw(b"sto")
    engine.best()
    engine.raw(b"p\n")
    assert engine.ready() == []
    engine.start("go infinite")
    for piece in (b"s", b"t", b"op", b"\nisrea", b"dy\n"):
        time.sleep(0.02)
        engine.raw(piece)
    engine.best()
    assert engine.wait("readyok") == ["readyok"]


def test_lines_longer_than_the_buffer(engine):
    engine.raw(b"x" * 4095 + b"isready\n")
    assert engine.wait("readyok") == ["readyok"]
    engine.raw(b"x" * 4094 + b"isready\n" + b" " * 4095 + b"isready\n" + b"y" * 100000 + b"\n")
    assert engine.wait("readyok") == ["readyok"] and engine.ready() == []
    engine.start("go movetime 200", "position fen " + MIDDLE)
    engine.raw(b"x" * 4095 + b"isready\n" + b"z" * 9000)
    lines = engine.best().lines
    engine.raw(b"\n")
    assert "readyok" in lines or engine.wait("readyok")


def test_many_lines(engine):
    engine.raw(b"isready\nposition startpos moves\nnothing\n" * 3000)
    for _ in range(3000):
        engine.wait("readyok")
    engine.start("go movetime 300", "position fen " + MIDDLE)
    engine.raw(b"isready\nnothing\n" * 2500)  # it answers the rest after the search
    reply = engine.best()
    for _ in range(2500 - reply.lines.count("readyok")):
        engine.wait("readyok")
    assert engine.ready() == []


def test_lines_on_the_heels_of_stop(engine):
    for _ in range(10):
        engine.start("go infinite", "position fen " + MIDDLE)
        time.sleep(0.01)
        engine.raw(b"stop\nposition startpos\nsetoption name Hash value 1\ngo depth 3\n")
        engine.best()
        engine.searches += 1
        assert engine.best().best in ("b1c3", "g1f3", "e2e4", "d2d4")
    for _ in range(50):  # stopped before it has searched a move
        engine.raw(b"go infinite\nstop\nucinewgame\nstop\ngo ponder\nponderhit\nstop\n")
        for _ in range(2):
            engine.wait("bestmove")
    assert engine.ready() == []


@pytest.mark.parametrize("seed", range(2 if SLOW else 6))
@pytest.mark.parametrize("uci", [False, True])
def test_random_bytes(start, seed, uci):
    engine, chance = start(uci=uci), random.Random(seed)
    words = (b"position fen", b"startpos", b"moves", b"setoption name", b"value", b"Hash", b"e2e4",
             b"O-O", b"Ponder", b"go depth 1", b"genmoves", b"ucinewgame", b"isready", b"stop")
    gaps = (b" ", b"\n", b"\0", b"\t", b"  ", b"\r\n")
    if seed % 2:
        data = chance.randbytes(200000)
    else:
        data = b"".join(chance.choice(words) + chance.choice(gaps) for _ in range(20000))
    engine.raw(data + b"\nquit2\n")
    if not uci:
        engine.send("uci")
    engine.send(*["isready"] * 9, "position fen 8/8/8/KQk5/8/8/8/8", "isready")
    engine.wait(" 5 | K | Q |=K=|")  # after the answers to the random lines
    engine.wait("readyok")
    assert engine.go("go depth 3", "position startpos").best != "a8a8"


VALUES = ["", "0", "-1", "1e9", "3.7", "9" * 30, "-" + "9" * 30, "2147483648", "4294967296",
          "4294967297", "-2147483648", "+2", "true false", "%s%n%d", "\xff\xfe", "x" * 3000, "0x10"]


def test_absurd_option_values(engine):
    names = [x.split()[2] for x in engine.listing if x.startswith("option")]
    for name in names + ["MateThreatExtension", "", "name", "value", "%n"]:
        for value in VALUES:
            if (name, value) != ("CreateLog", "true false"):
                engine.send(f"setoption name {name} value {value}", f"setoption {name} {value}")
        assert engine.go("go depth 2", "position startpos").best != "a8a8", name
    engine.send("go wtime " + "9" * 400 + " btime 1e300 winc -1e300 depth 2", "isready")
    engine.wait("bestmove")


def mutations(count):
    """FENs with a few characters removed, added, replaced or swapped."""
    chance = random.Random(7)
    bases = [MIDDLE, "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
             "8/1P4k1/8/8/8/8/1p4K1/8 b - - 0 1", "7k/8/8/3pP3/8/8/8/K7 w - d6 0 1",
             "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 12 34", "4k2r/8/8/8/8/8/8/R3K3 b Qk - 99 1000"]
    for _ in range(count):
        text = list(chance.choice(bases))
        for _ in range(chance.choice((1, 2, 5))):
            at = chance.randrange(len(text))
            kind = chance.randrange(5)
            if kind == 0:
                del text[at]
            elif kind == 1:
                text.insert(at, chance.choice("KQRBNPkqrbnp/12345678 -wbx0\t%"))
            elif kind == 2:
                text[at] = chance.choice("KQRBNPkqrbnp/12345678 -wbx0\t%")
            elif kind == 3:
                other = chance.randrange(len(text))
                text[at], text[other] = text[other], text[at]
            else:
                text = text[:max(8, at)] if chance.random() < 0.2 else text
        yield "".join(text)


ODD_PLACEMENTS = [
    "kkkkkkkk/8/8/8/8/8/8/KKKKKKKK w", "KkKkKkKk/8/8/8/8/8/8/8 b", "Kk6/8/8/8/8/8/8/8 w",
    "kq6/8/8/8/8/8/8/QK6 w", "k7/8/8/8/8/8/8/QK6 w", "4k3/4Q3/8/8/8/8/8/4K3 w",
    "8/4k3/8/qqqqqqq1/QQQQQQQ1/8/4K3/8 b",
    "4k3/pppppppp/ppppppp1/8/8/1PPPPPPP/PPPPPPPP/4K3 w", "99999999k99999999K w",
    "4k3/PPPPPPPP/PPPPPPP1/8/8/1ppppppp/pppppppp/4K3 w", "k" * 70 + "K w",
    "K" + "p" * 15 + "k" + "8" * 30 + "Q w KQkq a1", "rrrrkrrr/8/8/8/8/8/8/RRRRKRRR w KQkq",
    "k7/8/8/8/8/8/8/K7 w KQkq", "nnnnknnn/nnnnnnnn/8/8/8/8/NNNNNNNN/NNNNKNNN w",
    "2k4r/8/8/8/8/8/8/R4K2 w KQkq", "rk6/8/8/8/8/8/8/1K5R w Kq - 100 1023",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 101 1024", "4k3/8/8/8/8/8/8/4K2R b - - -5 -5",
    "4k3/8/8/8/8/8/8/4K2R w K - " + "9" * 20 + " " + "9" * 20]
ODD_PASSANTS = [
    f"4k3/3p4/8/1pPpPp2/2PpPpP1/8/3P4/4K3 {side} - {square} 0 1" for side in "wb"
    for square in ("a1", "d1", "d2", "d3", "e3", "e4", "e5", "c6", "d6", "e6", "d8", "h8", "i9",
                   "a0", "z", "66", "\xff\xff")]


@pytest.mark.parametrize("variant", ["false", "true"])
def test_broken_positions(start, variant):
    engine = start(options={"PlayFRC": variant})
    for fen in [*mutations(60 if SLOW else 200), *ODD_PLACEMENTS, *ODD_PASSANTS]:
        engine.go("go depth 3 nodes 100000", "position fen " + fen)
    engine.start("go depth 3", "position fen qqqqqqqk/qqqqqqqq/8/8/8/8/QQQQQQQQ/QQQQQQQK w")
    assert not engine.answered(0.1)  # an endless exchange of queens; "stop" still works
    engine.send("stop")
    engine.best()
    for fen in ODD_PLACEMENTS:
        engine.send(f"position fen {fen} moves e1g1 O-O e8c8 O-O-O e2e4 e5d6 a1a8", "genmoves")
        engine.ready()
        engine.go("go depth 2")
    assert engine.go("go depth 3", "position startpos").best != "a8a8"
