#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "layout.h"
#include "material.h"
#include "outcome.h"
#include "table_reader.h"
#include "table_store.h"

namespace brivok::tables {

/// What the captures and promotions of a side are worth to it, for a row of a layout at a time.
///
/// The tables below that captures lead to are read once and turned into the numbering of the table
/// that is being made, without the captured man: a row of positions then leads to a row of results.
/// Positions that are illegal have no worth there, so nobody asks whether a capture exposes the
/// king. Promotions are looked up in the files.
class ConversionWorths {
public:
    /// For the first `movers` sides, one or both, as the mover.
    ConversionWorths(const Material& itsMaterial, unsigned movers, const Layout& itsLayout,
                     TableStore& store, unsigned threads);

    /// Sets, by the square of the last man, the best of the mover's captures and promotions,
    /// without those in passing. `squares` are those of the other men, `legal` those of the last
    /// man in legal positions. `worths` are NoWorth before, and stay so where there are no such
    /// moves.
    void rate(const Squares& squares, unsigned mover, Bitboard legal, Worth* worths) const;

    /// The best capture of `pawn`, which has just made a double step, in passing. NoWorth if there
    /// is none.
    [[nodiscard]] Worth enPassant(const Squares& squares, std::size_t pawn) const;

private:
    using Worths = std::vector<Worth>;

    [[nodiscard]] Worths worthsWithout(std::size_t victim, TableStore& store,
                                       unsigned threads) const;
    void setReflections(Worths& worths, std::size_t victim, const Squares& squares, Worth worth,
                        std::size_t symmetries) const;
    [[nodiscard]] Worth capture(const Squares& after, std::size_t victim) const;
    [[nodiscard]] std::uint64_t indexWithout(std::size_t victim, unsigned pair,
                                             const Layout::Image& image,
                                             const Squares& squares) const;
    void rateCapturesByLast(const Squares& squares, Bitboard others, Worth* worths) const;
    void rateCapturesBy(std::size_t captor, const Squares& squares, Bitboard others,
                        Worth* worths) const;
    void rateCapture(std::size_t captor, std::size_t victim, const Squares& squares,
                     Worth* worths) const;
    void ratePromotions(const Squares& squares, unsigned mover, Bitboard legal,
                        Worth* worths) const;
    void ratePromotionsBy(std::size_t pawn, const Squares& squares, Worth& worth) const;

    Material material;
    const Layout& layout;
    std::size_t last;  ///< index of the last man
    ConversionReader files;
    std::array<Worths, MaxMen> without;           ///< by captured man; alike ones share the first's
    std::array<std::size_t, MaxMen> firstLike{};  ///< by man: the first that is like it
};

}  // namespace brivok::tables
