"""Endgame tables: which there are, random positions for them, and their values."""

import os
import random
import re
from collections.abc import Iterator, Sequence
from pathlib import Path

from chesskit.board import SQUARES, checkers, is_check, placement
from chesskit.errors import ChessError
from chesskit.process import Process
from chesskit.programs import TABLES_TOOL

_VALUE = re.compile(r"(mate|mated) in (\d+)|draw")


def sides(name: str) -> tuple[str, str]:
    """The men of both sides of a table: "kq" and "kr" of "kqkr"."""
    second = name.rindex("k")
    return name[:second], name[second:]


def _one_file(name: str) -> bool:
    """Whether one file serves both sides to move: with the same men, none of them a pawn."""
    first, second = sides(name)
    return first == second and "p" not in name


def tables_in(folder: str | Path) -> list[str]:
    """The names of the tables with all of their files, plain or packed."""
    files = {file.removesuffix(".emd") for file in os.listdir(folder)}
    names = {file[:-4] for file in files if re.fullmatch(r"k[qrbnp]*k[qrbnp]*\.nbw", file)}
    return sorted(name for name in names if _one_file(name) or f"{name}.nbb" in files)


def _without(men: str) -> set[str]:
    """A side after each loss of a man."""
    return {men.replace(man, "", 1) for man in men[1:]}


def _promoted(men: str) -> set[str]:
    """A side after each promotion of a pawn."""
    if "p" not in men:
        return set()
    promoted = (men.replace("p", man, 1)[1:] for man in "qrbn")
    return {"k" + "".join(sorted(rest, key="qrbnp".index)) for rest in promoted}


def tables_below(name: str) -> Iterator[set[str]]:
    """What one move can lead to: for each, the two names that its table may have."""
    for own, other in (sides(name), sides(name)[::-1]):
        for mine in {own, *_promoted(own)}:
            for theirs in {other, *_without(other)}:
                if len(mine + theirs) > 2 and (mine, theirs) != (own, other):
                    yield {mine + theirs, theirs + mine}


def complete_tables(folder: str | Path) -> list[str]:
    """The names of the tables of which every table that one move can lead to is there as well."""
    names = set(tables_in(folder))
    return sorted(name for name in names if all(below & names for below in tables_below(name)))


def random_position(rng: random.Random, name: str, passing: bool = False) -> str:
    """FEN of a random legal position of a table, with either colour as its first side. With
    `passing` a pawn has just made a double step past another: both sides must have pawns. In half
    of the positions all men stand in a quarter of the board, where rare mates are less rare."""
    white, black = sides(name)
    if rng.random() < 0.5:
        white, black = black, white
    while True:
        mover, other = rng.choice((("w", "b"), ("b", "w")))
        men, passed = _passing_pawns(rng, mover) if passing else ({}, "-")
        stepped = passed[0] + ("5" if mover == "w" else "4")
        origin = passed[0] + ("7" if mover == "w" else "2")
        quarter = rng.choice(("abcd", "efgh")), rng.choice(("1234", "5678"))
        near = rng.random() < 0.5
        places = [place for place in SQUARES if place not in {*men, passed, origin} and
                  (not near or place[0] in quarter[0] and place[1] in quarter[1])]
        letters = list(white.upper() + black)
        for man in men.values():
            letters.remove(man)
        men |= zip(rng.sample(places, len(letters)), letters)
        if any(man in "Pp" and place[1] in "18" for place, man in men.items()):
            continue
        fen = placement(men)
        # The side that is not to move must not be in check, nor the other before a double step.
        if is_check(f"{fen} {other} - - 0 1"):
            continue
        if checkers(f"{fen} {mover} - - 0 1") > 2:
            continue  # no game gets there, and the engine looks at two of them
        if passing:
            men[origin] = men.pop(stepped)
            if is_check(f"{placement(men)} {mover} - - 0 1"):
                continue
        return f"{fen} {mover} - {passed} 0 1"


def _passing_pawns(rng: random.Random, mover: str) -> tuple[dict[str, str], str]:
    """A pawn that has just made a double step past one of the mover's, and the square between."""
    file = rng.randrange(8)
    beside = rng.choice([f for f in (file - 1, file + 1) if 0 <= f < 8])
    rank, passed = ("5", "6") if mover == "w" else ("4", "3")
    own, theirs = ("P", "p") if mover == "w" else ("p", "P")
    return ({"abcdefgh"[file] + rank: theirs, "abcdefgh"[beside] + rank: own},
            "abcdefgh"[file] + passed)


class TableOracle(Process):
    """What the tables of a folder say."""

    def __init__(self, folder: str | Path) -> None:
        super().__init__([TABLES_TOOL, "solve", "-", "-o", Path(folder).resolve()])

    def values(self, fens: Sequence[str]) -> list[int]:
        """For the side to move: n for mate in n moves, -n for being mated in n, 0 for a draw or
        for a mate on the board. A position without a value is an error."""
        self.send(*fens)
        values = []
        for fen in fens:
            answer = self.wait("")[0]
            match = _VALUE.fullmatch(answer)
            if not match:
                raise ChessError(f"{answer}: {fen}")
            moves = int(match[2] or 0)
            values.append(-moves if match[1] == "mated" else moves)
        return values
