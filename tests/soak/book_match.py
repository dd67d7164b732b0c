#!/usr/bin/env python3
"""Plays a match of the engine with an opening book against itself without one, over UCI with
alternating colours, and reports the score. A referee checks each move. A game that both sides see
as won or even is adjudicated, in the same way as the games of the default book.

    tests/soak/book_match.py BOOK [--games 200] [--go "movetime 50"]

The engine is build/release/bin/brivok, or BRIVOK in the environment. BOOK may be "none": then both
sides are the same. Exit code 1 on an illegal move, a crash or a hang."""

import shutil
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (DRAW, Adjudicator, Brivok, ChessError, Game, Referee, Standing,  # noqa: E402
                      progress, run_script, script_parser)

BOOK_NAME = "libro.bin"
MOST_PLIES = 600


def play(engines: list[Brivok], referee: Referee, go: str) -> tuple[str, list[str], list[int]]:
    """Plays one game; `engines` are White's and Black's. Returns the result, the moves, and how
    many book moves each side has played at the start."""
    game, adjudicator, booked, searched = Game(referee), Adjudicator(), [0, 0], [False, False]
    for engine in engines:
        engine.new_game()
    while not game.end:
        side = game.side
        reply = engines[side].go("go " + go, game.line())
        score = reply.score
        if score:
            searched[side] = True
        else:
            booked[side] += not searched[side]
        result = adjudicator.result(score.centipawns if score else 0, game.white, len(game.moves))
        if result or len(game.moves) == MOST_PLIES:
            return result or DRAW, game.moves, booked
        game.push(reply.best)
    return game.result, game.moves, booked


def report(standing: Standing, lines: list[tuple[str, ...]], booked: list[list[int]]) -> None:
    """The standing is that of the side with the book."""
    games, (difference, low, high) = standing.games, standing.rating()
    print(f"score of the book's side: {standing.points:g} of {games} "
          f"(+{standing.won} ={standing.drawn} -{standing.lost}), {standing.share:.1%}")
    print(f"rating difference: {difference:+.0f} (95 %: {low:+.0f} to {high:+.0f})")
    print(f"distinct games: {len(set(lines))}")
    print(f"book moves a game: {sum(b for b, _ in booked) / games:.1f}, "
          f"at most {max(b for b, _ in booked)}; without the book: {sum(n for _, n in booked)}")


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("book", help="the book's file, or none")
    parser.add_argument("--games", type=int, default=200)
    parser.add_argument("--go", default="movetime 50", help="limit of a search (movetime 50)")
    options = parser.parse_args()
    referee, standing, troubles = Referee(), Standing(), 0
    lines: list[tuple[str, ...]] = []
    booked: list[list[int]] = []

    with tempfile.TemporaryDirectory() as with_book, tempfile.TemporaryDirectory() as without:
        if options.book != "none":
            shutil.copy(options.book, Path(with_book) / BOOK_NAME)
        engines: list[Brivok] = []
        for number in range(options.games):
            order = 1 if number % 2 == 0 else -1  # the book's side is White, then Black
            try:
                engines = engines or [Brivok(with_book), Brivok(without)]
                result, moves, counts = play(engines[::order], referee, options.go)
            except ChessError as error:
                troubles += 1
                print(f"game {number}: {error}", flush=True)
                for engine in engines:
                    engine.kill()
                engines = []
                continue
            standing.add(result, white=order > 0)
            lines.append(tuple(moves))
            booked.append(counts[::order])
            progress(f"{number + 1}/{options.games}")
        for engine in engines:
            engine.quit(10)
    referee.quit()
    progress()
    if standing.games:
        report(standing, lines, booked)
    print(f"illegal moves, crashes and hangs: {troubles}")
    return 1 if troubles else 0


if __name__ == "__main__":
    run_script(main)
