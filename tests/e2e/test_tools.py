"""The two tests of the console: EPD suites and the symmetry of the evaluation."""

import re
import sys

import pytest

from chesskit import BRIVOK, PATIENCE, ROOT, run_tool, talk

BACK_RANK = "6k1/5ppp/8/8/8/8/8/R3K3 w - - "
SUITE = [  # line, solved
    (BACK_RANK + 'bm Ra8#; id "mate";', True),
    (BACK_RANK + "am Ra8#;", False),
    (BACK_RANK + "am Ke2;", True),
    (BACK_RANK + 'id "Ra8#";', False),
    ("k7/8/1K6/8/8/8/8/7R b - - bm Kb8;", True),  # the only move
    ("8/8/8/8/8/8/8/8 w - - bm none;", False),  # refused: the start position is searched
]
RULE = "-" * 80
BLOCK = re.compile(
    r"""(?P<line>.*)\n
    Brivok's\ move:\ (?P<san>\S+)\ Eval:\ (?P<eval>-?\d+\.\d\d)\ Depth:\ \d+
        \ Time:\ (?P<time>\d+\.\d\d)\ Nodes:\ (?P<nodes>\d+)\n\n
    Result:\ (?P<result>(?:NOT\ )?FOUND)\n-{80}\n""", re.X)
SUMMARY = re.compile(
    r"""\nPOSITIONS:\ {6}(\d+)\nFOUND:\ {10}(\d+)\ \((\d+\.\d\d)%\)
    \nNOT\ FOUND:\ {6}(\d+)\ \((\d+\.\d\d)%\)\nTOTAL\ TIME:\ {5}(\d+\.\d\d)\ seg
    \nTOTAL\ NODES:\ {4}(\d+)\nNPS:\ {12}(\d+)\n={80}\n\n""", re.X)


def write(folder, name, lines, end="\n"):
    (folder / name).write_bytes("".join(line + end for line in lines).encode())


def run_test(engine, *dialogue):
    """The lines of an EPD run up to its end."""
    engine.send("epdtest", *dialogue)
    lines = engine.wait("Total time")
    engine.send("evaltest", "no such file")  # the answer shows that the run has closed its files
    return lines + engine.wait("EPD Filename")[:-1]


def read_results(folder, name, runs=1):
    """The blocks of each run, as dictionaries, with its summary."""
    text, read = (folder / f"{name}-results.txt").read_text("latin-1"), []
    while text:
        head, text = text.split(RULE + "\n", 1)
        assert re.fullmatch(
            rf"Brivok 4\.0\.3\nEPD Test-Suite: {name}\.epd\nSeconds per position: 1\n", head), head
        blocks = []
        while block := BLOCK.match(text):
            blocks.append(block.groupdict())
            text = text[block.end():]
        summary = SUMMARY.match(text)
        assert summary, text
        text = text[summary.end():]
        read.append((blocks, summary.groups()))
    assert len(read) == runs
    return read


@pytest.mark.parametrize("end", ["\n", "\r\n"])
def test_suite(start, tmp_path, end):
    lines = [line for line, _ in SUITE]
    verdicts = [solved for _, solved in SUITE]
    write(tmp_path, "suite.epd", lines, end)
    engine = start(uci=False)
    screen = run_test(engine, "suite.epd" + end.strip("\n"), " 1" + end.strip("\n"))

    assert screen[:3] == ["EPD Filename: Seconds per position: ", "Position N\xa7 1:", lines[0]]
    assert [x for x in screen if x.startswith("Solution")] == [
        f"Solution {'' if solved else 'NOT '}FOUND" for solved in verdicts]
    assert [x for x in screen if x.startswith("Partial")] == [
        f"Partial results: {sum(verdicts[:n])}/{n}" for n in range(1, 7)]
    assert [x for x in screen if x.startswith("FEN error")] == [
        f"FEN error: There isn't {side} king" for side in ("white", "black")]
    at = screen.index("FINAL RESULTS:")
    assert screen[at - 1:at + 3] == ["", "FINAL RESULTS:", "---------------", ""]
    assert screen[at + 3:-2] == ["Found positions            -> 3 (50.000000%)",
                                 "Not found positions        -> 3 (50.000000%)",
                                 "-" * 29, "Total positions            -> 6 (100.00%)"]
    assert re.fullmatch(r"Total time {17}-> \d+\.\d{6} seg\.", screen[-2]) and screen[-1] == ""

    # A run appends to the earlier ones, and its file of failures is a suite too.
    run_test(engine, "suite.epd", "1")
    failed = [line for line, solved in SUITE if not solved]
    assert (tmp_path / "suite-notfound.epd").read_bytes() == (
        "".join(line + "\n" for line in failed * 2).encode())
    for blocks, summary in read_results(tmp_path, "suite", 2):
        assert [x["line"] for x in blocks] == lines
        assert [x["result"] == "FOUND" for x in blocks] == verdicts
        assert [x["san"] for x in blocks[:5]] == ["Ra8#"] * 4 + ["Kb8"]
        assert blocks[0]["eval"] == "327.65" and blocks[4]["nodes"] == "0"
        assert float(blocks[5]["time"]) > 0.9
        assert summary[:5] == ("6", "3", "50.00", "3", "50.00")
        time, nodes, nps = float(summary[5]), int(summary[6]), int(summary[7])
        assert nodes == sum(int(x["nodes"]) for x in blocks)
        assert abs(nps - nodes / time) <= 0.02 * nps


def test_suite_without_lines(start, tmp_path):
    write(tmp_path, "empty.epd", [])
    screen = run_test(start(uci=False), "empty.epd", "1")
    assert screen[-6:-2] == ["Found positions            -> 0 (0.000000%)",
                             "Not found positions        -> 0 (0.000000%)",
                             "-" * 29, "Total positions            -> 0 (100.00%)"]
    [(blocks, summary)] = read_results(tmp_path, "empty")
    assert blocks == [] and summary[:5] == ("0", "0", "0.00", "0", "0.00")
    assert summary[6:] == ("0", "0")


def test_failures_end_the_dialogue_and_nothing_else(start, tmp_path):
    for name in ("results.epd", "notfound.epd"):
        write(tmp_path, name, [SUITE[0][0]])
    (tmp_path / "results-results.txt").mkdir()
    (tmp_path / "notfound-notfound.epd").mkdir()
    long_name = 4000 * "x" + ".epd"
    engine = start(uci=False)
    for dialogue, answer in [
            (["epdtest", "missing.epd"], "I can't open the file missing.epd!"),
            (["epdtest", long_name], f"I can't open the file {long_name}!"),
            (["epdtest", "."], "I can't open the file .!"),
            (["evaltest", "missing%s.epd"], "I couldn't open the file missing%s.epd!"),
            (["evaltest", long_name], f"I couldn't open the file {long_name}!"),
            (["epdtest", "results.epd", "0"], "The time must be >= 1 sec"),
            (["epdtest", "results.epd", "abc"], "The time must be >= 1 sec"),
            (["epdtest", "results.epd", "1"],
             "I couldn't open file results-results.txt for printing the results!"),
            (["epdtest", "notfound.epd", "1"],
             "I couldn't open file notfound-notfound.epd for store not found positions!")]:
        engine.send(*dialogue)
        question = "EPD Filename: " + "Seconds per position: " * (len(dialogue) - 2)
        assert engine.wait("EPD") == [question + answer]
    engine.send("uci")
    engine.wait("uciok")


@pytest.mark.parametrize("data, last", [
    (b"epdtest", "EPD Filename: "), (b"epdtest\nsuite.epd\n", "Seconds per position: "),
    (b"evaltest\n", "EPD Filename: "), (b"epdtest\nsuite.epd\n1\n", " seg.\n\n"),
    (b"evaltest\nsuite.epd", "GOOD\n\n")])
def test_end_of_input(tmp_path, data, last):
    write(tmp_path, "suite.epd", [line for line, _ in SUITE[:2]])
    assert talk(data, tmp_path).endswith(last)


def test_input_during_a_run(start, tmp_path):
    """The engine notes a protocol, starts no second test, and keeps its results on "quit"."""
    refused = SUITE[-1][0]
    write(tmp_path, "long.epd", [SUITE[0][0], refused, refused])
    engine = start(uci=False)
    engine.send("epdtest", "long.epd", "1")
    engine.wait("Position N\xa7 2")
    engine.send("evaltest", "long.epd", "epdtest", "uci")
    screen = engine.wait("uciok")
    assert "Partial results: 1/3" in screen and any(x.startswith("Total time") for x in screen)
    assert not any("Filename" in x or x.startswith("Eval1") for x in screen)
    assert "f1b5" not in engine.moves("position startpos")

    engine = start(uci=False)
    engine.send("epdtest", "long.epd", "600")
    engine.wait("Position N\xa7 2")
    engine.send("quit")
    assert engine.p.wait(PATIENCE) == 0
    last_run = (tmp_path / "long-results.txt").read_text().rsplit("Brivok 4.0.3", 1)[1]
    assert last_run.count("Result: FOUND") == 1 and last_run.endswith(refused + "\n")


def test_evaluation_is_symmetric(start, tmp_path):
    script = ROOT / "scripts/make_eval_pairs.py"
    run_tool(sys.executable, script, BRIVOK, tmp_path / "pairs.epd", "--pairs", 500)
    engine = start(uci=False)
    engine.send("evaltest", "pairs.epd", "uci")
    lines = engine.wait("uciok")
    assert not any("error" in x for x in lines)
    verdicts = [m for m in map(re.compile(r"Eval1: (.+) - Eval2: (.+) - (\w+)").fullmatch, lines)
                if m]
    assert len(verdicts) == 500 and len({m[1] for m in verdicts}) > 100
    assert all(m[3] == "GOOD" and m[1] == m[2] for m in verdicts)


def test_evaluation_of_few_lines(start, tmp_path):
    white, black = "4k3/8/8/8/8/8/4P3/4K3 ", "4k3/4p3/8/8/8/8/8/4K3 "
    write(tmp_path, "odd.epd", [white + "w", black + "w", "no partner"], "\r\n")
    write(tmp_path, "empty.epd", [])
    engine = start(uci=False)
    engine.send("evaltest", "odd.epd")
    first, second, verdict, end = engine.wait("Eval1") + engine.wait("")
    assert (first, second, end) == ("EPD Filename: " + white + "w", black + "w", "")
    m = re.fullmatch(r"Eval1: (-?\d+) - Eval2: (-?\d+) - WRONG", verdict)
    assert m and int(m[1]) == -int(m[2]) > 0
    engine.send("evaltest", "empty.epd")
    assert engine.wait("EPD") == ["EPD Filename: "]
