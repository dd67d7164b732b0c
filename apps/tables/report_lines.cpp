#include "report_lines.h"

#include <cstddef>
#include <memory>

#include "../common/app_error.h"
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
            const std::size_t plies = 2 * std::size_t{mate.mate.moves} - (mate.won ? 1 : 0);
            if (line.gap.empty() && line.moves.size() != plies) {
                fail(recordPath(folder, table.id), "tells of another longest mate than the table");
            }
            mate.line = numbered(line.moves, board->sideToMove);
            mate.gap = line.gap;
        }
    }
}

}  // namespace brivok::tables
