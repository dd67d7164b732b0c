#include "shell/move_counts.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "board/coordinate.h"
#include "movegen/legal_moves.h"
#include "movegen/perft.h"
#include "platform/platform.h"
#include "shell/base/console.h"
#include "shell/base/report.h"

namespace brivok {

void perft(Application& app, Board& board, std::size_t depth) {
    depth = std::min(depth, MaxPerftDepth);
    const std::uint64_t start = platform().milliseconds() / 10;
    const PerftNodes perftNodes = countPerft(board, depth);
    const std::uint64_t spent = platform().milliseconds() / 10 - start;

    Print(app, "\n");
    Print(app, "Results for perft %zu\n", depth);
    Print(app, "Depth Nodes          Total nodes\n");
    long total = 0;
    for (unsigned d = 1; d < perftNodes.size() && perftNodes[d] != 0; ++d) {
        total += perftNodes[d];
        Print(app, " %3u  %-13u  %ld\n", d, perftNodes[d], total);
    }
    Print(app, "telluser Nodes: %u - Time: %f\n", perftNodes[depth],
          static_cast<double>(spent) * 0.01);
}

void listLegalMoves(Board& board) {
    // In the order of the general generators, even in check.
    MoveList list;
    generateMoves(board, list);
    std::string text;
    forEachLegalOf(board, generated(board, list),
                   [&](Move move) { text += moveToCoordinate(move) + " "; });
    PrintUnlogged(text + "\n");
}

}  // namespace brivok
