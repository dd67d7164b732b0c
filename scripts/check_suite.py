#!/usr/bin/env python3
"""Checks test suites with Stockfish. A suite has one position in EPD form per line.

For each line it checks that

- the position is legal, and the solutions ("bm", best moves, or "am", moves to avoid) are legal
  moves in standard algebraic notation, as the engine writes it;
- the line holds the text of no other legal move, because the engine looks for its move in the whole
  line;
- Stockfish agrees: the next best move, or the move to avoid, is clearly worse.

Exit code 1 if a line fails.
"""

import re
import sys
from collections import defaultdict
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))

from chesskit import Referee, run_script, script_parser, write_san  # noqa: E402

MATE = 100_000  # score of a mate before its distance is taken off
CLEAR = 30  # centipawns between a solution and any other move, at least


class Line(NamedTuple):
    fen: str
    kind: str  # "bm" or "am"
    moves: list[str]


class Ranked(NamedTuple):
    move: str
    score: int
    depth: int


class SuiteError(Exception):
    """What is wrong with a line."""


def rank(stockfish: Referee, fen: str, count: int, limit: str, only: str = "") -> list[Ranked]:
    """The best moves, in order, at the last complete depth of a search with this limit from an
    empty hash table."""
    stockfish.new_game()
    stockfish.set("MultiPV", count)
    reply = stockfish.go(f"go {limit}" + (f" searchmoves {only}" if only else ""),
                         f"position fen {fen}", timeout=None)
    told = re.compile(r"info depth (\d+) .* multipv (\d+) score (cp|mate) (-?\d+) (?!\w+bound)"
                      r".* pv (\w+)")
    depths: dict[int, dict[int, Ranked]] = defaultdict(dict)  # by depth and place
    for m in filter(None, map(told.match, reply.lines)):
        depth, place, score = int(m[1]), int(m[2]), int(m[4])
        if m[3] == "mate":
            score = MATE - score if score > 0 else -MATE - score
        depths[depth][place] = Ranked(m[5], score, depth)
    most = max(map(len, depths.values()))
    last = depths[max(depth for depth, places in depths.items() if len(places) == most)]
    return [last[place] for place in sorted(last)]


def move_texts(stockfish: Referee, fen: str) -> dict[str, str]:
    """{standard algebraic notation: coordinate text} of the legal moves."""
    legal = stockfish.look(f"fen {fen}").legal
    texts = {}
    for move in legal:
        replies, _, check = stockfish.look(f"fen {fen}", [move])
        texts[write_san(move, legal, fen) + ("" if not check else "+" if replies else "#")] = move
    return texts


def parse(text: str) -> Line:
    """The parts of a line."""
    words = text.split()
    if len(words) < 6 or words[4] not in ("bm", "am"):
        raise SuiteError("no bm or am behind the four fields of the position")
    if (words[0].count("K"), words[0].count("k")) != (1, 1):
        raise SuiteError("one king a side")  # Stockfish itself would crash
    return Line(" ".join(words[:4]) + " 0 1", words[4],
                re.sub(r"^(?:\S+\s+){5}|;.*", "", text).split())


def check_texts(stockfish: Referee, text: str) -> tuple[Line, dict[str, str]]:
    """The parts of a line, and {SAN: coordinate text} of the legal moves."""
    line = parse(text)
    texts = move_texts(stockfish, line.fen)
    unknown = [move for move in line.moves if move not in texts]
    if unknown or not line.moves:
        raise SuiteError(f"not a legal move: {' '.join(unknown) or 'none is named'}")
    stray = [san for san in texts if san in text and san not in line.moves]
    if stray:
        raise SuiteError(f"the line also holds the text of {' '.join(stray)}")
    return line, texts


def check_line(stockfish: Referee, text: str, limit: str) -> str:
    """Stockfish's verdict; a SuiteError if it disagrees."""
    line, texts = check_texts(stockfish, text)
    names = {move: san for san, move in texts.items()}
    solutions = {texts[san] for san in line.moves}
    ranked = rank(stockfish, line.fen, len(solutions) + 1, limit)
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
        score = rank(stockfish, line.fen, 1, limit, texts[san])[0].score
        verdict += f"; {san} {score}"
        if score > best.score - CLEAR:
            raise SuiteError(verdict)
    return verdict


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("suites", nargs="+", metavar="SUITE")
    parser.add_argument("--seconds", type=float, default=3, help="per search (3)")
    parser.add_argument("--stockfish", help="program file")
    arguments = parser.parse_args()

    stockfish = Referee(arguments.stockfish, {"Hash": 128})
    limit = f"movetime {int(arguments.seconds * 1000)}"
    failed = 0
    for name in arguments.suites:
        with open(name, encoding="ascii") as suite:
            for number, text in enumerate(suite, 1):
                try:
                    word, told = "good", check_line(stockfish, text.rstrip("\n"), limit)
                except SuiteError as error:
                    word, told = "FAIL", str(error)
                    failed += 1
                print(f"{word}  {name}:{number}: {told}", flush=True)
    stockfish.quit()
    print(f"{failed} failed" if failed else "all good")
    return 1 if failed else 0


if __name__ == "__main__":
    run_script(main)
