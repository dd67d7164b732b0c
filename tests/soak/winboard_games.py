#!/usr/bin/env python3
"""Plays many fast games of two engine processes over the WinBoard protocol, every second one with
pondering on both sides. A referee checks each move and each claim; after each game the boards of
the engines are compared with the referee's. Both processes live as long as the run.

    tests/soak/winboard_games.py [--games 200] [--base 200] [--depth N] [--valgrind]

The engine is build/release/bin/brivok, or BRIVOK in the environment. Exit code 1 on any trouble."""

import argparse
import random
import re
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "e2e"))

from game import Game  # noqa: E402
from test_winboard import shown  # noqa: E402
from uci_engine import BRIVOK, Referee  # noqa: E402
from winboard_engine import CLAIMS, OTHER, RESULTS, THINKING, WinBoard  # noqa: E402

PATIENCE = 60  # seconds until an engine counts as hanging
LATE = 0.2  # seconds that a busy machine may take from a clock
MOST_PLIES = 500
GROWTH = 4096  # kilobytes of memory that a process may gain after its first games


class Trouble(Exception):
    """Holds what went wrong, in a word or two, and the particulars."""


def check(lines):
    for line in lines:
        if not (THINKING.fullmatch(line) or OTHER.fullmatch(line) or line.startswith("move ")):
            raise Trouble("unexpected output", line)


def memory(engine):
    status = Path(f"/proc/{engine.p.pid}/status").read_text()
    return int(re.search(r"VmRSS:\s+(\d+)", status)[1])


def play(engines, referee, chance, ponder, control, base):
    """One game; the reason of its end, and its result. `engines` are White's and Black's."""
    game, clocks, playing = Game(referee), [base, base], [False, False]
    opening = chance.randrange(4, 10)
    while len(game.moves) < opening:
        game.push(chance.choice(sorted(game.legal)))
        if game.end:
            game = Game(referee)
    for engine in engines:
        engine.send("new", "force", "hard" if ponder else "easy", *control)
        check(engine.ask(*(f"usermove {move}" for move in game.moves), timeout=PATIENCE))

    while not game.end and len(game.moves) < MOST_PLIES:
        side = game.side
        mover = engines[side]
        lines = [f"time {int(clocks[side])}", f"otim {int(clocks[1 - side])}"]
        if len(game.moves) > opening:
            lines.append("usermove " + game.moves[-1])
        if not playing[side]:
            playing[side] = True
            lines.append("go")
        begin = time.monotonic()
        mover.send(*lines)
        said = mover.wait(("move ", *RESULTS, "Illegal"), PATIENCE)
        clocks[side] -= (mover.stamp - begin) * 100
        check(said)
        if said[-1][5:] not in game.legal:
            raise Trouble("illegal move", f"{said[-1]} after {game.moves}")
        if clocks[side] < -LATE * 100:
            raise Trouble("loss on time", f"{clocks[side]:.0f} at ply {len(game.moves)}")
        clocks[side] = max(1, clocks[side])
        game.push(said[-1][5:])

    if game.end:
        end, result = close(game, engines, playing)
    else:
        end, result = "unfinished", "*"
        engines[game.side].send("force", "usermove " + game.moves[-1])
    for engine in engines:
        engine.send("result " + result, "force")
        check(engine.ask(timeout=PATIENCE))
        board = engine.ask("board", timeout=PATIENCE)
        if board != shown(game.fen):
            raise Trouble("board drift", f"{game.fen} after {game.moves}, not\n" + "\n".join(board))
    return end, result


def close(game, engines, playing):
    """The claim of the side that has moved or, of a mate or a stalemate, of the other one."""
    loser = game.side
    said = engines[1 - loser].ask(timeout=PATIENCE)
    if not any(x.startswith(RESULTS) for x in said):
        check(said)
        if game.end not in ("mate", "stalemate"):
            raise Trouble("no claim", f"{game.end}: {game.fen}")
        engines[loser].send("usermove " + game.moves[-1], *([] if playing[loser] else ["go"]))
        said = engines[loser].wait(RESULTS, PATIENCE)
    else:
        engines[loser].send("force", "usermove " + game.moves[-1])
    claim, said = said[-1], said[:-1]
    check(said)
    reasons = CLAIMS[game.end]
    reason = reasons[loser if len(reasons) > 1 else 0]
    if claim != f"{game.result} {{{reason}}}":
        raise Trouble("false claim", f"{claim} for {game.end}: {game.fen}")
    return game.end, game.result


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--games", type=int, default=200)
    parser.add_argument("--base", type=int, default=200, help="centiseconds on each clock")
    parser.add_argument("--depth", type=int, help="fixed depth instead of the clock")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--valgrind", action="store_true", help="few games at a fixed depth of 3")
    options = parser.parse_args()
    command = [BRIVOK]
    if options.valgrind:
        command = ["valgrind", "-q", "--leak-check=full", "--error-exitcode=9", BRIVOK]
        options.depth = options.depth or 3
    control = [f"sd {options.depth}"] if options.depth else ["level 0 1 0"]
    base = 10**7 if options.depth else options.base
    chance, tally, engines, first = random.Random(options.seed), Counter(), [], 0
    referee = Referee()

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
            except (Trouble, AssertionError) as error:
                kind = error.args[0] if isinstance(error, Trouble) else "crash or hang"
                tally["trouble: " + kind] += 1
                print(f"game {number}:", *error.args, flush=True)
                for engine in engines:
                    engine.p.kill()
                engines.clear()
            if sys.stdout.isatty():
                print(f"\r{number + 1}/{options.games}", end="", flush=True)
        for engine in engines:
            try:
                engine.finish()
            except AssertionError as error:
                tally["trouble: bad exit"] += 1
                print(error, flush=True)
    referee.send("quit")
    print(f"\n{options.games} games, {options.games // 2} of them with pondering")
    for name, count in sorted(tally.items()):
        print(f"{name:32}{count:6}")
    troubles = sum(n for name, n in tally.items() if name.startswith("trouble"))
    print(f"{'troubles':32}{troubles:6}")
    return 1 if troubles else 0


if __name__ == "__main__":
    sys.exit(main())
