"""The answer to each WinBoard command in each state, and how the engine plays a game."""

import json
import re

import pytest

from chesskit import (MIDDLE, RESULTS, ROOT, SLOW, START, STATUS, THINKING, Game, WinBoard,
                      diagram, read_san, shown, talk)

LONG = ["easy", "level 0 60 0"]  # a search that does not end while a test looks at it
QUICK = ["level 0 60 0", "time 100", "otim 100"]  # a centisecond a move
HOPELESS = "6k1/5ppp/8/8/8/8/5PPP/Q2R2K1 b - - 0 1"  # and far from mate
PAWN_MOVES = ["h2h3", "g2g3", "f2f3", "h3h4", "g3g4", "f3f4"]


@pytest.fixture
def engine(start):
    return start(WinBoard)


def log_of(engine):
    engine.finish()
    return next((engine.folder / "logs").iterdir()).read_text("latin-1")


def error(*lines):
    return [x for line in lines for x in (f"Error (Unknown command): {line}", "")]


def after(referee, *moves, start="startpos"):
    """The diagram of the position after these moves."""
    return shown(referee.look(start, moves)[1])


# --- Idle --------------------------------------------------------------------------------------

def test_greeting(engine):
    assert engine.greeting == ["feature done=0"] and engine.waiting(0.1) == []
    assert engine.ask("protover 1", "protover 3", "protover") == []
    assert engine.ask("protover 2") == [
        'feature ping=1 setboard=1 usermove=1 draw=0 ics=1 name=1 sigint=0 sigterm=0 '
        'myname="Brivok 4.0.3" variants="normal,fischerandom,nocastle" done=1']


def test_idle_commands(engine):
    silent = ["accepted ping", "rejected", "random", "hard", "post", "clearh", "time 100", "sd 4",
              "otim 100", "level 40 5 0", "level 0 2:30 12", "st 1", "variant normal", "perft",
              "variant", "nopost", "easy", "undo", "remove", "force", "new", "result *"]
    assert engine.ask(*silent) == []
    unknown = ["name Bob", "rating 1 2", "computer", "ics -", "draw", "hint", "bk", "pause", "?",
               ".", "resume", "xboard", "exit", "Go", "", "playother", "O-O", "e2-e4", "e2e4e5"]
    assert engine.ask(*unknown) == error(*unknown)
    pieces = engine.ask("x" * 5000)  # longer than one part of the input
    assert [x.count("x") for x in pieces if x] == [4095, 905]
    assert engine.ask("board") == shown(START)
    engine.send("ping  7 8")
    assert engine.wait("pong") == ["pong 7"]


def test_lone_words_change_nothing(engine):
    lone = ["time", "otim", "level", "level 0", "level 0 1", "protover", "sd", "st", "variant",
            "ping", "perft"]
    assert engine.ask("easy", "sd 4", *lone) == []
    engine.move("go")
    assert engine.thinking[-1]["depth"] == " 4" and not any("##" in x for x in engine.said)
    engine.send("new", "level 0 5 0", "time 15000", "otim 30000", *lone, "go")
    assert engine.wait("##") == ["## (Think) Left time: 15000 Thinking time: 300"]
    engine.wait(" 3")
    engine.move("force")


def test_moves(engine, referee):
    assert engine.ask("force", "usermove e2e4", "e7e5", "usermove g1f3", "board") == after(
        referee, "e2e4", "e7e5", "g1f3")
    refused = ["usermove e2e5", "usermove e8g8", "a1a1", "usermove e7e8Q", "usermove", "b8c6 d7d6"]
    words = [line.split()[-1] for line in refused]
    assert engine.ask(*refused[:5]) == ["Illegal move: " + x for x in words[:5]]
    assert engine.ask(refused[5], "board") == after(referee, "e2e4", "e7e5", "g1f3", "d7d6")
    assert engine.ask("usermove f1c4 x", "b8c6 x") == ["Illegal move: x"]
    assert engine.ask("undo", "board") == after(referee, "e2e4", "e7e5", "g1f3", "d7d6")
    assert engine.ask("remove", "board") == after(referee, "e2e4", "e7e5")
    assert engine.ask("undo", "remove", "undo", "board") == shown(START)
    fen = "4k3/8/8/8/8/8/8/4K3 b - - 5 20"
    assert engine.ask("setboard " + fen, "undo", "remove", "board") == shown(fen)


def test_setboard(engine, referee):
    fen = "r3k2r/8/8/8/8/8/7p/R3K3 b Qkq - 0 1"
    assert engine.ask("setboard  " + fen.replace(" ", "  "), "board") == shown(fen)
    moves = ["e8c8", "a1a8", "c8c7"]
    played = [f"usermove {m}" for m in moves] + ["usermove e1e2", "h2h1q", "remove"]
    assert engine.ask(*played, "board") == after(referee, *moves, start="fen " + fen)
    legal = referee.look("fen " + fen, moves)[0]
    assert engine.move("easy", "sd 3", "go") in legal
    assert engine.ask("setboard 8/8/8/8/8/8/8/K7 w", "board") == [
        "FEN error: There isn't black king", *shown(START)]
    engine.no_move()
    assert engine.ask("usermove e2e4") == [] and not engine.waiting(0.1)


def test_variants(engine, referee):
    array = "1rk1r3/pppppppp/8/8/8/8/PPPPPPPP/1RK1R3 w KQkq - 0 1"
    assert engine.ask("variant fischerandom", "variant normal", "setboard " + array,
                      "usermove O-O", "usermove e7e5") == []
    legal, fen, _ = referee.look("fen " + array, ["c1e1", "e7e5"], True)
    assert engine.ask("board") == diagram(fen, "bce")
    assert f"telluser Nodes: {len(legal)} - Time:" in engine.ask("perft 1")[-1]
    assert engine.ask("remove", "usermove c1g1", "O-O-O") == ["Illegal move: c1g1"]
    fen = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"
    assert engine.ask("variant nocastle", "setboard " + fen, "usermove e1g1") == [
        "Illegal move: e1g1"]
    assert engine.ask("board") == diagram(fen)


def test_colours(engine, referee):
    """ "white" and "black" set the side to move; the engine plays the other side."""
    fen = START.replace(" w ", " b ")
    assert engine.ask("easy", "sd 3", "force", "black", "board") == shown(fen)
    engine.send("new", "sd 3", "black")
    engine.no_move()
    assert engine.move("usermove e7e5") in referee.look("fen " + fen, ["e7e5"])[0]
    assert engine.move("new", "sd 3", "black", "white", "e2e4") in referee.look(
        "startpos", ["e2e4"])[0]
    assert engine.move("new", "sd 3", "force", "e2e4", "black", "go") in referee.look(
        "startpos", ["e2e4"])[0]


def test_force_result_and_new(engine, referee):
    engine.send("easy", "sd 3", "force", "usermove e2e4")
    engine.no_move()
    reply = engine.move("go")
    assert engine.ask("result 1-0 {whatever}", "usermove d2d4", "go") == []
    engine.no_move()
    assert engine.ask("board") == after(referee, "e2e4", reply, "d2d4")
    engine.send("new", "sd 3")
    engine.no_move()
    assert engine.move("usermove e2e4") == reply
    assert engine.ask("new", "force", "board") == shown(START)


def test_posting(engine):
    engine.move("easy", "nopost", "sd 4", "go")
    assert engine.said == [""]
    engine.move("post", "new", "sd 2", "go")  # posts from the third iteration on
    assert engine.said == [""]
    engine.move("new", "sd 3", "go")
    assert {m["depth"] for m in engine.thinking} == {" 3"}


def test_perft(engine):
    def perft(depth):
        lines = engine.ask(f"perft {depth}")
        assert lines[:3] == ["", f"Results for perft {depth}", "Depth Nodes          Total nodes"]
        assert re.fullmatch(r"telluser Nodes: \d+ - Time: \d+\.\d{6}", lines[-1])
        return lines[3:-1], int(lines[-1].split()[2])

    assert perft(3) == (["   1  20             20", "   2  400            420",
                         "   3  8902           9322"], 8902)
    assert perft(0) == (["   1  20             20"], 0)
    engine.send("setboard r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1")
    assert perft(2)[1] == 2039
    engine.send("setboard 7k/6Q1/6K1/8/8/8/8/8 b - - 0 1")
    assert perft(3) == ([], 0)
    assert engine.ask("board") == shown("7k/6Q1/6K1/8/8/8/8/8 b - - 0 1")


# --- Thinking ----------------------------------------------------------------------------------

def test_commands_while_thinking(engine, referee):
    engine.send(*LONG, "go")
    engine.wait(" 3")
    unknown = ["usermove e7e5", "e7e5", "new", "uci", "time 5", "result *", "undo", "exit", "quit?",
               "analyze", "board", "st 1"]
    said = engine.ask(*unknown)
    assert [x for x in said if not THINKING.fullmatch(x)] == error(*unknown)
    assert [bool(STATUS.fullmatch(x)) for x in engine.ask(".") if x.startswith("stat01")] == [True]
    first = engine.move("?")
    second = referee.look("startpos", [first])[0]
    engine.send("usermove " + min(second))
    engine.wait(" 3")
    third = engine.move("force")
    assert engine.ask("board") == after(referee, first, min(second), third)
    legal = referee.look("startpos", [first, min(second), third])[0]
    assert engine.ask("usermove " + min(legal)) == []
    engine.no_move()
    engine.send("go", "quit")
    assert not any(x.startswith("move") for x in engine.finish())


# --- Pondering ---------------------------------------------------------------------------------

def ponder(engine, referee, *lines):
    """Has the engine answer 1. e4 and ponder. Returns the moves so far and the expected one."""
    moves = ["e2e4", engine.move(*lines, "usermove e2e4")]
    hint = engine.wait("Hint: ")[-1][6:]
    return moves, read_san(hint, *referee.look("startpos", moves)[:2])


def board_now(engine):
    """The position, after any search has been stopped."""
    engine.send("force", "ping stopped")
    engine.wait("pong stopped")
    return engine.ask("board")


def test_ponder_hit(start, referee):
    engine = start(WinBoard, ini="CreateLog: true")
    moves, hint = ponder(engine, referee, *QUICK)
    engine.no_move(0.4)
    engine.ask("otim 1800", "time 1800")
    reply = engine.move("usermove " + hint)
    assert not any(x[:2] in ("##", "Hi") for x in engine.said)
    assert board_now(engine) == after(referee, *moves, hint, reply)
    # without "usermove", and with time left for the move
    moves, hint = ponder(engine, referee, "new", *QUICK, "otim 3000", "time 3000")
    engine.ask("time 3000", "otim 3000")
    reply = engine.move(hint)
    assert board_now(engine) == after(referee, *moves, hint, reply)
    # The time after a hit does not shorten a search to a fixed depth.
    moves, hint = ponder(engine, referee, "new", "post", "sd 9")
    engine.move("time 10", "usermove " + hint)
    assert any(x.startswith(" 9.") for x in engine.said)
    log = log_of(engine)
    for left in ("Left time: 1800 Thinking time: 30\n", "Left time: 3000 Thinking time: 50\n"):
        assert "\n\n## Search mode switched to normal\n## " + left in log


def test_ponder_miss(start, referee):
    engine = start(WinBoard, ini="CreateLog: true")
    moves, hint = ponder(engine, referee, *QUICK)
    other = max({"a2a3", "h2h3"} - {hint})
    reply = engine.move(f"usermove {other}")
    assert engine.said.count("## (Think) Left time: 100 Thinking time: 1") == 1
    assert board_now(engine) == after(referee, *moves, other, reply)

    # An illegal move is only noted; it ends pondering and does not change the board.
    moves, hint = ponder(engine, referee, "new", *QUICK)
    engine.send("usermove " + 300 * "a")
    engine.until_idle()
    assert engine.ask("board") == after(referee, *moves)
    assert engine.move("usermove " + hint) in referee.look("startpos", [*moves, hint])[0]
    log = log_of(engine)
    assert f"## strMovDuranteBusqueda: {other}\n" in log
    for note in ("strMovDuranteBusqueda", r"Illegal move \(ponder\)"):
        assert re.search(rf"## {note}: a{{255}}\n", log)
    assert "\nIllegal" not in log and "Problem" not in log


def test_commands_while_pondering(engine, referee):
    moves, hint = ponder(engine, referee, *QUICK)
    ignored = ["?", ".", "new", "undo", "remove", "result 1-0", "setboard " + MIDDLE, "analyze",
               "exit", "go", "uci", "unknown", "level 0 1 0", "board", "easy", "nopost", "time",
               "otim", "ping"]
    assert all(THINKING.fullmatch(x) for x in engine.ask(*ignored))
    reply = engine.move("usermove " + hint)
    assert board_now(engine) == after(referee, *moves, hint, reply)
    assert engine.ask("unknown") == error("unknown")

    moves, hint = ponder(engine, referee, "new", *QUICK)
    assert board_now(engine) == after(referee, *moves)  # the expected move is taken back
    assert engine.ask("undo", "undo", "board") == shown(START)
    ponder(engine, referee, "new", *QUICK)
    engine.send("quit")
    assert not any(x.startswith("move") for x in engine.finish())


def test_pondering_that_ends_by_itself(engine, referee):
    moves, hint = ponder(engine, referee, "sd 3")
    engine.until_idle()
    assert engine.ask("board") == after(referee, *moves)
    assert engine.move("usermove " + hint) in referee.look("startpos", [*moves, hint])[0]
    engine.until_idle()
    engine.move("easy", "new", "sd 3", "go")
    assert engine.ask("unknown") == error("unknown")
    assert not any(x.startswith("Hint") for x in engine.said)


# --- Analysing ---------------------------------------------------------------------------------

def test_analysis(engine, referee):
    engine.send("easy", "force", "e2e4", "analyze")
    engine.wait("stat01")  # without a question from the seventh iteration on
    ignored = ["usermove e7e5", "e7e5", "force", "new", "undo", "?", "unknown", "uci", "time 1",
               "result 1-0", "board", "setboard " + MIDDLE, "go"]
    assert all(THINKING.fullmatch(x) or STATUS.fullmatch(x) for x in engine.ask(*ignored))
    assert any(STATUS.fullmatch(x) for x in engine.ask("."))
    # "analyze" has ended "force", and Black, the engine's side, is to move.
    engine.send("exit")
    assert not any(x.startswith("mo") for x in engine.wait("##"))
    engine.wait(" 3")
    reply = engine.move("force")
    assert engine.ask("board") == after(referee, "e2e4", reply)


def test_analysis_for_the_other_side(engine):
    """If it is not the engine's turn, it is idle after the analysis."""
    engine.send("easy", "analyze")
    engine.wait(" 5")
    engine.send("exit")
    engine.until_idle()
    assert engine.ask("board") == shown(START)
    # These analyses end by themselves and do not touch the game: a single legal move, a mate.
    engine.send("setboard 7k/8/6Q1/8/8/8/8/K5R1 b - - 0 1", "white", "black", "analyze")
    engine.until_idle()
    engine.send("new", "setboard 6k1/5ppp/8/8/8/8/8/R3K3 w - - 0 1", "analyze")
    engine.until_idle()
    engine.move("sd 4", "usermove e1e2")
    assert engine.ask() == []


def test_analysis_of_a_finished_game(engine, referee):
    engine.send("easy", "sd 3", "result 1-0", "analyze")
    engine.wait(" 5")
    engine.send("exit")
    engine.until_idle()
    assert engine.ask("usermove e2e4", "board") == after(referee, "e2e4")  # still over
    engine.no_move()
    engine.send("analyze")
    engine.wait(" 4")
    engine.send("exit")
    engine.until_idle()
    engine.send("new", "sd 3")
    assert engine.move("usermove d2d4") in referee.look("startpos", ["d2d4"])[0]


# --- The end of a game -------------------------------------------------------------------------

@pytest.mark.parametrize("fen, move, result", [
    ("6k1/5ppp/8/8/8/8/8/R3K3 w Q - 0 1", "a1a8", "1-0 {White mates}"),
    ("r3k3/8/8/8/8/8/5PPP/6K1 b q - 0 1", "a8a1", "0-1 {Black mates}"),
    ("R5k1/5ppp/8/8/8/8/8/4K3 b - - 0 1", None, "1-0 {White mates}"),
    ("4k3/8/8/8/8/8/5PPP/r5K1 w - - 0 1", None, "0-1 {Black mates}"),
    ("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", None, "1/2-1/2 {Stalemate}"),
    ("8/8/8/4k3/8/8/4K3/R7 w - - 100 80", "any", "1/2-1/2 {Fifty moves rule}"),
    ("8/8/8/4k3/8/8/4K3/R7 w - - 99 80", "any", None),
    ("6k1/5ppp/8/8/8/8/8/R3K3 w - - 100 80", "any", "1/2-1/2 {Fifty moves rule}"),
    ("8/8/8/4k3/8/8/1r6/K7 w - - 0 1", "a1b2", "1/2-1/2 {Insufficient material}"),
    ("8/8/8/4k3/8/8/2N5/K7 w - - 0 1", None, "1/2-1/2 {Insufficient material}"),
    ("8/8/8/4k3/8/8/2N5/KN6 w - - 0 1", "any", None),
    ("8/8/8/4k3/8/8/2b5/K4B2 w - - 0 1", "any", None)])
def test_outcomes(engine, referee, fen, move, result):
    legal = referee.look("fen " + fen)[0]
    engine.send("sd 4", "setboard " + fen, "go")
    if move:
        assert engine.move() in ({move} if move != "any" else legal)
    if result:
        engine.wait(result)
        assert engine.ask("go", "undo", "hard") == []  # over
        assert engine.move("new", "sd 2", "usermove e2e4")
    else:
        engine.until_idle()
        assert not any(x.startswith(RESULTS) for x in engine.ask("board"))


def test_fifty_moves_before_the_engines_move(engine):
    engine.send("setboard 8/8/8/4k3/8/8/4K3/R7 w - - 100 80", "usermove a1a2", "sd 3",
                "go")
    assert engine.wait("1/2") == ["1/2-1/2 {Fifty moves rule}"]


@pytest.mark.parametrize("fen, by_engine", [
    ("4n1k1/6p1/8/6KQ/1r6/q7/8/8 w - - 0 1", True), ("6k1/6p1/8/6KQ/1r6/q7/8/8 w - - 0 1", False)])
def test_repetition(engine, referee, fen, by_engine):
    """A perpetual check. The engine's move or the other side's is the last repetition."""
    game = Game(referee, "fen " + fen)
    engine.send("easy", "sd 4", "setboard " + fen, "go")
    while game.end is None:
        if not game.white:
            [reply] = game.legal
            game.push(reply)
            engine.send("usermove " + reply)
        else:
            game.push(engine.move())
    assert game.white != by_engine and game.end == "repetition"
    assert engine.wait("1/2") == ["1/2-1/2 {Three fold repetition}"]
    engine.no_move()


@pytest.mark.parametrize("black", [True, False])
@pytest.mark.parametrize("settings, hopeful, moves", [
    ("", (), 6), ("", (1, 3), None), ("", (2,), 7), ("Resign: false", (), None),
    ("ResignValue: -5000", (), None), ("Resign: 1\nResign: TRUE\nResignValue: -1500", (), 6)])
def test_resignation(start, black, settings, hopeful, moves):
    """It resigns on its sixth hopeless move, in a row or not, but not while the other side is short
    of time."""
    def mirrored(text):
        return text if black else re.sub("[1-8]", lambda m: str(9 - int(m[0])), text)

    fen = HOPELESS if black else "q2r2k1/5ppp/8/8/8/8/5PPP/6K1 w - - 0 1"
    engine = start(WinBoard, ini=settings)
    engine.send("easy", "sd 6", "setboard " + fen)
    for number in range(1, 8):
        engine.move(f"otim {19999 if number in hopeful else 20000}",
                    "go" if number == 1 else "usermove " + mirrored(PAWN_MOVES[number - 2]))
        said = engine.ask()
        assert said == [] or number == moves, (number, said)
        if said:
            assert said == ["1-0 {Black resigns}" if black else "0-1 {White resigns}"]
            assert engine.ask("go", "sd 6") == []
            break
    else:
        assert moves is None
        return
    # A new game starts a new count.
    engine.send("new", "sd 6", "setboard " + fen, "otim 30000")
    engine.move("go")
    assert engine.ask() == []


# --- Protocols ---------------------------------------------------------------------------------

def test_switching(start):
    engine = start(WinBoard, ini="AspirationWindow: 50\nVariant: frc\nExtraInfo: false")

    def options(*lines):
        engine.send(*lines, "uci")
        return {m[1]: m[2] for m in (re.match(r"option name (.+) type \w+ default (\S*)", x)
                                     for x in engine.wait("uciok")) if m}

    first = options("easy", "nopost")
    assert (first["AspirationWindow"], first["PlayFRC"], first["Ponder"]) == ("50", "true", "false")
    assert engine.go("go depth 3", "position startpos").info
    engine.set("AspirationWindow", 70)
    engine.set("QueenValue", 800)
    engine.send("xboard")
    assert engine.wait("feature") == ["feature done=0"]
    engine.send("sd 3", "go")
    assert engine.wait("move ")[0] == ""  # "nopost" still
    second = options()
    assert second == {**first, "QueenValue": "800"}
    engine.send("xboard", "post", "sd 3", "go")
    said = engine.wait("move ")
    assert any(re.fullmatch(r" 3\. +-?\d+ +\d+ +\d+ 1\. .+ ", x) for x in said), said


@pytest.mark.parametrize("lines", [
    [], ["analyze"], ["easy", "sd 5", "go"], ["sd 5", "go"], ["st 1", "go"],
    ["level 0 60 0", "time 100", "go"]])
def test_end_of_input(tmp_path, lines):
    output = talk("\n".join(["xboard", *lines]).encode() + b"\n", tmp_path)
    assert output.count("\nmove ") == (1 if "go" in lines else 0)


# --- Recorded values ---------------------------------------------------------------------------

def test_evaluations(engine):
    """Every position with empty tables; switching the protocol twice empties them."""
    records = json.loads((ROOT / "tests/data/positions.json").read_text())
    for record in sorted(records, key=lambda r: r["variant"]):
        name = ["normal", "fischerandom", "nocastle"][record["variant"]]
        engine.send("uci", "xboard", f"variant {name}", f"setboard {record['fen']}",
                    *(f"usermove {m}" for m in record["moves"]), "eval")
        said = engine.wait("Eval: ")
        assert said[-2:] == ["feature done=0", f"Eval: {record['evaluate']}"], record["id"]


KEYS = {"PlayFRC": "Variant", "RecaptureExtension": "RecapExtension", "EvaluationHash": "EHashMB",
        "OneReplyCheckExtension": "SingleRepCheckExtension", "PawnHash": "PHashMB",
        "Hash": "HashMB", "UseLazyEval": "LazyEval", "UseNullMove": "NullMove"}


def searches():
    for record in json.loads((ROOT / "tests/data/search.json").read_text()):
        depth = re.fullmatch(r"go depth (\d+)", record.get("go", ""))
        if depth and not (SLOW and record["stats"]["nodes"] > 50000):
            settings = ["CreateLog: true", *record.get("config", [])]
            for option in record.get("setoption", []):
                [(name, value)] = re.findall("^setoption name (.+) value (.+)$", option)
                settings.append(f"{KEYS.get(name, name)}: {'frc' if 'FRC' in name else value}")
            yield pytest.param(record, settings, depth[1], id=f"{record['id']}-{record['kind']}")


def uci_score(score, mark):
    """The score of a thinking line in the words of an "info" line."""
    if abs(score) > 32267:
        return f"mate {(32768 - score) // 2 if score > 0 else -((32767 + score) // 2)}"
    return f"cp {score}" + {"++": " lowerbound", "--": " upperbound", None: ""}[mark]


def unrounded(text):
    """The text with percentages cut to two places, since the third depends on rounding."""
    return re.sub(r"(\d\.\d\d)\d%", r"\1%", text)


def statistics(x):
    """The counters that the log shows after a search."""
    def table(name, key):
        stores, probes, hits = (x[key + what] for what in ("Stores", "Probes", "Hits"))
        return f"{name} Hash: (S/P/H): {stores}/{probes}/{hits} ({hits * 100 / (probes + 1):.3f}%)"

    def row(*names):
        return "/".join(str(x[n]) for n in names)

    quiet, first = x["qnodes"] * 100 / (x["nodes"] + 1), x["failHighsFirst"] * 100 / (
        x["failHighs"] + 1)
    lines = [f"Nodes: {x['nodes']} Qnodes: {x['qnodes']} ({quiet:.3f}%) "
             f"Ordering efficiency: {first:.3f}%",
             table("Transposition", "tt"), table("Pawn", "pawnHash"),
             table("Evaluation", "evalHash"), "EGTB: (P/H): 0/0 (0.000%)",
             "Null-Move: (TMin/TMax/CMin/CMax): " + row(
                 "nullTriesMin", "nullTriesMax", "nullCutsMin", "nullCutsMax"),
             "Extensions: (C/OR/RC/T/PP/EC): " + row(
                 "extCheck", "extOneReply", "extRecapture", "extMateThreat", "extPawnPush",
                 "extEndgameCapture"), "Evaluations: (F/L): " + row("evalFull", "evalLazy")]
    rest = [("Re-searchs", "reSearches"), ("IID", "iidSearches"), ("SEE cuts", "seeCuts"),
            ("Fut.Cuts", "futilityCuts"), ("Raz.Reduc", "razorReductions"),
            ("Delta Cuts", "deltaCuts")]
    return [f"## {x}\n" for x in lines + [f"{n}: {x[k]}" for n, k in rest if x[k]]]


@pytest.mark.parametrize("record, settings, depth", searches())
def test_search(start, referee, record, settings, depth):
    """Thinking lines, counters and move equal the recorded search, to the node."""
    engine = start(WinBoard, ini="\n".join(settings))
    start_fen, _, text = record["position"].removeprefix("position ").partition(" moves ")
    fen = START if start_fen == "startpos" else start_fen.removeprefix("fen ")
    moves = text.split()
    best = engine.move("easy", f"setboard {fen}", *(f"usermove {m}" for m in moves),
                       f"sd {depth}", "go")
    *info, blank, last = record["output"]
    expected = re.findall(r"^info depth (\d+) seldepth \d+ .* score (.+) nodes (\d+) .* pv (.+)$",
                          "\n".join(info), re.M)
    assert len(expected) == len(info)
    got = engine.thinking
    assert [(m["depth"].strip(), uci_score(int(m["score"]), m["mark"]), m["nodes"].strip())
            for m in got] == [m[:3] for m in expected]
    assert best == last.split()[1]
    assert [m for m in got if m["final"] == "." and "BF" not in m["extra"]] == []
    if got:
        game = Game(referee, "fen " + fen, fischer="Variant: frc" in settings)
        for move in moves:
            game.push(move)
        pv = [w for w in re.sub(r"<.*", "", got[-1]["pv"]).split() if not w.endswith(".")]
        for san, word in zip(pv, expected[-1][3].split()):
            assert read_san(san, game.legal, game.fen) == word
            game.push(word)
        assert len(pv) == len(expected[-1][3].split()) or "<" in got[-1]["pv"]
    assert unrounded("".join(statistics(record["stats"]))) in unrounded(log_of(engine))
