"""The command line of the table generator: making, verifying and describing tables."""

import hashlib
import json
import os
import random
import re
import subprocess
from pathlib import Path

import pytest

from chesskit import SLOW, TABLES_TOOL, run_tool

FOLDER = Path(os.environ.get("BRIVOK_TABLES", "."))
THREE = ("kpk", "knk", "kbk", "krk", "kqk")
MORE = () if SLOW else ("krrk",)
QUEEN = "8/8/8/8/8/2k5/8/K6Q w - - 0 1"
LONGEST = {  # moves to the longest mate, with the first and with the second side to move
    "kqk": (10, 0), "krk": (16, 0), "kpk": (28, 0), "kbk": (0, 0), "knk": (0, 0), "krrk": (7, 0),
}
LONGEST_OF_FOUR = {
    "kbnk": (33, 0), "kbbk": (19, 0), "kqkq": (13, 13), "krkr": (19, 19), "kqkr": (35, 19),
    "krkb": (29, 0), "krkn": (40, 1), "kqkb": (17, 0), "kqkn": (21, 0), "kqkp": (28, 29),
    "krkp": (26, 43), "kpkp": (33, 33),
}
PASSANT = {  # entries of kpkp by side and index: captures in passing, then with the right gone
    (0, 3856553): 127 - 9, (0, 3859781): 127 - 10, (1, 3839818): 127 - 12, (1, 3850788): 127 - 9,
    (1, 3860152): 127 - 7, (0, 3862490): 0, (1, 3838430): 0, (0, 3843820): 0,
    (0, 2832714): 127 - 10, (1, 2512731): 127 - 11,
}


def tool(*arguments, code=0):
    """All that the tool prints."""
    done = run_tool(TABLES_TOOL, *arguments, code=code)
    return done.stdout + done.stderr


def info(file):
    return dict(re.split(r": +", line, maxsplit=1) for line in tool("info", file).splitlines())


def longest_mate(file):
    found = re.match(r"(\d+) moves, ", info(file)["Longest mate"])
    return int(found[1]) if found else 0


def check_longest(folder, longest):
    for name, sides in longest.items():
        for suffix, moves in zip(("nbw", "nbb"), sides):
            if (folder / f"{name}.{suffix}").exists():
                assert longest_mate(folder / f"{name}.{suffix}") == moves, name


@pytest.fixture(scope="module")
def small(tmp_path_factory):
    folder = tmp_path_factory.mktemp("small tables")
    made = tool("make", "3men", *MORE, "-o", folder)
    forecast, *outcomes = made.splitlines()
    assert re.fullmatch(rf"Tables: {len(outcomes)} to make, about \d+ s, [\d.]+ [kM]B of memory, "
                        r"[\d.]+ [kM]B of disk", forecast)
    assert sorted(outcomes) == sorted(f"{n}: made" for n in (*THREE, *MORE))
    return folder


def test_small_tables(small):
    check_longest(small, LONGEST)
    assert (small / "kqk.nbw").stat().st_size == 25629
    assert sorted(f.name for f in small.iterdir()) == sorted(
        f"{n}.{s}" for n in (*THREE, *MORE) for s in ("nbw", "nbb", "json"))
    counts = info(small / "krk.nbb")
    parts = [int(counts[k].split()[0]) for k in ("Wins", "Draws", "Losses", "Broken")]
    assert parts[0] == 0 and sum(parts) == int(counts["Entries"]) == 28644
    assert tool("verify", small).splitlines() == [
        f"{n}: correct" for n in (*THREE, *MORE)]


def test_damage_is_found_and_mended(small):
    """A changed entry, and short and long files."""
    file = small / "krk.nbb"
    right = file.read_bytes()
    damaged = bytearray(right)
    place = next(i for i, byte in enumerate(right) if byte == 256 - 126 + 7)  # mated in 7
    damaged[place] += 1
    file.write_bytes(damaged)
    unlike = f"{file}: is damaged: it does not have the recorded SHA-256 sum"
    for arguments in (("info", file), ("pack", file), ("verify", small)):
        assert unlike in tool(*arguments, code=1)
    assert not (small / "krk.nbb.emd").exists()
    (small / "krk.json").unlink()
    finding = tool("verify", small, code=1)
    fault = f"krk: krk.nbb entry {place} says mated in 8 instead of mated in 7"
    assert re.search(rf"^{fault}: \S+ b - - 0 1$", finding, re.M), finding
    file.write_bytes(bytes(random.Random(1).choices(right, k=len(right))))
    tool("verify", small, "--sample", "200", code=1)
    again = tool("make", "krk", "-o", small)
    assert again.splitlines()[-1] == "krk: made" and file.read_bytes() == right
    file.write_bytes(right[:-1])
    assert "28643 entries instead of 28644" in tool("verify", small, code=1)
    assert "krk: made" in tool("make", "kqk", "krk", "-o", small)
    assert file.read_bytes() == right
    os.truncate(file, 1 << 40)  # too large for any memory
    assert "more than 28644 bytes" in tool("verify", small, code=1)
    assert "krk: made" in tool("make", "krk", "-o", small) and file.read_bytes() == right
    assert tool("make", "3men", "-o", small).count("already there") == 5
    tool("verify", small, "--sample", "200")


def test_solve(small, tmp_path):
    """Missing: one side of a table; a table that a move leads to."""
    said = tool("solve", QUEEN, "-o", small)
    assert said.startswith("White mates in 6 moves\n\n  Qd5   mate in 6\n  Qe4   mate in 6\n")
    assert said.endswith("\n\n1. Qd5 Kc2 2. Ka2 Kc3 3. Ka3 Kc2 4. Qd4 Kc1 5. Kb3 Kb1 6. Qb2#\n")
    (tmp_path / "kqk.nbb").symlink_to(small / "kqk.nbb")
    assert tool("solve", QUEEN, "-o", tmp_path) == said
    if MORE:
        for side in ("nbw", "nbb"):
            (tmp_path / f"krrk.{side}").symlink_to(small / f"krrk.{side}")
        assert tool("solve", "8/8/8/8/8/k7/1R6/3K3R b - - 0 1", "-o", tmp_path) == (
            "White mates in 5 moves\n\n  Ka4   mated in 2\n  Kxb2  krk.nbw is missing\n\n"
            "The line ends here: krk.nbw is missing\n")
    lines = f"{QUEEN}\n{QUEEN.replace('w', 'b')}\n8/8/8/8/8/2k5/8/K7 w - -\nkk\n"
    answers = run_tool(TABLES_TOOL, "solve", "-", "-o", small, input=lines).stdout.splitlines()
    assert answers[:3] == ["mate in 6", "mated in 8", "draw"] and "rank 8" in answers[3]
    moves = tool("solve", "4k3/8/8/8/8/8/8/R3K3 w Q - 0 1", "-o", small).splitlines()
    assert "castling" in moves[1] and not any("O-O" in line for line in moves)


def test_packed_tables(small, tmp_path):
    """Packed tables work like plain ones, count as present, and unpack to the same bytes."""
    assert "krk: made" in tool("make", "krk", "kqk", "--compress", "-o", tmp_path)
    names = [f"{n}.{s}.emd" for n in ("kqk", "krk") for s in ("nbb", "nbw")]
    assert sorted(f.name for f in tmp_path.iterdir()) == sorted((*names, "kqk.json", "krk.json"))
    assert tool("verify", tmp_path) == "krk: correct\nkqk: correct\n"
    assert tool("verify", tmp_path, "kqk") == "kqk: correct\n"
    of_packed = info(tmp_path / "krk.nbw.emd")
    assert of_packed.pop("Blocks") == "their checksums agree"
    assert of_packed == info(small / "krk.nbw") and "as recorded" in of_packed["SHA-256"]
    record = json.loads((tmp_path / "krk.json").read_text())["files"][0]
    packed = (tmp_path / "krk.nbw.emd").read_bytes()
    assert record["packed"] == {"bytes": len(packed), "sha256": hashlib.sha256(packed).hexdigest()}
    assert record["sha256"] == hashlib.sha256((small / "krk.nbw").read_bytes()).hexdigest()
    assert tool("solve", QUEEN, "--tables", tmp_path) == tool("solve", QUEEN, "-o", small)
    tool("unpack", *(tmp_path / name for name in names))
    for name in names:
        assert (tmp_path / name[:-4]).read_bytes() == (small / name[:-4]).read_bytes()
    sizes = [(tmp_path / name).stat().st_size for name in names]
    tool("pack", "--best", *(tmp_path / name[:-4] for name in names))
    assert sum((tmp_path / name).stat().st_size for name in names) < sum(sizes)
    for name in names:
        (tmp_path / name[:-4]).unlink()
    names = names[2:]
    damaged = bytearray((tmp_path / names[0]).read_bytes())
    damaged[-20] ^= 0xFF
    (tmp_path / names[0]).write_bytes(damaged)
    for arguments in (("info", tmp_path / names[0]), ("unpack", tmp_path / names[0]),
                      ("verify", tmp_path)):
        assert "is damaged" in tool(*arguments, code=1)
    assert not (tmp_path / names[0][:-4]).exists()
    assert "krk: made" in tool("make", "krk", "--compress", "-o", tmp_path)
    tool("verify", tmp_path)
    (tmp_path / "krk.json").write_text("{}")
    assert "krk.json: is no record" in tool("info", tmp_path / names[0], code=1)


@pytest.mark.parametrize("arguments, reason", [
    (("make", "krkq"), "no such table"), (("make", "kqpkqp"), "six men"),
    (("info", "kqqkrq.nbw"), "not the name"), (("info", "kqk.nbw"), "No such file"),
    (("verify", "."), "no tables"), (("verify", ".", "kqqkrq"), "no such table"),
    (("verify", ".", "kqk"), "no such file"), (("pack", "kqk.nbw.emd"), "already packed"),
    ((), "subcommand"),
    (("verify", ".", "--sample", "-5"), "not in range"), (("solve", QUEEN), "no tables found"),
    (("solve", "8/8/8/8/8/2k5/8/K6q b - -"), "White is in check"), (("solve", ""), "FEN is empty"),
    (("solve", "7k/8/8/8/8/8/PPPPP3/K7 w - -"), "7 men"),
])
def test_refusals(arguments, reason, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    assert reason in tool(*arguments, code=1)
    assert not list(tmp_path.iterdir())


def test_lost_output_is_an_error(small):
    for arguments in (("info", small / "kqk.nbw"), ("report", small, "--sums", "plain")):
        with open("/dev/full", "w", encoding="ascii") as full:
            done = subprocess.run([TABLES_TOOL, *arguments], stdout=full, stderr=subprocess.PIPE,
                                  text=True, check=False)
        assert (done.returncode, done.stderr) == (
            1, "brivok-tables: standard output: cannot be written\n")


@pytest.mark.skipif("BRIVOK_TABLES" not in os.environ, reason="no folder of tables of four men")
def test_four_men():
    """Tables with en passant, with promotions, and with wins for either side."""
    check_longest(FOLDER, LONGEST_OF_FOUR)
    tool("verify", FOLDER, "--sample", "1000")
    tables = [(FOLDER / f"kpkp.{suffix}").read_bytes() for suffix in ("nbw", "nbb")]
    assert {(side, index): tables[side][index] for side, index in PASSANT} == PASSANT
