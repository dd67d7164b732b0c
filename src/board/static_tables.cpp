#include "board/static_tables.h"

#include <cstdlib>
#include <initializer_list>

namespace brivok {

std::uint32_t mirrorSquare[Squares];
Bitboard outpostGuardMask[2][Squares];
std::uint32_t direction[Squares][Squares];
Bitboard between[Squares][Squares];
Bitboard behind[Squares][Squares];
Bitboard knightAttacks[Squares];
Bitboard kingAttacks[Squares];
Bitboard whitePawnAttacks[Squares];
Bitboard blackPawnAttacks[Squares];
std::uint32_t diagNEShift[Squares];
std::uint32_t diagSEShift[Squares];
std::uint32_t diagNEMask[Squares];
std::uint32_t diagSEMask[Squares];
Bitboard rot90Set[Squares];
Bitboard diagNESet[Squares];
Bitboard diagSESet[Squares];
Bitboard rot90Clear[Squares];
Bitboard diagNEClear[Squares];
Bitboard diagSEClear[Squares];
Bitboard rankAttacks[Squares][64];
Bitboard fileAttacks[Squares][64];
Bitboard diagNEAttacks[Squares][256];
Bitboard diagSEAttacks[Squares][256];
std::uint8_t rankMoveCount[Squares][64];
std::uint8_t fileMoveCount[Squares][64];
Bitboard rookEmptyAttacks[Squares];
Bitboard bishopEmptyAttacks[Squares];
Bitboard queenEmptyAttacks[Squares];

namespace {

/// A diagonal within its rotated board.
struct Diagonal {
    int length = 0;
    unsigned firstBitIndex = 0;
    Square squares[8]{};
};

int diagonalLength(int number) { return 8 - std::abs(number - 7); }

int numberNE(Square sq) { return fileOf(sq) + rowOf(sq); }      // a8 is 0, h1 is 14
int numberSE(Square sq) { return 7 - fileOf(sq) + rowOf(sq); }  // h8 is 0, a1 is 14

Diagonal diagonalThrough(Square sq, int (*numberOf)(Square)) {
    Diagonal diagonal;
    const int number = numberOf(sq);
    for (int before = 0; before < number; ++before) {
        diagonal.firstBitIndex += static_cast<unsigned>(diagonalLength(before));
    }
    for (int file = 0; file < 8; ++file) {
        for (int row = 0; row < 8; ++row) {
            if (numberOf(squareAt(file, row)) != number) continue;
            diagonal.squares[diagonal.length++] = squareAt(file, row);
        }
    }
    return diagonal;
}

/// Position of the square on its diagonal, by rising file.
unsigned positionOn(const Diagonal& diagonal, Square sq) {
    unsigned position = 0;
    while (diagonal.squares[position] != sq) ++position;
    return position;
}

/// Attacks of a slider at `position` on a line of `length` bits: in both directions, up to and
/// including the first occupied bit.
unsigned lineAttacks(int position, int length, unsigned occupancy) {
    unsigned attacks = 0;
    for (int i = position + 1; i < length; ++i) {
        attacks |= 1U << i;
        if ((occupancy >> i & 1U) != 0) break;
    }
    for (int i = position - 1; i >= 0; --i) {
        attacks |= 1U << i;
        if ((occupancy >> i & 1U) != 0) break;
    }
    return attacks;
}

unsigned directionCode(Square from, Square to) {
    const bool rising = from < to;
    if (from == to) return 0;
    if (rowOf(from) == rowOf(to)) return rising ? 2 : 6;
    if (fileOf(from) == fileOf(to)) return rising ? 4 : 8;
    if (fileOf(from) + rowOf(from) == fileOf(to) + rowOf(to)) return rising ? 5 : 1;
    if (rowOf(from) - fileOf(from) == rowOf(to) - fileOf(to)) return rising ? 3 : 7;
    return 0;
}

void buildLines() {
    for (Square a = 0; a < Squares; ++a) {
        mirrorSquare[a] = static_cast<std::uint32_t>(squareAt(fileOf(a), 7 - rowOf(a)));
        for (Square b = 0; b < Squares; ++b) {
            direction[a][b] = directionCode(a, b);
            between[a][b] = behind[a][b] = 0;
            if (direction[a][b] == 0) continue;
            const int step = StepOfDirection[direction[a][b]];
            for (Square sq = a + step; sq != b; sq += step) between[a][b] |= bit[sq];
            // As long as the steps stay on the line, they do not wrap around the board's edge.
            for (Square sq = b + step;
                 sq >= 0 && sq < Squares && directionCode(b, sq) == direction[a][b]; sq += step) {
                behind[a][b] |= bit[sq];
            }
        }
    }
}

void buildOutpostMasks() {
    for (Square sq = 0; sq < Squares; ++sq) {
        outpostGuardMask[White][sq] = outpostGuardMask[Black][sq] = 0;
        if (rowOf(sq) == 0 || rowOf(sq) == 7) continue;
        for (const int file : {fileOf(sq) - 1, fileOf(sq) + 1}) {
            if (file < 0 || file > 7) continue;
            for (int row = 0; row < 8; ++row) {
                if (row < rowOf(sq)) outpostGuardMask[White][sq] |= bit[squareAt(file, row)];
                if (row > rowOf(sq)) outpostGuardMask[Black][sq] |= bit[squareAt(file, row)];
            }
        }
    }
}

/// Drops steps that wrap around the board's edge: they land more than `reach` away.
Bitboard leaperAttacks(Square sq, std::initializer_list<int> steps, int reach) {
    Bitboard attacks = 0;
    for (const int step : steps) {
        const Square to = sq + step;
        if (to < 0 || to >= Squares) continue;
        const int files = std::abs(fileOf(to) - fileOf(sq));
        const int rows = std::abs(rowOf(to) - rowOf(sq));
        if (files <= reach && rows <= reach) attacks |= bit[to];
    }
    return attacks;
}

void buildLeapers() {
    for (Square sq = 0; sq < Squares; ++sq) {
        knightAttacks[sq] = leaperAttacks(sq, {-17, -15, -6, 10, 17, 15, 6, -10}, 2);
        kingAttacks[sq] = leaperAttacks(sq, {-9, -7, -8, 7, 9, 8, -1, 1}, 1);
        whitePawnAttacks[sq] = leaperAttacks(sq, {NorthWest, NorthEast}, 1);
        blackPawnAttacks[sq] = leaperAttacks(sq, {SouthWest, SouthEast}, 1);
    }
}

void buildRankAndFileAttacks() {
    for (Square sq = 0; sq < Squares; ++sq) {
        for (unsigned inner = 0; inner < 64; ++inner) {
            const unsigned onRank = lineAttacks(fileOf(sq), 8, inner << 1U);
            const unsigned onFile = lineAttacks(7 - rowOf(sq), 8, inner << 1U);
            Bitboard rank = 0;
            Bitboard file = 0;
            for (int i = 0; i < 8; ++i) {
                if ((onRank >> i & 1U) != 0) rank |= bit[squareAt(i, rowOf(sq))];
                if ((onFile >> i & 1U) != 0) file |= bit[squareAt(fileOf(sq), 7 - i)];
            }
            rankAttacks[sq][inner] = rank;
            fileAttacks[sq][inner] = file;
            rankMoveCount[sq][inner] = static_cast<std::uint8_t>(popCount(rank));
            fileMoveCount[sq][inner] = static_cast<std::uint8_t>(popCount(file));
        }
        rookEmptyAttacks[sq] = rankAttacks[sq][0] | fileAttacks[sq][0];
    }
}

void buildDiagonal(Square sq, int (*numberOf)(Square), std::uint32_t& shift, std::uint32_t& mask,
                   Bitboard& rotatedBit, Bitboard (&attacks)[256]) {
    const Diagonal diagonal = diagonalThrough(sq, numberOf);
    const unsigned position = positionOn(diagonal, sq);
    shift = diagonal.firstBitIndex;
    mask = (1U << diagonal.length) - 1U;
    rotatedBit = Bitboard{1} << (shift + position);
    for (unsigned occupancy = 0; occupancy <= mask; ++occupancy) {
        const unsigned onLine = lineAttacks(static_cast<int>(position), diagonal.length, occupancy);
        Bitboard set = 0;
        for (int i = 0; i < diagonal.length; ++i) {
            if ((onLine >> i & 1U) != 0) set |= bit[diagonal.squares[i]];
        }
        attacks[occupancy] = set;
    }
}

void buildDiagonals() {
    for (Square sq = 0; sq < Squares; ++sq) {
        buildDiagonal(sq, numberNE, diagNEShift[sq], diagNEMask[sq], diagNESet[sq],
                      diagNEAttacks[sq]);
        buildDiagonal(sq, numberSE, diagSEShift[sq], diagSEMask[sq], diagSESet[sq],
                      diagSEAttacks[sq]);
        bishopEmptyAttacks[sq] = diagNEAttacks[sq][0] | diagSEAttacks[sq][0];
        queenEmptyAttacks[sq] = rookEmptyAttacks[sq] | bishopEmptyAttacks[sq];
        rot90Set[sq] = Bitboard{1} << (8 * fileOf(sq) + 7 - rowOf(sq));
        rot90Clear[sq] = ~rot90Set[sq];
        diagNEClear[sq] = ~diagNESet[sq];
        diagSEClear[sq] = ~diagSESet[sq];
    }
}

Bitboard rotate(Bitboard set, const Bitboard (&rotatedBits)[Squares]) {
    Bitboard rotated = 0;
    while (set != 0) rotated |= rotatedBits[takeNext<White>(set)];
    return rotated;
}

}  // namespace

Bitboard rotate90(Bitboard set) { return rotate(set, rot90Set); }
Bitboard rotateDiagNE(Bitboard set) { return rotate(set, diagNESet); }
Bitboard rotateDiagSE(Bitboard set) { return rotate(set, diagSESet); }

void buildStaticTables() {
    buildLines();
    buildOutpostMasks();
    buildLeapers();
    buildRankAndFileAttacks();
    buildDiagonals();
}

}  // namespace brivok
