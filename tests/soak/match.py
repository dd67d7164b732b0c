#!/usr/bin/env python3
"""Plays the engine against engines of Debian on short clocks. Prints tables of the scores against
each opponent and in each configuration, with rating differences and their 95 % bounds, and who made
an illegal move, lost on time, crashed or hung.

    tests/soak/match.py --games 4 --tables build/release/tables --pgn games.pgn

A configuration is the protocol of the engine (uci, winboard), with or without pondering on both
sides, with or without the opening book and the endgame tables. Opponents use their own protocol and
play on one thread without their books. Each opening is played twice, with either colour. Games are
played to the end: the referee, another Stockfish, says which moves are legal and when a game is
over, and pgn-extract checks all games at the end. Games with pondering run one at a time.

Needs Debian's stockfish and pgn-extract and the packages of the opponents, which have their names.
Exit code 1 if the engine is at fault or games are missing, 2 if a program or a file is missing."""

import argparse
import itertools
import json
import math
import os
import random
import signal
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from collections import Counter
from collections.abc import Callable, Sequence
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any, NamedTuple, TypeVar

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (BRIVOK, DRAW, ROOT, ChessError, Clocks, EngineError, Game,  # noqa: E402
                      Process, Referee, Standing, installed, needed, run_script, script_parser,
                      to_pgn, write_pgn)
from players import (FAULTS, HASH, KINDS, OPPONENTS, PATIENCE, Forfeit, Player,  # noqa: E402
                     Settings)

NAME = "Brivok"
OPENING_PLIES = 6  # few, so that the book still has moves
MOST_PLIES = 600

Record = dict[str, Any]  # of a game
Kind = TypeVar("Kind", bound=Process)


class Configuration(NamedTuple):
    protocol: str
    ponder: bool
    book: bool
    tables: bool


def judge(player: Player, word: str, game: Game) -> tuple[str, str]:
    """The result that an engine declares instead of a move, and the reason."""
    loss = "0-1" if game.white else "1-0"
    if "resign" in word or word.startswith(loss):
        return loss, "resigned"
    raise Forfeit(player, "illegal", f"{word} after {game.line()}")


def play(players: Sequence[Player], referee: Referee, opening: Sequence[str],
         options: argparse.Namespace) -> tuple[Record, Forfeit | None]:
    """Plays one game; `players` are White's and Black's. Returns its record, and the forfeit if
    there was one. For both clocks, in milliseconds, "excess" is the most that a move took beyond
    its clock, and "left" what was left at the end."""
    game, clocks = Game(referee, fifty=100), Clocks(options.time, options.increment)
    excess, forfeit = [0.0, 0.0], None
    for move in opening:
        game.push(move)
    result, reason = DRAW, "too long"
    try:
        for player in players:
            player.begin_game(game)
        while not game.end and len(game.moves) < MOST_PLIES:
            side = game.side
            mover, left = players[side], clocks.left[side]
            waited = mover.waited()
            word, seconds = mover.move(game, clocks, left / 1000 + PATIENCE)
            over = clocks.spend(side, seconds)
            excess[side] = max(excess[side], over)
            if over > options.grace:
                raise Forfeit(mover, "time", f"{over:.0f} ms beyond {left:.0f} ms, "
                              f"{mover.waited() - waited:.0f} ms without a processor, "
                              f"after {game.line()}")
            if word not in game.legal:
                result, reason = judge(mover, word, game)
                break
            game.push(word)
            if not game.end:
                mover.leave(game, clocks)
        if game.end:
            result, reason = game.result, game.end
        for player in players:
            player.end_game(result)
    except EngineError as error:
        if error.engine is referee:
            raise
        forfeit = (error if isinstance(error, Forfeit) else
                   Forfeit(error.engine, "crash", str(error)))
        result, reason = "0-1" if error.engine is players[0] else "1-0", forfeit.fault
    return {"moves": game.moves, "result": result, "reason": reason,
            "excess": [round(x) for x in excess], "left": [round(x) for x in clocks.left]}, forfeit


class Match:
    """The games of all pairings. Two processes play all games of a pairing."""

    def __init__(self, options: argparse.Namespace) -> None:
        self.options, self.bad_exits = options, 0
        self.records: list[Record] = []
        self.processes: set[Process] = set()
        self.stopping, self.lock = threading.Event(), threading.Lock()
        openings = sorted({tuple(line.split("\t")[2].split()[:OPENING_PLIES])
                           for line in (ROOT / "data/book/lines.tsv").read_text().splitlines()})
        random.Random(options.seed).shuffle(openings)
        self.openings = openings
        self.pairings: list[tuple[Configuration, str]] = list(
            itertools.product(options.configurations, options.opponents))

    def start(self, kind: type[Kind], *arguments: Any) -> Kind:
        process = kind(*arguments)
        with self.lock:
            self.processes.add(process)
        return process

    def end(self, *processes: Process) -> None:
        for process in processes:
            process.kill()
        with self.lock:
            self.processes.difference_update(processes)

    def players(self, folder: Path, configuration: Configuration,
                opponent: str) -> list[Player]:
        program, options = OPPONENTS[opponent], self.options
        ours = Settings(True, configuration.ponder, None, options.time, options.increment)
        theirs = ours._replace(tested=False,
                               nodes=options.nodes if opponent == "stockfish" else None)
        return [self.start(KINDS[configuration.protocol], [options.engine], folder, ours),
                self.start(KINDS[program.kind], [needed(opponent), *program.arguments],
                           folder / "opponent", theirs)]

    def furnish(self, folder: Path, configuration: Configuration) -> None:
        """Puts settings, book and tables into the folder of the engine."""
        (folder / "opponent").mkdir()
        (folder / "brivok.ini").write_text(f"HashMB: {HASH}\n")
        if configuration.book:
            (folder / "libro.bin").symlink_to(Path(self.options.book).resolve())
        if configuration.tables:
            for file in Path(self.options.tables).resolve().glob("*.nb[bw]*"):
                (folder / file.name).symlink_to(file)

    def pairing(self, number: int) -> None:
        """Plays the games of a pairing, each opening with both colours."""
        configuration, opponent = self.pairings[number]
        players: list[Player] = []
        referee = self.start(Referee)
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            self.furnish(folder, configuration)
            try:
                for turn in range(self.options.games):
                    players = players or self.players(folder, configuration, opponent)
                    white = turn % 2 == 0
                    opening = number * ((self.options.games + 1) // 2) + turn // 2
                    record, forfeit = play(players[::1 if white else -1], referee,
                                           self.openings[opening % len(self.openings)],
                                           self.options)
                    if self.stopping.is_set():
                        return
                    record |= {"white": white, "counts": players[0].counts}
                    if forfeit:
                        record |= {"fault": NAME if forfeit.engine is players[0] else opponent,
                                   "particulars": str(forfeit)}
                    self.note(number, record)
                    if forfeit:
                        self.end(*players)
                        players = []
                if players and not players[0].quit(PATIENCE):
                    self.bad_exits += 1
                    print(f"{NAME} did not quit cleanly: {players[0].stderr()[-3000:]}", flush=True)
            finally:
                self.end(*players, referee)

    def note(self, number: int, record: Record) -> None:
        """Keeps the record of a game. In pairs of numbers the engine comes first."""
        configuration, opponent = self.pairings[number]
        record |= {"pairing": number, "opponent": opponent, **configuration._asdict(),
                   "configuration": label(configuration)}
        if not record["white"]:
            record |= {name: record[name][::-1] for name in ("excess", "left")}
        fault = "; {fault}: {particulars}".format(**record) if "fault" in record else ""
        with self.lock:
            self.records.append(record)
            print(f"{len(self.records)}/{len(self.pairings) * self.options.games} {opponent} "
                  f"{label(configuration)}: {'white' if record['white'] else 'black'} "
                  f"{record['result']} {record['reason']} {len(record['moves'])}{fault}",
                  flush=True)

    def run(self) -> None:
        """Plays the pairings without pondering first, several at a time."""
        try:
            for ponder, jobs in ((False, self.options.concurrency), (True, 1)):
                numbers = [number for number, (configuration, _) in enumerate(self.pairings)
                           if configuration.ponder == ponder]
                with ThreadPoolExecutor(jobs) as pool:
                    try:
                        list(pool.map(self.pairing, numbers))
                    except BaseException:
                        self.stop(pool)
                        raise
        except KeyboardInterrupt:
            print("interrupted")

    def stop(self, pool: ThreadPoolExecutor) -> None:
        self.stopping.set()
        with self.lock:
            for process in self.processes:
                process.p.kill()
        pool.shutdown(cancel_futures=True)


def label(configuration: Configuration) -> str:
    switches = zip(configuration._fields[1:], configuration[1:])
    return " ".join([configuration.protocol, *(name for name, on in switches if on)])


def row(records: Sequence[Record]) -> Record:
    """The row of a table for these games."""
    standing = Standing()
    faults: Counter[tuple[bool, str]] = Counter()
    for record in records:
        standing.add(record["result"], record["white"])
        if "fault" in record:
            faults[record["fault"] == NAME, record["reason"]] += 1
    rating = [x if math.isfinite(x) else None for x in standing.rating()]
    return {"games": standing.games, "won": standing.won, "drawn": standing.drawn,
            "lost": standing.lost, "points": standing.points, "elo": rating,
            **{fault: faults[True, fault] for fault in FAULTS},
            "excess": max(record["excess"][0] for record in records),
            "theirs": [faults[False, fault] for fault in FAULTS]}


def rows(records: Sequence[Record]) -> list[tuple[str, dict[str, Record]]]:
    """The tables, each as its heading and {name: row}."""
    def group(key: Callable[[Record], str]) -> dict[str, Record]:
        names = dict.fromkeys(key(record) for record in records)
        return {name: row([x for x in records if key(x) == name]) for name in names}

    switches: dict[str, Record] = {}
    for name in Configuration._fields[1:]:
        split = group(lambda record: f"{'with' if record[name] else 'without'} {name}")
        switches |= split if len(split) > 1 else {}
    return [("Opponent", group(lambda record: record["opponent"])),
            ("Configuration", group(lambda record: record["configuration"])),
            ("All with", group(lambda record: record["protocol"]) | switches | {
                "all games": row(records)})]


def show(tables: Sequence[tuple[str, dict[str, Record]]]) -> None:
    """Prints the tables in Markdown."""
    for heading, table in tables:
        print(f"\n| {heading} | Games | + | = | - | Points | Elo | 95 % | Illegal | Time | Crash |"
              f" Over, ms | Theirs |\n| --- |{' ---: |' * 12}")
        for name, x in table.items():
            middle, low, high = ("open" if y is None else f"{round(y):+}" for y in x["elo"])
            print(f"| {name} | {x['games']} | {x['won']} | {x['drawn']} | {x['lost']} | "
                  f"{x['points']:g} | {middle} | {low} to {high} | {x['illegal']} | {x['time']} | "
                  f"{x['crash']} | {x['excess']} | {'/'.join(map(str, x['theirs']))} |")


def write_games(path: str, records: Sequence[Record]) -> list[str]:
    """Writes the games with pgn-extract, which must accept every move and find the same ends as the
    referee. Returns the differences."""
    games = []
    for number, record in enumerate(records, 1):
        names = [NAME, record["opponent"]][::1 if record["white"] else -1]
        games.append(to_pgn({"Event": record["configuration"], "Site": "?", "Date": "????.??.??",
                             "Round": number, "White": names[0], "Black": names[1],
                             "Result": record["result"], "Termination": record["reason"]},
                            record["moves"], record["result"]))
    try:
        write_pgn(path, games)
    except ChessError as error:
        return [str(error)]
    ends, differences = Counter(record["reason"] for record in records), []
    for end, test in (("mate", "--checkmate"), ("stalemate", "--stalemate"),
                      ("repetition", "--repetition"), ("fifty", "--fifty")):
        found = subprocess.run([needed("pgn-extract"), "--quiet", test, path],
                               capture_output=True, text=True, check=True).stdout
        count = found.count("[Event ")
        if count != ends[end]:
            differences.append(f"pgn-extract sees {count} games that end by {end}, "
                               f"the referee {ends[end]}")
    return differences


def arguments() -> argparse.Namespace:
    parser = script_parser(__doc__)
    both = {"both": (False, True), "on": (True,), "off": (False,)}
    parser.add_argument("--games", type=int, default=4,
                        help="of each opponent in each configuration (4)")
    parser.add_argument("--opponents", default=",".join(OPPONENTS), metavar="NAMES",
                        help=f"with commas between them ({','.join(OPPONENTS)})")
    parser.add_argument("--time", type=int, default=2000, help="milliseconds a game (2000)")
    parser.add_argument("--increment", type=int, default=20, help="milliseconds a move (20)")
    parser.add_argument("--grace", type=int, default=50,
                        help="milliseconds beyond the clock that are forgiven (50)")
    parser.add_argument("--nodes", type=int, default=500, help="a move of stockfish (500)")
    parser.add_argument("--protocol", choices=["both", *KINDS], default="both")
    parser.add_argument("--ponder", choices=both, default="both")
    parser.add_argument("--book", metavar="FILE",
                        help="play half of the games with this opening book")
    parser.add_argument("--tables", metavar="FOLDER",
                        help="play half of the games with these endgame tables")
    parser.add_argument("--engine", default=BRIVOK, help="file of the engine (%(default)s)")
    parser.add_argument("--seed", type=int, default=1, help="of the choice of openings (1)")
    parser.add_argument("--concurrency", type=int, default=1,
                        help="games at a time, of those without pondering (1)")
    parser.add_argument("--pgn", metavar="FILE", help="write the games there")
    parser.add_argument("--json", metavar="FILE", help="write the tables and all games there")
    options = parser.parse_args()
    options.opponents = options.opponents.split(",")
    unknown = set(options.opponents) - set(OPPONENTS)
    if unknown:
        parser.error(f"no such opponent: {', '.join(sorted(unknown))}")
    missing = [name for name in dict.fromkeys(["stockfish", "pgn-extract", *options.opponents])
               if not installed(name)]
    if missing:
        parser.error(f"missing: {', '.join(missing)}; apt-get install {' '.join(missing)}")
    for file in (options.engine, options.book, options.tables):
        if file and not os.path.exists(file):
            parser.error(f"there is no {file}")
    options.engine = os.path.abspath(options.engine)
    options.configurations = [Configuration(*x) for x in itertools.product(
        KINDS if options.protocol == "both" else [options.protocol], both[options.ponder],
        (False, True) if options.book else (False,), (False, True) if options.tables else (False,))]
    return options


def main() -> int:
    options = arguments()
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    begin, match = time.monotonic(), Match(options)
    match.run()
    if not match.records:
        return 1
    match.records.sort(key=lambda record: record["pairing"])
    tables = rows(match.records)
    show(tables)
    counts: Counter[str] = Counter()
    for record in match.records:
        counts.update(record["counts"])
        counts["plies"] += len(record["moves"])

    def clock(side: int) -> int:
        return round(statistics.mean(record["left"][side] for record in match.records))

    print(f"\n{len(match.records)} games, {counts['plies']} half-moves in "
          f"{(time.monotonic() - begin) / 60:.0f} minutes; {NAME}: {counts['book']} moves from "
          f"the book, {counts['table']} with the help of tables, {counts['ponder']} "
          f"after a ponder hit (UCI), {match.bad_exits} bad exits; left on the clocks in the end, "
          f"on average: {clock(0)} ms of {NAME}, {clock(1)} ms of the opponents")
    print("Ends: " + ", ".join(f"{reason} {count}" for reason, count in Counter(
        record["reason"] for record in match.records).most_common()))
    with tempfile.TemporaryDirectory() as folder:
        differences = write_games(options.pgn or folder + "/games.pgn", match.records)
    print("\n".join(differences) or "pgn-extract agrees with the referee on every move and end.")
    if options.json:
        Path(options.json).write_text(json.dumps(
            {"tables": [{"by": heading, "rows": table} for heading, table in tables],
             "games": match.records}))
    own_faults = any(record.get("fault") == NAME for record in match.records)
    return 1 if own_faults or match.bad_exits or differences or match.stopping.is_set() else 0


if __name__ == "__main__":
    run_script(main)
