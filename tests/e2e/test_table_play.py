"""Play by endgame tables: from positions drawn at random the engine mates in exactly the number of
moves that the tables say, resists as long as they allow, and gives no draw away.

A second engine says over WinBoard what the tables hold ("tbrep"). BRIVOK_TABLES names a folder of
more tables than those of three men, and BRIVOK_POSITIONS how many positions to play out."""

import os
import random
import re

import pytest

from chesskit.board import SQUARES, is_dead, placement
from chesskit.brivok import Brivok, WinBoard
from chesskit.programs import SLOW, TABLES_TOOL, run_tool

POSITIONS = int(os.environ.get("BRIVOK_POSITIONS", "12" if SLOW else "60"))
MATE = 32767
HELD = 15  # moves for which a draw must be held
STEPS = {"q": (1, 7, 8, 9), "r": (1, 8), "b": (7, 9), "n": (6, 10, 15, 17), "k": (1, 7, 8, 9)}


def attacks(men, man, start, target):
    """Whether the man on `start` attacks `target`; squares run from a1 = 0 to h8 = 63."""
    kind = man.lower()
    if kind == "p":
        return target - start in ((7, 9) if man == "P" else (-7, -9)) and \
            abs(target % 8 - start % 8) == 1
    for step in (s * sign for s in STEPS[kind] for sign in (1, -1)):
        at = start
        while 0 <= at + step < 64 and abs((at + step) % 8 - at % 8) <= 2:
            at += step
            if at == target:
                return True
            if kind in "nk" or at in men:
                break
    return False


def random_position(rng, signature):
    """FEN of a legal position of these men, either side having the first ones."""
    white, black = signature[:signature.rindex("k")], signature[signature.rindex("k"):]
    if rng.random() < 0.5:
        white, black = black, white
    letters = white.upper() + black
    while True:
        places = rng.sample(range(64), len(letters))
        men = dict(zip(places, letters))
        mover = rng.choice("wb")
        king = next(s for s, man in men.items() if man == ("k" if mover == "w" else "K"))
        if any(man in "Pp" and s // 8 in (0, 7) for s, man in men.items()):
            continue
        if any(attacks(men, man, s, king) for s, man in men.items()
               if man.isupper() == (mover == "w")):
            continue
        return f"{placement({SQUARES[s]: man for s, man in men.items()})} {mover} - - 0 1"


class Oracle(WinBoard):
    def after_moves(self, fen):
        """Move -> what it is worth: mating in n moves scores high, the sooner the better, being
        mated low, the later the better; a draw is 0."""
        lines = (line.split() for line in self.ask(f"setboard {fen}", "tbrep"))
        return {move: -int(score) for move, _, score in lines}


@pytest.fixture(scope="module")
def tables(tmp_path_factory):
    if "BRIVOK_TABLES" in os.environ:
        return os.environ["BRIVOK_TABLES"]
    folder = tmp_path_factory.mktemp("tables")
    run_tool(TABLES_TOOL, "make", "3men", "-o", folder)
    return str(folder)


@pytest.fixture
def players(tables):
    """The engine and the oracle; both find the tables in the folder that they run in."""
    engine, oracle = Brivok(tables, options={"OwnBook": "false"}), Oracle(tables)
    oracle.send("force")
    yield engine, oracle
    engine.finish()
    oracle.finish()


def play(players, referee, rng, start):
    """The engine against itself, or in a draw against any moves, up to a mate or the end of what
    is to be held. Returns the number of half-moves to the mate, or None."""
    engine, oracle = players
    drawn = 0
    played: list[str] = []
    while drawn < 2 * HELD:
        legal, fen, check = referee.look(f"fen {start}", played)
        if not legal:
            return len(played) if check else None
        if is_dead(fen):
            return None
        worth = oracle.after_moves(fen)
        assert worth.keys() == legal.keys(), fen
        best = max(worth.values())
        drawn += best == 0
        if best == 0 and drawn % 2:
            move = rng.choice(list(legal))
        else:
            move = engine.go("go depth 4", f"position fen {start} moves {' '.join(played)}").best
            assert worth[move] == best, (fen, move, worth)
        played.append(move)
    return None


def test_exact_play(players, referee, tables):
    names = set(re.findall("^k[qrbnp]*k[qrbnp]*", "\n".join(os.listdir(tables)), re.M))
    names -= {"kbk", "knk"}  # never played on
    rng, mates = random.Random(1), 0
    for name in (sorted(names) * POSITIONS)[:POSITIONS]:
        start = random_position(rng, name)
        best = max(players[1].after_moves(start).values(), default=0)
        length = play(players, referee, rng, start)
        if best != 0:
            assert length == MATE - abs(best), start
            mates += 1
    assert mates > POSITIONS // 4
