#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "layout.h"
#include "material.h"
#include "outcome.h"
#include "table_store.h"

namespace brivok::tables {

/// What captures and promotions are worth to the side that makes them, once they are made. The
/// tables that they lead to are read by position and numbered like a Layout: the pair of kings,
/// then the squares of the men left, of which a promoted one has only a file. The worth of a
/// promotion is that of the best new piece. Illegal captures and promotions are NoWorth.
///
/// The generator's ConversionWorths tell much the same. These are for checking its tables, and
/// share no code with it on purpose.
class ConvertedWorths {
public:
    /// A man to capture and a pawn to promote; 0 means none.
    struct Change {
        std::size_t captured = 0;
        std::size_t promoted = 0;
    };

    ConvertedWorths(const Material& itsMaterial, const Layout& itsLayout, TableStore& store,
                    unsigned threads);

    /// `squares` are those after the move; that of the captured man does not matter.
    [[nodiscard]] Worth worth(const Change& change, Squares squares) const;

    /// The 64 worths by the square of the last man, which is neither captured nor promoted. The
    /// squares are as the layout's symmetry leaves them, the kings those of the pair.
    [[nodiscard]] const Worth* row(const Change& change, unsigned pair, Squares squares) const;

private:
    /// The results of one change.
    struct Table {
        struct Digit {
            std::size_t man = 0;
            unsigned place = 0;  ///< in bits
            bool isFile = false;
        };
        std::vector<Digit> digits;  ///< highest first
        unsigned bits = 0;
        std::unique_ptr<Worth[]> worths;

        [[nodiscard]] std::size_t number(unsigned pair, const Squares& squares) const;
    };

    void read(const Change& change, TableStore& store, unsigned threads);
    [[nodiscard]] const Table& tableOf(const Change& change, Squares& squares) const;

    Material material;
    const Layout& layout;
    std::array<std::size_t, MaxMen> firstLike{};             ///< by man
    std::array<std::array<Table, MaxMen>, MaxMen> tables{};  ///< by captured and promoted
};

}  // namespace brivok::tables
