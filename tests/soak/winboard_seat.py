"""The engine as an interface of today runs it over WinBoard, and all that the interface relies on.
An EngineError tells what the engine has failed to do."""

import re
import time
from collections.abc import Sequence
from pathlib import Path

from chesskit import (BRIVOK, RESULTS, SLOW, Clocks, Game, IllegalMove, WinBoardEngine, claim,
                      diagram, is_dead, read_san, shown, squares)
from chesskit.notation import SAN
from seats import ANSWER, FOLLOWED, Seat, Terms

PATIENCE = 6.0 if SLOW else 2.0  # seconds until an analysis has told a line of play
# Depth, score, centiseconds, nodes, further figures before a tab, and moves.
THOUGHT = re.compile(rf" *\d+ +-?\d+ +\d+ +\d+(?:(?: +\d+)*\t| +)(?P<pv>{SAN}(?: {SAN})*)"
                     r"(?: ?(?:\?|!|--|\+\+))?")
REST = re.compile(rf"|pong \d+|#.*|stat01: \d+ \d+ \d+ \d+ \d+ ?(?:{SAN})?|Hint: {SAN}| [^ \d-].*")


def true_claims(game: Game) -> set[str]:
    """The claims that the position allows."""
    if not game.legal:
        return {f"{game.result} {{{claim(game.end or '', game.side)}}}"}
    ends = {"insufficient": is_dead(game.fen), "fifty": int(game.fen.split()[4]) >= 100,
            "repetition": game.seen.count(game.seen[-1]) >= 3}
    return {f"1/2-1/2 {{{claim(end, 0)}}}" for end, true in ends.items() if true}


def board_of(game: Game) -> list[str]:
    """The lines of the printed board."""
    rights = game.fen.split()[2]
    if not game.fischer:
        return shown(game.fen)
    men = squares(game.fen)

    def marks(king: str, files: str) -> str:
        return files.lower() + next(x[0] for x in men if men[x] == king) if files else ""

    return diagram(game.fen, marks("k", "".join(filter(str.islower, rights))),
                   marks("K", "".join(filter(str.isupper, rights))))


class WinBoardSeat(WinBoardEngine, Seat):
    protocol = "winboard"
    ENDS = ("move ", *RESULTS, "Illegal", "Error", "tellusererror", "tellics", "resign")

    def __init__(self, folder: Path) -> None:
        super().__init__([BRIVOK], folder)
        self.told = 0  # moves of the game that are on its board
        self.needs_go = True  # it does not answer moves by itself
        features = " ".join(self.ask("xboard", "protover 2"))
        names = re.findall(r"(\w+)=", features)
        for name in ("analyze", "memory", "setboard", "usermove", "ping", "playother", "option"):
            self.require(name in names, f"does not name the feature {name}: {features}")
        self.ask(*(f"accepted {name}" for name in names))

    def begin(self, game: Game, terms: Terms, side: int) -> None:
        self.terms, self.told = terms, 0
        lines = [self.control(), "hard" if terms.ponder else "easy", "memory 16", "random",
                 f"option MultiPV={terms.lines}", f"option OwnBook={int(terms.book)}"]
        if game.start != "startpos":
            lines.append("setboard " + game.start.removeprefix("fen "))
        if terms.user:
            lines += ["computer", "name Somebody", "rating 1500 1600"]
        self.chance.shuffle(lines)
        self.needs_go = (game.start != "startpos" or side == 0 or len(game.moves) > 1
                         or self.chance.random() < 0.5)
        if self.needs_go:
            lines.append("force")
        variant = ["variant fischerandom"] if terms.fischer else []
        said = self.ask("new", *variant, "post", *lines)
        self.check([x for x in said if not (self.given_up and x.startswith(("move ", *RESULTS)))])
        self.given_up = False

    def control(self) -> str:
        terms = self.terms
        if terms.move_time:
            return f"st {terms.move_time / 1000:g}"
        minutes, seconds = divmod(max(1, terms.base // 1000), 60)
        return f"level {terms.session} {minutes}:{seconds:02} {terms.increment / 1000:g}"

    def check(self, lines: Sequence[str]) -> None:
        """These lines may come before a move, or where none is due."""
        for before, line in zip(["", *lines], lines):
            thought = THOUGHT.fullmatch(line)
            self.require(thought or REST.fullmatch(line), f"says {line!r}")
            self.require(not thought or line != before, f"says {line!r} twice")

    def text(self, game: Game, number: int) -> str:
        """A move of the game as one of all interfaces writes it."""
        word, theirs, san = game.moves[number], game.theirs[number], game.sans[number]
        plain = san.rstrip("+#")
        forms = [san, plain, theirs]
        if word.startswith("O-O"):
            forms.append(san.replace("O", "0"))
        elif len(word) == 5:
            forms += [word[:4] + word[4].upper(), san.replace("=", ""), san.lower()]
        return "usermove " + self.chance.choice(forms)

    def untold(self, game: Game) -> list[str]:
        lines = [self.text(game, number) for number in range(self.told, len(game.moves))]
        self.told = len(game.moves)
        return lines

    def move(self, game: Game, clocks: Clocks) -> tuple[str | None, float]:
        left = [max(1, int(x / 10)) for x in clocks.left]
        limit = self.terms.move_time or clocks.left[game.side]
        lines = [f"time {left[game.side]}", f"otim {left[1 - game.side]}", *self.untold(game),
                 *(["go"] if self.needs_go else [])]
        self.needs_go = False
        if self.terms.user and self.happens(0.03, "go and ? in a packet"):
            lines.append("?")
            limit = ANSWER
        self.start_watch()
        self.send(*lines)
        if self.terms.user and self.chance.random() < 0.25:
            time.sleep(self.chance.random() * 0.02)
            what = self.chance.choice(self.INTERRUPTIONS)
            self.counts[f"winboard in a search: {what.__name__}"] += 1
            if not what(self, game):
                return None, 0
            if what == WinBoardSeat.move_now:
                limit = min(limit, (time.monotonic() - self.began_at) * 1000 + ANSWER)
        said = self.wait(self.ENDS)
        seconds = self.in_time(limit)
        self.check(said[:-1])
        word = said[-1].removeprefix("move ")
        if word not in game.legal:
            self.fail(f"says {said[-1]!r} in {game.line()}")
        self.follow(game, word, said)
        self.told += 1
        return word, seconds

    def follow(self, game: Game, word: str, said: Sequence[str]) -> None:
        """Now and then the last line of play is followed to its end, if it begins with the move. A
        ponder hit goes on with a search; a new one tells its budget. A single move needs none."""
        budgets = [number for number, line in enumerate(said) if line.startswith("##")]
        thoughts = [m["pv"].split()
                    for m in map(THOUGHT.fullmatch, said[max(budgets, default=0):]) if m]
        if (len(game.legal) == 1 or not thoughts
                or not self.happens(FOLLOWED, "lines of play followed")):
            return
        after = game.branch()
        try:
            if read_san(thoughts[-1][0], after.legal, after.fen) != word:
                return
            for san in thoughts[-1]:
                self.require(not after.end, f"tells {thoughts[-1]} beyond the end, {game.line()}")
                after.push(read_san(san, after.legal, after.fen))
        except IllegalMove as error:
            self.fail(f"tells {thoughts[-1]} in {game.line()}: {error}")

    # While it thinks. Each of these tells whether a move is still due, and otherwise leaves the
    # game as it is on the board of the engine.

    def move_now(self, _game: Game) -> bool:
        self.send("?")
        return True

    def chatter(self, _game: Game) -> bool:
        self.send(*self.chance.sample(self.CHATTER, 3), *self.usual())
        return True

    def halt(self, game: Game) -> bool:
        ending = self.chance.choice(((), ("result 1/2-1/2 {Agreed}",)))
        self.heed(game, self.ask(*ending, "force"))
        return False

    def halt_and_take_back(self, game: Game) -> bool:
        moves = min(1, self.told)
        self.heed(game, self.ask("force", *["undo"] * moves))
        self.forget(game, moves)
        return False

    def analyse_instead(self, game: Game) -> bool:
        self.heed(game, self.ask("analyze"))
        self.analyse(game)
        return False

    def give_up(self, _game: Game) -> bool:
        self.given_up = True
        return False

    INTERRUPTIONS = (move_now, move_now, chatter, chatter, halt, halt_and_take_back,
                     analyse_instead, give_up)
    CHATTER = ("easy", "nopost", ".", "draw", "hint", "bk", "name Somebody", "rating 1500 1600",
               "computer", "memory 8", "accepted analyze", "ping 1000")

    def usual(self) -> list[str]:
        """Sets right what a user may have changed."""
        return ["post", "hard" if self.terms.ponder else "easy"]

    def heed(self, game: Game, said: Sequence[str]) -> None:
        """Plays the move among these lines, if it has come just before the search was ended. From
        now on the engine waits."""
        moves = [line for line in said if line.startswith("move ")]
        self.require(len(moves) < 2, f"moves twice: {moves}")
        for move in moves:
            game.push(move.removeprefix("move "))
            self.told += 1
        self.claimed(game, [line for line in said if line not in moves])
        self.needs_go = True

    def forget(self, game: Game, moves: int) -> None:
        """Takes moves back that the engine has taken back."""
        game.pop(moves)
        self.told -= moves

    # While it is the user's turn, and the engine ponders or waits.

    def interfere(self, game: Game, clocks: Clocks) -> None:
        what = self.chance.choice(self.WHIMS)
        self.counts[f"winboard user: {what.__name__}"] += 1
        self.send(*self.untold(game))
        what(self, game)
        self.check(self.ask())

    def retract(self, game: Game) -> None:
        if self.told >= 2:
            self.send("remove")
            self.forget(game, 2)

    def take_back(self, game: Game) -> None:
        moves = self.chance.randint(0, min(3, self.told))
        self.send("force", *["undo"] * moves)
        self.forget(game, moves)
        self.needs_go = True

    def take_over(self, _game: Game) -> None:
        self.takes_over = self.needs_go = True

    def edit(self, game: Game) -> None:
        game.restart("fen " + game.fen)
        self.told = 0
        self.send("force", game.start.replace("fen", "setboard"))
        self.needs_go = True

    def play_other(self, _game: Game) -> None:
        self.send("force", "playother")
        self.needs_go = False

    def change_settings(self, _game: Game) -> None:
        whims = ("easy", "nopost", "memory 4", "st 0.1", "sd 3", "level 0 1 0", "level 40 0:30 0.5",
                 "option MultiPV=3")
        self.send(*self.chance.sample(whims, 3), self.control(), *self.usual(),
                  f"option MultiPV={self.terms.lines}")

    def talk(self, _game: Game) -> None:
        self.send(*self.chance.sample(self.CHATTER, 3), *self.usual())

    def move_wrongly(self, game: Game) -> None:
        here, there = self.chance.sample(sorted(squares(game.fen)), 2)
        texts = [x for x in (here + there, "e9e4", "a9", "Kz4", "O-O-O-O")
                 if x not in game.legal and x not in game.legal.values()]
        self.told_wrong("usermove " + self.chance.choice(texts), "Illegal move")

    def break_board(self, _game: Game) -> None:
        self.send("force")
        self.needs_go = True
        self.told_wrong(self.chance.choice(("setboard", "setboard rubbish",
                                            "setboard 8/8/8/8/8/8/8/8 w - - 0 1")),
                        ("Error", "tellusererror"))

    def break_settings(self, _game: Game) -> None:
        self.told_wrong(self.chance.choice(("nonsense", "option Nonsense=1", "option MultiPV=0")),
                        "Error")

    def told_wrong(self, line: str, answer: str | tuple[str, ...]) -> None:
        said = self.ask(line)
        self.require(any(x.startswith(answer) for x in said), f"takes {line!r}: {said[-3:]}")
        self.check([x for x in said if not x.startswith(answer)])

    def analyse(self, game: Game) -> None:
        """Lets the engine analyse further moves, which stay on the board."""
        said = self.ask("post", "analyze")
        for _ in range(self.chance.randint(1, 5)):
            if not game.end:
                self.analysed(game, said)
            if self.told and (game.end or self.chance.random() < 0.3):
                self.send("undo")
                self.forget(game, 1)
            elif not game.end:
                game.push(self.chance.choice(sorted(game.legal)))
                self.send(*self.untold(game))
            said = self.ask(self.chance.choice((".", "hint", "bk", "memory 8")))
        self.check(said)
        self.check(self.ask("exit"))
        self.send("force", *["undo"] * bool(game.end))
        self.forget(game, bool(game.end))
        self.needs_go = True

    def analysed(self, game: Game, said: Sequence[str]) -> None:
        """A line of play for this position must come, or be the last one of these."""
        self.check(said)
        end, told = time.monotonic() + PATIENCE, False
        while not told and time.monotonic() < end:
            time.sleep(0.003)
            more = self.ask()
            self.check(more)
            told = any(map(THOUGHT.fullmatch, more))
            said = [*said, *more]
        thoughts = [m["pv"].split()[0] for m in map(THOUGHT.fullmatch, said) if m]
        try:
            self.require(thoughts, f"analyses nothing in {game.line()}")
            read_san(thoughts[-1], game.legal, game.fen)
        except IllegalMove as error:
            self.fail(f"analyses another position than {game.line()}: {error}")

    WHIMS = (retract, retract, take_back, take_over, edit, play_other, change_settings, talk,
             move_wrongly, break_board, break_settings, analyse)

    # When the game is over.

    def reopen(self, game: Game) -> bool:
        known = self.told == len(game.moves)
        if self.told < 2 or not (known or not game.legal):
            return False
        self.hear_claim(game)
        self.counts["winboard finished games reopened"] += 1
        if known:
            self.retract(game)
        else:
            self.send("force", "undo")
            self.forget(game, 1)
            self.needs_go = True
        return True

    def hear_claim(self, game: Game) -> None:
        """It may claim the end that its own move makes, and must see that it cannot move. No other
        claim may come."""
        said: list[str] = []
        if self.told < len(game.moves) and not game.legal:
            self.send(*self.untold(game), *(["go"] if self.needs_go else []))
            said = self.wait(self.ENDS)
            self.require(said[-1].startswith(RESULTS), f"says {said[-1]!r} in {game.line()}")
        self.claimed(game, [*said, *self.ask()])

    def claimed(self, game: Game, said: Sequence[str]) -> None:
        """At most one of these lines may be a claim, a true one."""
        claims = [line for line in said if line.startswith(RESULTS)]
        self.check([line for line in said if line not in claims])
        self.counts["winboard claims"] += len(claims)
        self.require(len(claims) < 2 and true_claims(game).issuperset(claims),
                     f"claims {claims} in {game.line()}")

    def end(self, game: Game) -> None:
        if self.given_up:
            return
        if not game.end and self.happens(0.5, "games given up silently"):
            self.given_up = True
            return
        if game.end:
            self.hear_claim(game)
        self.send(f"result {game.result if game.end else '*'} {{The end}}", "force")
        self.check(self.ask(*self.untold(game)))
        board = self.ask("board")
        self.require(board == board_of(game), "has another board than\n" + "\n".join(
            [*board_of(game), *board]) + f"\n{game.line()}")

    def busy(self) -> list[str]:
        return ["new", "go"]
