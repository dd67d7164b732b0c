#!/usr/bin/env python3
"""Plays random decided positions of endgame tables out to mate.

The engine plays both sides over UCI, with the tables of the folder, plain or packed. The positions
are spread evenly over the tables, with both sides to move and either colour as a table's first
side; where both sides have pawns, half of them have a capture in passing. The table's value of the
position tells how many moves there must be to mate. At each move the score of the engine must agree
with what is left of them, and in the end Stockfish must find all moves legal and the last one
mating.

Values do not regard the fifty-move rule: the counters of the engine begin again now and then."""

import argparse
import random
import sys
import tempfile
import time
from collections import Counter
from collections.abc import Iterator
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (BRIVOK, Brivok, ChessError, Referee, TableOracle, after_move,
                      complete_tables, progress, random_position, run_script, script_parser, sides,
                      tables_in)

BATCH = 64  # positions that the tables are asked for at once
STRETCH = 60  # half-moves after which the counters of the engine begin again


class Fault(ChessError):
    """A game that went otherwise than the tables say."""


class Start(NamedTuple):
    table: str
    fen: str
    value: int  # for the side to move: mate in so many moves; negative: mated


def starts(rng: random.Random, oracle: TableOracle, table: str, tries: int) -> Iterator[Start]:
    """Random positions of a table that are won or lost, out of so many."""
    passing = all("p" in men for men in sides(table))
    waiting: tuple[list[Start], list[Start]] = ([], [])
    for _ in range(max(1, tries // BATCH)):
        fens = [random_position(rng, table, passing and n % 2 == 0) for n in range(BATCH)]
        found = [Start(table, fen, value) for fen, value in zip(fens, oracle.values(fens)) if value]
        if not passing:
            yield from found
            continue
        for start in found:
            waiting[start.fen.split()[3] == "-"].append(start)
        for pair in zip(*waiting):
            yield from pair
        paired = min(map(len, waiting))
        for kind in waiting:
            del kind[:paired]
    yield from (start for kind in waiting for start in kind)


def play(engine: Brivok, start: Start, depth: int) -> list[str]:
    """The moves up to the mate. Raises Fault where a score is not what the tables say."""
    engine.send("ucinewgame")
    value, base = start.value, start.fen
    moves: list[str] = []
    since = 0  # moves before the position `base`
    while value != 0:
        if len(moves) - since == STRETCH:
            for move in moves[since:]:
                base = after_move(base, move)
            base, since = " ".join([*base.split()[:4], "0", "1"]), len(moves)
        position = f"position fen {base} moves {' '.join(moves[since:])}"
        engine.send(position)
        reply = engine.go(f"go depth {depth}")
        # An only move is played without a search.
        if reply.score != ("mate", value) and (reply.score or len(engine.moves(position)) != 1):
            raise Fault(f"{reply.score or 'no score'} instead of mate {value} "
                        f"after {' '.join(moves) or 'no move'}")
        moves.append(reply.best)
        value = -(value - 1) if value > 0 else -value
    return moves


def check(referee: Referee, start: Start, moves: list[str]) -> None:
    """Raises Fault unless the moves are legal and end in mate."""
    look = referee.look(f"fen {start.fen}", moves)
    ended = look.fen.split()
    begun = start.fen.split()[1] == "b"
    # The referee stops at an illegal move.
    if int(ended[5]) != 1 + (len(moves) + begun) // 2 or look.legal or not look.check:
        raise Fault(f"no mate in {len(moves)} half-moves but {look.fen} after {' '.join(moves)}")


class Games:
    """Plays the games and keeps the account."""

    def __init__(self, options: argparse.Namespace, folder: str) -> None:
        self.options, self.rng = options, random.Random(options.seed)
        self.oracle, self.referee = TableOracle(options.folder), Referee()
        self.engine = Brivok(folder, command=[options.engine], options={
            "OwnBook": "false", "Hash": 1, "NalimovPath": options.folder, "NalimovCache": 16})
        self.played: Counter[str] = Counter()
        self.counts: Counter[str] = Counter()
        self.longest: Counter[str] = Counter()  # moves to mate
        self.faults = 0

    def game(self, start: Start) -> None:
        try:
            moves = play(self.engine, start, self.options.depth)
            check(self.referee, start, moves)
        except Fault as fault:
            print(f"{start.table} {start.fen}: {fault}", flush=True)
            self.faults += 1
            moves = []
        _, mover, _, passed, *_ = start.fen.split()
        self.played[start.table] += 1
        self.longest[start.table] = max(self.longest[start.table], abs(start.value))
        self.counts.update({"half-moves": len(moves), "won": start.value > 0,
                            "lost": start.value < 0, f"{mover} to move": 1,
                            "with a capture in passing": passed != "-"})
        if sum(self.played.values()) % 100 == 0:
            progress(f"{sum(self.played.values())} games, {start.table}")

    def run(self, tables: list[str]) -> None:
        """Shares the games out evenly. What a table with few decided positions does not need goes
        to the others."""
        left, open_tables = self.options.games, tables
        while left > 0 and open_tables:
            fruitful = []
            for number, table in enumerate(open_tables):
                share = left // (len(open_tables) - number)
                tries = max(BATCH, min(self.options.tries, share * self.options.tries))
                found = starts(self.rng, self.oracle, table, tries)
                played = 0
                while played < share and (start := next(found, None)):
                    self.game(start)
                    played += 1
                left -= played
                if played == share:
                    fruitful.append(table)
            open_tables = fruitful

    def finish(self) -> None:
        self.engine.finish()
        self.referee.quit()
        self.oracle.kill()


def show(games: Games, tables: list[str], seconds: float) -> None:
    print("| Table | Games | Longest |\n| --- | ---: | ---: |")
    for table in tables:
        print(f"| {table} | {games.played[table]} | {games.longest[table] or '-'} |")
    print(f"\n{sum(games.played.values())} games of {sum(map(bool, games.played.values()))} tables "
          f"in {seconds:.0f} s, {games.faults} faults; " +
          ", ".join(f"{name} {count}" for name, count in sorted(games.counts.items())))


def arguments() -> argparse.Namespace:
    parser = script_parser(__doc__)
    parser.add_argument("folder", help="of the tables")
    parser.add_argument("--games", type=int, default=1000, help="altogether (1000)")
    parser.add_argument("--only", metavar="NAMES", help="of these tables, with commas between them")
    parser.add_argument("--depth", type=int, default=3,
                        help="of each search; 3 is the least that tells a score (3)")
    parser.add_argument("--tries", type=int, default=20000,
                        help="random positions of a table to look at for won ones (20000)")
    parser.add_argument("--engine", default=BRIVOK, help="file of the engine (%(default)s)")
    parser.add_argument("--seed", type=int, default=1, help="of the choice of positions (1)")
    options = parser.parse_args()
    if not Path(options.folder).is_dir():
        parser.error(f"there is no folder {options.folder}")
    options.folder = str(Path(options.folder).resolve())
    return options


def main() -> int:
    options = arguments()
    complete = complete_tables(options.folder)
    if partial := set(tables_in(options.folder)) - set(complete):
        print(f"Left out, for want of tables below them: {', '.join(sorted(partial))}\n")
    tables = [name for name in complete if not options.only or name in options.only.split(",")]
    if not tables:
        raise ChessError(f"no complete tables in {options.folder}")
    begin = time.monotonic()
    with tempfile.TemporaryDirectory() as folder:
        games = Games(options, folder)
        try:
            games.run(tables)
        finally:
            show(games, tables, time.monotonic() - begin)
        games.finish()
    return 1 if games.faults else 0


if __name__ == "__main__":
    run_script(main)
