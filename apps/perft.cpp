// Counts the legal move tree of a position: brivok-perft DEPTH [FEN [VARIANT]]

#include "movegen/perft.h"

#include <cstdio>
#include <memory>
#include <string_view>

#include "board/board.h"
#include "board/piece_values.h"
#include "shell/base/application.h"
#include "shell/base/settings.h"
#include "shell/base/words.h"

int main(int argc, char** argv) {
    using namespace brivok;
    const auto depth = argc >= 2 ? parseInteger(argv[1]) : 0;
    const std::string_view variant = argc >= 4 ? argv[3] : "normal";
    const bool known = variant == "normal" || variant == "fischerandom" || variant == "nocastle";
    if (argc < 2 || argc > 4 || depth < 1 || depth > MaxPerftDepth || !known) {
        std::fprintf(stderr,
                     "usage: brivok-perft DEPTH [FEN [normal|fischerandom|nocastle]]\n"
                     "DEPTH is from 1 to %d.\n",
                     MaxPerftDepth);
        return 2;
    }
    buildStaticTables();
    RefreshPieceValues();
    theApplication = std::make_unique<Application>();
    if (variant == "fischerandom") settings.variant = Variant::Fischerandom;
    if (variant == "nocastle") settings.variant = Variant::NoCastle;
    theBoard.NewGame();
    if (argc >= 3) theBoard.setPositionFromFen(argv[2]);
    perft(theBoard, static_cast<int>(depth));
    return 0;
}
