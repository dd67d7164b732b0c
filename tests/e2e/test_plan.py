"""The jobs that "brivok-tables plan" writes, run by make and ninja, and submitted to a simulated
Slurm. tests/soak/slurm_cluster.py runs the real one."""

import os
import shutil
import subprocess
from itertools import chain, combinations_with_replacement

import pytest

from chesskit import TABLES_TOOL, run_tool

PIECES = "qrbnp"
ODD = "it's $HOME, a folder"
THREE = ("kbk", "knk", "kpk", "kqk", "krk")


def ordered(men):
    return "k" + "".join(sorted(men, key=PIECES.index))


def names(men):
    """The tables of this many men by their sides in either order: kqk for (kq, k) and (k, kq)."""
    sides = [ordered(c) for n in range(men - 1) for c in combinations_with_replacement(PIECES, n)]
    ranks = {side: (len(side), [-PIECES.index(p) for p in side[1:]]) for side in sides}
    return {(a, b): "".join(sorted((a, b), key=ranks.__getitem__, reverse=True))
            for a in sides for b in sides if len(a + b) == men}


NAMES = {sides: name for men in (2, 3, 4, 5) for sides, name in names(men).items()}


def below(name):
    """The tables that one move leads to, by the rules of chess."""
    cut = name.index("k", 1)
    found = set()
    for own, other in ((name[1:cut], name[cut + 1:]), (name[cut + 1:], name[1:cut])):
        after_captures = {other.replace(man, "", 1) for man in other}
        promoted = {own.replace("p", man, 1) for man in "qrbn"} if "p" in own else set()
        for mine, theirs in chain(((own, t) for t in after_captures),
                                  ((m, t) for m in promoted for t in {other, *after_captures})):
            found.add(NAMES[ordered(mine), ordered(theirs)])
    return found - {"kk"}


STUBS = {
    "sbatch": """#!/usr/bin/env bash
number=$(($(cat "$STUB/number" 2>/dev/null || echo 100) + 1))
echo "$number" >"$STUB/number"
printf '%s\\0' "$@" >"$STUB/$number.arguments"
cat >"$STUB/$number.script"
echo "$number;cluster"
""",
    "squeue": '#!/usr/bin/env bash\ncat "$STUB/queue"\n',
    "scontrol": '#!/usr/bin/env bash\necho "$@" >>"$STUB/calls"\n',
}


class Slurm:
    """What the script of a plan calls, as programs that note how they are called."""

    def __init__(self, folder):
        self.folder = folder
        folder.mkdir()
        for name, text in STUBS.items():
            (folder / name).write_text(text)
            (folder / name).chmod(0o755)
        self.environment = {**os.environ, "STUB": str(folder),
                            "PATH": f"{folder}:{os.environ['PATH']}"}

    def submit(self, tables, *options, queue=""):
        """The options of each job that is submitted, by table in their order, and its number."""
        (self.folder / "queue").write_text(queue)
        done = run_tool(tables / "submit", *options, env=self.environment)
        jobs = {}
        for line in done.stdout.splitlines():
            table, _, number = line.partition(": job ")
            words = (self.folder / f"{number}.arguments").read_text().split("\0")[:-1]
            jobs[table] = dict(word.removeprefix("--").partition("=")[::2] for word in words)
            assert jobs[table]["job-name"] == f"brivok-{table}"
            jobs[table]["number"] = number
        return jobs

    def run(self, job, folder, restarts=0):
        """Runs a job; its code, and the calls of scontrol."""
        script = self.folder / f"{job['number']}.script"
        done = subprocess.run(
            ["bash", script], cwd=folder, capture_output=True, check=False,
            env={**self.environment, "SLURM_JOB_NAME": job["job-name"],
                 "SLURM_JOB_ID": job["number"], "SLURM_RESTART_COUNT": str(restarts)})
        calls = self.folder / "calls"
        return done.returncode, calls.read_text() if calls.exists() else ""


def plan(folder, runner, *targets, code=0):
    return run_tool(TABLES_TOOL, "plan", *targets, "--for", runner, "-o", folder, code=code)


def test_all_tables_for_slurm(tmp_path):
    """Each table has a job that waits for the jobs of those below it, and asks for enough."""
    tables, slurm = tmp_path / ODD, Slurm(tmp_path / "stub")
    plan(tables, "slurm", "all5")
    subprocess.run(["bash", "-n", tables / "submit"], check=True)
    jobs = slurm.submit(tables, "--partition=two words")
    assert set(jobs) == set(NAMES.values()) - {"kk"} and len(jobs) == 145
    numbers: dict[str, str] = {}
    for table, job in jobs.items():
        waits = job.get("dependency", "afterok").split(":")
        assert waits[0] == "afterok"
        assert set(waits[1:]) == {numbers[name] for name in below(table)}, table
        assert ("kill-on-invalid-dep" in job) == (len(waits) > 1)
        assert job["chdir"] == str(tables) and job["partition"] == "two words"
        assert "requeue" in job and job["cpus-per-task"] == "1"
        assert 128 < int(job["mem"].removesuffix("M")) < 16000 and 10 <= int(job["time"]) < 1000
        numbers[table] = job["number"]
    assert int(jobs["kppkp"]["mem"][:-1]) > 1000 > int(jobs["kqkr"]["mem"][:-1])

    # Some tables are finished, and the jobs of others have not ended.
    for table in ("kqk", "krk", "kqqkq"):
        (tables / f"{table}.json").touch()
    queue = [f"{jobs[table]['number']} brivok-{table} {tables}" for table in ("kqkr", "kqqkr")]
    queue.append(f"7 brivok-kbk {tmp_path}")
    again = slurm.submit(tables, queue="\n".join(queue))
    assert set(again) == set(jobs) - {"kqk", "krk", "kqqkq", "kqkr", "kqqkr"}
    assert set(again["kqrkr"]["dependency"].split(":")[1:]) == {
        jobs["kqkr"]["number"], again["krkr"]["number"], again["kqrk"]["number"]}


def test_jobs_of_slurm(tmp_path):
    """A job makes its table. One that fails goes back to the queue, but not for ever."""
    tables, slurm = tmp_path / ODD, Slurm(tmp_path / "stub")
    plan(tables, "slurm", "kqkr", "--compress")
    jobs = slurm.submit(tables)
    assert slurm.run(jobs["kqkr"], tables) == (1, f"requeue {jobs['kqkr']['number']}\n")
    assert slurm.run(jobs["kqkr"], tables, restarts=2)[1].count("requeue") == 1
    for table in ("kqk", "krk"):
        assert slurm.run(jobs[table], tables)[0] == 0
    assert set(slurm.submit(tables)) == {"kqkr"}
    assert slurm.run(jobs["kqkr"], tables)[0] == 0
    assert slurm.submit(tables) == {}
    (tables / "kqkr.nbw").touch()  # as if packing had not ended
    assert set(slurm.submit(tables)) == {"kqkr"}


@pytest.mark.parametrize("runner, more", [
    (("make", "-j2"), ()), (("ninja",), ()), (("make", "-j2"), ("--compress",)),
    (("ninja",), ("--compress",))])
def test_plans_run(runner, more, tmp_path):
    if not shutil.which(runner[0]):
        pytest.skip(f"no {runner[0]}")
    tables, program = tmp_path / ODD, tmp_path / "b'$i#n"
    program.symlink_to(TABLES_TOOL)

    def run():
        """The tables that the runner makes."""
        done = run_tool(*runner, "-C", tables)
        return sorted(line.split(":")[0] for line in done.stdout.splitlines() if ": made" in line)

    plan(tables, runner[0], "3men", "--program", program, *more)
    assert run() == sorted(THREE)
    run_tool(TABLES_TOOL, "make", "3men", "-o", tmp_path / "made", *more)
    made = {file.name: file.read_bytes() for file in (tmp_path / "made").glob("*.nb*")}
    assert made == {file.name: file.read_bytes() for file in tables.glob("*.nb*")}
    assert run() == []
    for file in tables.glob("krk.*"):
        file.unlink()
    assert run() == ["krk"]


def test_refusals(tmp_path):
    assert "no such table" in plan(tmp_path, "make", "krkq", code=1).stderr
    assert "--for" in plan(tmp_path, "cron", "kqk", code=1).stderr
    (tmp_path / "Makefile").write_text("all:\n")
    assert "is no plan" in plan(tmp_path, "make", "kqk", code=1).stderr
    assert [file.name for file in tmp_path.iterdir()] == ["Makefile"]
    (tmp_path / "Makefile").unlink()
    plan(tmp_path, "make", "kqk")
    plan(tmp_path, "make", "krk")
    assert "krk" in (tmp_path / "Makefile").read_text()
    odd = ("--program", "two\nlines")
    assert "one line" in plan(tmp_path, "make", "kqk", *odd, code=1).stderr
