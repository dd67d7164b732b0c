#!/usr/bin/env python3
"""Plays the engine's levels of strength against one another: each level against the next ones of
the list, with both colours of each opening. The results are what a scale of ratings is fitted to.

    tests/soak/levels.py [--levels 1400,1600,1800,2000] [--games 100] [--reach 1]
    tests/soak/levels.py --nodes 500,2000,8000 --games 100

A level is a UCI_Elo, or with --nodes a limit of nodes a move. A referee checks each move, and games
are played to their end. The last column and the fitted scale are in Elo. The engine is
build/release/bin/brivok, or BRIVOK in the environment. Exit code 1 on an illegal move, a crash or a
hang."""

import math
import random
import sys
import tempfile
from itertools import combinations
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (BRIVOK, DRAW, ROOT, ChessError, Game, Referee, Standing,  # noqa: E402
                      UciEngine, progress, run_script, script_parser)

INI = "ModernInterface: true\nOpeningsBook: false\nHashMB: 16\nEHashMB: 8\nPHashMB: 2\n"
MOST_PLIES = 400
CLOCK = "movetime 600000"  # a level limits the search, not the clock


class Level:
    """The engine held to a strength."""

    def __init__(self, value: int, nodes: bool, folder: Path) -> None:
        self.value, self.name = value, f"{value} nodes" if nodes else str(value)
        self.limit = f"go nodes {value}" if nodes else f"go {CLOCK}"
        options = {"OwnBook": "false"}
        if not nodes:
            options |= {"UCI_LimitStrength": "true", "UCI_Elo": str(value)}
        self.engine = UciEngine([BRIVOK], folder, options)

    def move(self, game: Game) -> str:
        return self.engine.go(self.limit, game.line()).best


def play(levels: tuple[Level, Level], referee: Referee, opening: list[str]) -> str:
    """The result of a game of White's level and Black's."""
    game = Game(referee)
    for move in opening:
        game.push(move)
    for level in levels:
        level.engine.new_game()
        level.engine.send("setoption name Clear Hash")
    while not game.end and len(game.moves) < MOST_PLIES:
        game.push(levels[game.side].move(game))
    return game.result if game.end else DRAW


def fit(count: int, results: dict[tuple[int, int], Standing]) -> list[float]:
    """Ratings that explain the results best, the first level's being 0: maximum likelihood of the
    logistic model, by its fixed point (Zermelo 1929). Half a win and half a loss are added to each
    pair, so that a pair won outright has a finite difference."""
    strength = [1.0] * count
    for _ in range(20000):
        points, weight = [0.0] * count, [0.0] * count
        for (one, other), standing in results.items():
            games = standing.games + 1
            points[one] += standing.points + 0.5
            points[other] += games - standing.points - 0.5
            both = games / (strength[one] + strength[other])
            weight[one] += both
            weight[other] += both
        strength = [p / w for p, w in zip(points, weight)]
        strength = [s / strength[0] for s in strength]
    return [400 * math.log10(s) for s in strength]


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("--levels", default="1400,1600,1800,2000")
    parser.add_argument("--nodes", help="limits of nodes instead of levels")
    parser.add_argument("--games", type=int, default=100, help="of each pair (100)")
    parser.add_argument("--reach", type=int, default=1,
                        help="how many of the next levels each one meets (1)")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    openings = [line.split("\t")[2].split()
                for line in (ROOT / "data/book/lines.tsv").read_text().splitlines()]
    random.Random(options.seed).shuffle(openings)
    values = [int(x) for x in (options.nodes or options.levels).split(",")]
    referee, troubles = Referee(), 0
    results: dict[tuple[int, int], Standing] = {}

    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "brivok.ini").write_text(INI)
        levels = [Level(value, bool(options.nodes), Path(folder)) for value in values]
        for one, other in combinations(range(len(levels)), 2):
            if other - one > options.reach:
                continue
            standing = results[one, other] = Standing()
            for number in range(options.games):
                pair = (levels[one], levels[other])
                white = number % 2 == 0
                opening = openings[number // 2 % len(openings)]
                try:
                    result = play(pair if white else pair[::-1], referee, opening)
                except ChessError as error:
                    troubles += 1
                    print(f"{pair[0].name} - {pair[1].name}, game {number}: {error}", flush=True)
                    continue
                standing.add(result, white)
                progress(f"{pair[0].name} - {pair[1].name}: {number + 1}/{options.games}")
            progress()
            difference, low, high = standing.rating()
            print(f"{levels[one].name} - {levels[other].name}: +{standing.won} ={standing.drawn} "
                  f"-{standing.lost}, {difference:+.0f} ({low:+.0f} to {high:+.0f})", flush=True)
        for level in levels:
            level.engine.quit(10)
    referee.quit()
    for level, rating in zip(levels, fit(len(levels), results)):
        print(f"{level.name}: {rating:+.0f}")
    print(f"illegal moves, crashes and hangs: {troubles}")
    return 1 if troubles else 0


if __name__ == "__main__":
    run_script(main)
