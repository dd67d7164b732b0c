#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "material.h"
#include "moves.h"

namespace brivok::tables {

/// A numbering of the positions of a table, designed for fast steps to neighbouring positions: the
/// pair of kings up to symmetry, then 64 squares for each other man. Both sides to move share it.
/// Positions with an en passant square follow: the pair, 16 cases of the capture, and the men that
/// take no part in it.
///
/// Positions that are equal by symmetry or by exchange of like men may have several numbers; only
/// the one that index() returns is used.
class Layout {
public:
    explicit Layout(const Material& itsMaterial);

    [[nodiscard]] std::uint64_t size() const { return total; }

    /// Accepts any number below size(); the position may be illegal or meaningless.
    [[nodiscard]] Position position(std::uint64_t index, unsigned mover) const;

    /// The kings must not be adjacent.
    [[nodiscard]] std::uint64_t index(const Position& position) const;

    /// Whether a reflection in the a1-h8 diagonal yields the position itself, as index() reduces
    /// it. Its moves, and the moves that lead to it, then come in mirrored pairs that are the same
    /// move.
    [[nodiscard]] bool isItsOwnMirror(const Position& position) const;

private:
    struct Reduction {
        std::uint16_t pair;
        std::uint8_t symmetry;
    };

    void sortLikeMen(Squares& squares) const;
    [[nodiscard]] std::uint64_t plainIndex(unsigned pair, const Squares& squares) const;
    [[nodiscard]] std::uint64_t epIndex(unsigned pair, unsigned mover, const Squares& squares,
                                        int ep) const;
    [[nodiscard]] Position epPosition(std::uint64_t index, unsigned mover) const;

    Material material;
    bool hasLikeMen = false;
    unsigned plainBits = 0;  ///< of the men except the kings
    unsigned epBits = 0;     ///< of the men except the kings and the capturing and captured pawns
    std::uint64_t plainSize = 0;
    std::uint64_t total = 0;
    std::array<std::size_t, 2> lastPawn{};  ///< of each side
    std::array<std::array<std::uint8_t, 64>, 8> symmetries{};
    std::array<std::array<Reduction, 64>, 64> reductions{};
    std::vector<std::array<std::uint8_t, 2>> kings;  ///< by pair
};

}  // namespace brivok::tables
