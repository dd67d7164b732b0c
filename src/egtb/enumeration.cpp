#include "egtb/enumeration.h"

namespace brivok {
namespace {

constexpr unsigned fileOfSquare(unsigned square) { return square & 7; }
constexpr unsigned rankOfSquare(unsigned square) { return square >> 3; }
constexpr unsigned distance(unsigned a, unsigned b) { return a < b ? b - a : a - b; }

/// Whether a man on `square` checks a king that is one step or a knight's move away.
constexpr bool checksFromNear(ManType type, unsigned square, unsigned king) {
    const unsigned files = distance(fileOfSquare(square), fileOfSquare(king));
    const unsigned ranks = distance(rankOfSquare(square), rankOfSquare(king));
    switch (type) {
        case ManType::FreePawn: return false;
        case ManType::Pawn: return files == 1 && rankOfSquare(king) == rankOfSquare(square) + 1;
        case ManType::Knight: return files * ranks == 2;
        case ManType::Bishop: return files == 1 && ranks == 1;
        case ManType::Rook: return files + ranks == 1;
        case ManType::Queen: return files <= 1 && ranks <= 1;
    }
    return false;
}

constexpr Enumeration enumerate(ManType type, unsigned king) {
    Enumeration result;
    result.number.fill(Enumeration::Forbidden);
    const std::uint8_t first = isPawn(type) ? 8 : 0;
    for (std::uint8_t square = first; square < 64 - first; ++square) {
        if (square == king || checksFromNear(type, square, king)) continue;
        result.square[result.count] = square;
        result.number[square] = result.count++;
    }
    return result;
}

constexpr auto enumerateAll() {
    std::array<std::array<Enumeration, 64>, ManTypes> all{};
    for (std::size_t type = 0; type < ManTypes; ++type) {
        for (unsigned king = 0; king < 64; ++king) {
            all[type][king] = enumerate(static_cast<ManType>(type), king);
        }
    }
    return all;
}

template <class Representative>
constexpr KingPairs numberKings(Representative isRepresentative) {
    KingPairs pairs;
    for (auto& row : pairs.number) row.fill(KingPairs::Missing);
    for (std::uint8_t first = 0; first < 64; ++first) {
        for (std::uint8_t second = 0; second < 64; ++second) {
            const unsigned files = distance(fileOfSquare(first), fileOfSquare(second));
            const unsigned ranks = distance(rankOfSquare(first), rankOfSquare(second));
            if ((files <= 1 && ranks <= 1) || !isRepresentative(first, second)) continue;
            pairs.number[first][second] = pairs.count;
            pairs.kings[pairs.count++] = {first, second};
        }
    }
    return pairs;
}

constexpr bool onLeftHalf(unsigned first, unsigned /*second*/) { return fileOfSquare(first) <= 3; }

constexpr bool inTriangle(unsigned first, unsigned second) {
    const unsigned file = fileOfSquare(first);
    const unsigned rank = rankOfSquare(first);
    return file <= 3 && rank <= file &&
           (rank < file || rankOfSquare(second) <= fileOfSquare(second));
}

}  // namespace

constexpr std::array<std::array<Enumeration, 64>, ManTypes> enumerations = enumerateAll();
constexpr KingPairs kingPairs1806 = numberKings(onLeftHalf);
constexpr KingPairs kingPairs462 = numberKings(inTriangle);

static_assert(kingPairs1806.count == 1806 && kingPairs462.count == 462);

}  // namespace brivok
