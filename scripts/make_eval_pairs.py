#!/usr/bin/env python3
"""Writes a file for the engine's "evaltest": positions in pairs of lines, the second of a pair
being the first with the colours swapped and the board turned over.

The positions come from random games, for which the engine itself lists the legal moves. Left out
are positions with more than one queen or more than two bishops a side, whose evaluation need not
be symmetric.

Usage: make_eval_pairs.py ENGINE OUTPUT [--pairs N] [--seed N]
"""

import argparse
import random
import re
import sys

from demo import Engine

START = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
PLIES = 160  # of one game
TAKEN = 0.15  # share of its positions
CORNER_RIGHTS = {"a1": "Q", "h1": "K", "a8": "q", "h8": "k", "e1": "KQ", "e8": "kq"}


def read_board(placement):
    """{square: letter} of the men."""
    rows = re.sub(r"\d", lambda m: " " * int(m[0]), placement).split("/")
    return {f"{'abcdefgh'[f]}{8 - r}": man for r, row in enumerate(rows)
            for f, man in enumerate(row) if man != " "}


def write_board(board):
    rows = ("".join(board.get(f"{f}{rank}", " ") for f in "abcdefgh") for rank in "87654321")
    return re.sub(r" +", lambda m: str(len(m[0])), "/".join(rows))


def make_move(fen, move):
    """The FEN after a legal move in coordinate text."""
    placement, side, rights, _, clock, number = fen.split()
    board = read_board(placement)
    start, to, promoted = move[:2], move[2:4], move[4:]
    man = board.pop(start)
    pawn = man in "Pp"
    clock = 0 if pawn or to in board else int(clock) + 1
    if pawn and start[0] != to[0] and to not in board:
        del board[to[0] + start[1]]
    if man in "Kk" and abs(ord(start[0]) - ord(to[0])) == 2:
        corner, beside = ("h", "f") if to[0] == "g" else ("a", "d")
        board[beside + to[1]] = board.pop(corner + to[1])
    board[to] = (promoted.upper() if man == "P" else promoted) or man
    for square in (start, to):
        for right in CORNER_RIGHTS.get(square, ""):
            rights = rights.replace(right, "")
    double = pawn and abs(int(start[1]) - int(to[1])) == 2
    passed = f"{to[0]}{(int(start[1]) + int(to[1])) // 2}" if double else "-"
    return " ".join((write_board(board), "b" if side == "w" else "w", rights or "-", passed,
                     str(clock), str(int(number) + (side == "b"))))


def mirror(fen):
    """The same position with the colours swapped."""
    placement, side, rights, passed, *numbers = fen.split()
    flipped = "/".join(reversed(placement.swapcase().split("/")))
    rights = "".join(sorted(rights.swapcase()))
    if passed != "-":
        passed = f"{passed[0]}{9 - int(passed[1])}"
    return " ".join((flipped, "b" if side == "w" else "w", rights, passed, *numbers))


def is_fit(fen):
    men = fen.split()[0]
    return max(map(men.count, "Qq")) <= 1 and max(map(men.count, "Bb")) <= 2


def legal_moves(engine, fen):
    engine.send(f"position fen {fen}")
    engine.send("genmoves")
    engine.send("isready")
    return engine.read_until("readyok")[-2].split()


def positions(engine, rng):
    """Positions of random games, without end. Captures are played more often than by mere chance,
    so that endgames come up too."""
    while True:
        fen = START
        for _ in range(PLIES):
            moves = legal_moves(engine, fen)
            if not moves:
                break
            board = read_board(fen.split()[0])
            captures = [move for move in moves if move[2:4] in board]
            fen = make_move(fen, rng.choice(captures if captures and rng.random() < 0.2 else moves))
            if is_fit(fen) and rng.random() < TAKEN:
                yield fen


def main():
    parser = argparse.ArgumentParser(description="Writes pairs of positions for evaltest.")
    parser.add_argument("engine", help="the engine's program file")
    parser.add_argument("output", help="the file to write")
    parser.add_argument("--pairs", type=int, default=600, help="number of pairs (600)")
    parser.add_argument("--seed", type=int, default=1, help="of the random games (1)")
    arguments = parser.parse_args()

    engine = Engine(arguments.engine)
    engine.send("uci")
    engine.read_until("uciok")
    source = positions(engine, random.Random(arguments.seed))
    with open(arguments.output, "w", encoding="ascii", newline="\n") as output:
        for _ in range(arguments.pairs):
            fen = next(source)
            output.write(f"{fen}\n{mirror(fen)}\n")
    engine.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
