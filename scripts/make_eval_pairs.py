#!/usr/bin/env python3
"""Writes a file for the engine's "evaltest": pairs of lines, a position and the same position with
the colours swapped.

The positions come from random games; the engine itself lists the legal moves. Positions in which a
side has more than one queen or more than two bishops are left out, because their evaluation need
not be symmetric.
"""

import random
import sys
from collections.abc import Iterator
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))

from chesskit import (START, Brivok, after_move, mirror, run_script, script_parser,  # noqa: E402
                      squares)

PLIES = 160  # of one game
TAKEN = 0.15  # share of its positions


def is_fit(fen: str) -> bool:
    men = fen.split()[0]
    return max(map(men.count, "Qq")) <= 1 and max(map(men.count, "Bb")) <= 2


def positions(engine: Brivok, rng: random.Random) -> Iterator[str]:
    """Yields positions of random games without end. Captures come more often than by chance, so
    that there are endgames too."""
    while True:
        fen = START
        for _ in range(PLIES):
            moves = engine.moves(f"position fen {fen}")
            if not moves:
                break
            men = squares(fen)
            captures = [move for move in moves if move[2:4] in men]
            fen = after_move(fen, rng.choice(captures if captures and rng.random() < 0.2
                                             else moves))
            if is_fit(fen) and rng.random() < TAKEN:
                yield fen


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("engine", help="the engine's program file")
    parser.add_argument("output", help="the file to write")
    parser.add_argument("--pairs", type=int, default=600, help="number of pairs (600)")
    parser.add_argument("--seed", type=int, default=1, help="of the random games (1)")
    arguments = parser.parse_args()

    engine = Brivok(command=[arguments.engine])
    source = positions(engine, random.Random(arguments.seed))
    with open(arguments.output, "w", encoding="ascii", newline="\n") as output:
        for _ in range(arguments.pairs):
            fen = next(source)
            output.write(f"{fen}\n{mirror(fen)}\n")
    engine.quit()
    return 0


if __name__ == "__main__":
    run_script(main)
