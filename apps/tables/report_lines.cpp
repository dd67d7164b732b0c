#include "report_lines.h"

#include <memory>

#include "board/board.h"
#include "table_solver.h"

namespace brivok::tables {

void addLines(TableReport& report, const std::filesystem::path& folder,
              const std::function<void(const std::string&)>& progress) {
    TableSolver solver(folder.string());
    for (ReportedTable& table : report.tables) {
        progress(table.record.signature);
        for (ReportedMate& mate : table.mates) {
            if (mate.mate.fen.empty()) continue;
            const std::unique_ptr<Board> board = boardToSolve(mate.mate.fen);
            const BestLine line = solver.lineToMate(*board);
            mate.line = numbered(line.moves, board->sideToMove);
            mate.gap = line.gap;
        }
    }
}

}  // namespace brivok::tables
