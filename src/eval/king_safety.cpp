#include <cstdlib>

#include "eval/terms.h"

namespace brivok {

namespace {

/// Scores castling if it was the last move, else the king's position relative to its start square.
template <Side S>
[[nodiscard]] int CastlingState(const Board& board, const PawnHashRecord& pawns, Square king) {
    constexpr std::uint32_t KingSide = S == White ? WhiteCastledKingSide : BlackCastledKingSide;
    constexpr std::uint32_t QueenSide = S == White ? WhiteCastledQueenSide : BlackCastledQueenSide;
    if ((board.castling & KingSide) != 0) return weights::JustCastledKingSide;
    if ((board.castling & QueenSide) != 0) return weights::JustCastledQueenSide;
    if (king == board.kingStart[whiteFirst(S)]) return 0;
    const bool pawnOnFile = PawnsOnFile<S>(pawns)[fileOf(king) + 1] != 0;
    return pawnOnFile ? -weights::KingMoved : -weights::KingMovedToOpenFile;
}

/// Shelter by the rearmost own pawn of a file in front of the king on `kingRow`, with rows as S
/// counts them: the further away, the worse. A pawn level with the king or behind it does not
/// count.
template <Side S>
[[nodiscard]] int ShelterOnFile(const PawnHashRecord& pawns, int file, int kingRow, int perRow) {
    const int distance = kingRow - SeenRow<S>(RearRow<S>(pawns)[file]);
    if (PawnsOnFile<S>(pawns)[file] == 0 || distance <= 0) return -weights::ShelterMissing;
    return perRow * (1 - distance);
}

/// Own pawns on the three files around the enemy king; an empty file counts as a far advanced pawn.
template <Side S>
[[nodiscard]] int Storm(const PawnHashRecord& pawns, int enemyKingFile) {
    int rows = weights::StormStartRows;
    int score = 0;
    for (int file = enemyKingFile - 1; file <= enemyKingFile + 1; ++file) {
        rows -= SeenRow<S>(RearRow<S>(pawns)[file]);
        if (PawnsOnFile<S>(pawns)[file] == 0) {
            score +=
                file == enemyKingFile ? weights::StormOpenKingFile : weights::StormOpenNextFile;
        }
    }
    return score + weights::StormRow * rows;
}

}  // namespace

template <Side S>
int KingPlace(const Board& board, bool endgame) {
    const Square sq = Seen<S>(board.kingSquare[whiteFirst(S)]);
    return endgame ? weights::kingEndgameTable[sq] : weights::kingMiddlegameTable[sq];
}

template <Side S>
int KingSafety(const Board& board, const PawnHashRecord& pawns, bool endgame) {
    const Square king = board.kingSquare[whiteFirst(S)];
    int score = CastlingState<S>(board, pawns, king);
    if (endgame) return score;

    // Files as in the pawn record, counted from 1.
    const int file = fileOf(king) + 1;
    const int row = SeenRow<S>(rowOf(king));
    score += ShelterOnFile<S>(pawns, file, row, weights::ShelterKingFile);
    score += ShelterOnFile<S>(pawns, file + 1, row, weights::ShelterNextFile);
    score += ShelterOnFile<S>(pawns, file - 1, row, weights::ShelterNextFile);

    const int enemyFile = fileOf(board.kingSquare[whiteFirst(opposite(S))]) + 1;
    if (std::abs(file - enemyFile) >= weights::StormKingDistance) {
        score += Storm<S>(pawns, enemyFile);
    }
    return score;
}

template int KingPlace<White>(const Board&, bool);
template int KingPlace<Black>(const Board&, bool);
template int KingSafety<White>(const Board&, const PawnHashRecord&, bool);
template int KingSafety<Black>(const Board&, const PawnHashRecord&, bool);

}  // namespace brivok
