"""Play with endgame tables: from random positions the engine mates in exactly as many moves as the
tables say, resists as long as they allow, and holds every draw.

A second engine tells over WinBoard what the tables hold ("tbrep"). BRIVOK_TABLES names a folder
with more tables than those of three men; BRIVOK_POSITIONS is the number of positions to play."""

import os
import random

import pytest

from chesskit import (SLOW, TABLES_TOOL, Brivok, WinBoard, complete_tables, is_dead,
                      random_position, run_tool)

POSITIONS = int(os.environ.get("BRIVOK_POSITIONS", "12" if SLOW else "60"))
MATE = 32767
HELD = 15  # moves that the engine must hold a draw


class Oracle(WinBoard):
    def after_moves(self, fen):
        """Move -> its worth: a mate scores high, more if it is sooner; being mated scores low,
        less low if it is later; a draw is 0."""
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
    """The engine and the oracle. Both run in the folder of the tables and find them there."""
    engine, oracle = Brivok(tables, options={"OwnBook": "false"}), Oracle(tables)
    oracle.send("force")
    yield engine, oracle
    engine.finish()
    oracle.finish()


def play(players, referee, rng, start):
    """The engine against itself, or in a drawn position against random moves, until mate or until
    the draw was held. Returns the number of half-moves to the mate, or None."""
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
    names = set(complete_tables(tables)) - {"kbk", "knk"}  # these are never played on
    rng, mates = random.Random(1), 0
    for name in (sorted(names) * POSITIONS)[:POSITIONS]:
        start = random_position(rng, name)
        best = max(players[1].after_moves(start).values(), default=0)
        length = play(players, referee, rng, start)
        if best != 0:
            assert length == MATE - abs(best), start
            mates += 1
    assert mates > POSITIONS // 4
