#include "egtb/enumeration.h"

namespace brivok {
namespace {

constexpr int fileOfSquare(int square) { return square & 7; }
constexpr int rankOfSquare(int square) { return square >> 3; }
constexpr int distance(int a, int b) { return a < b ? b - a : a - b; }

/// Whether a man on `square` checks a king that is one step or a knight's move away.
constexpr bool checksFromNear(ManType type, int square, int king) {
    const int files = distance(fileOfSquare(square), fileOfSquare(king));
    const int ranks = distance(rankOfSquare(square), rankOfSquare(king));
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

constexpr Enumeration enumerate(ManType type, int king) {
    Enumeration result;
    result.number.fill(Enumeration::Forbidden);
    const int first = isPawn(type) ? 8 : 0;
    for (int square = first; square < 64 - first; ++square) {
        if (square == king || checksFromNear(type, square, king)) continue;
        result.square[result.count] = static_cast<std::uint8_t>(square);
        result.number[static_cast<std::size_t>(square)] = result.count++;
    }
    return result;
}

constexpr auto enumerateAll() {
    std::array<std::array<Enumeration, 64>, ManTypes> all{};
    for (std::size_t type = 0; type < ManTypes; ++type) {
        for (std::size_t king = 0; king < 64; ++king) {
            all[type][king] = enumerate(static_cast<ManType>(type), static_cast<int>(king));
        }
    }
    return all;
}

template <class Representative>
constexpr KingPairs numberKings(Representative isRepresentative) {
    KingPairs pairs;
    for (auto& row : pairs.number) row.fill(KingPairs::Missing);
    for (int first = 0; first < 64; ++first) {
        for (int second = 0; second < 64; ++second) {
            const int files = distance(fileOfSquare(first), fileOfSquare(second));
            const int ranks = distance(rankOfSquare(first), rankOfSquare(second));
            if ((files <= 1 && ranks <= 1) || !isRepresentative(first, second)) continue;
            const auto a = static_cast<std::uint8_t>(first);
            const auto b = static_cast<std::uint8_t>(second);
            pairs.number[a][b] = static_cast<std::int16_t>(pairs.count);
            pairs.kings[pairs.count++] = {a, b};
        }
    }
    return pairs;
}

constexpr bool onLeftHalf(int first, int /*second*/) { return fileOfSquare(first) <= 3; }

constexpr bool inTriangle(int first, int second) {
    const int above = rankOfSquare(first) - fileOfSquare(first);
    return fileOfSquare(first) <= 3 && above <= 0 &&
           (above < 0 || rankOfSquare(second) <= fileOfSquare(second));
}

}  // namespace

constexpr std::array<std::array<Enumeration, 64>, ManTypes> enumerations = enumerateAll();
constexpr KingPairs kingPairs1806 = numberKings(onLeftHalf);
constexpr KingPairs kingPairs462 = numberKings(inTriangle);

static_assert(kingPairs1806.count == 1806 && kingPairs462.count == 462);

}  // namespace brivok
