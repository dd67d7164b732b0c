#include "../apps/tables/table_solver.h"

#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/tables/outcome.h"
#include "../apps/tables/table_entry.h"
#include "../apps/tables/table_store.h"
#include "movegen/legal_moves.h"
#include "movegen/san.h"
#include "table_folder.h"

namespace brivok::tables {
namespace {

using Result = PositionValue::Result;

class TableSolverTest : public TableFolderTest {
protected:
    /// Plays a line on a board; returns whether its last move mates.
    static bool mates(Board& position, const BestLine& line) {
        for (const std::string& name : line.moves) {
            const Move move = readSan(position, name).move;
            EXPECT_NE(move, NoMove) << name;
            if (move == NoMove) return false;
            position.playGameMove(move);
        }
        return position.inCheck() && countLegalMoves(position) == 0;
    }
};

TEST_F(TableSolverTest, LossesThatAByteCannotHold) {
    const TablebaseDescriptor& table = tableNamed("kppkp");
    write("kppkp.nbb", table.size[1], {{56802429, 127}});
    TableSolver solver(folder.string());
    const Material material = materialOf("kppkp");
    Position position;
    for (const std::uint64_t index : {56802428U, 67775659U, 71071628U}) {
        ASSERT_TRUE(legalPosition(table.id, material, 1, index, position));
        const PositionValue value = solver.valueOf(*boardToSolve(fenOf(material, position)));
        EXPECT_EQ(value.text(), "mated in 127");
    }
    // An entry without a value
    ASSERT_TRUE(legalPosition(table.id, material, 1, 56802429, position));
    const auto other = boardToSolve(fenOf(material, position));
    EXPECT_EQ(solver.valueOf(*other).text(), "kppkp.nbb has no value");
    EXPECT_EQ(solver.lineToMate(*other).gap, "kppkp.nbb has no value");
}

TEST_F(TableSolverTest, NamesAndOrderOfMoves) {
    write("kqk.nbw", tableNamed("kqk").size[0]);
    TableSolver solver(folder.string());
    const auto names = [&](const char* fen) {
        std::vector<std::string> found;
        for (const SolvedMove& move : solver.movesOf(*boardToSolve(fen))) found.push_back(move.san);
        return found;
    };
    // Three queens that can go to the same square
    const std::vector<std::string> queens = names("Q7/8/8/8/5K2/8/2k5/Q6Q w - - 0 1");
    EXPECT_EQ(std::set(queens.begin(), queens.end()).size(), queens.size());
    EXPECT_EQ(std::count(queens.begin(), queens.end(), "Qa1h8"), 1);
    // A capture in passing that shields the king from a rook, and a square without capture
    const std::vector<std::string> evasions = names("8/8/r6K/3pP3/8/8/8/k7 w - d6 0 1");
    EXPECT_EQ(std::count(evasions.begin(), evasions.end(), "exd6"), 1);
    EXPECT_EQ(solver.valueOf(*boardToSolve("8/8/8/Q7/4k3/8/8/K7 w - - 0 1")).text(), "draw");
    // No castling
    const std::vector<std::string> rook = names("4k3/8/8/8/8/8/8/R3K3 w Q - 0 1");
    EXPECT_EQ(std::count(rook.begin(), rook.end(), "O-O-O"), 0);
    EXPECT_EQ(numbered({"Ka2", "Kb4"}, Black), "1... Ka2 2. Kb4");
}

/// Entries of files against their solutions. BRIVOK_TABLES may name a folder with real tables.
TEST_F(TableSolverTest, RealTables) {
    const char* const tables = std::getenv("BRIVOK_TABLES");
    if (tables == nullptr) GTEST_SKIP() << "BRIVOK_TABLES names no folder";
    TableSolver solver(tables);
    TableStore store(tables);
    std::mt19937_64 random;
    int solved = 0;
    for (const char* signature : {"kqk", "kpk", "krkn", "kbnk", "kqkr", "kpkp", "kqkp"}) {
        const Material material = materialOf(signature);
        const int id = tableOf(material).id;
        if (!store.has(id)) continue;
        for (unsigned side = 0; side < 2; ++side) {
            const std::vector<std::uint8_t>& entries = store.entries(id, side);
            for (int i = 0; i < 60; ++i) {
                // Every second one from the section of captures in passing, if there is one.
                const std::uint64_t last =
                    material.hasEnPassant() && i % 2 == 0 ? 20'000 : entries.size();
                const std::uint64_t index = entries.size() - 1 - random() % last;
                Position position;
                if (!legalPosition(id, material, side, index, position)) continue;
                const std::string fen = fenOf(material, position);
                SCOPED_TRACE(fen);
                const auto start = boardToSolve(fen);
                const Outcome outcome = outcomeOf(entries[index]);
                const PositionValue value = solver.valueOf(*start);
                EXPECT_EQ(value.result, outcome == Draw  ? Result::Draw
                                        : isWin(outcome) ? Result::Win
                                                         : Result::Loss);
                EXPECT_EQ(value.moves, movesToMate(outcome));
                const BestLine line = solver.lineToMate(*start);
                EXPECT_EQ(line.gap, "");
                const std::size_t plies = 2 * movesToMate(outcome);
                EXPECT_EQ(line.moves.size(), isWin(outcome) ? plies - 1 : plies);
                EXPECT_EQ(mates(*start, line), outcome != Draw);
                ++solved;
            }
        }
    }
    EXPECT_GT(solved, 100);
}

}  // namespace
}  // namespace brivok::tables
