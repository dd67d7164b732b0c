#!/usr/bin/env python3
"""Has Stockfish verify test suites: files with one position in EPD form per line.

Of each line it checks that

- the position is legal and the solutions ("bm", moves that are best, or "am", moves to avoid) are
  legal moves in standard algebraic notation, as the engine writes it;
- no other legal move's text stands anywhere in the line, since the engine's test searches the whole
  line for the move that it would play;
- Stockfish's choice agrees: the next best move, or the move to avoid, is clearly worse.

Usage: check_suite.py [--seconds S] [--stockfish PROGRAM] SUITE...
Exit code 1 when a line fails.
"""

import argparse
import collections
import os
import re
import shutil
import subprocess
import sys

MATE = 100_000  # score of a mate, less its distance; above all others
CLEAR = 30  # centipawns that must lie between the solutions and the moves that are none

Line = collections.namedtuple("Line", "fen kind moves")
Ranked = collections.namedtuple("Ranked", "move score depth")


class SuiteError(Exception):
    """What is wrong with a line."""


class Stockfish:
    def __init__(self, program):
        self.process = subprocess.Popen(
            [program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)
        self.send("uci", "setoption name Hash value 128")
        self.read_until("uciok")

    def send(self, *lines):
        self.process.stdin.write("".join(line + "\n" for line in lines))
        self.process.stdin.flush()

    def read_until(self, word):
        lines = []
        for line in self.process.stdout:
            lines.append(line.rstrip())
            if line.startswith(word):
                return lines
        raise EOFError("stockfish has ended")

    def look(self, fen, moves=""):
        """The legal moves in coordinate text, and whether the side to move is in check."""
        self.send(f"position fen {fen} moves {moves}", "d", "go perft 1")
        lines = self.read_until("Nodes searched")
        legal = [m[1] for m in map(re.compile(r"(\w+): 1").fullmatch, lines) if m]
        return legal, any(re.fullmatch(r"Checkers: \S+.*", line) for line in lines)

    def rank(self, fen, count, limit, only=""):
        """The best moves, from the best on, of the last depth that a search with this limit, from
        an empty table, has ended."""
        self.send("ucinewgame", f"setoption name MultiPV value {count}", f"position fen {fen}",
                  f"go {limit}" + (f" searchmoves {only}" if only else ""))
        told = re.compile(r"info depth (\d+) .* multipv (\d+) score (cp|mate) (-?\d+) (?!\w+bound)"
                          r".* pv (\w+)")
        depths = collections.defaultdict(dict)  # by depth and place
        for m in filter(None, map(told.match, self.read_until("bestmove"))):
            depth, place, score = int(m[1]), int(m[2]), int(m[4])
            if m[3] == "mate":
                score = MATE - score if score > 0 else -MATE - score
            depths[depth][place] = Ranked(m[5], score, depth)
        most = max(map(len, depths.values()))
        last = depths[max(depth for depth, places in depths.items() if len(places) == most)]
        return [last[place] for place in sorted(last)]


def find_stockfish():
    return shutil.which("stockfish", path=os.environ.get("PATH", "") + ":/usr/games")


def board_of(fen):
    """{square: letter} of the men of a FEN."""
    text = re.sub(r"\d", lambda m: " " * int(m[0]), fen.split()[0])
    return {f"{'abcdefgh'[f]}{8 - r}": man for r, row in enumerate(text.split("/"))
            for f, man in enumerate(row) if man != " "}


def move_texts(stockfish, fen):
    """{standard algebraic notation: coordinate text} of the legal moves."""
    board = board_of(fen)
    legal, _ = stockfish.look(fen)
    texts = {}
    for move in legal:
        start, to, promoted = move[:2], move[2:4], move[4:].upper()
        man = board[start].upper()
        if man == "P":
            text = f"{start[0]}x{to}" if start[0] != to[0] else to
            text += f"={promoted}" if promoted else ""
        elif man == "K" and abs(ord(start[0]) - ord(to[0])) == 2:
            text = "O-O" if to[0] == "g" else "O-O-O"
        else:
            rivals = [m[:2] for m in legal
                      if m[2:4] == to and m[:2] != start and board[m[:2]] == board[start]]
            apart = ""
            if rivals:
                apart = start[1] if any(r[0] == start[0] for r in rivals) else start[0]
            text = f"{man}{apart}{'x' if to in board else ''}{to}"
        replies, check = stockfish.look(fen, move)
        texts[text + ("" if not check else "+" if replies else "#")] = move
    return texts


def parse(text):
    """A line of a suite in its parts."""
    words = text.split()
    if len(words) < 6 or words[4] not in ("bm", "am"):
        raise SuiteError("no bm or am behind the four fields of the position")
    if (words[0].count("K"), words[0].count("k")) != (1, 1):
        raise SuiteError("one king a side")  # Stockfish itself would crash
    return Line(" ".join(words[:4]) + " 0 1", words[4],
                re.sub(r"^(?:\S+\s+){5}|;.*", "", text).split())


def check_texts(stockfish, text):
    """The line in its parts, and the coordinate texts of its moves."""
    line = parse(text)
    texts = move_texts(stockfish, line.fen)
    unknown = [move for move in line.moves if move not in texts]
    if unknown or not line.moves:
        raise SuiteError(f"not a legal move: {' '.join(unknown) or 'none is named'}")
    stray = [san for san in texts if san in text and san not in line.moves]
    if stray:
        raise SuiteError(f"the line also holds the text of {' '.join(stray)}")
    return line, texts


def check_line(stockfish, text, limit):
    """What Stockfish says to the line; raises SuiteError when it disagrees."""
    line, texts = check_texts(stockfish, text)
    names = {move: san for san, move in texts.items()}
    solutions = {texts[san] for san in line.moves}
    ranked = stockfish.rank(line.fen, len(solutions) + 1, limit)
    best = ranked[0]
    verdict = f"{line.kind} {' '.join(line.moves)}: depth {best.depth}, " + ", ".join(
        f"{names[r.move]} {r.score}" for r in ranked)
    if line.kind == "bm":
        rest = [r.score for r in ranked if r.move not in solutions]
        if best.move not in solutions or (rest and rest[0] > best.score - CLEAR):
            raise SuiteError(verdict)
        return verdict
    if best.move in solutions:
        raise SuiteError(verdict)
    for san in line.moves:
        score = stockfish.rank(line.fen, 1, limit, texts[san])[0].score
        verdict += f"; {san} {score}"
        if score > best.score - CLEAR:
            raise SuiteError(verdict)
    return verdict


def main():
    parser = argparse.ArgumentParser(description="Has Stockfish verify test suites.")
    parser.add_argument("suites", nargs="+", metavar="SUITE")
    parser.add_argument("--seconds", type=float, default=3, help="per search (3)")
    parser.add_argument("--stockfish", default=find_stockfish(), help="program file")
    arguments = parser.parse_args()
    if not arguments.stockfish:
        parser.error("no stockfish found")

    stockfish = Stockfish(arguments.stockfish)
    limit = f"movetime {int(arguments.seconds * 1000)}"
    failed = 0
    for name in arguments.suites:
        with open(name, encoding="ascii") as suite:
            for number, text in enumerate(suite, 1):
                try:
                    word, told = "good", check_line(stockfish, text.rstrip("\n"), limit)
                except SuiteError as error:
                    word, told = "FAIL", error
                    failed += 1
                print(f"{word}  {name}:{number}: {told}", flush=True)
    stockfish.send("quit")
    print(f"{failed} failed" if failed else "all good")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
