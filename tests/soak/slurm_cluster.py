#!/usr/bin/env python3
"""Makes all tables of up to four men with Slurm, on this machine alone. The script sets up a cluster
of one node with munge, slurmctld and slurmd of its own, submits a plan, disturbs it, and compares
the tables with those of "brivok-tables make":

  1. It cancels a job that runs, and kills the process of another. The killed one runs again by
     itself; those that depend on the cancelled one are dropped.
  2. It submits the plan once more, which makes only what is missing, and kills a process of that.

    tests/soak/slurm_cluster.py [--folder FOLDER] [--compress]

Needs the Debian packages slurm-wlm and munge, whose own services it neither uses nor touches: all
that it writes is in the folder. The tool is build/release/bin/brivok-tables, or BRIVOK_TABLES_TOOL
in the environment. Exit code 1 if something goes wrong; the logs then stay in the folder."""

import contextlib
import getpass
import hashlib
import os
import secrets
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
from collections.abc import Callable
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))

from chesskit import (TABLES_TOOL, ChessError, needed, run_script, run_tool,  # noqa: E402
                      script_parser)

PATIENCE = 200.0  # seconds that anything may take
TABLES = "all4"
CANCELLED, KILLED, KILLED_LATER = "kqkp", "krkp", "kpkp"  # the last depends on the first
CONFIGURATION = """\
ClusterName=brivok
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
SlurmctldPort={controller}
SlurmdPort={node}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket,cred_expire=5
CredType=cred/munge
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core_Memory
SchedulerType=sched/backfill
SchedulerParameters=sched_interval=1,bf_interval=1
SlurmdParameters=config_overrides
MpiDefault=none
ReturnToService=2
KillWait=5
NodeName={host} NodeAddr=127.0.0.1 CPUs={processors} RealMemory={megabytes} State=UNKNOWN
PartitionName=tables Nodes={host} Default=YES MaxTime=INFINITE State=UP
"""


def say(text: str) -> None:
    print(f"{time.strftime('%H:%M:%S')} {text}", flush=True)


def wait_until(what: str, holds: Callable[[], bool], pause: float = 0.2) -> None:
    end = time.monotonic() + PATIENCE
    while not holds():
        if time.monotonic() > end:
            raise ChessError(f"{what}: not within {PATIENCE:.0f} seconds")
        time.sleep(pause)


def free_ports(count: int) -> list[int]:
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


class Cluster:
    """One node and its controller, in a folder."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        self.daemons: list[subprocess.Popen[bytes]] = []
        for name in ("state", "spool"):
            (folder / name).mkdir(parents=True)
        key = folder / "munge.key"
        key.touch(mode=0o600)
        key.write_bytes(secrets.token_bytes(128))
        controller, node = free_ports(2)
        megabytes = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") >> 20
        (folder / "slurm.conf").write_text(CONFIGURATION.format(
            host=socket.gethostname(), user=getpass.getuser(), folder=folder,
            controller=controller, node=node, processors=os.cpu_count(), megabytes=megabytes))
        self.environment = {**os.environ, "SLURM_CONF": str(folder / "slurm.conf")}

    def start(self) -> None:
        self.run_daemon("munged", "--foreground", "--force",
                        *(f"--{name}-file={self.folder}/munge.{name}"
                          for name in ("key", "log", "pid", "seed")),
                        f"--socket={self.folder}/munge.socket")
        wait_until("munged", (self.folder / "munge.socket").exists)
        self.run_daemon("slurmctld", "-D")
        self.run_daemon("slurmd", "-D", "-N", socket.gethostname())
        wait_until("the node", self.is_idle)

    def run_daemon(self, name: str, *arguments: str) -> None:
        program = shutil.which(name, path="/usr/sbin:/usr/bin") or needed(name)
        with open(self.folder / f"{name}.out", "wb") as output:
            self.daemons.append(subprocess.Popen(
                [program, *arguments], env=self.environment, stdin=subprocess.DEVNULL,
                stdout=output, stderr=subprocess.STDOUT))

    def stop(self) -> None:
        """Ends the jobs, then the daemons, in the reverse order of their start."""
        if len(self.daemons) == 3:
            with contextlib.suppress(ChessError):  # if a daemon has ended before
                self.ask("scancel", "--me")
                wait_until("the end of the jobs", lambda: not self.jobs())
        for daemon in reversed(self.daemons):
            daemon.terminate()
            try:
                daemon.wait(30)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()

    def ask(self, *command: str) -> str:
        """What a command of Slurm prints."""
        for daemon in self.daemons:
            if daemon.poll() is not None:
                raise ChessError(f"{daemon.args!r} ended with code {daemon.returncode}")
        return run_tool(*command, env=self.environment).stdout.strip()

    def is_idle(self) -> bool:
        try:
            return self.ask("sinfo", "--noheader", "--format=%T") == "idle"
        except ChessError:  # it still starts
            return False

    def jobs(self) -> dict[str, str]:
        """Numbers of the jobs that have not ended, by table."""
        lines = self.ask("squeue", "--noheader", "--format=%j %i").splitlines()
        return dict(line.removeprefix("brivok-").split() for line in lines)

    def submit(self, tables: Path) -> dict[str, str]:
        """Runs the plan; the numbers of its jobs by table."""
        done = run_tool(tables / "submit", env=self.environment)
        return dict(line.split(": job ") for line in done.stdout.splitlines())

    def restarts(self, job: str) -> int:
        words = self.ask("scontrol", "show", "job", job).split()
        return int(next(word for word in words if word.startswith("Restarts="))[9:])


def processes_of(table: str, folder: Path) -> list[int]:
    """The processes that make a table in this folder, a parent before its child."""
    parents = {}
    for process in Path("/proc").glob("[0-9]*"):
        try:
            program, *words = (process / "cmdline").read_bytes().split(b"\0")
            if (program.endswith(b"brivok-tables") and table.encode() in words
                    and os.readlink(process / "cwd") == str(folder)):
                status = (process / "status").read_text()
                parents[int(process.name)] = int(status.partition("PPid:")[2].split()[0])
        except OSError:
            continue
    return sorted(parents, key=lambda number: parents[number] in parents)


def disturb(table: str, folder: Path, how: Callable[[list[int]], str]) -> None:
    """Calls `how` with the processes that make a table when they have come to the making."""
    log = folder / "logs" / f"brivok-{table}.log"

    def is_making() -> bool:
        return (log.exists() and "to make" in log.read_text()
                and len(processes_of(table, folder)) == 2)

    def watch() -> None:
        wait_until(f"the process of {table}", is_making, 0.01)
        say(f"{table}: {how(processes_of(table, folder))}")

    threading.Thread(target=watch, daemon=True).start()


def kill_first(processes: list[int]) -> str:
    os.kill(processes[0], signal.SIGKILL)
    return f"kill -9 {processes[0]}, its process"


def kill_last(processes: list[int]) -> str:
    os.kill(processes[-1], signal.SIGKILL)
    return f"kill -9 {processes[-1]}, the child of its process that works"


def finished(folder: Path) -> set[str]:
    return {file.stem for file in folder.glob("*.json")}


def check(holds: bool, what: str) -> None:
    say(f"{'right' if holds else 'WRONG'}: {what}")
    if not holds:
        raise ChessError(what)


def run_plan(cluster: Cluster, tables: Path) -> None:
    def cancel(_processes: list[int]) -> str:
        job = cluster.jobs()[CANCELLED]
        cluster.ask("scancel", job)
        return f"scancel {job}, its job"

    disturb(CANCELLED, tables, cancel)
    disturb(KILLED, tables, kill_first)
    jobs = cluster.submit(tables)
    say(f"submitted {len(jobs)} jobs")
    check(not cluster.submit(tables), "submitted again at once, nothing is added")
    wait_until("the end of the queue", lambda: not cluster.jobs())
    check(cluster.restarts(jobs[KILLED]) == 1, f"{KILLED} was run again by itself")
    missing = set(jobs) - finished(tables)
    check(missing == {CANCELLED, KILLED_LATER},
          f"{len(finished(tables))} tables are made; missing: {' '.join(sorted(missing))}")

    disturb(KILLED_LATER, tables, kill_last)
    again = cluster.submit(tables)
    check(set(again) == missing, f"submitted again, only these have jobs: {' '.join(again)}")
    wait_until("the end of the queue", lambda: not cluster.jobs())
    check(cluster.restarts(again[KILLED_LATER]) == 1, f"{KILLED_LATER} was run again by itself")
    check(finished(tables) == set(jobs), f"all {len(jobs)} tables are made")
    check(not cluster.submit(tables), "submitted again, nothing is left to do")


def sums(folder: Path) -> dict[str, str]:
    """SHA-256 of the files of tables."""
    return {file.name: hashlib.sha256(file.read_bytes()).hexdigest()
            for file in sorted(folder.glob("k*.nb*"))}


def end_in_order(_signal: int, _frame: object) -> None:
    raise KeyboardInterrupt


def main() -> int:
    signal.signal(signal.SIGTERM, end_in_order)
    parser = script_parser(__doc__)
    parser.add_argument("--folder", type=Path, help="a new one; by default temporary")
    parser.add_argument("--compress", action="store_true", help="pack the tables")
    options = parser.parse_args()
    more = ["--compress"] if options.compress else []
    folder = Path(options.folder or tempfile.mkdtemp(prefix="slurm")).resolve()
    tables, reference = folder / "shared folder", folder / "reference"
    for name in ("sbatch", "munge"):
        needed(name)
    if " " in str(folder):
        raise ChessError(f"{folder}: Slurm takes no spaces in its configuration")

    plan = run_tool(TABLES_TOOL, "plan", TABLES, "--for", "slurm", "-o", tables, *more)
    say(plan.stdout.strip())
    cluster = Cluster(folder / "cluster")
    try:
        cluster.start()
        say(cluster.ask("sinfo", "--version") + ", one node")
        run_plan(cluster, tables)
    finally:
        cluster.stop()
        say("stopped the cluster")

    run_tool(TABLES_TOOL, "make", TABLES, "-o", reference, *more)
    made = sums(tables)
    check(made == sums(reference), f"the {len(made)} files are those of brivok-tables make")
    shutil.rmtree(folder)
    return 0


run_script(main)
