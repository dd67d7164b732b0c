#include "movegen/perft.h"

#include <algorithm>

#include "movegen/legal_moves.h"
#include "platform/platform.h"
#include "shell/base/console.h"

namespace brivok {

namespace {

void perftLevel(Board& board, int level, int depth, PerftNodes& perftNodes) {
    MoveList list;
    const bool wasInCheck = generateForPosition(board, list);
    const int count = board.moveCount;
    for (int i = 0; i < count; ++i) {
        board.makeMove(list[i]);
        if (wasInCheck || !board.moverInCheck()) {
            ++perftNodes[static_cast<unsigned>(level)];
            if (level < depth) perftLevel(board, level + 1, depth, perftNodes);
        }
        board.unmakeMove();
    }
}

}  // namespace

PerftNodes countPerft(Board& board, int depth) {
    PerftNodes perftNodes{};
    perftLevel(board, 1, std::min(depth, MaxPerftDepth), perftNodes);
    return perftNodes;
}

void perft(Board& board, int depth) {
    depth = std::clamp(depth, 0, MaxPerftDepth);
    const std::uint64_t start = platform::milliseconds() / 10;
    const PerftNodes perftNodes = countPerft(board, depth);
    const std::uint64_t spent = platform::milliseconds() / 10 - start;

    Application& app = *theApplication;
    Print(app, "\n");
    Print(app, "Results for perft %d\n", depth);
    Print(app, "Depth Nodes          Total nodes\n");
    long total = 0;
    for (unsigned d = 1; d < perftNodes.size() && perftNodes[d] != 0; ++d) {
        total += perftNodes[d];
        Print(app, " %3u  %-13u  %ld\n", d, perftNodes[d], total);
    }
    Print(app, "telluser Nodes: %u - Time: %f\n", perftNodes[static_cast<unsigned>(depth)],
          static_cast<double>(spent) * 0.01);
}

}  // namespace brivok
