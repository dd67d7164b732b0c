#!/usr/bin/env python3
"""Has Stockfish play opening lines to the end against itself and writes the games as PGN; the
default book is built from them. A line of the input has an ECO code, a name and moves in coordinate
text, with tabs between them.

The nodes of each move come from a random generator seeded by --seed, the line and the round, and
each game begins with an empty hash table. So the output depends only on the arguments and the
version of Stockfish, not on the number of processes. Equal games are written once.

Needs Debian's stockfish and pgn-extract, which checks the moves and turns them into SAN.
"""

import multiprocessing
import os
import random
import sys
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))

from chesskit import (DRAW, Adjudicator, Game, Referee, run_script, script_parser,  # noqa: E402
                      to_pgn, write_pgn)

HASH = 1  # megabytes: enough for a few thousand nodes, and quick to clear
JITTER = 0.25  # a move may get this share of the nodes more or less


def play(engine: Referee, opening: list[str], nodes: int,
         rng: random.Random) -> tuple[list[str], str, str]:
    """Plays a game to the end. Returns the moves, the result and what ended it."""
    engine.new_game()
    game, adjudicator = Game(engine, fifty=100), Adjudicator()
    for move in opening:
        game.push(move)
    spread = round(nodes * JITTER)
    while not (end := game.end):
        best, score = engine.judge(game.line(), nodes + rng.randint(-spread, spread))
        result = adjudicator.result(score, game.white, len(game.moves))
        if result:
            return game.moves, result, "adjudication: " + ("even" if result == DRAW else "won")
        game.push(best)
    return game.moves, game.result, end


engine: Referee  # of this process


def start_process(stockfish: str | None) -> None:
    global engine
    engine = Referee(stockfish, {"Hash": HASH})


def play_task(task: tuple[list[str], int, str]) -> tuple[list[str], str, str]:
    opening, nodes, seed = task
    return play(engine, opening, nodes, random.Random(seed))


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("lines", help="file of opening lines")
    parser.add_argument("output", help="PGN file to write")
    parser.add_argument("--rounds", type=int, default=6, help="games of each line (6)")
    parser.add_argument("--nodes", type=int, default=2000, help="nodes of each move (2000)")
    parser.add_argument("--seed", type=int, default=1, help="of the numbers of nodes (1)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="processes (all cores)")
    parser.add_argument("--stockfish", help="program file")
    arguments = parser.parse_args()

    with open(arguments.lines, encoding="ascii") as file:
        openings = [line.rstrip("\n").split("\t") for line in file]
    plan = [(number, turn) for turn in range(1, arguments.rounds + 1)
            for number in range(1, len(openings) + 1)]
    tasks = [(openings[number - 1][2].split(), arguments.nodes,
              f"{arguments.seed} {openings[number - 1][2]} {turn}") for number, turn in plan]
    start_process(arguments.stockfish)
    name = engine.name

    games: list[str] = []
    seen: set[tuple[str, ...]] = set()
    tally: Counter[str] = Counter()
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
    write_pgn(arguments.output, games)
    print(f"{len(games)} games over {len(openings)} lines by {name}")
    for what, count in sorted(tally.items()):
        print(f"{what:32}{count:8}")
    return 0


if __name__ == "__main__":
    run_script(main)
