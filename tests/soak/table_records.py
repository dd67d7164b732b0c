"""Compares the longest mates of the tables in a folder with those that have been published.

The records that brivok-tables leaves beside the tables tell ours. The published ones are those of
the literature on endgame tables, in moves to mate with best play."""

import argparse
import json
import sys
from pathlib import Path

# By table and side to move: 0 is the first side of the name.
PUBLISHED = {
    ("kqk", 0): 10, ("krk", 0): 16, ("kpk", 0): 28, ("kbbk", 0): 19, ("kbnk", 0): 33,
    ("kqkq", 0): 13, ("krkr", 0): 19, ("kqkr", 0): 35, ("kqkb", 0): 17, ("kqkn", 0): 21,
    ("krkb", 0): 29, ("krkn", 0): 40, ("kqkp", 0): 28, ("krkp", 0): 26, ("krkp", 1): 43,
    ("kpkp", 0): 33, ("kbbkn", 0): 78, ("kbnkn", 0): 107, ("kbnkp", 0): 104, ("knnkp", 0): 115,
    ("krbkr", 0): 65, ("krnkr", 0): 37, ("kqrkq", 0): 67, ("kqbkq", 0): 33, ("kqnkq", 0): 41,
    ("kbbkq", 1): 81, ("krbkq", 1): 70, ("krnkq", 1): 69, ("krrkq", 1): 49, ("krpkq", 1): 104,
    ("knpkn", 0): 97, ("kbpkn", 0): 100, ("kbpkb", 0): 51, ("krpkr", 0): 74, ("krpkb", 0): 73,
    ("krpkp", 0): 56, ("krpkp", 1): 103, ("kqpkq", 0): 124, ("kqpkp", 0): 105, ("kppkq", 0): 124,
    ("kppkp", 0): 127,
}


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=Path)
    folder = parser.parse_args().folder
    compared = wrong = 0
    for (name, side), published in PUBLISHED.items():
        record = folder / f"{name}.json"
        if not record.exists():
            print(f"{name}: no record")
            continue
        longest = json.loads(record.read_text())["files"][side]["longest_win"]
        moves = longest["moves"] if longest else 0
        compared += 1
        if moves != published:
            wrong += 1
            print(f"{name}, side {side}: {moves} moves, published {published}")
    print(f"{compared} longest mates compared, {wrong} differ")
    return 0 if compared == len(PUBLISHED) and not wrong else 1


if __name__ == "__main__":
    sys.exit(main())
