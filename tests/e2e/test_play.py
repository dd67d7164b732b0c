"""What ./play offers a person: help at a terminal, a board, a game to watch."""

import codecs
import os
import pty
import re
import select
import signal
import subprocess
import sys
import termios
import time
from pathlib import Path

import pytest

from chesskit import BRIVOK, PATIENCE, ROOT, SLOW, Game, read_san

CONSOLE, DEMO = ROOT / "scripts/console", ROOT / "scripts/demo.py"
ENVIRONMENT = {**os.environ, "TERM": "xterm", "LC_ALL": "C.UTF-8"}


class Terminal:
    """A terminal of 24 lines in which a program runs, as if a person had started it."""

    def __init__(self, folder, *command):
        self.pid, self.screen = pty.fork()
        if self.pid == 0:
            termios.tcsetwinsize(0, (24, 80))
            os.chdir(folder)
            os.execve(command[0], [str(word) for word in command], ENVIRONMENT)
        self.decoder = codecs.getincrementaldecoder("utf-8")()
        self.text = ""

    def read(self):
        """Takes what is written next; false when the program has closed the terminal."""
        assert select.select([self.screen], [], [], PATIENCE)[0], self.text
        try:
            data = os.read(self.screen, 65536)
        except OSError:
            data = b""
        self.text += self.decoder.decode(data).replace("\r", "")
        return data != b""

    def wait(self, *texts):
        """Waits for these texts, one behind the other. Returns what comes before the last."""
        end, before = time.monotonic() + PATIENCE, ""
        for text in texts:
            while text not in self.text:
                assert time.monotonic() < end and self.read(), (text, self.text)
            before, self.text = self.text.split(text, 1)
        return before

    def type(self, text):
        os.write(self.screen, text.encode())

    def end(self):
        """Waits for the end of the program: its exit code, or a signal below 0."""
        while self.read():
            pass
        os.close(self.screen)
        return os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])


@pytest.fixture
def console(tmp_path):
    terminal = Terminal(tmp_path, CONSOLE, BRIVOK)
    terminal.wait("./play demo")
    return terminal


def test_help_at_a_terminal(console):
    console.type("help\n")
    console.wait("help\n")
    console.wait("Begin with one of these:\n")
    page = (ROOT / "docs/protocols.md").read_text()
    for section, end in (("The start", "In UCI:"), ("UCI", "In WinBoard:"),
                         ("WinBoard", "docs/protocols.md")):
        words = re.findall(r"^  (\S+)", console.wait(end), re.M)
        known = page.split(f"\n## {section}\n", 1)[1].split("\n## ", 1)[0]
        assert len(words) > 4 and [w for w in words if not re.search(rf"`{re.escape(w)}\b", known)
                                   and f"`{w}`" not in known] == []
    console.type("\n help \n")
    console.wait("docs/protocols.md")
    console.type("ucx\x7fi\nisready\n")  # a slip of the finger, mended
    console.wait("uciok", "readyok")
    console.type("help\nposition startpos\ngo infinite\n")
    console.wait("info depth 3")
    assert "docs/protocols.md" not in console.text
    console.type("stop\n")
    console.wait("bestmove")
    console.type("quit\n")
    assert console.end() == 0


@pytest.mark.parametrize("lines, key, code", [
    ("", "\x04", 0), ("", "\x03", -signal.SIGINT),
    ("xboard\nping 1\n", "\x04", 0), ("xboard\nping 1\n", "\x03", -signal.SIGINT)])
def test_keys_that_end(console, lines, key, code):
    console.type(lines)
    if lines:
        console.wait("pong 1")
    console.type(key)
    assert console.end() == code


def test_a_pipe_is_the_engines(tmp_path):
    lines = b"help\nuci\nisready\nhelp\nquit\n"

    def talk(*command):
        return subprocess.run(command, input=lines, capture_output=True, timeout=PATIENCE,
                              cwd=tmp_path, check=True)

    said = talk(CONSOLE, BRIVOK)
    assert said.stdout == talk(BRIVOK).stdout and said.stdout.count(b"readyok") == 1
    assert said.stderr == b""


def test_a_board_needs_a_display():
    environment = {name: value for name, value in os.environ.items()
                   if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
    for arguments, code, told in ((["board"], 1, r"play: .*display.*\n"),
                                  (["board", "-size", "30"], 1, r"play: .*display.*\n"),
                                  (["bord"], 2, r"Usage: (.+\n)+"), (["", ""], 2, r"Usage: (.+\n)+")):
        done = subprocess.run([ROOT / "play", *arguments], capture_output=True, text=True,
                              timeout=PATIENCE, env=environment)
        assert done.returncode == code and done.stdout == "", arguments
        assert re.fullmatch(told, done.stderr), arguments


@pytest.mark.skipif(SLOW, reason="a whole game")
def test_demo_in_lines(tmp_path, referee):
    (tmp_path / "brivok.ini").write_text((ROOT / "data/brivok.ini").read_text())
    done = subprocess.run([sys.executable, DEMO, BRIVOK, "--pace", "0"], capture_output=True,
                          text=True, cwd=tmp_path, timeout=PATIENCE * 4)
    assert done.returncode == 0 and done.stderr == "" and "\033" not in done.stdout
    moves, again, result = done.stdout.split("\n\n")
    sans = re.findall(r"^\d+\.(?:\.\.)? (\S+)", moves, re.M)
    assert sans == re.sub(r"\d+\.", " ", again).split()

    game = Game(referee, fifty=100)
    for san in sans:
        assert game.end is None
        game.push(read_san(san, game.legal, game.fen))
        assert san.endswith("#" if game.end == "mate" else "+") == game.check
    reason = {"mate": "wins by checkmate", "stalemate": "stalemate", "repetition": "repetition",
              "fifty": "fifty", "insufficient": "too few"}[game.end or ""]
    assert result.startswith(game.result) and reason in result


def test_demo_at_a_terminal(tmp_path):
    demo = Terminal(tmp_path, sys.executable, DEMO, BRIVOK, "--pace", "0.1", "--plies", "6")
    demo.wait("♜", "♟", "♙", "♖", "White thinks: depth", "Last move: 1. ")
    demo.wait("Black thinks: depth", "Last move: 1... ", "Last move: 3... ")
    demo.wait("\n1. ", " 3. ", "\n\nStopped after 6 half-moves.\n")
    assert demo.end() == 0

    demo = Terminal(tmp_path, sys.executable, DEMO, BRIVOK, "--pace", "60", "--ascii")
    demo.wait(" r ", "White thinks: depth ")
    [engine] = Path(f"/proc/{demo.pid}/task/{demo.pid}/children").read_text().split()
    demo.type("\x03")
    demo.wait("Stopped.\n")
    assert demo.end() == 130 and "Traceback" not in demo.text and "♖" not in demo.text
    assert not Path(f"/proc/{engine}").exists()
