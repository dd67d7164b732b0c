#!/usr/bin/env python3
"""Lets the engine play a short game against itself over UCI and shows it on the terminal.

Usage: demo.py ENGINE [--plies N] [--movetime MS]
"""

import argparse
import collections
import contextlib
import subprocess
import sys

NO_MOVE = "a8a8"


class Engine:
    """The engine behind a pair of pipes."""

    def __init__(self, command):
        self.process = subprocess.Popen(
            [command], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1
        )

    def send(self, line):
        try:
            self.process.stdin.write(line + "\n")
        except BrokenPipeError:
            raise EOFError from None

    def read_until(self, word):
        """The lines up to and including the first one that begins with the word."""
        lines = []
        while True:
            line = self.process.stdout.readline()
            if not line:
                raise EOFError
            lines.append(line.rstrip())
            if line.split()[:1] == [word]:
                return lines

    def diagram(self, moves):
        """Sets up the position after the moves and returns the board that the engine prints."""
        self.send("position startpos moves " + " ".join(moves))
        self.send("isready")
        return "\n".join(self.read_until("readyok")[:-1]).strip("\n")

    def best_move(self, movetime):
        """Searches; returns the move and the last score, a pair of its kind and its value."""
        self.send(f"go movetime {movetime}")
        lines = self.read_until("bestmove")
        score = None
        for words in map(str.split, lines):
            if words[:1] == ["info"] and "score" in words:
                at = words.index("score")
                score = (words[at + 1], int(words[at + 2]))
        return lines[-1].split()[1], score

    def quit(self):
        with contextlib.suppress(EOFError, BrokenPipeError):  # it may be gone already
            self.send("quit")
            self.process.stdin.close()
        try:
            self.process.wait(timeout=5)
        except subprocess.TimeoutExpired:
            self.process.kill()


def score_text(score):
    if score is None:
        return ""
    kind, value = score
    return f"   ({value / 100:+.2f})" if kind == "cp" else f"   (mate in {value})"


def play(engine, plies, movetime):
    """Plays the game, printing it; returns the moves and what ended it."""
    engine.send("uci")
    engine.read_until("uciok")
    engine.send("position startpos")
    moves = []
    seen = collections.Counter()
    last_score = None
    while len(moves) < plies:
        move, score = engine.best_move(movetime)
        if move == NO_MOVE:
            if last_score == ("mate", 1):
                return moves, "checkmate"
            return moves, "no move to play: mate, stalemate or another draw"
        moves.append(move)
        last_score = score
        board = engine.diagram(moves)
        number, black = divmod(len(moves) - 1, 2)
        print(f"\n{number + 1}. {'... ' if black else ''}{move}{score_text(score)}\n\n{board}")
        # The diagram tells the placement, the castling rights and the side to move.
        seen[board] += 1
        if seen[board] == 3:
            return moves, "the position stands for the third time: a draw"
    return moves, f"stopped after {plies} half-moves"


def main():
    parser = argparse.ArgumentParser(description="Shows the engine playing against itself.")
    parser.add_argument("engine", help="the engine's program file")
    parser.add_argument("--plies", type=int, default=40, help="half-moves to play (40)")
    parser.add_argument("--movetime", type=int, default=100, help="milliseconds per move (100)")
    arguments = parser.parse_args()

    engine = Engine(arguments.engine)
    try:
        moves, ending = play(engine, arguments.plies, arguments.movetime)
    except EOFError:
        print("demo: the engine ended by itself", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130
    except BrokenPipeError:  # nobody reads the game any more
        sys.stdout = None
        return 0
    finally:
        engine.quit()

    pairs = [" ".join(moves[i : i + 2]) for i in range(0, len(moves), 2)]
    print("\n" + "  ".join(f"{n}. {pair}" for n, pair in enumerate(pairs, 1)))
    print(f"\nEnd: {ending}.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
