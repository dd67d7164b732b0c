// Counts the legal move tree of a position: brivok-perft DEPTH [FEN [VARIANT]]

#include "movegen/perft.h"

#include <cstdio>
#include <optional>

#include "bench/start.h"
#include "board/board.h"
#include "shell/base/settings.h"
#include "shell/base/words.h"
#include "shell/move_counts.h"

int main(int argc, char** argv) {
    using namespace brivok;
    const auto depth = argc >= 2 ? parseInteger(argv[1]) : 0;
    const std::optional<Variant> variant = argc >= 4 ? variantNamed(argv[3]) : Variant::Normal;
    if (argc < 2 || argc > 4 || depth < 1 || depth > MaxPerftDepth || !variant) {
        std::fprintf(stderr,
                     "usage: brivok-perft DEPTH [FEN [normal|fischerandom|nocastle]]\n"
                     "DEPTH is from 1 to %d.\n",
                     MaxPerftDepth);
        return 2;
    }
    startEngine();
    settings.variant = *variant;
    theBoard.NewGame();
    if (argc >= 3) theBoard.setPositionFromFen(argv[2]);
    perft(*theApplication, theBoard, static_cast<int>(depth));
    return 0;
}
