#!/usr/bin/env python3
"""Plays opening lines out by Stockfish against itself and writes the games, the raw material of the
default book, as PGN. One line of the input is an ECO code, a name and moves in coordinate text,
with tabs between them.

The number of nodes of each move is drawn from a generator seeded by --seed, the line and the round,
and each game begins with a cleared hash table: the output depends on the arguments and the version
of Stockfish alone, whatever the number of processes. Games that come out alike are written once.

Needs Debian's stockfish and pgn-extract; the latter checks the moves and turns them into SAN.

Usage: make_book_games.py LINES OUTPUT [--rounds N] [--nodes N] [--seed N] [--jobs N]
"""

import argparse
import multiprocessing
import os
import random
import re
import shutil
import subprocess
import sys
import textwrap
from collections import Counter

from demo import Engine

PATH = os.environ["PATH"] + ":/usr/games"  # where Debian keeps games
STOCKFISH = shutil.which("stockfish", path=PATH) or "stockfish"
PGN_EXTRACT = shutil.which("pgn-extract", path=PATH) or "pgn-extract"
HASH = 1  # megabytes: enough for a few thousand nodes, and quick to clear
JITTER = 0.25  # share of the nodes that a move may get more or less

# Adjudication: scores in centipawns as the side to move sees them, counted in plies.
WON, WON_PLIES = 400, 6  # both sides say so, on three moves each
EVEN, EVEN_PLIES, EVEN_FROM = 10, 12, 60  # both sides, on six moves each, from move 31 on
MATE = 30000

DRAW = "1/2-1/2"


def last_score(lines):
    """The last score among the lines of a search, in centipawns for the side to move."""
    kind, value = re.findall(r" score (cp|mate) (-?\d+)", "\n".join(lines))[-1]
    return int(value) if kind == "cp" else MATE if int(value) > 0 else -MATE


class Stockfish(Engine):
    """One thread, small hash table."""

    def __init__(self, command):
        super().__init__(command)
        self.send("uci")
        lines = self.read_until("uciok")
        self.name = next(line[8:] for line in lines if line.startswith("id name "))
        self.send(f"setoption name Hash value {HASH}")

    def new_game(self):
        self.send("ucinewgame")
        self.send("isready")
        self.read_until("readyok")

    def legal_moves(self, fen):
        self.send(f"position fen {fen}")
        self.send("go perft 1")
        lines = self.read_until("Nodes")
        return [line.split(":")[0] for line in lines[:-1] if line.endswith(": 1")]

    def look(self, position):
        """Its FEN and whether the side to move is in check."""
        self.send(f"position {position}")
        self.send("d")
        lines = self.read_until("Checkers:")
        fen = next(line[5:] for line in lines if line.startswith("Fen: "))
        return fen, lines[-1] != "Checkers:"

    def search(self, position, nodes):
        """The best move, None without a legal one, and its score for the side to move."""
        self.send(f"position {position}")
        self.send(f"go nodes {nodes}")
        lines = self.read_until("bestmove")
        best = lines[-1].split()[1]
        if best == "(none)":
            return None, 0
        return best, last_score(lines)


class Adjudicator:
    """Ends a game that both sides see as won or as even for long enough."""

    def __init__(self):
        self.won = self.even = 0  # plies on end with such scores; won < 0: for Black

    def result(self, score, white, plies):
        """None while the game goes on. `score` is that of the side to move after so many plies."""
        score = score if white else -score
        self.won = (max(self.won, 0) + 1 if score >= WON else
                    min(self.won, 0) - 1 if score <= -WON else 0)
        self.even = self.even + 1 if abs(score) <= EVEN and plies >= EVEN_FROM else 0
        if abs(self.won) == WON_PLIES:
            return "1-0" if self.won > 0 else "0-1"
        return DRAW if self.even == EVEN_PLIES else None


def is_dead(placement):
    """Whether neither side has the men to mate."""
    men = re.findall("[a-z]", placement.lower())
    return len(men) <= 3 and not {"p", "r", "q"} & set(men)


def play(engine, opening, nodes, rng):
    """Plays the game out; returns the moves, the result and what ended it."""
    engine.new_game()
    moves, seen, adjudicator = [], Counter(), Adjudicator()
    spread = round(nodes * JITTER)
    while True:
        game = "startpos moves " + " ".join(moves)
        fen, check = engine.look(game)
        placement, side, rights, passed, clock, _ = fen.split()
        position = (placement, side, rights, passed)
        seen[position] += 1
        if len(moves) < len(opening):
            moves.append(opening[len(moves)])
            continue
        if seen[position] == 3:
            return moves, DRAW, "repetition"
        if is_dead(placement):
            return moves, DRAW, "material"
        best, score = engine.search(game, nodes + rng.randint(-spread, spread))
        if best is None:
            if check:
                return moves, "0-1" if side == "w" else "1-0", "mate"
            return moves, DRAW, "stalemate"
        if int(clock) >= 100:
            return moves, DRAW, "fifty moves"
        result = adjudicator.result(score, side == "w", len(moves))
        if result:
            return moves, result, "adjudication: " + ("even" if result == DRAW else "won")
        moves.append(best)


engine = None  # of this process


def start_process(stockfish):
    global engine
    engine = Stockfish(stockfish)


def play_task(task):
    opening, nodes, seed = task
    return play(engine, opening, nodes, random.Random(seed))


def to_pgn(tags, moves, result):
    """One game, its moves still in coordinate text."""
    lines = [f'[{name} "{value}"]' for name, value in tags.items()]
    return "\n".join([*lines, "", *textwrap.wrap(" ".join((*moves, result))), "", ""])


def write_san(path, games):
    """Has pgn-extract write the games, which it refuses to do with an illegal move in them."""
    part = path + ".part"
    subprocess.run([PGN_EXTRACT, "-s", "--quiet", f"-o{part}"], input="".join(games), text=True,
                   check=True)
    with open(part, encoding="ascii") as file:
        written = sum(line.startswith("[Event ") for line in file)
    if written != len(games):
        raise RuntimeError(f"pgn-extract took {written} of {len(games)} games")
    os.replace(part, path)


def main():
    parser = argparse.ArgumentParser(description="Plays opening lines out by Stockfish.")
    parser.add_argument("lines", help="file of opening lines")
    parser.add_argument("output", help="PGN file to write")
    parser.add_argument("--rounds", type=int, default=6, help="games of each line (6)")
    parser.add_argument("--nodes", type=int, default=2000, help="nodes of each move (2000)")
    parser.add_argument("--seed", type=int, default=1, help="of the numbers of nodes (1)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="processes (all cores)")
    parser.add_argument("--stockfish", default=STOCKFISH, help=f"program file ({STOCKFISH})")
    arguments = parser.parse_args()

    with open(arguments.lines, encoding="ascii") as file:
        openings = [line.rstrip("\n").split("\t") for line in file]
    plan = [(number, turn) for turn in range(1, arguments.rounds + 1)
            for number in range(1, len(openings) + 1)]
    tasks = [(openings[number - 1][2].split(), arguments.nodes,
              f"{arguments.seed} {openings[number - 1][2]} {turn}") for number, turn in plan]
    start_process(arguments.stockfish)
    name = engine.name

    games, seen, tally = [], set(), Counter()
    with multiprocessing.Pool(arguments.jobs, start_process, (arguments.stockfish,)) as pool:
        for (number, turn), (moves, result, end) in zip(plan, pool.imap(play_task, tasks)):
            if tuple(moves) in seen:
                tally["dropped: played before"] += 1
                continue
            seen.add(tuple(moves))
            eco, opening, _ = openings[number - 1]
            tags = {"Event": "?", "Site": "?", "Date": "????.??.??",
                    "Round": f"{number}.{turn}", "White": name, "Black": name, "Result": result,
                    "ECO": eco, "Opening": opening}
            games.append(to_pgn(tags, moves, result))
            tally["result: " + result] += 1
            tally["end: " + end] += 1
            tally["plies"] += len(moves)
            if len(games) % 100 == 0:
                print(f"{len(games)} of {len(tasks)}", file=sys.stderr, flush=True)
    engine.quit()
    write_san(arguments.output, games)
    print(f"{len(games)} games over {len(openings)} lines by {name}")
    for what, count in sorted(tally.items()):
        print(f"{what:32}{count:8}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
