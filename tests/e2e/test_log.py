"""The log, and what happens when it cannot be written."""

import re
import resource
import time

import pytest

from chesskit import BRIVOK, PATIENCE, SLOW, WinBoard, run_tool

SETTINGS = "CreateLog: true\nOpeningsBook: false\n"
STARTED = """## Allocated 65536 hash entries = 1048576 bytes
## Allocated 65536 ehash entries = 1048576 bytes
## Allocated 8192 phash entries = 589824 bytes
## Checking for endgame tablebases in 
## The Endgames Tablebases were don't found
## WB support started
## Conected with pipe
"""
HEAD = re.compile(r"(\+-{27}\n)\+ Brivok 4\.0\.3 LogFile\n\+ Info: Beta\n\+ (.{24})\n\1\n")


@pytest.fixture
def xboard(start):
    """Starts an engine under WinBoard with more settings. Returns it and what it has printed."""
    def make(settings=""):
        engine = start(WinBoard, ini=SETTINGS + settings)
        return engine, engine.greeting + engine.ask()
    return make


def received(line, protocol="WB", answer=""):
    return f"{line}\n## {protocol} Received: {line}\n\n{answer}"


def session(*exchanges):
    """The log, without its head, of a WinBoard session that the fixture above has begun."""
    return "".join((STARTED, received("ping 1", answer="pong 1\n"), *exchanges,
                    received("quit"), "## WB support closed\n"))


def body(path):
    """The text of a numbered log without its head."""
    text = path.read_text()
    head = HEAD.match(text)
    assert head
    stamp = time.mktime(time.strptime(head[2], "%a %b %d %H:%M:%S %Y"))
    assert time.time() - 3 * PATIENCE < stamp <= time.time()
    return text[head.end():]


def names(folder):
    return sorted(path.name for path in folder.iterdir())


def test_nothing_unless_asked_for(xboard, tmp_path):
    engine, said = xboard("CreateLog: false\n")
    engine.finish()
    assert said == ["feature done=0"] and names(tmp_path) == ["brivok.ini"]


def test_numbered_logs(xboard, tmp_path):
    logs = tmp_path / "logs"
    for number in range(2):
        engine, said = xboard()
        assert said == ["feature done=0"]
        engine.send("%s%n %d", "")
        engine.raw(b"time 1\r\n")
        engine.finish()
        assert names(logs) == ["log00000.txt", "log00001.txt"][:number + 1]
    error = "Error (Unknown command): "
    assert body(logs / "log00000.txt") == body(logs / "log00001.txt") == session(
        received("%s%n %d", answer=f"{error}%s%n %d\n\n"), received("", answer=f"{error}\n\n"),
        received("time 1"))
    (logs / "log00000.txt").unlink()
    xboard()[0].finish()
    assert body(logs / "log00000.txt") == session()


def test_single_log(xboard, tmp_path):
    for _ in range(2):
        xboard("LogInSingleFile: true\n")[0].finish()
    assert (tmp_path / "brivoklog.txt").read_text() == session() * 2
    assert names(tmp_path) == ["brivok.ini", "brivoklog.txt"]


@pytest.mark.parametrize("folder", ["one/Two/", "one/Two/run-", "run-", "{}/one/",
                                    "x" * 150 + "/" + "y" * 150 + "/"], ids=range(5))
def test_folder_of_the_logs(xboard, tmp_path, folder):
    folder = folder.format(tmp_path)
    xboard(f"LogFolder: {folder}\n")[0].finish()
    assert body(tmp_path / f"{folder}log00000.txt") == session()


@pytest.mark.parametrize("settings, words", [
    ("LogFolder: brivok.ini/logs/", ["Error creating directory!", "I can't create a log file!"]),
    ("LogFolder: brivok.ini/log", ["I can't create a log file!"]),
    ("LogInSingleFile: true", ["I couldn't open file brivoklog.txt"])])
def test_without_a_log_all_else_goes_on(xboard, tmp_path, settings, words):
    (tmp_path / "brivoklog.txt").mkdir()
    engine, said = xboard(settings)
    assert said == ["feature done=0", *words]
    engine.send("easy", "sd 2", "usermove e2e4")
    engine.wait("move ")
    engine.send("uci")
    assert "option name CreateLog type check default false" in engine.wait("uciok")
    engine.finish()
    assert names(tmp_path) == ["brivok.ini", "brivoklog.txt"]


def test_option(start, tmp_path):
    engine = start()
    for value in ("false", "true", "true", "false", "false", "true"):
        engine.set("CreateLog", value)
    assert engine.ready() == []
    engine.send("xboard")  # continues the open log
    engine.wait("feature done=0")
    engine.finish()
    assert names(tmp_path / "logs") == ["log00000.txt", "log00001.txt"]
    set_to = "setoption name CreateLog value {}".format
    assert body(tmp_path / "logs/log00000.txt") == "".join(
        received(set_to(value), "UCI") for value in ("true", "false"))
    assert body(tmp_path / "logs/log00001.txt") == "".join((
        received("isready", "UCI", "readyok\n"), received("xboard", "UCI"),
        "## UCI support closed\nfeature done=0\n", STARTED, received("quit"),
        "## WB support closed\n"))


def test_notes_of_a_game(xboard, tmp_path):
    engine, _ = xboard("ResignValue: 30000\n")  # every score counts as hopeless
    engine.send("st 1", "otim 30000", "go")
    reply = engine.wait("Hint: ")[-1][6:]
    if reply[0] == "N":
        reply = {"Na6": "b8a6", "Nc6": "b8c6", "Nf6": "g8f6", "Nh6": "g8h6"}[reply]
    else:
        reply = f"{reply[0]}7{reply}"
    engine.send("usermove " + reply)
    engine.wait("move ")
    engine.wait("Hint: ")
    engine.ask("usermove a1a1")
    engine.ask("analyze", "exit", "force")
    engine.send("new", "otim 30000", "easy", "sd 6", "white", "go")
    engine.wait("move ")
    engine.finish()
    log = body(tmp_path / "logs/log00000.txt")
    at = 0
    for note in (f"Starting pondering -> Hint: {reply}", "Search mode switched to normal",
                 r"Left time: \d+ Thinking time: 100", r"Starting pondering -> Hint: \w+",
                 "strMovDuranteBusqueda: a1a1", r"Illegal move \(ponder\): a1a1",
                 "Starting analysis", r"Increased resign counter \(-?\d+\)", "WB support closed"):
        found = re.compile(f"^## {note}\n", re.M).search(log, at)
        assert found, (note, log[at:])
        at = found.end()


@pytest.mark.skipif(SLOW, reason="a sanitizer needs its address space")
@pytest.mark.parametrize("key, table", [
    ("HashMB", "main"), ("EHashMB", "evaluation"), ("PHashMB", "pawn")])
def test_refused_memory_ends_the_engine(tmp_path, key, table):
    """Refused by the system, or more than a table can have."""
    limit = 1 << 29
    for megabytes in 2000, 4000000:
        (tmp_path / "brivok.ini").write_text(f"{SETTINGS}LogInSingleFile: true\n"
                                             f"{key}: {megabytes}\n")
        done = run_tool(BRIVOK, code=1, cwd=tmp_path, input="xboard\n",
                        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
        assert (done.stdout, done.stderr) == ("feature done=0\n", "")
        notes = (tmp_path / "brivoklog.txt").read_text().splitlines()
        assert notes[-1] == f"## Problem creating {table} hash table!"
