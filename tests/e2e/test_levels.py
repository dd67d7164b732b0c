"""Programs for further levels of the processor, which brivok and brivok-bench continue as."""

import json
import os
import shutil
import subprocess
from pathlib import Path

import pytest

from chesskit import BENCH_TOOL, BRIVOK, PATIENCE, ROOT, run_tool

PLAIN, HIGH = "x86-64", "x86-64-v3"


def has_high():
    flags = set(Path("/proc/cpuinfo").read_text().split())
    return {"avx2", "bmi2", "fma", "movbe"} <= flags


pytestmark = pytest.mark.skipif(
    not Path(f"{BRIVOK}-{HIGH}").exists() or not has_high(),
    reason="the build has one level, or the processor has")


def level(**forced):
    return {**{k: v for k, v in os.environ.items() if k != "BRIVOK_CPU"}, **forced}


def running(tmp_path, command, executable=None, **forced):
    """Starts an engine: its arguments, the file that it has become, its answer to "uci" and
    standard error."""
    process = subprocess.Popen(command, executable=executable, cwd=tmp_path, env=level(**forced),
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, text=True)
    assert process.stdin and process.stdout
    process.stdin.write("uci\n")
    process.stdin.flush()
    said = ""
    for line in process.stdout:
        said += line
        if line == "uciok\n":
            break
    about = Path(f"/proc/{process.pid}")
    words = (about / "cmdline").read_text().split("\0")[:-1]
    file = os.readlink(about / "exe")
    _, errors = process.communicate("quit\n", PATIENCE)
    assert process.returncode == 0 and said.endswith("uciok\n")
    return words, file, said, errors


def test_same_nodes():
    """Each level tells its name and searches the same trees."""
    measured = {
        asked: json.loads(run_tool(BENCH_TOOL, "signature", "--depth", 4, "--json",
                                   env=level(BRIVOK_CPU=asked)).stdout)
        for asked in (PLAIN, HIGH, "")}
    assert [result["build"].split(", ")[1] for result in measured.values()] == [PLAIN, HIGH, HIGH]
    nodes = [[(p["fen"], p["nodes"]) for p in result["signature"]["positions"]]
             for result in measured.values()]
    assert nodes[0] == nodes[1] == nodes[2]


def test_engine_runs_at_the_level_asked_for(tmp_path):
    plain = running(tmp_path, [BRIVOK], BRIVOK_CPU=PLAIN)
    assert plain[1] == BRIVOK and plain[3] == ""
    high = [BRIVOK], f"{BRIVOK}-{HIGH}", plain[2], ""
    assert running(tmp_path, [BRIVOK]) == high
    for forced in "", HIGH:
        assert running(tmp_path, [BRIVOK], BRIVOK_CPU=forced) == high
    _, file, said, errors = running(tmp_path, [BRIVOK], BRIVOK_CPU="x86-64-v9")
    assert (file, said) == (BRIVOK, plain[2])
    assert errors == "BRIVOK_CPU: the level x86-64-v9 cannot be had; this is x86-64\n"


def test_other_names(tmp_path):
    """Through a link, and with any words as arguments, which stay."""
    link = tmp_path / "engine"
    link.symlink_to(BRIVOK)
    words, file, _, errors = running(tmp_path, ["my engine", "--fast", ""], executable=link)
    assert (words, file, errors) == (["my engine", "--fast", ""], f"{BRIVOK}-{HIGH}", "")


def test_alone(tmp_path):
    """Without the other file the engine goes on itself."""
    alone = shutil.copy(BRIVOK, tmp_path)
    assert running(tmp_path, ["./brivok"])[1::2] == (alone, "")
    assert running(tmp_path, ["./brivok"], BRIVOK_CPU=HIGH)[1::2] == (
        alone, f"BRIVOK_CPU: the level {HIGH} cannot be had; this is {PLAIN}\n")
    (tmp_path / f"brivok-{HIGH}").write_text("no program")
    (tmp_path / f"brivok-{HIGH}").chmod(0o755)
    assert running(tmp_path, ["./brivok"])[1::2] == (alone, "")


def test_compare():
    build = Path(BENCH_TOOL).parents[1]
    compare = [ROOT / "bench/compare", "--rounds", 1, "--json", "--run", "perft --depth 2"]
    compared = json.loads(run_tool(*compare, f"{build}:{PLAIN}", f"{build}:{HIGH}").stdout)
    assert [compared[side]["build"].split(", ")[1] for side in "ab"] == [PLAIN, HIGH]
    assert "cannot run" in run_tool(*compare, build, f"{build}:x86-64-v9", code=1).stderr
