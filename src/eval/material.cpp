#include <algorithm>
#include <cstdint>

#include "eval/evaluate.h"
#include "eval/terms.h"
#include "shell/base/settings.h"

namespace brivok {

namespace {

[[nodiscard]] constexpr int signOf(int number) { return (number > 0) - (number < 0); }

/// The correction for White's surplus of minor and major pieces, which are not both 0.
[[nodiscard]] constexpr int TradeValue(int minors, int majors) {
    if (minors == 0) return weights::ImbalanceMajor * signOf(majors);
    switch (majors < 0 ? -majors : majors) {
        case 0: return weights::ImbalanceMajor * signOf(minors);
        case 1: {
            // Extra minor pieces of the side with fewer majors.
            const int instead = -signOf(majors);
            const int surplus = minors * instead;
            if (surplus > 1) return weights::ImbalanceMajor * instead;
            return surplus == 1 ? -weights::ImbalanceMinor * instead : 0;
        }
        // With a surplus of two majors, only the minors decide.
        case 2: return minors > 2 || minors < -2 ? weights::ImbalanceMajor * signOf(minors) : 0;
        default: return 0;
    }
}

/// A larger surplus counts like this one.
constexpr int MostSurplus = 3;
struct TradeTable {
    std::int16_t values[2 * MostSurplus + 1][2 * MostSurplus + 1];
};

/// TradeValue() by both surpluses, each counted from -MostSurplus.
constexpr TradeTable Trades = [] {
    TradeTable table{};
    for (int minors = -MostSurplus; minors <= MostSurplus; ++minors) {
        for (int majors = -MostSurplus; majors <= MostSurplus; ++majors) {
            table.values[minors + MostSurplus][majors + MostSurplus] =
                static_cast<std::int16_t>(TradeValue(minors, majors));
        }
    }
    return table;
}();

/// Whether the king-side castling right remains or a minor piece is still on the first rank.
template <Side S>
[[nodiscard]] bool DevelopmentIsOpen(const Board& board) {
    constexpr std::uint32_t Right = S == White ? WhiteMayKingSide : BlackMayKingSide;
    const Bitboard minors =
        board.pieces[pieceOf(Kind::Knight, S)] | board.pieces[pieceOf(Kind::Bishop, S)];
    return (board.castling & Right) != 0 || (minors & rowMask[SeenRow<S>(7)]) != 0;
}

/// White's most advanced queen; for Black the queen on the highest square number. Unlike
/// takeNext(), this is a plain scan for both sides.
template <Side S>
[[nodiscard]] Square QueenToDevelop(Bitboard queens) {
    return S == White ? firstBit(queens) : highestBit(queens);
}

}  // namespace

int MaterialImbalance(const Board& board) {
    if (board.phaseCount[White] <= weights::BareTradePhase &&
        board.phaseCount[Black] <= weights::BareTradePhase) {
        return 0;
    }
    const int minors = board.minorSurplus;
    const int majors = board.majorSurplus;
    if (minors == 0 && majors == 0) {
        const int whiteQueen = board.pieces[WhiteQueen] != 0 ? 1 : 0;
        const int blackQueen = board.pieces[BlackQueen] != 0 ? 1 : 0;
        return weights::ImbalanceQueen * (whiteQueen - blackQueen);
    }
    return Trades.values[std::clamp(minors, -MostSurplus, MostSurplus) + MostSurplus]
                        [std::clamp(majors, -MostSurplus, MostSurplus) + MostSurplus];
}

template <Side S>
int Development(const Board& board) {
    if (board.rules->variant != Variant::Normal || !DevelopmentIsOpen<S>(board)) return 0;
    const auto square = [](const char(&name)[3]) { return bit[Seen<S>(squareNamed(name))]; };
    const Bitboard pawns = board.pieces[pieceOf(Kind::Pawn, S)];

    const Bitboard centre = pawns & (square("d2") | square("e2"));
    const Bitboard blocked = pushed<S>(centre) & board.occupied();
    int score = -weights::BlockedCentrePawn * popCount(blocked);
    const Bitboard gambit = square("c2") | square("d4");
    if ((pawns & gambit) == gambit &&
        (board.pieces[pieceOf(Kind::Knight, S)] & square("c3")) != 0 &&
        (board.pieces[pieceOf(Kind::Pawn, opposite(S))] & square("d5")) != 0) {
        score -= weights::BlockedQueensGambit;
    }
    const Bitboard queens = board.pieces[pieceOf(Kind::Queen, S)];
    if (queens != 0) score += weights::queenDevelopmentTable[Seen<S>(QueenToDevelop<S>(queens))];
    return score;
}

template int Development<White>(const Board& board);
template int Development<Black>(const Board& board);

}  // namespace brivok
