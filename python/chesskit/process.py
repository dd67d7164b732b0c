"""A program at the other end of a pipe."""

import math
import queue
import subprocess
import tempfile
import threading
import time
from collections.abc import Sequence
from pathlib import Path
from typing import NamedTuple, NoReturn

from chesskit.errors import ChessError
from chesskit.programs import SLOW

Command = Sequence[str | Path]
Folder = str | Path | None  # that a program runs in; None is the current one
PATIENCE = 120 if SLOW else 30  # seconds until an engine counts as hanging


class Usage(NamedTuple):
    """Milliseconds of all threads of a process so far; not a number if it is gone."""
    running: float
    waiting: float  # for a processor, ready to run


def usage(process: int | str = "self") -> Usage:
    """Of the process with this number, or of this program."""
    try:
        told = [task.read_text().split()
                for task in Path(f"/proc/{process}/task").glob("*/schedstat")]
        return Usage(*(sum(int(words[n]) for words in told) / 1e6 for n in (0, 1)))
    except (OSError, IndexError):  # the process, or one of its threads, is gone
        return Usage(math.nan, math.nan)


class EngineError(ChessError):
    """An engine has crashed, hangs, or says what it must not say."""

    def __init__(self, engine: "Process", text: str) -> None:
        super().__init__(text)
        self.engine = engine


class Process:
    """A running program. Output lines keep the time of their arrival; all times are seconds."""
    recorded = False  # `transcript` keeps what is said on both sides

    def __init__(self, command: Command, folder: Folder = None) -> None:
        self.errors = tempfile.TemporaryFile()
        try:
            self.p = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                      stderr=self.errors, cwd=folder)
        except OSError as error:
            raise ChessError(f"{command[0]} does not start: {error.strerror}") from None
        self.lines: queue.Queue[tuple[float, str | None]] = queue.Queue()
        self.stamp = 0.0  # arrival of the last line taken
        self.last_sent = b""
        self.transcript: list[tuple[float, str, str]] = []  # when; "<" is said to the program
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self) -> None:
        assert self.p.stdout
        for line in self.p.stdout:
            text = line.decode("latin-1").rstrip("\n")
            self.lines.put((time.monotonic(), text))
            self._record(">", text)
        self.lines.put((time.monotonic(), None))

    def _record(self, mark: str, text: str) -> None:
        if self.recorded:
            self.transcript.append((time.monotonic(), mark, text))

    def raw(self, data: bytes) -> None:
        """Sends bytes as they are."""
        assert self.p.stdin
        self.last_sent = data[-200:]
        self._record("<", data.decode("latin-1").rstrip("\n"))
        try:
            self.p.stdin.write(data)
            self.p.stdin.flush()
        except BrokenPipeError:
            self.fail("is gone")

    def send(self, *lines: str) -> None:
        self.raw("".join(line + "\n" for line in lines).encode("latin-1"))

    def fail(self, what: str) -> NoReturn:
        """Ends the program and raises an EngineError."""
        self.kill()
        raise EngineError(self, f"engine {what} (code {self.p.returncode}), last sent "
                          f"{self.last_sent!r}, stderr {self.stderr()[-3000:]!r}")

    def require(self, fine: object, what: str) -> None:
        """Raises an EngineError unless `fine` is true; the program runs on."""
        if not fine:
            raise EngineError(self, f"engine {what}")

    def stderr(self) -> str:
        """All that it has written to its standard error so far."""
        self.errors.seek(0)
        return self.errors.read().decode("latin-1")

    def wait(self, start: str | tuple[str, ...], timeout: float | None = PATIENCE) -> list[str]:
        """The lines up to and with the first one that begins with `start`, or with one of several.
        Fails when it does not come in time; without a timeout it may come at any time."""
        taken: list[str] = []
        end = None if timeout is None else time.monotonic() + timeout
        while True:
            try:
                self.stamp, line = self.lines.get(
                    timeout=None if end is None else max(0.0, end - time.monotonic()))
            except queue.Empty:
                self.fail(f"gave no '{start}' but {taken[-5:]}")
            if line is None:
                self.fail(f"ended without '{start}' but {taken[-5:]}")
            taken.append(line)
            if line.startswith(start):
                return taken

    def waiting(self, seconds: float = 0.0) -> list[str]:
        """What has arrived and has not been taken, after a pause."""
        time.sleep(seconds)
        return [line for _, line in list(self.lines.queue) if line is not None]

    def waited(self) -> float:
        """Milliseconds that its threads were ready to run but waited for a processor."""
        return usage(self.p.pid).waiting

    def kill(self) -> None:
        self.p.kill()
        self.p.wait()

    def quit(self, timeout: float = 5) -> bool:
        """Has the program quit, by force if it does not. Whether it went as it was told to, without
        a word on its standard error."""
        try:
            self.send("quit")
            return self.p.wait(timeout) == 0 and not self.stderr()
        except (EngineError, subprocess.TimeoutExpired):
            self.kill()
            return False
