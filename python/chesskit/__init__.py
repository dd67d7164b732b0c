"""Engines at the other end of a pipe, a referee that knows the rules, boards, moves and games.

The tests, the scripts and the benchmarks are written with it. It needs nothing but Python; the
referee is Debian's stockfish, and PGN goes through its pgn-extract.
"""
