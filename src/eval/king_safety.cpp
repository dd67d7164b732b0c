#include <algorithm>
#include <cstdlib>

#include "eval/terms.h"

namespace brivok {

namespace {

/// The own pawns of a file; none beside the board.
[[nodiscard]] Bitboard OnFile(Bitboard pawns, int file) {
    return file >= 0 && file < 8 ? pawns & fileMask[file] : 0;
}

/// Row of the rearmost of some pawns of S, as S counts rows. A pawn on the last row counts as if it
/// stood on the one before. Undefined on an empty set.
template <Side S>
[[nodiscard]] int RearRow(Bitboard pawns) {
    const Square sq = S == White ? highestBit(pawns) : firstBit(pawns);
    return std::max(SeenRow<S>(rowOf(sq)), 1);
}

/// Shelter by the rearmost own pawn of a file in front of the king on `kingRow`, with rows as S
/// counts them: the further away, the worse. A pawn level with the king or behind it does not
/// count.
template <Side S>
[[nodiscard]] int ShelterOnFile(Bitboard pawnsOfFile, int kingRow, int perRow) {
    if (pawnsOfFile == 0) return -weights::ShelterMissing;
    const int distance = kingRow - RearRow<S>(pawnsOfFile);
    return distance <= 0 ? -weights::ShelterMissing : perRow * (1 - distance);
}

/// Own pawns on the three files around the enemy king; an empty file counts as a far advanced pawn.
template <Side S>
[[nodiscard]] int Storm(Bitboard own, int rowOfNone, int enemyKingFile) {
    int rows = weights::StormStartRows;
    int score = 0;
    for (int file = enemyKingFile - 1; file <= enemyKingFile + 1; ++file) {
        const Bitboard pawns = OnFile(own, file);
        rows -= pawns != 0 ? RearRow<S>(pawns) : SeenRow<S>(rowOfNone);
        if (pawns == 0) {
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
int CastlingState(const Board& board, const PawnHashRecord& pawns) {
    constexpr std::uint32_t KingSide = S == White ? WhiteCastledKingSide : BlackCastledKingSide;
    constexpr std::uint32_t QueenSide = S == White ? WhiteCastledQueenSide : BlackCastledQueenSide;
    if ((board.castling & KingSide) != 0) return weights::JustCastledKingSide;
    if ((board.castling & QueenSide) != 0) return weights::JustCastledQueenSide;
    constexpr unsigned us = whiteFirst(S);
    const Square king = board.kingSquare[us];
    if (king == board.kingStart[us]) return 0;
    const bool pawnOnFile = (pawns.files[us] >> static_cast<unsigned>(fileOf(king)) & 1U) != 0;
    return pawnOnFile ? -weights::KingMoved : -weights::KingMovedToOpenFile;
}

template <Side S>
int KingShelter(const Board& board, const PawnHashRecord& pawns) {
    const Bitboard own = board.pieces[pieceOf(Kind::Pawn, S)];
    const Square king = board.kingSquare[whiteFirst(S)];
    const int file = fileOf(king);
    const int row = SeenRow<S>(rowOf(king));
    int score = ShelterOnFile<S>(OnFile(own, file), row, weights::ShelterKingFile) +
                ShelterOnFile<S>(OnFile(own, file + 1), row, weights::ShelterNextFile) +
                ShelterOnFile<S>(OnFile(own, file - 1), row, weights::ShelterNextFile);

    const int enemyFile = fileOf(board.kingSquare[whiteFirst(opposite(S))]);
    if (std::abs(file - enemyFile) >= weights::StormKingDistance) {
        score += Storm<S>(own, pawns.rowOfNone[whiteFirst(S)], enemyFile);
    }
    return score;
}

template int KingPlace<White>(const Board&, bool);
template int KingPlace<Black>(const Board&, bool);
template int CastlingState<White>(const Board&, const PawnHashRecord&);
template int CastlingState<Black>(const Board&, const PawnHashRecord&);
template int KingShelter<White>(const Board&, const PawnHashRecord&);
template int KingShelter<Black>(const Board&, const PawnHashRecord&);

}  // namespace brivok
