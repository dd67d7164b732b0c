"""Command lines of brivok-bench and of the scripts that compare with it."""

import json
import re
from pathlib import Path
from xml.etree import ElementTree

import pytest

from chesskit import BENCH_TOOL, BRIVOK, ROOT, SLOW, START, run_tool

BUILD = Path(BRIVOK).parent.parent


def run(command, *arguments, code=0):
    """Standard output, or standard error if the program has to fail."""
    done = run_tool(command, *arguments, code=code)
    return done.stderr if code else done.stdout


def measured(*arguments):
    return json.loads(run(BENCH_TOOL, "--json", *arguments))


def check_sums(result):
    for key in ("nodes", "processorSeconds", "wallSeconds"):
        assert result[key] == pytest.approx(sum(p[key] for p in result["positions"]), abs=1e-4)
    assert result["nodes"] == sum(p["nodes"] for p in result["positions"])
    if result["processorSeconds"] > 0.01:
        assert result["nodesPerSecond"] == pytest.approx(
            result["nodes"] / result["processorSeconds"], rel=1e-3)


def test_signature_and_depths():
    """Both commands make the same searches, and the text tells the same numbers as the JSON."""
    signature = measured("signature", "--depth", 3)["signature"]
    check_sums(signature)
    assert len(signature["positions"]) == 41 and "knownNodes" not in signature
    text = run(BENCH_TOOL, "signature", "--depth", 3)
    nodes = [p["nodes"] for p in signature["positions"]]
    assert [int(n) for n in re.findall(r"^ +(\d+) +[\d.]+ ", text, re.M)] == [*nodes, sum(nodes)]

    depth = measured("depth", "--depth", 3)["depth"]
    check_sums(depth)
    by_fen = {p["fen"]: p["nodes"] for p in signature["positions"]}
    for position in depth["positions"]:
        assert [d["depth"] for d in position["depths"]] == [1, 2, 3]
        assert position["nodes"] == position["depths"][-1]["nodes"] == by_fen[position["fen"]]
    assert re.search(rf"^ +3 .* {depth['nodes']}$", run(BENCH_TOOL, "depth", "--depth", 3), re.M)


@pytest.mark.skipif(SLOW, reason="takes minutes under the sanitizers")
def test_all_commands():
    everything = measured()
    assert list(everything) == ["engine", "build", "signature", "perft", "depth"]
    assert everything["signature"]["right"] is True
    assert everything["signature"]["nodes"] == everything["signature"]["knownNodes"]
    for name in ("signature", "perft", "depth"):
        check_sums(everything[name])


@pytest.mark.parametrize("variant, fen, depth, count", [
    ("normal", START, 1, 20), ("normal", START, 4, 197281),
    ("normal", "8/1P6/8/8/8/k7/8/K7 w - - 0 1", 6, 29353),
    ("normal", "8/8/8/8/8/k7/p7/K7 w - - 0 1", 2, 0),
    ("fischerandom", "qrkb1nbr/pppppppp/8/8/8/8/PPPPPPPP/QRKB1NBR w KQkq - 0 1", 3, 6586),
])
def test_perft(variant, fen, depth, count):
    plain = ["perft", "--depth", depth, "--variant", variant, "--fen", fen]
    for arguments in (plain, [*plain, "--bulk"]):
        perft = measured(*arguments)["perft"]
        assert [(p["fen"], p["variant"]) for p in perft["positions"]] == [(fen, variant)]
        assert perft["nodes"] == count


@pytest.mark.parametrize("arguments, told", [
    (["signature", "--depth", 0], "--depth"),
    (["perft", "--depth", 7], "--depth"),
    (["perft", "--fen", "8/8 w"], "not a playable position"),
    (["perft", "--fen", START, "--variant", "chess"], "chess"),
    (["perft", "--variant", "nocastle"], "--fen"),
    (["speed"], "speed"),
    (["signature", "--hash", 3], "--hash"),
])
def test_bad_arguments(arguments, told):
    assert told in run(BENCH_TOOL, *arguments, code=1)


def test_compare():
    commands = ["signature --depth 2", "perft --depth 2", "long --depth 5", "start --times 3"]
    compared = json.loads(run(ROOT / "bench/compare", BUILD, BUILD, "--rounds", 2, "--json",
                              *(word for command in commands for word in ("--run", command))))
    assert [m["command"] for m in compared["measures"]] == commands
    for m in compared["measures"]:
        assert m["nodesA"] == m["nodesB"] and (m["nodesA"] > 0) == (m["command"] != commands[-1])
        assert 0 < m["lowest"] <= m["ratio"] <= m["highest"] and m["a"] > 0
    assert "not there" in run(ROOT / "bench/compare", BUILD, "/nowhere", code=1)
    for command, told in (("perft --depth 9", "not in range"), ("long --depth 4", "at least 5")):
        assert told in run(ROOT / "bench/compare", BUILD, BUILD, "--run", command, code=1)


def test_engines(tmp_path, referee):
    """Both engines count the same, the new table replaces the old one, and the chart has a bar for
    each rate of the table."""
    page, picture = tmp_path / "page.md", tmp_path / "chart.svg"
    page.write_text("before\n<!-- engines: begin -->\nold\n<!-- engines: end -->\nafter\n")
    command = [ROOT / "bench/engines", BUILD, "--engines", "stockfish", "--rounds", 1, "--seconds",
               0.05, "--perft-depth", 2, "--hash", 1, 8, "--chart", picture, "--write"]
    assert "not the same unit" in run(*command, page)
    text = page.read_text()
    assert text.startswith("before\n<!-- engines: begin -->\n| Engine ") and "old" not in text
    assert text.endswith("\n<!-- engines: end -->\nafter\n")
    rows = re.findall(r"^\| ((?:Brivok|Stockfish).*) \|$", text, re.M)
    cells = [row.split("|") for row in rows]
    rates = {row[at].strip() for row in cells for at in (1, 3, 5, 6)} - {""}
    assert len(rows) == 2
    svg = ElementTree.parse(picture)
    labels = [label.text for label in svg.iter("{http://www.w3.org/2000/svg}text")]
    assert rates <= set(labels) and "8 MB hash" in labels
    assert sum(bar.get("class", "").startswith("bar")
               for bar in svg.iter("{http://www.w3.org/2000/svg}rect")) == 7 + 2
    page.write_text("no place for a table\n")
    assert "engines: begin" in run(*command, page, code=1)
