#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../common/app_error.h"
#include "board/board.h"
#include "board/castling.h"
#include "commands.h"
#include "table_solver.h"

namespace brivok::tables {
namespace {

/// Columns of the printed lines of moves.
constexpr std::size_t Width = 80;

void print(const std::string& text) { std::printf("%s\n", text.c_str()); }

std::string verdict(const PositionValue& value, Side mover) {
    const std::string us = mover == White ? "White" : "Black";
    const std::string them = mover == White ? "Black" : "White";
    const std::string inMoves =
        " in " + std::to_string(value.moves) + (value.moves == 1 ? " move" : " moves");
    switch (value.result) {
        case PositionValue::Result::Win: return us + " mates" + inMoves;
        case PositionValue::Result::Draw: return "draw";
        case PositionValue::Result::Loss:
            return value.moves == 0 ? us + " is mated" : them + " mates" + inMoves;
        default: return value.reason;
    }
}

void printMoves(const std::vector<SolvedMove>& moves) {
    std::size_t longest = 0;
    for (const SolvedMove& move : moves) longest = std::max(longest, move.san.size());
    for (const SolvedMove& move : moves) {
        print("  " + move.san + std::string(longest - move.san.size() + 2, ' ') +
              move.value.text());
    }
}

/// Breaks the line between moves.
void printWrapped(const std::string& text) {
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        if (std::string move; word.ends_with('.') && words >> move) word += " " + move;
        if (line.size() + 1 + word.size() > Width) {
            print(line);
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    print(line);
}

void solveOne(const SolveOptions& options) {
    const std::unique_ptr<Board> board = boardToSolve(options.fen);
    TableSolver solver(options.folders);
    const PositionValue value = solver.valueOf(*board);
    if (!value.isKnown()) throw AppError("no value: " + value.reason);
    const std::vector<SolvedMove> moves = solver.movesOf(*board);
    const BestLine line = solver.lineToMate(*board);

    print(moves.empty() && value.result == PositionValue::Result::Draw
              ? "stalemate"
              : verdict(value, board->sideToMove));
    if ((board->castling & AllRights) != 0) print("Tables know no castling: the right is ignored.");
    if (!moves.empty()) print("");
    printMoves(moves);
    if (!line.moves.empty()) {
        print("");
        printWrapped(numbered(line.moves, board->sideToMove));
    }
    if (!line.gap.empty()) print("\nThe line ends here: " + line.gap);
}

/// Answers each line as it comes, so that another program can ask.
void solveLines(const SolveOptions& options) {
    TableSolver solver(options.folders);
    for (std::string fen; std::getline(std::cin, fen);) {
        try {
            print(solver.valueOf(*boardToSolve(fen)).text());
        } catch (const NotSolvable& fault) {
            print(fault.what());
        }
        std::fflush(stdout);
    }
}

}  // namespace

void solvePosition(const SolveOptions& options) {
    if (options.fen == "-") {
        solveLines(options);
    } else {
        solveOne(options);
    }
}

}  // namespace brivok::tables
