#!/usr/bin/env python3
"""Lets PyChess play and analyse with the engine: its own classes for engines, games and clocks,
without a window, over both protocols. A referee checks each move and each line of an analysis. In
turn the engine plays itself, also in Fischer-random chess, castles against a person who castles
too, answers one who takes moves back, a mate among them, and analyses while persons move.

    /usr/bin/python3 tests/soak/pychess_games.py [--games 1] [--seconds 10]

Needs Debian's pychess. The engine is build/release/bin/brivok, or BRIVOK in the environment, and
behaves as interfaces expect today. A game lost on time is trouble, so leave the machine to it. Exit
code 1 on any trouble."""

import asyncio
import re
import sys
from collections.abc import Awaitable, Callable
from pathlib import Path
from typing import TYPE_CHECKING

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import ChessError, Referee, run_script, script_parser  # noqa: E402

if TYPE_CHECKING:  # the help is there without PyChess
    from pychess_table import Table

MATE_IN_ONE = "6k1/5ppp/8/8/8/8/5PPP/R5K1 w - - 0 1"
# Black's castling forks king and rook. White has a bishop to put between, and castles then.
CASTLINGS = "r4k2/1R3ppp/8/8/8/8/2P2PPP/2BK3R w Ha - 0 1"
# PyChess sets this up to make sure that a WinBoard engine has stopped its analysis.
NO_BOARD = "8/8/8/8/8/8/8/8"


async def play_itself(table: "Table") -> str:
    await table.begin("engine", "engine")
    await table.until("end of the game", lambda: table.ended, 2 * table.clock + 30)
    game = table.game()
    if not game.end or (game.end == "mate") != (table.ending == "WON_MATE"):
        raise ChessError(f"{table.ending} after {game.line()}")
    return f"{len(game.moves)} half-moves, {table.ending}"


async def castle(table: "Table") -> str:
    await table.begin("person", "engine")
    for ply, word in enumerate(("h2h3", "c1d2", "d1h1")):
        table.move(word)
        await table.plies(2 * ply + 2)
    moves = table.game().moves
    if (moves[1], moves[4]) != ("O-O-O", "O-O"):
        raise ChessError(f"both should have castled: {moves}")
    return " ".join(moves)


async def take_back(table: "Table") -> str:
    await table.begin("person", "engine")
    answers = []
    for word in ("e2e4", "d2d4", "g1f3"):
        table.move(word)
        await table.plies(2)
        answers.append(table.game().moves[1])
        await asyncio.sleep(0.5)  # the engine ponders
        table.model.undoMoves(2)
    return " ".join(answers)


async def take_back_a_mate(table: "Table") -> str:
    await table.begin("person", "engine")
    table.move("a1a8")
    await table.until("end of the game", lambda: table.ended)
    table.model.undoMoves(1)
    table.move("h2h3")
    await table.plies(2)
    return " ".join(table.game().moves)


async def analyse(table: "Table") -> str:
    await table.add_analyser()
    await table.begin("person", "person")
    await table.analysed(0, lambda: None)
    for ply, word in enumerate(("e2e4", "c7c5", "g1f3", "d7d6")):
        await table.analysed(ply + 1, lambda: table.move(word))
    # Under WinBoard PyChess sets up each position afresh, and yet has moves taken back that the
    # engine does not know of.
    for ply in (3, 2) if table.protocol == "uci" else ():
        await table.analysed(ply, lambda: table.model.undoMoves(1))
    return f"{len(table.analysis)} lines"


async def report(name: str, table: "Table", play: Callable[["Table"], Awaitable[str]],
                 transcript: list[str]) -> bool:
    """Whether it goes well. What happened is printed."""
    try:
        told = await play(table)
        faults = [x for x in transcript if re.search(" < .*(error|illegal|unknown)", x, re.I)
                  and NO_BOARD not in x]
        if faults:
            raise ChessError(f"complaints of the engine: {faults}")
        print(f"{table.protocol}, {name}: {told}", flush=True)
        return True
    except ChessError as error:
        print(f"{table.protocol}, {name}: trouble: {error}", *transcript[-60:], sep="\n",
              flush=True)
        return False
    finally:
        table.model.terminate()


async def run(games: int, seconds: int) -> int:
    from pychess_table import Pipe, Table, furnish, turn_glib

    furnish()
    turning, referee = asyncio.create_task(turn_glib()), Referee()
    good: list[bool] = []

    async def scenario(name: str, play: Callable[[Table], Awaitable[str]], fen: str = "",
                       fischer: bool = False, clock: int = 60) -> None:
        table = Table(referee, protocol, fen, fischer, clock)
        good.append(await report(name, table, play, Pipe.transcript))

    for protocol in ("uci", "xboard"):
        for _ in range(games):
            await scenario("game", play_itself, clock=seconds)
            await scenario("Fischer-random game", play_itself, fischer=True, clock=seconds)
        await scenario("castling", castle, CASTLINGS, fischer=True)
        await scenario("moves taken back", take_back)
        await scenario("mate taken back", take_back_a_mate, MATE_IN_ONE)
        await scenario("analysis", analyse, clock=0)
    turning.cancel()
    referee.quit()
    print(f"{len(good)} scenarios, {good.count(False)} with trouble")
    return 0 if all(good) else 1


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("--games", type=int, default=1, help="of each kind against itself")
    parser.add_argument("--seconds", type=int, default=10, help="on each clock")
    options = parser.parse_args()
    try:
        return asyncio.run(run(options.games, options.seconds))
    except ImportError as error:
        raise ChessError(f"{error}; apt-get install pychess, and use /usr/bin/python3") from None


if __name__ == "__main__":
    run_script(main)
