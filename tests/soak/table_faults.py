#!/usr/bin/env python3
"""Makes endgame tables while it kills the program, damages the folder and fills the disk, and holds
what is made in the end against an undisturbed run.

    tests/soak/table_faults.py [--tables all4] [--kills 100] [--seed 1]
    tests/soak/table_faults.py --disk           # as root, who may mount a small file system

Each kill strikes the run, all its processes or one of its workers, at a random moment; before each,
files are lost, cut or changed now and then. With --disk the folder is a file system in memory that
is too small, and then one that something else fills during the run. Exit code 1 if the same command
does not end with the same files."""

import os
import random
import re
import signal
import subprocess
import sys
import tempfile
import time
from collections import Counter
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (TABLES_TOOL, ChessError, progress, run_script, run_tool,  # noqa: E402
                      script_parser)

MEGABYTE = 1 << 20


def make(folder: Path, arguments: list[str], code: int = 0) -> list[str]:
    """The lines that the tool prints."""
    done = run_tool(TABLES_TOOL, "make", *arguments, "-o", folder, code=code)
    return (done.stdout + done.stderr).splitlines()


def hold(folder: Path, expected: dict[str, bytes]) -> None:
    """All files but the records, which tell the times of each run, are to be the same."""
    found = {file.name: file.read_bytes() for file in folder.iterdir() if file.suffix != ".json"}
    wrong = {name for name in found.keys() | expected.keys()
             if found.get(name) != expected.get(name)}
    if wrong:
        raise ChessError(f"not as in an undisturbed run: {', '.join(sorted(wrong))}")


def workers(process: int) -> list[int]:
    try:
        return [int(word) for word in
                Path(f"/proc/{process}/task/{process}/children").read_text().split()]
    except OSError:
        return []


def strike(process: int, chance: random.Random) -> str:
    """Kills a run somewhere, and tells where."""
    children = workers(process)
    if children and chance.random() < 0.3:
        os.kill(chance.choice(children), signal.SIGKILL)
        return "a worker"
    if chance.random() < 0.5:
        os.killpg(process, signal.SIGKILL)
        return "all"
    os.kill(process, signal.SIGKILL)
    return "the run"


def damage(folder: Path, chance: random.Random) -> str:
    """Harms a file, and tells how."""
    files = sorted(file for file in folder.iterdir() if ".part" not in file.name)
    if not files:
        return "nothing"
    file = chance.choice(files)
    how = chance.choice(["nothing", "lost", "cut", "changed"])
    if how == "lost":
        file.unlink()
    elif how == "cut":
        os.truncate(file, file.stat().st_size // 2)
    elif how == "changed" and file.suffix != ".json":
        # Without its record a table is only sampled; one byte may then go unseen.
        if not file.with_name(file.name[:file.name.index(".")] + ".json").exists():
            return "nothing"
        content = bytearray(file.read_bytes())
        content[chance.randrange(len(content))] ^= 1 + chance.randrange(255)
        file.write_bytes(content)
    return how


def kill_often(folder: Path, arguments: list[str], kills: int, seconds: float,
               chance: random.Random) -> None:
    command = [str(TABLES_TOOL), "make", *arguments, "-o", str(folder)]
    told: Counter[str] = Counter()
    for number in range(kills):
        told["damage: " + damage(folder, chance)] += 1
        with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              start_new_session=True) as run:
            time.sleep(chance.uniform(0, seconds / 4))
            if run.poll() is None:
                told["killed: " + strike(run.pid, chance)] += 1
        progress(f"{number + 1}/{kills}")
    progress()
    print(", ".join(f"{what} {count}" for what, count in sorted(told.items())))


@contextmanager
def small_disk(megabytes: int) -> Iterator[Path]:
    with tempfile.TemporaryDirectory() as name:
        size = f"size={megabytes}m"
        subprocess.run(["mount", "-t", "tmpfs", "-o", size, "tmpfs", name], check=True)
        try:
            yield Path(name)
        finally:
            subprocess.run(["umount", name], check=True)


def fill_disks(arguments: list[str], expected: dict[str, bytes], need: int) -> None:
    """`need` is the forecast in megabytes."""
    with small_disk(need // 2) as folder:
        print(f"{need // 2} MB:", make(folder, arguments, code=1)[-1])
        if any(folder.iterdir()):
            raise ChessError("a refused run has left files")
    with small_disk(need) as folder:
        command = [str(TABLES_TOOL), "make", *arguments, "-o", str(folder)]
        with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                              text=True) as run:
            while len(list(folder.glob("*.json"))) < 6 and run.poll() is None:
                time.sleep(0.01)
            other = folder / "filler"
            with other.open("wb", buffering=0) as file:
                try:
                    while file.write(bytes(MEGABYTE // 64)):
                        pass
                except OSError:
                    pass
            _, said = run.communicate()
        print("filled meanwhile:", said.strip())
        if run.returncode != 1 or said.count("\n") != 1 or list(folder.glob("*.part*")):
            raise ChessError("a full disk ends with something else than one line and code 1")
        other.unlink()
        make(folder, arguments)
        hold(folder, expected)


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("--tables", default="all4", help="what to make (all4)")
    parser.add_argument("--kills", type=int, default=100)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--disk", action="store_true")
    options = parser.parse_args()
    for packing in ("", "--compress"):
        arguments = [options.tables, *packing.split()]
        with tempfile.TemporaryDirectory() as name:
            (undisturbed := Path(name) / "undisturbed").mkdir()
            (disturbed := Path(name) / "disturbed").mkdir()
            start = time.monotonic()
            forecast = make(undisturbed, arguments)[0]
            seconds = time.monotonic() - start
            expected = {file.name: file.read_bytes() for file in undisturbed.iterdir()
                        if file.suffix != ".json"}
            print(f"{' '.join(arguments)}: {len(expected)} files in {seconds:.0f} s", flush=True)
            if options.disk:
                needed = re.search(r"([\d.]+) MB of disk", forecast)
                if not needed:
                    raise ChessError(f"no megabytes of disk: {forecast}")
                fill_disks(arguments, expected, int(float(needed[1])) + 1)
                continue
            kill_often(disturbed, arguments, options.kills, seconds, random.Random(options.seed))
            make(disturbed, arguments)
            hold(disturbed, expected)
    print("the same files each time")
    return 0


if __name__ == "__main__":
    run_script(main)
