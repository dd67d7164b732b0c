#include "board/piece_values.h"

#include "shell/base/settings.h"

namespace brivok {

void RefreshPieceValues() {
    pieceValue = {0,
                  settings.PawnValue,
                  settings.PawnValue,
                  settings.KnightValue,
                  settings.KnightValue,
                  KingValue,
                  KingValue,
                  settings.RookValue,
                  settings.RookValue,
                  settings.QueenValue,
                  settings.QueenValue,
                  settings.BishopValue,
                  settings.BishopValue,
                  0};
}

}  // namespace brivok
