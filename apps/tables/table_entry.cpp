#include "table_entry.h"

#include <cstddef>

#include "egtb/piece_list.h"
#include "egtb/table_index.h"

namespace brivok::tables {
namespace {

/// Squares of the men of a signature, from tablePosition().
Squares squaresOf(const Material& material, const TablePosition& position) {
    Squares squares{};
    std::size_t ordinal = 0;
    for (std::size_t i = 0; i < MaxMen; ++i) {
        if (i == material.count) break;  // a second bound, so that compilers see a constant one
        const PieceList& list = material.side[i] == 0 ? position.first : position.second;
        ordinal = i >= 2 && material.likeTheOneBefore(i) ? ordinal + 1 : 0;
        const std::size_t slot = tablePlaceOf(material.man[i]) * SlotsPerType + ordinal;
        squares[i] = static_cast<std::uint8_t>(list[slot]);
    }
    return squares;
}

}  // namespace

bool legalPosition(int id, const Material& material, unsigned side, std::uint64_t index,
                   Position& position) {
    TablePosition placement;
    if (!tablePosition(id, side, index, placement)) return false;
    position.squares = squaresOf(material, placement);
    position.mover = static_cast<std::uint8_t>(side);
    position.ep = placement.ep;
    return isLegal(material, position);
}

std::string fenOf(const Material& material, const Position& position) {
    std::string fen;
    for (int rank = 7; rank >= 0; --rank) {
        int empty = 0;
        const auto flushEmpty = [&] {
            if (empty != 0) fen += static_cast<char>('0' + empty);
            empty = 0;
        };
        for (int file = 0; file < 8; ++file) {
            char letter = 0;
            for (std::size_t i = 0; i < material.count; ++i) {
                if (position.squares[i] != rank * 8 + file) continue;
                letter = fenLetter(pieceOf(material.man[i], material.side[i] == 0 ? White : Black));
            }
            if (letter == 0) {
                ++empty;
            } else {
                flushEmpty();
                fen += letter;
            }
        }
        flushEmpty();
        if (rank != 0) fen += '/';
    }
    fen += position.mover == 0 ? " w - " : " b - ";
    if (position.ep == NoEnPassant) {
        fen += '-';
    } else {
        fen += static_cast<char>('a' + (position.ep & 7));
        fen += static_cast<char>('1' + (position.ep >> 3));
    }
    return fen + " 0 1";
}

}  // namespace brivok::tables
