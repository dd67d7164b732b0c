"""Making tables under adverse conditions: interruptions, damage, and too little of everything."""

import fcntl
import os
import random
import re
import resource
import signal
import socket
import subprocess
import time
from functools import partial

import pytest

from chesskit import SLOW, TABLES_TOOL, run_tool

TARGETS = ("3men",) if SLOW else ("3men", "krrk")
HERE = "".join(letter if letter.isalnum() else "-" for letter in socket.gethostname())


def make(*arguments, code=0, **more):
    """All that the tool prints."""
    done = run_tool(TABLES_TOOL, "make", *arguments, code=code, **more)
    return done.stdout + done.stderr


def tables_of(folder):
    return {file.name: file.read_bytes() for file in folder.iterdir() if file.suffix != ".json"}


@pytest.fixture(scope="module", params=[(), ("--compress",)], ids=["plain", "packed"])
def undisturbed(request, tmp_path_factory):
    """Options of a run, what it makes, and the seconds that it takes."""
    folder = tmp_path_factory.mktemp("undisturbed")
    start = time.monotonic()
    make(*TARGETS, *request.param, "-o", folder)
    return request.param, tables_of(folder), time.monotonic() - start


def start(*arguments):
    return subprocess.Popen([TABLES_TOOL, "make", *arguments], stdout=subprocess.DEVNULL,
                            start_new_session=True)


def test_killed_runs_go_on(undisturbed, tmp_path):
    """Wherever kill -9 strikes, and whatever file is gone, the same command ends with the same."""
    options, expected, seconds = undisturbed
    chance = random.Random(1)
    command = (*TARGETS, *options, "-o", tmp_path)
    for round_ in range(20):
        run = start(*command)
        time.sleep(chance.uniform(0, seconds / 2))
        # The workers of a run end with it.
        (os.kill if round_ % 2 else os.killpg)(run.pid, signal.SIGKILL)
        run.wait()
        if files := sorted(tmp_path.iterdir()):
            chance.choice(files).unlink()
    assert "recorded" not in make(*command)
    assert tables_of(tmp_path) == expected
    assert "made" not in make(*command)


def test_a_stopped_run_cleans_up(tmp_path):
    run = start("4men", "--compress", "-o", tmp_path)
    while not list(tmp_path.glob("k??k*.json")):
        time.sleep(0.01)
    run.terminate()
    assert run.wait(10) == 128 + signal.SIGTERM
    with pytest.raises(ProcessLookupError):
        os.killpg(run.pid, 0)
    assert not list(tmp_path.glob("*.part*"))


def test_abandoned_files_go_and_others_stay(tmp_path):
    dead, live = (tmp_path / f"kqk.nbw.part-{HERE}-{n}" for n in (0, 1))
    elsewhere, old = (tmp_path / f"kqk.nbb.emd.part-other-{n}" for n in (0, 1))
    foreign = tmp_path / f"notes.part-{HERE}-0"
    for file in (dead, live, elsewhere, old, foreign):
        file.touch()
    os.utime(old, (0, 0))
    with live.open() as held:
        fcntl.flock(held, fcntl.LOCK_EX)
        make("kqk", "-o", tmp_path)
    assert set(tmp_path.glob("*.part*")) == {live, elsewhere, foreign}


def test_a_full_disk_loses_nothing(tmp_path):
    """A limit to the size of files stands in for the disk: the larger tables do not fit."""
    limit = partial(resource.setrlimit, resource.RLIMIT_FSIZE, (30_000, 30_000))
    said = make("3men", "-o", tmp_path, code=1, preexec_fn=limit)
    assert any(re.fullmatch("brivok-tables: kpk: .*: File too large", line)
               for line in said.splitlines()), said
    made = tables_of(tmp_path)
    assert {"krk.nbw", "kqk.nbb"} <= set(made) and not any(".part" in name for name in made)
    again = make("3men", "-o", tmp_path)
    assert "krk: already there" in again and "kpk: made" in again


def test_damage_below_is_found_first(tmp_path):
    make("krk", "-o", tmp_path)
    file = tmp_path / "krk.nbw"
    right = file.read_bytes()
    wrong = bytearray(right)
    wrong[100] ^= 1
    file.write_bytes(wrong)
    said = make("krrk", "--only", "-o", tmp_path, code=1).splitlines()
    assert "krk.nbw" in said[-2] and said[-1] == "brivok-tables: krk: must be made again"
    assert not (tmp_path / "krrk.nbw").exists()
    (tmp_path / "krk.json").unlink()
    said = make("krrk", "--only", "-o", tmp_path, code=1)
    assert said == "brivok-tables: krrk: needs krk, which has no record: make it first\n"
    (tmp_path / "krk.nbb").unlink()
    said = make("krrk", "--only", "-o", tmp_path, code=1)
    assert said == "brivok-tables: krrk: needs krk, which is missing\n"
    (tmp_path / "krk.json").write_text("{")
    assert "krk: made" in make("krk", "--only", "-o", tmp_path) and file.read_bytes() == right
    (tmp_path / "krk.json").write_text("{")  # the sample of its entries is right
    assert "krk: already there" in make("krk", "-o", tmp_path)
    assert make("krk", "-o", tmp_path) == "krk: already there\n"


@pytest.mark.parametrize("arguments, reason", [
    (("krbkn", "--memory", "100"), "krbkn: needs "),
    (("kqk", "-o", "file/folder"), "file/folder: Not a directory"),
    (("kqk", "--memory", "0"), "not in range"),
])
def test_refusals(arguments, reason, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "file").touch()
    assert reason in make(*arguments, code=1)
    assert [file.name for file in tmp_path.iterdir()] == ["file"]
