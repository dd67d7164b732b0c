#!/usr/bin/env python3
"""Plays many fast games between two engine processes over WinBoard, every second one with pondering
on both sides. A referee checks each move and each claim, and after each game the boards of the
engines. Both processes live as long as the run.

    tests/soak/winboard_games.py [--games 200] [--base 200] [--depth N] [--valgrind]

The engine is build/release/bin/brivok, or BRIVOK in the environment. Exit code 1 on any trouble."""

import random
import re
import sys
import tempfile
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (BRIVOK, RESULTS, ChessError, Clocks, EngineError, Game,  # noqa: E402
                      IllegalMove, Referee, WinBoard, claim, progress, run_script, script_parser,
                      shown)

PATIENCE = 60  # seconds until an engine counts as hanging
LATE = 200  # milliseconds that a busy machine may take from a clock
MOST_PLIES = 500
GROWTH = 4096  # kilobytes of memory that a process may gain after its first games


class Trouble(ChessError):
    """What went wrong in a word or two, and the details."""


def memory(engine: WinBoard) -> int:
    """Kilobytes."""
    status = Path(f"/proc/{engine.p.pid}/status").read_text()
    return int(re.findall(r"VmRSS:\s+(\d+)", status)[0])


def play(engines: list[WinBoard], referee: Referee, chance: random.Random, ponder: bool,
         control: list[str], base: int) -> tuple[str, str]:
    """Plays one game; `engines` are White's and Black's, and each clock has `base` centiseconds.
    Returns the reason of its end and the result."""
    game, clocks = Game(referee), Clocks(base * 10)
    opening = chance.randrange(4, 10)
    while len(game.moves) < opening:
        game.push(chance.choice(sorted(game.legal)))
        if game.end:
            game = Game(referee)
    for engine in engines:
        engine.check(engine.set_up(game, "hard" if ponder else "easy", *control))

    while not game.end and len(game.moves) < MOST_PLIES:
        side = game.side
        mover = engines[side]
        (*said, last), seconds = mover.turn(game, clocks, PATIENCE)
        over = clocks.spend(side, seconds)
        mover.check(said)
        game.push(last.removeprefix("move "))
        if over > LATE:
            raise Trouble("loss on time", f"{over:.0f} ms at ply {len(game.moves)}")

    end, result = game.end, "*"
    if end:
        result = close(game, end, engines)
    else:
        end = "unfinished"
        engines[game.side].send("force", "usermove " + game.moves[-1])
    for engine in engines:
        engine.send("result " + result, "force")
        engine.check(engine.ask(timeout=PATIENCE))
        board = engine.ask("board", timeout=PATIENCE)
        if board != shown(game.fen):
            raise Trouble("board drift", f"{game.fen} after {game.moves}, not\n" + "\n".join(board))
    return end, result


def close(game: Game, end: str, engines: list[WinBoard]) -> str:
    """Waits for the claim: the side that made the last move may claim any end, the other one a mate
    or a stalemate. Returns the result."""
    loser = game.side
    claimant = engines[1 - loser]
    said = claimant.ask(timeout=PATIENCE)
    if not any(x.startswith(RESULTS) for x in said):
        claimant.check(said)
        if end not in ("mate", "stalemate"):
            raise Trouble("no claim", f"{end}: {game.fen}")
        claimant = engines[loser]
        claimant.send("usermove " + game.moves[-1], *([] if claimant.playing else ["go"]))
        said = claimant.wait(RESULTS, PATIENCE)
    else:
        engines[loser].send("force", "usermove " + game.moves[-1])
    claimant.check(said[:-1])
    if said[-1] != f"{game.result} {{{claim(end, loser)}}}":
        raise Trouble("false claim", f"{said[-1]} for {end}: {game.fen}")
    return game.result


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("--games", type=int, default=200)
    parser.add_argument("--base", type=int, default=200, help="centiseconds on each clock")
    parser.add_argument("--depth", type=int, help="fixed depth instead of the clock")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--valgrind", action="store_true", help="a few games at depth 3")
    options = parser.parse_args()
    command = [BRIVOK]
    if options.valgrind:
        command = ["valgrind", "-q", "--leak-check=full", "--error-exitcode=9", BRIVOK]
        options.depth = options.depth or 3
    control = [f"sd {options.depth}"] if options.depth else ["level 0 1 0"]
    base = 10**7 if options.depth else options.base
    chance, referee, first, settled = random.Random(options.seed), Referee(), 0, 0
    tally: Counter[str] = Counter()
    engines: list[WinBoard] = []

    with tempfile.TemporaryDirectory() as folder:
        for number in range(options.games):
            if not engines:
                engines += [WinBoard(Path(folder), command=command) for _ in range(2)]
                first = number
            try:
                reason, result = play(engines[::1 if number % 4 < 2 else -1], referee, chance,
                                      number % 2 == 1, control, base)
                tally["result " + result] += 1
                tally["end by " + reason] += 1
                used = max(map(memory, engines))
                if number == first + 4:
                    settled = used
                if number > first + 4 and used > settled + GROWTH:
                    raise Trouble("memory growth", f"{settled} to {used} kB")
            except ChessError as error:
                kind = (error.args[0] if isinstance(error, Trouble) else "illegal move"
                        if isinstance(error, IllegalMove) else "crash, hang or wrong output")
                tally["trouble: " + kind] += 1
                print(f"game {number}:", *error.args, flush=True)
                for engine in engines:
                    engine.kill()
                engines.clear()
            progress(f"{number + 1}/{options.games}")
        for engine in engines:
            try:
                engine.finish()
            except EngineError as error:
                tally["trouble: bad exit"] += 1
                print(error, flush=True)
    referee.quit()
    progress()
    print(f"{options.games} games, {options.games // 2} of them with pondering")
    for name, count in sorted(tally.items()):
        print(f"{name:32}{count:6}")
    troubles = sum(n for name, n in tally.items() if name.startswith("trouble"))
    print(f"{'troubles':32}{troubles:6}")
    return 1 if troubles else 0


if __name__ == "__main__":
    run_script(main)
