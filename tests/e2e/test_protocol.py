"""The answer to each UCI command, and the effect of each option."""

import re

import pytest

from chesskit import START, board, diagram

MIDDLE = f"fen {board.MIDDLE}"
PASSED = "fen 4K3/6p1/8/P7/8/6k1/8/8 w - - 9 67"
ATTACK = "fen 3q1rk1/p4pp1/2pb3p/3p4/6Pr/1PNQ4/P1PB1PP1/4RRK1 b - - 0 1"
CHECK = "fen rnbqkbnr/ppp2ppp/8/1B1pp3/8/8/PPPPPPPP/RNBQK1NR b KQkq - 0 1"


def test_silence_before_uci(start):
    for lines in (["quit"], ["", "nonsense", "quit now"]):
        engine = start(uci=False)
        assert engine.waiting(0.1) == []
        engine.send(*lines)
        assert engine.finish() == []
    engine = start(uci=False)
    engine.send("help", "", "isready", "position startpos", "go depth 1", "uci now", "isready")
    lines = engine.wait("readyok")
    assert lines[0] == "id name Brivok 4.0.3" and lines[-2:] == ["uciok", "readyok"]


def test_listing(engine):
    spins = [(n, d, -2000, 2000) for n, d in [("QueenValue", 900), ("RookValue", 500), (
        "BishopValue", 300), ("KnightValue", 300), ("PawnValue", 100)]]
    spins += [("NullMoveMin", 200, 0, 600), ("NullMoveMax", 300, 0, 600),
              ("AspirationWindow", 35, 0, 9000), ("CheckExtension", 100, 0, 500)]
    spins += [(n + "Extension", 75, 0, 500)
              for n in ("Recapture", "OneReplyCheck", "MateTheat", "PawnPush")]
    expected = ["id name Brivok 4.0.3", "id author Osmund Kelvane"] + ["option name " + x for x in [
        "Hash type spin default 1 min 1 max 1024",
        "Clear Hash type button",
        "OwnBook type check default true",
        "NalimovPath type string default ",
        "NalimovCache type spin default 1 min 1 max 64",
        "Ponder type check default true",
        "PlayFRC type check default false",
        "UseLazyEval type check default false",
        "UseNullMove type check default true",
        "EvaluationHash type spin default 1 min 1 max 512",
        "PawnHash type spin default 1 min 1 max 64",
        *("{} type spin default {} min {} max {}".format(*spin) for spin in spins),
        "BookFile type string default libro.bin",
        "CreateLog type check default false"]] + ["uciok"]
    assert engine.listing == expected
    engine.send("uci", "UCI", "Isready", "ponderhit", "stop", "debug on", "register later",
                "x" * 300, "\tisready", "", " ", "position", "position elsewhere",
                "position startpos", "setoption", "setoption name", "setoption name Hash",
                "setoption name Hash value", "setoption name Nothing value 3",
                "setoption name Clear", "ucinewgame", "perft 3")
    assert engine.ready() == []
    engine.send("  isready   ")
    assert engine.wait("readyok") == ["readyok"]


# --- Options -----------------------------------------------------------------------------------

def count(start, settings, position=MIDDLE, depth=6):
    """Nodes of a search by a new process with these settings."""
    engine = start(options=dict(settings))
    return engine.go(f"go depth {depth}", f"position {position}").nodes


@pytest.mark.parametrize("name, value, position, depth", [
    ("UseNullMove", "false", MIDDLE, 5),
    ("UseLazyEval", "true", CHECK, 6),
    ("QueenValue", "1200", MIDDLE, 5),
    ("RookValue", "-2000", MIDDLE, 4),
    ("BishopValue", "330", MIDDLE, 5),
    ("KnightValue", "250", MIDDLE, 5),
    ("PawnValue", "2000", MIDDLE, 4),
    ("NullMoveMin", "100", MIDDLE, 5),
    ("NullMoveMax", "200", CHECK, 7),
    ("AspirationWindow", "0", MIDDLE, 5),
    ("CheckExtension", "0", CHECK, 5),
    ("RecaptureExtension", "0", MIDDLE, 5),
    ("OneReplyCheckExtension", "0", CHECK, 6),
    ("MateThreatExtension", "0", ATTACK, 6),
    ("PawnPushExtension", "0", PASSED, 6)])
def test_option_takes_effect(start, name, value, position, depth):
    assert count(start, [(name, value)], position, depth) != count(start, [], position, depth)


def test_refused_values(start):
    """A value out of range changes nothing, also if it is so only after the cut to 16 bits."""
    plain = count(start, [], ATTACK, 6)
    refused = [("AspirationWindow", "9001"), ("AspirationWindow", "-1"), ("QueenValue", "2001"),
               ("QueenValue", "-2001"), ("PawnValue", "30000"), ("NullMoveMin", "601"),
               ("CheckExtension", "501"), ("CheckExtension", "40000"), ("Hash", "0"),
               ("MateTheatExtension", "0"), ("aspirationwindow", "0"), ("BookFile", "other.bin"),
               ("UseLazyEval", "True"), ("UseLazyEval", "1"), ("CheckExtension", "65536000000501")]
    for name, value in refused:
        assert count(start, [(name, value)], ATTACK, 6) == plain, (name, value)
    # 65536 is 0 in 16 bits, and trailing text after the digits is dropped
    narrow = count(start, [("AspirationWindow", "0")], ATTACK, 6)
    assert narrow != plain
    assert count(start, [("AspirationWindow", "65536")], ATTACK, 6) == narrow
    assert count(start, [("AspirationWindow", "0x23")], ATTACK, 6) == narrow
    assert count(start, [("AspirationWindow", "none")], ATTACK, 6) == narrow
    # sixteenths of a ply: 75 and 80 percent are both 12 units
    assert count(start, [("CheckExtension", "75")], ATTACK) == count(
        start, [("CheckExtension", "80")], ATTACK)


def test_tables_forget(engine):
    """A second search uses the table of the first one, unless the table was cleared."""
    position = "position " + MIDDLE

    def nodes():
        return engine.go("go depth 6", position).nodes

    fresh = nodes()
    assert nodes() != fresh
    for emptied in ("setoption name Hash value 5000", "setoption name Hash value 1",
                    "setoption name Clear Hash"):
        engine.send(emptied)
        assert nodes() == fresh, emptied
    engine.send("ucinewgame")
    assert nodes() != fresh
    engine.send("setoption name Hash value 1", "setoption name PawnHash value 99",
                "setoption name EvaluationHash value 2", "setoption name PawnHash value 3")
    assert nodes() == fresh


def test_ponder_option(engine):
    position = "position " + MIDDLE
    assert engine.go("go depth 4", position).ponder
    engine.start("go ponder movetime 100")
    assert not engine.answered(0.3)
    engine.send("ponderhit")
    engine.best()
    engine.set("Ponder", "false")
    reply = engine.go("go ponder movetime 100", position)
    assert reply.ponder is None
    engine.set("Ponder", "true")
    assert engine.go("go depth 4", position).ponder


def test_play_frc(engine):
    castle = "4k2r/8/8/8/8/8/8/R3K2R w KQk - 0 1"
    assert {"e1g1", "e1c1"} <= set(engine.moves("position fen " + castle))
    engine.send("position fen " + castle + " moves O-O")
    assert engine.ready() == diagram(castle, "eh", "aeh") * 2
    engine.set("PlayFRC", "true")
    moves = set(engine.moves("position fen " + castle))
    assert {"O-O", "O-O-O"} <= moves and not {"e1g1", "e1c1"} & moves
    engine.send("position fen " + castle + " moves O-O-O O-O")
    assert engine.ready()[21:] == diagram("5rk1/8/8/8/8/8/8/2KR3R w - - 2 2")
    three = "fen 4k3/8/8/8/8/8/8/RRK2R1R w KQ - 0 1"  # K: the far rook, Q: the near one
    engine.send("position " + three)
    assert engine.ready() == diagram(three[4:], "", "bch")
    engine.set("PlayFRC", "false")
    assert "e1g1" in engine.moves("position fen " + castle)


# --- Positions ---------------------------------------------------------------------------------

def test_diagram_text(engine):
    engine.send("position startpos moves e2e4 e7e9 a2a5 e7e5 0000 e2e4 moves g1f3")
    rule = "   +---+---+---+---+---+---+---+---+"
    assert engine.ready() == ["", "     #   b   c   d   #   f   g   #   ", rule] + [
        line for row in (
            " 8 |=R=|=N=|=B=|=Q=|=K=|=B=|=N=|=R=| 8",
            " 7 |=P=|=P=|=P=|=P=| . |=P=|=P=|=P=| 7   #",
            " 6 |   | . |   | . |   | . |   | . | 6",
            " 5 | . |   | . |   |=P=|   | . |   | 5",
            " 4 |   | . |   | . | P | . |   | . | 4",
            " 3 | . |   | . |   | . | N | . |   | 3",
            " 2 | P | P | P | P |   | P | P | P | 2",
            " 1 | R | N | B | Q | K | B | . | R | 1",
        ) for line in (row, rule)] + ["     #   b   c   d   #   f   g   #   ", ""]
    partial = "r3k2r/8/8/8/8/8/8/R3K2R b Kq - 3 7"
    engine.send("position fen " + partial)
    assert engine.ready() == diagram(partial, "ae", "eh")
    engine.send("position fen " + partial + " moves e8c8")
    assert engine.ready() == diagram(partial, "ae", "eh") + diagram(
        "2kr3r/8/8/8/8/8/8/R3K2R w K - 4 8", "", "eh")


@pytest.mark.parametrize("fen, errors", [
    ("", ["There isn't white king", "There isn't black king"]),
    ("8/8/8/8/8/8/8/K7 w - - 0 1", ["There isn't black king"]),
    ("P6k/8/8/8/8/8/8/K1PP4 w - - 0 1", ["There is a white pawn at rank 8",
                                         *["There is a white pawn at rank 1"] * 2]),
    ("p6k/8/8/8/8/8/8/K1p5 b - - 0 1", ["There is a black pawn at rank 8",
                                        "There is a black pawn at rank 1"]),
    ("k7/8/8/8/8/N7/PPPPPPPP/RNBQKBNR w", ["total pieces and pawns per side must be < 16"]),
    ("4k3/8/8/8/8/8/8/4K3 w KQkq - 0 1",
     [f"{x} flag is set, but there isn't {y}side rook" for x, y in (
         ("WCK", "white king"), ("BCK", "black king"),
         ("WCQ", "white queen"), ("BCQ", "black queen"))]),
    ("8/4k3/8/8/8/8/4K3/R7 w Q - 0 1",
     ["WCQ flag is set, but there isn't white queenside rook"])])
def test_fen_errors(engine, fen, errors):
    engine.send("position startpos moves e2e4", "isready")
    engine.wait("readyok")
    engine.send("position fen " + fen)
    assert engine.ready() == ["FEN error: " + e for e in errors] + diagram(START, "aeh", "aeh")


@pytest.mark.parametrize("fen, shown", [
    ("4k3/8/8/8/8/8/8/4K3", "4k3/8/8/8/8/8/8/4K3 w"),
    ("  4k3/8/8/8/8/8/8/4K3   b  -  -", "4k3/8/8/8/8/8/8/4K3 b"),
    ("4k3" + "/" * 400 + "8/8/8/8/8/8/4K2x1 w - - 0 1", "4k3/8/8/8/8/8/8/4K3 w"),
    ("4k3/8/8/8/8/8/4P3/4K3 w - - bm e4; id " + "long " * 120, "4k3/8/8/8/8/8/4P3/4K3 w"),
    ("4k3/pppppppp/ppppppp1/8/8/QQQQQQQQ/QQQQQQQ1/4K3 w - - 0 1",
     "4k3/pppppppp/ppppppp1/8/8/QQQQQQQQ/QQQQQQQ1/4K3 w")])
def test_fen_accepted(engine, fen, shown):
    engine.send("position fen " + fen)
    assert engine.ready() == diagram(shown)


@pytest.mark.parametrize("plies", [3000, 3001])
def test_long_game(engine, referee, plies):
    """Every move counts in a game that is longer than the input buffer and the move record."""
    knights = ["g1f3", "g8f6", "f3g1", "f6g8"]
    pawns = [f"{f}{a}{f}{b}" for pair in (((2, 3), (7, 6)), ((3, 4), (6, 5))) for f in "abcdegh"
             for a, b in pair]
    moves: list[str] = []
    while len(moves) < plies:  # the last pawn moves come just before the end
        moves += pawns[:2] + knights * 57
        pawns = pawns[2:]
    moves = moves[:plies]
    fen = referee.look("startpos", moves)[1]
    legal = set(referee.look("fen " + fen)[0])
    engine.send("position startpos moves " + " ".join(moves))
    assert engine.ready() == diagram(fen, "aeh", "aeh")
    engine.send("genmoves")
    assert set(engine.ready()[0].split()) == legal
    assert {engine.go("go depth 6").best, engine.go("go movetime 100").best} <= legal
    assert engine.ready() == []


# --- Searches ----------------------------------------------------------------------------------

def test_commands_during_a_search(engine, referee):
    position = "position " + MIDDLE
    engine.start("go infinite depth 5", position)  # nothing behind "infinite" is read
    engine.send("isready", "setoption name PlayFRC value true", "position startpos", "go depth 1",
                "ponderhit", "genmoves", "xboard", "uci", "isready")
    assert not any("bestmove" in x for x in engine.wait("readyok") + engine.wait("readyok"))
    assert not engine.answered(0.3)
    engine.send("stop")
    assert engine.best().best in referee.look(MIDDLE)[0]
    assert set(engine.moves(position)) == set(referee.look(MIDDLE).legal)
    engine.start("go infinite")
    assert not engine.answered(0.1)
    engine.send("quit")
    engine.searches = 0  # no answer to this one
    assert not any("bestmove" in x for x in engine.finish())


@pytest.mark.parametrize("go", [
    "go depth 3 frobnicate", "go foo depth 3 bar", "go searchmoves e2e4 depth 3", "go depth 1",
    "go mate 3 depth 2", "go depth 0", "go depth -4", "go nodes 1", "go nodes 5000",
    "go depth 3 wtime",
    "go wtime 10", "go wtime 0 btime 0", "go wtime 9 btime 9 movestogo 1", "go wtime -500 btime -7",
    "go wtime -500 winc 100", "go wtime 100 movestogo -3", "go wtime 50 movestogo 0",
    "go wtime nan btime inf movetime 20", "go movetime 0", "go movetime 1", "go movetime -5",
    "go movetime 50 wtime 60000", "go wtime 60000 movetime 50"])
def test_short_searches(engine, referee, go):
    """Each of these ends by itself."""
    reply = engine.go(go, "position startpos")
    none = {"a8a8"} if re.search("depth (0|-)", go) else set()
    assert reply.best in none.union(referee.look("startpos")[0])


@pytest.mark.parametrize("go", [
    "go", "go depth", "go infinite", "go ponder", "go movetime", "go nodes 0", "go depth 99",
    "go ponder movetime 20", "go ponder wtime 100 btime 100"])
def test_unlimited_searches(engine, referee, go):
    engine.start(go, "position " + MIDDLE)
    assert not engine.answered(0.3)
    engine.send("stop")
    assert engine.best().best in referee.look(MIDDLE)[0]


@pytest.mark.parametrize("depth", [41, 64, 127, 128, 1000, 99999, 2**31 - 1, 2**31, 2**40])
def test_great_depths(engine, referee, depth):
    """More iterations than any table has room for, in positions where they are cheap."""
    locked = "fen 8/8/8/p1p1p1p1/PpPpPpPp/1P1P1P1P/k6K/8 w - - 0 1"
    reply = engine.go(f"go depth {depth} nodes 300000", "position " + locked)
    assert reply.best in referee.look(locked)[0]
    engine.start(f"go depth {depth}", "position " + MIDDLE)
    assert not engine.answered(0.1)
    engine.send("stop")
    assert engine.best().best in referee.look(MIDDLE)[0]


@pytest.mark.parametrize("fen", [
    "7k/5KQ1/8/8/8/8/8/8 b - - 0 1", "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1",
    "8/8/4k3/8/8/4K3/8/8 w - - 0 1", "8/8/4k3/8/8/4K3/8/5N2 w - - 0 1"])
@pytest.mark.parametrize("go", ["go depth 5", "go movetime 50", "go infinite", "go ponder", "go"])
def test_no_move(engine, fen, go):
    """Mate, stalemate, dead draw. Only pondering continues in a dead draw, until it is stopped."""
    engine.start(go, "position fen " + fen)
    if go == "go ponder":
        engine.send("stop")
        engine.best()
    else:
        assert engine.best().best == "a8a8"
    assert engine.go("go depth 2", "position startpos").best != "a8a8"
