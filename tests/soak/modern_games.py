#!/usr/bin/env python3
"""Plays games as the interfaces of today do, with `ModernInterface: true`, over UCI and WinBoard,
always with pondering. In most games two processes of the engine play each other. In the others a
user plays the engine and does what users do: he takes moves back, has positions analysed, changes
sides and settings, moves at once, mistypes. A referee knows the rules.

    tests/soak/modern_games.py --games 1000 --frc-games 300 --tables build/release/tables

The games are of both protocols in turn; those of --frc-games come in addition, under UCI. The same
seed gives the same plan, not the same games: moves depend on the clock.

A fault ends its game: an illegal move, a loss on time, an answer that is missing, doubled or not
asked for, a hang, a crash, a false claim, an illegal line of play, a process that stays. The text
of the whole conversation is written to a file. Exit code 1 if there is a fault.

The engine is build/release/bin/brivok, or BRIVOK in the environment. Needs Debian's stockfish."""

import argparse
import itertools
import json
import random
import sys
import tempfile
import threading
import time
from collections import Counter
from collections.abc import Sequence
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (ChessError, Clocks, Game, Process, Referee, run_script,  # noqa: E402
                      script_parser)
from seats import Seat, Terms  # noqa: E402
from uci_seat import UciSeat  # noqa: E402
from winboard_seat import WinBoardSeat  # noqa: E402

SEATS: dict[str, type[UciSeat] | type[WinBoardSeat]] = {"uci": UciSeat, "winboard": WinBoardSeat}
BATCH = 10  # most games that the same processes play
MOST_PLIES = 300
OFTEN = 0.2  # share of a user's turns with something else than a move
ENDGAMES = ("8/8/8/4k3/8/8/4P3/4K3 w - - 0 1", "8/8/8/3k4/8/8/8/R3K3 b Q - 0 1",
            "4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", "8/2p5/3k4/8/8/3K4/4PP2/8 w - - 0 1",
            "r3k2r/p6p/8/8/8/8/P6P/R3K2R b KQkq - 3 20", "8/P6k/8/8/8/8/p6K/8 w - - 0 1",
            "4k3/8/8/8/8/8/8/Q2QK3 w - - 90 80", "8/8/1q6/8/8/5k2/8/7K b - - 0 1")

Record = dict[str, Any]  # of a game


def fischer_start(chance: random.Random) -> str:
    """One of the 960 starting positions, its rights as letters of files or not."""
    men = [""] * 8
    for first in (0, 1):
        men[2 * chance.randrange(4) + first] = "b"
    for man in "qnn":
        men[chance.choice([f for f in range(8) if not men[f]])] = man
    for man in "rkr":
        men[men.index("")] = man
    files = "".join("abcdefgh"[f] for f in (7, 6, 5, 4, 3, 2, 1, 0) if men[f] == "r")
    rights = chance.choice(("KQkq", files.upper() + files))
    row = "".join(men)
    return f"{row}/pppppppp/8/8/8/8/PPPPPPPP/{row.upper()} w {rights} - 0 1"


def plan(options: argparse.Namespace) -> list[Terms]:
    """The games. Those of a batch have the same protocol and tables."""
    protocols = list(SEATS) if options.protocol == "both" else [options.protocol]
    size = max(1, min(BATCH, options.games // len(protocols)))
    games = []
    for number in range(options.games + options.frc_games):
        chance = random.Random(f"{options.seed} {number}")
        extra = number >= options.games
        batch = number // size
        protocol = "uci" if extra else protocols[batch % len(protocols)]
        fischer = extra or chance.random() < 0.15
        start = "startpos"
        if fischer:
            start = "fen " + fischer_start(chance)
        elif chance.random() < 0.25:
            start = "fen " + chance.choice(ENDGAMES)
        user = chance.random() < 0.4
        kind = chance.random()
        games.append(Terms(
            number, batch, protocol, fischer, True, chance.choice((1, 1, 1, 1, 2, 3)),
            book=bool(options.book) and chance.random() < 0.3,
            tables=bool(options.tables) and (batch // len(protocols)) % 2 == 0,
            base=options.time, increment=options.increment,
            session=chance.choice((10, 40)) if kind < 0.15 and not user else 0,
            move_time=chance.choice((10, 20, 50)) if kind > 0.85 else 0,
            opponent=chance.choice((1, 20, 200, 1000)) if user or chance.random() < 0.1 else 0,
            user=user, start=start))
    return games


def user_move(game: Game, terms: Terms, chance: random.Random) -> str:
    time.sleep(chance.choice((0, 0, 0.005, 0.02)))
    if chance.random() < 0.15:
        return chance.choice(sorted(game.legal))
    assert isinstance(game.referee, Referee)
    theirs, _ = game.referee.judge(f"position {game.start} moves {' '.join(game.theirs)}",
                                   terms.opponent)
    return next(ours for ours, word in game.legal.items() if word == theirs)


def play(game: Game, engines: Sequence[Seat], terms: Terms, chance: random.Random) -> None:
    """Plays a game between the two engines, or between the one and a user."""
    seats: list[Seat | None] = list(engines) if len(engines) == 2 else [engines[0], None]
    chance.shuffle(seats)
    clocks, reopened = Clocks(terms.base, terms.increment, terms.session), False
    for _ in range(0 if terms.book else chance.randrange(6)):
        game.push(chance.choice(sorted(game.legal)))
        if game.end:
            game.pop()
    for side, seat in enumerate(seats):
        if seat:
            seat.begin(game, terms, side)
    plies = 0  # taken moves count as well
    while plies < MOST_PLIES and not any(seat.given_up for seat in engines):
        if game.end:
            reopened = terms.user and not reopened and engines[0].reopen(game)
            if not reopened:
                break
            continue
        plies += 1
        seat = seats[game.side]
        if seat:
            move, seconds = seat.move(game, clocks)
            if move:
                clocks.spend(game.side, seconds)
                game.push(move)
                if not game.end:
                    seat.leave(game, clocks)
        elif terms.user and chance.random() < OFTEN:
            engines[0].interfere(game, clocks)
            if engines[0].takes_over:
                engines[0].takes_over = False
                seats.reverse()
        else:
            game.push(user_move(game, terms, chance))
    for seat in engines:
        seat.end(game)


class Soak:
    """All games, in batches that may run at a time."""

    def __init__(self, options: argparse.Namespace) -> None:
        self.options, self.lock = options, threading.Lock()
        self.stopping = threading.Event()
        self.records: list[Record] = []
        self.counts: Counter[str] = Counter()
        self.begin = time.monotonic()
        self.plan = plan(options)

    def furnish(self, folder: Path, tables: bool) -> None:
        """Puts settings, book and tables into the folder of the engine."""
        (folder / "brivok.ini").write_text("ModernInterface: true\nHashMB: 2\n")
        if self.options.book:
            (folder / "libro.bin").symlink_to(Path(self.options.book).resolve())
        for file in Path(self.options.tables).resolve().glob("*.nb[bw]*") if tables else ():
            (folder / file.name).symlink_to(file)

    def batch(self, games: Sequence[Terms]) -> None:
        engines: list[Seat] = []
        counts: Counter[str] = Counter()
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            self.furnish(folder, games[0].tables)
            referee = Referee()
            for terms in games:
                if self.stopping.is_set():
                    break
                chance = random.Random(f"{self.options.seed} {terms.number} moves")
                game = Game(referee, terms.start, terms.fischer, fifty=100)
                begin, fault = time.monotonic(), ""
                try:
                    while len(engines) < 2:
                        engines.append(SEATS[terms.protocol](folder))
                    for seat in engines:
                        seat.chance, seat.counts = chance, counts
                    playing = engines[:1] if terms.opponent else engines
                    play(game, playing, terms, chance)
                    if terms is games[-1]:
                        for seat in engines:
                            seat.close()
                except ChessError as error:
                    fault = str(error)
                    self.write(terms, game, fault, engines)
                    for seat in engines:
                        seat.kill()
                    engines.clear()
                self.note({**terms._asdict(), "moves": len(game.moves), "end": game.end,
                           "seconds": round(time.monotonic() - begin, 2), "fault": fault})
            for process in (*engines, referee):
                process.kill()
        with self.lock:
            self.counts.update(counts)

    def write(self, terms: Terms, game: Game, fault: str, engines: Sequence[Seat]) -> None:
        """Writes all that is known of a fault to a file."""
        file = Path(self.options.faults) / f"fault-{terms.number}.txt"
        file.parent.mkdir(parents=True, exist_ok=True)
        text = [fault, str(terms), game.line(), game.fen]
        for number, engine in enumerate(engines):
            engine.reader.join(0.2)
            text += ["", f"Engine {number}"]
            text += [f"{when - self.begin:10.3f} {mark} {line}"
                     for when, mark, lines in engine.transcript for line in lines.split("\n")]
        file.write_text("\n".join(text) + "\n", encoding="latin-1")
        print(f"game {terms.number}: {fault}\n  see {file}", flush=True)

    def note(self, record: Record) -> None:
        with self.lock:
            self.records.append(record)
            if len(self.records) % 25 == 0:
                faults = sum(bool(x["fault"]) for x in self.records)
                print(f"{len(self.records)}/{len(self.plan)} games, {faults} faults, "
                      f"{time.monotonic() - self.begin:.0f} s", flush=True)

    def run(self) -> None:
        batches = [list(games) for _, games in itertools.groupby(
            self.plan, lambda terms: (terms.batch, terms.protocol))]
        with ThreadPoolExecutor(self.options.concurrency) as pool:
            try:
                list(pool.map(self.batch, batches))
            except BaseException:  # the games that have begun are played to their end
                self.stopping.set()
                pool.shutdown(cancel_futures=True)
                raise


def arguments() -> argparse.Namespace:
    parser = script_parser(__doc__)
    parser.add_argument("--games", type=int, default=40, help="(40)")
    parser.add_argument("--frc-games", type=int, default=10,
                        help="further games, of Fischer-random chess under UCI (10)")
    parser.add_argument("--protocol", choices=["both", *SEATS], default="both")
    parser.add_argument("--time", type=int, default=1000, help="milliseconds a game (1000)")
    parser.add_argument("--increment", type=int, default=10, help="milliseconds a move (10)")
    parser.add_argument("--book", metavar="FILE", help="opening book of some games")
    parser.add_argument("--tables", metavar="FOLDER", help="endgame tables of half of the games")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--concurrency", type=int, default=1, help="games at a time (1)")
    parser.add_argument("--faults", metavar="FOLDER", default="build/soak",
                        help="where conversations with a fault are written (%(default)s)")
    parser.add_argument("--json", metavar="FILE", help="write all games and counts there")
    options = parser.parse_args()
    for file in (options.book, options.tables):
        if file and not Path(file).exists():
            parser.error(f"there is no {file}")
    return options


def main() -> int:
    soak = Soak(arguments())
    soak.run()
    records = soak.records
    faults = [record for record in records if record["fault"]]
    print(f"{len(records)} games, {sum(record['moves'] for record in records)} half-moves in "
          f"{(time.monotonic() - soak.begin) / 60:.1f} minutes")
    counts = Counter(f"end: {record['end'] or 'none'}" for record in records) + soak.counts
    for name, count in sorted(counts.items()):
        print(f"{name:44}{count:7}")
    print(f"{'faults':44}{len(faults):7}")
    if soak.options.json:
        Path(soak.options.json).write_text(json.dumps({"counts": counts, "games": records}))
    return 1 if faults else 0


if __name__ == "__main__":
    run_script(main)
