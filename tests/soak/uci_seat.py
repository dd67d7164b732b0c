"""The engine as an interface of today runs it over UCI, and all that the interface relies on. An
EngineError tells what the engine has failed to do."""

import re
import time
from collections.abc import Sequence
from pathlib import Path
from typing import NamedTuple

from chesskit import BRIVOK, Clocks, Game, Process, Reply, UciEngine
from chesskit.notation import MOVE
from seats import ANSWER, FOLLOWED, Seat, Terms

INFO = re.compile(
    rf"""info(?:\ (?:depth\ (?P<depth>\d+)|seldepth\ \d+|time\ \d+|multipv\ (?P<number>\d+)
    |score\ (?P<kind>cp|mate)\ (?P<score>-?\d+)(?P<bound>\ (?:lower|upper)bound)?
    |nodes\ \d+|nps\ \d+|hashfull\ (?P<full>\d+)|tbhits\ \d+
    |currmove\ {MOVE}|currmovenumber\ \d+|pv(?P<pv>(?:\ {MOVE})+)))+\ ?""", re.X)
BESTMOVE = re.compile(rf"bestmove (0000|{MOVE})(?: ponder ({MOVE}))? ?")
# The budget, which is no part of the protocol, and the diagram after "position".
REST = re.compile(r"|readyok|info string (?:book move|no mate in \d+ found)|## \(Think\).*"
                  r"|   \+(?:---\+){8}| [1-8] \|.*| {5}(?:[a-h#] {3}){8}")


class Info(NamedTuple):
    """An "info" line with a score."""
    depth: int
    number: int
    score: int  # mates beyond all others
    bound: bool
    line: list[str]


def check_order(engine: Process, told: Sequence[Info], most: int) -> None:
    """The lines of one depth must be numbered and sorted, and no more than `most`."""
    for before, info in zip(told, told[1:]):
        if info.number > 1 and not (before.bound or info.bound):
            engine.require(info.number == before.number + 1 and (
                info.depth != before.depth or info.score <= before.score),
                f"tells line {info.number} behind {before}: {info}")
    engine.require(all(info.number <= most for info in told), f"tells more than {most} lines")


class UciSeat(UciEngine, Seat):
    protocol = "uci"

    def __init__(self, folder: Path) -> None:
        super().__init__([BRIVOK], folder)
        self.root: Game | None = None  # what it ponders on
        self.next: str | None = None  # the move that it would like to ponder on

    def begin(self, game: Game, terms: Terms, side: int) -> None:
        self.terms, self.root, self.next = terms, None, None
        options = {"UCI_Chess960": terms.fischer, "Ponder": terms.ponder, "MultiPV": terms.lines,
                   "OwnBook": terms.book, "UCI_LimitStrength": terms.number % 16 == 5,
                   "Hash": self.chance.choice((1, 2, 16))}
        for name, value in options.items():
            self.set(name, str(value).lower())
        self.idle("ucinewgame")

    def idle(self, *lines: str) -> None:
        """What is printed behind these lines, which may be neither a search nor a complaint."""
        self.send(*lines)
        said = self.ready()
        self.require(all(REST.fullmatch(line) for line in said), f"says {said} when idle")

    def at(self, game: Game) -> str:
        moves = " moves " + " ".join(game.theirs) if game.theirs else ""
        return f"position {game.start}{moves}"

    def limit(self, game: Game, clocks: Clocks) -> str:
        return (f"movetime {self.terms.move_time}" if self.terms.move_time
                else clocks.text(game.side))

    def read(self, text: str, game: Game) -> str | None:
        """The word of a move in the engine's text, or None if it is not legal."""
        return next((ours for ours, theirs in game.legal.items() if theirs == text), None)

    def read_info(self, line: str) -> Info | None:
        """Of a line with a score. Every line must have the form of the protocol."""
        m = INFO.fullmatch(line)
        words = line.split()[1:]
        if not m or int(m["full"] or 0) > 1000:
            self.require(False, f"says {line!r}")
            return None
        names = [word for word in words[:words.index("pv") if "pv" in words else None]
                 if word.isalpha() and not re.fullmatch(MOVE, word)]
        self.require(len(names) == len(set(names)), f"says a word twice: {line!r}")
        if m["score"] is None:
            return None
        score = int(m["score"])
        if m["kind"] == "mate":
            score = (100000 if score > 0 else -100000) - score
        return Info(int(m["depth"] or 0), int(m["number"] or 1), score, bool(m["bound"]),
                    (m["pv"] or "").split())

    def best_of(self, game: Game, among: Sequence[str] = ()) -> str | None:
        """The answer to the search of this position, checked: the word of a move (one of `among`,
        if given), or None where the rules allow none."""
        asked = self.happens(0.02, "isready in a search")
        if asked:
            self.send("isready")
        reply = self.best()
        if asked and "readyok" not in reply.lines:  # the search has ended before
            self.wait("readyok")
        return self.judge(reply, game, among)

    def judge(self, reply: Reply, game: Game, among: Sequence[str] = ()) -> str | None:
        told = []
        for line in reply.lines[:-1]:
            if line.startswith("info ") and not REST.fullmatch(line):
                info = self.read_info(line)
                told += [info] if info else []
            else:
                self.require(REST.fullmatch(line), f"says {line!r} in a search")
        words = BESTMOVE.fullmatch(reply.lines[-1])
        if not words:
            self.fail(f"says {reply.lines[-1]!r}")
        self.require(told, f"tells no score before its move in {self.at(game)}")
        self.next = None
        if not game.legal:
            self.require(words[1] == "0000" and not words[2], f"plays {words[0]} where none is")
            return None
        move = self.read(words[1], game)
        if move is None or among and move not in among:
            self.fail(f"plays {words[0]} in {self.at(game)}")
        if among:
            return move
        check_order(self, told, min(self.terms.lines, len(game.legal)))
        last = next(info for info in reversed(told) if info.number == 1)
        self.require(last.line[:1] == [words[1]], f"plays {words[1]} and tells {last}")
        if words[2]:
            after = game.branch(move)
            self.next = self.read(words[2], after)
            self.require(self.next, f"would ponder on {words[2]} in {self.at(after)}")
        self.check_line(game, self.chance.choice(told).line)
        if self.happens(FOLLOWED, "line of play followed"):
            after = game.branch()
            for text in last.line:
                self.require(not after.end or len(after.moves) == len(game.moves),
                             f"tells {last} beyond the end of {self.at(game)}")
                word = self.read(text, after)
                if word is None:
                    self.fail(f"tells {text} of {last} in {self.at(after)}")
                after.push(word)
        return move

    def check_line(self, game: Game, line: Sequence[str]) -> None:
        """The referee must take all moves of this line of play."""
        self.counts["uci lines of play checked"] += 1
        taken = game.referee.look(game.start, [*game.theirs, *line], game.fischer).fen

        def plies(fen: str) -> int:
            words = fen.split()
            return 2 * int(words[5]) + (words[1] == "b")

        self.require(plies(taken) == plies(game.fen) + len(line),
                     f"tells illegal moves {' '.join(line)} in {self.at(game)}")

    def silent(self) -> None:
        """Where a move is due only after a word of the interface."""
        self.require(not any(x.startswith("bestmove") for x in self.waiting()), "answers unasked")

    def stop(self, game: Game) -> None:
        """Ends a search that would not end by itself."""
        self.silent()
        self.start_watch()
        self.send("stop")
        reply = self.best()
        self.in_time(ANSWER)
        self.judge(reply, game)

    def move(self, game: Game, clocks: Clocks) -> tuple[str | None, float]:
        limit = self.terms.move_time or clocks.left[game.side]
        if self.root and self.root.moves == game.moves:
            self.silent()
            self.counts["uci ponder hits"] += 1
            self.start_watch()
            self.send("ponderhit")
        else:
            if self.root:
                self.counts["uci ponder misses"] += 1
                self.stop(self.root)
            text = self.limit(game, clocks)
            if self.happens(0.03, "go depth"):
                text = "depth 3"
            elif self.happens(0.03, "go nodes"):
                text = "nodes 2000"
            self.start_watch()
            self.start(f"{self.at(game)}\ngo {text}")
        self.root = None
        reply = self.best()
        seconds = self.in_time(limit)
        return self.judge(reply, game), seconds

    def leave(self, game: Game, clocks: Clocks) -> None:
        if self.terms.ponder and self.next and self.next in game.legal:
            self.root = game.branch(self.next)
            if self.root.end and not self.happens(0.5, "pondering on a last move"):
                self.root = None
                return
            self.start(f"{self.at(self.root)}\ngo ponder {self.limit(self.root, clocks)}")

    def end(self, game: Game) -> None:
        if self.root:
            self.stop(self.root)
            self.root = None
        if game.end and self.happens(0.2, "go behind the end"):
            self.start(f"{self.at(game)}\ngo depth 3")
            self.best_of(game)
        self.idle()

    def interfere(self, game: Game, clocks: Clocks) -> None:
        if self.root:
            self.stop(self.root)
            self.root = None
        what = self.chance.choice(self.WHIMS)
        self.counts[f"uci user: {what.__name__}"] += 1
        what(self, game, clocks)
        self.idle()

    def busy(self) -> list[str]:
        return ["position startpos", "go infinite"]

    def search(self, game: Game, *go: str, among: Sequence[str] = ()) -> None:
        self.start("\n".join([self.at(game), *go]))
        self.best_of(game, among)

    def analyse(self, game: Game, _clocks: Clocks) -> None:
        self.start(f"{self.at(game)}\ngo infinite")
        time.sleep(self.chance.random() * 0.03)
        self.stop(game)

    def hurry(self, game: Game, clocks: Clocks) -> None:
        """The search is told to end before it has begun, or to begin in earnest."""
        limit = self.limit(game, clocks)
        self.search(game, *self.chance.choice((
            ("go infinite", "stop"), (f"go {limit}", "stop"), (f"go ponder {limit}", "stop"),
            (f"go ponder {limit}", "ponderhit"), ("go depth 0",), ("go nodes 1",),
            ("go movetime 1",), ("go mate 1",), ("go mate 2 depth 4",), ("go mate 3", "stop"),
            ("go ponder infinite", "ponderhit", "stop"), ("go wtime 1 btime 1",))))

    def choose_moves(self, game: Game, _clocks: Clocks) -> None:
        most = min(3, len(game.legal))
        among = self.chance.sample(sorted(game.legal), self.chance.randint(1, most))
        words = " ".join(game.legal[word] for word in among)
        self.search(game, self.chance.choice((
            f"go depth 3 searchmoves {words}", f"go searchmoves {words} depth 3")), among=among)

    def break_position(self, game: Game, _clocks: Clocks) -> None:
        """A position that is none leaves the one of before."""
        self.idle(self.at(game))
        self.told_wrong(self.chance.choice((
            "position fen 8/8/8/8 w - - 0 1", "position fen rubbish", "position nowhere",
            "position fen 9/8/8/8/8/8/8/K1k5 w - - 0 1", "position fen 8/8/8/8/8/8/8/8 w - - 0 1",
            f"{self.at(game)}{'' if game.theirs else ' moves'} a1a1 h8h8 e9e4")))
        self.start("go depth 2")
        self.best_of(game)

    def break_options(self, _game: Game, _clocks: Clocks) -> None:
        self.told_wrong(self.chance.choice((
            "setoption name Nonsense value 3", "setoption name MultiPV value 0",
            "setoption name MultiPV value 1000", "setoption name Hash value many",
            "setoption name UCI_Elo value -5")))

    def told_wrong(self, line: str) -> None:
        self.send(line)
        said = self.ready()
        complaints = [x for x in said if x.startswith("info string ")]
        self.require(complaints, f"takes {line!r}")
        self.require(all(x in complaints or REST.fullmatch(x) for x in said), f"says {said}")

    def change_lines(self, game: Game, _clocks: Clocks) -> None:
        before = self.terms
        for lines in (self.chance.randint(2, 5), 1, before.lines):
            self.terms = before._replace(lines=lines)
            self.idle(f"setoption name MultiPV value {lines}")
            self.search(game, "go depth 4")

    def introduce(self, _game: Game, _clocks: Clocks) -> None:
        self.send("uci")
        self.require(len(self.wait("uciok")) > 10, "does not introduce itself again")

    def talk_idly(self, _game: Game, _clocks: Clocks) -> None:
        self.idle("stop", "ponderhit", "debug on", "nonsense", "")

    WHIMS = (analyse, hurry, hurry, choose_moves, break_position, break_options, change_lines,
             introduce, talk_idly)
