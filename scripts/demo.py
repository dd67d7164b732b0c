#!/usr/bin/env python3
"""Shows a short game of the engine against itself, played over UCI, on the terminal."""

import os
import sys
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))

from chesskit import NO_MOVE, Score, UciEngine, run_script, script_parser  # noqa: E402


def diagram(engine: UciEngine, moves: list[str]) -> str:
    """The board that the engine prints after the moves."""
    engine.send("position startpos moves " + " ".join(moves))
    return "\n".join(line.rstrip() for line in engine.ready()).strip("\n")


def score_text(score: Score | None) -> str:
    if score is None:
        return ""
    mate = f"   (mate in {score.value})"
    return f"   ({score.value / 100:+.2f})" if score.kind == "cp" else mate


def play(engine: UciEngine, plies: int, movetime: int) -> tuple[list[str], str]:
    """Plays and prints the game. Returns the moves and what ended it."""
    engine.send("position startpos")
    moves: list[str] = []
    seen: Counter[str] = Counter()
    last_score = None
    while len(moves) < plies:
        reply = engine.go(f"go movetime {movetime}", timeout=None)
        if reply.best == NO_MOVE:
            if last_score == Score("mate", 1):
                return moves, "checkmate"
            return moves, "no move to play: mate, stalemate or another draw"
        moves.append(reply.best)
        last_score = reply.score
        board = diagram(engine, moves)
        number, black = divmod(len(moves) - 1, 2)
        print(f"\n{number + 1}. {'... ' if black else ''}{moves[-1]}{score_text(last_score)}"
              f"\n\n{board}")
        # The diagram shows the men, the castling rights and the side to move.
        seen[board] += 1
        if seen[board] == 3:
            return moves, "the position stands for the third time: a draw"
    return moves, f"stopped after {plies} half-moves"


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("engine", help="the engine's program file")
    parser.add_argument("--plies", type=int, default=40, help="half-moves to play (40)")
    parser.add_argument("--movetime", type=int, default=100, help="milliseconds per move (100)")
    arguments = parser.parse_args()

    engine = UciEngine([arguments.engine])
    try:
        moves, ending = play(engine, arguments.plies, arguments.movetime)
        pairs = [" ".join(moves[i:i + 2]) for i in range(0, len(moves), 2)]
        print("\n" + "  ".join(f"{n}. {pair}" for n, pair in enumerate(pairs, 1)))
        print(f"\nEnd: {ending}.", flush=True)
    except BrokenPipeError:  # nobody reads the game any more
        sys.stdout = open(os.devnull, "w")
    finally:
        engine.quit()
    return 0


if __name__ == "__main__":
    run_script(main)
