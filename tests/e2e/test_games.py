"""Full games of the engine against itself; a referee checks every move."""

import random
import time

import pytest

from chesskit import NO_MOVE, SLOW, Brivok, Clocks, Game, squares

PLIES = 24 if SLOW else 200
TIME_UNIT = 5 if SLOW else 1  # clocks of a sanitizer build run longer
LATE = 3000  # milliseconds beyond a clock that a busy machine is granted


def check_end(game, engine):
    """When the rules end the game there is no move. A repetition is for the interface to claim."""
    best = engine.go("go depth 3", game.line()).best
    over = game.end in ("mate", "stalemate") or game.end != "repetition" and len(game.legal) > 1
    assert best == NO_MOVE if over else best in game.legal, (best, game.end, game.line())


def self_play(game, engines, go, plies=PLIES, ends=None):
    """Plays until the game ends, or ends as one of `ends`. `go` is a line, or a function that plays
    a move."""
    while game.end not in (ends or (game.end or "-",)) and game.legal and len(game.moves) < plies:
        engine = engines[len(game.moves) % len(engines)]
        assert game.check or set(engine.moves(game.line())) == set(game.legal), game.line()
        if callable(go):
            go(engine, game)
        else:
            game.play(engine.go(go, game.line()))
    if game.end:
        check_end(game, engines[0])


class Timed(Clocks):
    """Clocks of which no side may use more than it has."""

    def spend(self, side, seconds):
        assert super().spend(side, seconds) <= LATE, (seconds, self.left)

    def move(self, engine, game):
        side = game.side
        reply = engine.go("go " + self.text(side), game.line())
        self.spend(side, reply.seconds)
        game.play(reply)


@pytest.mark.parametrize("base, increment, session, plies", [
    (1500, 20, 0, 160), (1500, 0, 0, 120), (200, 0, 1, 30), (400, 0, 4, 60), (60, 10, 0, 60)])
def test_clocks(start, referee, base, increment, session, plies):
    clocks = Timed(base * TIME_UNIT, increment * TIME_UNIT, session)
    self_play(Game(referee), [start()], clocks.move, min(plies, PLIES))


@pytest.mark.parametrize("go, processes, fen", [
    ("go movetime 30", 2, "startpos"),
    ("go depth 5", 2, "startpos"),
    ("go depth 4", 1, "fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -"),
    ("go nodes 4000", 1, "startpos"),
    ("go nodes 1", 1, "startpos")])
def test_fixed_limits(start, referee, go, processes, fen):
    self_play(Game(referee, fen), [start() for _ in range(processes)], go)


def test_infinite_and_stop(engine, referee):
    def go(engine, game):
        engine.start("go infinite", game.line())
        time.sleep(0.02 * TIME_UNIT)
        engine.send("stop")
        game.play(engine.best())

    self_play(Game(referee), [engine], go, 60)


def test_pondering(start, referee):
    """Both sides think on each other's time, as an interface has it done."""
    clocks, counts = Timed(3000 * TIME_UNIT, 20 * TIME_UNIT), {"hit": 0, "miss": 0}
    guesses: dict[Brivok, list[str]] = {}
    engines = [start(), start()]

    def go(engine, game):
        side = game.side
        guess = guesses.pop(engine, None)
        begin = time.monotonic()
        if guess == game.moves[-1:]:
            engine.send("ponderhit")
            reply = engine.best()
            counts["hit"] += 1
        else:
            if guess:
                engine.send("stop")
                engine.best()
                counts["miss"] += 1
            reply = engine.go("go " + clocks.text(side), game.line())
        clocks.spend(side, time.monotonic() - begin)
        game.play(reply)
        if reply.ponder:
            guesses[engine] = [reply.ponder]
            engine.start("go ponder " + clocks.text(side), game.line(reply.ponder))

    game = Game(referee)
    while not game.end and len(game.moves) < min(120, PLIES):
        go(engines[len(game.moves) % 2], game)
    for engine in guesses:
        engine.send("stop")
        engine.best()
    assert SLOW or counts["hit"] and counts["miss"], counts


FISCHER_ARRAYS = ["nnbrkrqb", "bbqnnrkr", "nrkbqrbn", "rkbbnqnr", "qnbbrnkr", "1rkr4", "rk5r",
                  "5rkr"]


@pytest.mark.parametrize("array", FISCHER_ARRAYS[:2] if SLOW else FISCHER_ARRAYS)
def test_fischer_random(start, referee, array):
    fen = f"fen {array}/pppppppp/8/8/8/8/PPPPPPPP/{array.upper()} w KQkq - 0 1"
    engine, game = start(options={"PlayFRC": "true"}), Game(referee, fen, fischer=True)
    chance = random.Random(array)
    while len(game.moves) < 30 + 4 * len(array):  # a loose opening, both sides eager to castle
        castlings = [m for m in game.legal if m.startswith("O")]
        quiet = [m for m in game.legal if m[:2] not in squares(game.fen) or
                 squares(game.fen)[m[:2]] not in "KkRr" and m[2:4] not in squares(game.fen)]
        assert game.check or set(engine.moves(game.line())) == set(game.legal), game.line()
        game.push(chance.choice(castlings or sorted(quiet) or sorted(game.legal)))
        if game.end:
            break
    if not game.end:
        self_play(game, [engine], "go depth 4", len(game.moves) + PLIES // 2)
    assert any(m.startswith("O") for m in game.moves), "no castling in " + game.line()


@pytest.mark.parametrize("fen, ends", [
    ("7k/8/8/8/8/8/R7/1R2K3 w - - 0 1", ["mate"]),
    ("8/8/8/3k4/8/8/3K4/3Q4 w - - 0 1", ["mate"]),
    ("8/8/8/8/8/2k5/1p6/1K6 b - - 0 1", ["stalemate", "insufficient"]),
    ("8/8/8/4k3/8/8/1r6/K7 w - - 0 1", ["insufficient"]),
    ("8/1k6/8/p1p1p1p1/PpPpPpPp/1P1P1P1P/6K1/8 w - - 80 90", ["fifty"]),
    ("6k1/6p1/8/6KQ/1r6/q7/8/8 w - - 0 1", ["repetition"])])
def test_ends(engine, referee, fen, ends):
    game = Game(referee, "fen " + fen)
    self_play(game, [engine], "go depth 7", 150, ends=ends)
    assert game.end in ends, game.line()
