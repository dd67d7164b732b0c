"""Engines at the other end of a pipe, a referee that knows the rules, boards, moves and games.

The tests, the scripts and the benchmarks are written with it. It needs nothing but Python; the
referee is Debian's stockfish, and pgn-extract turns games into PGN.
"""

from chesskit.board import (MIDDLE, SQUARES, START, after_move, is_check, is_dead, mirror,
                            placement, squares)
from chesskit.brivok import (NO_MOVE, STATUS, THINKING, Brivok, WinBoard, claim, diagram, shown,
                             talk)
from chesskit.errors import ChessError, IllegalMove
from chesskit.game import DRAW, Adjudicator, Clocks, Game
from chesskit.notation import read_san, to_pgn, write_pgn, write_san
from chesskit.process import PATIENCE, EngineError, Process
from chesskit.programs import (BENCH_TOOL, BOOK_TOOL, BRIVOK, PATH, ROOT, SLOW, TABLES_TOOL,
                               installed, needed, run_tool)
from chesskit.referee import Look, Referee
from chesskit.script import progress, run_script, script_parser
from chesskit.standing import Standing
from chesskit.tables import (TableOracle, complete_tables, random_position, sides, tables_below,
                             tables_in)
from chesskit.uci import Reply, Score, UciEngine
from chesskit.winboard import RESULTS, WinBoardEngine
