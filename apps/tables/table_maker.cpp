#include "table_maker.h"

#include "file_walk.h"
#include "parallel.h"
#include "retrograde.h"
#include "table_entry.h"

namespace brivok::tables {
namespace {

/// Turns the results of an analysis into the file for one side to move.
template <typename W>
class FileWriter {
public:
    FileWriter(int itsId, const Material& itsMaterial, unsigned itsSide,
               const Retrograde<W>& itsResults, unsigned itsThreads)
        : id(itsId),
          material(itsMaterial),
          side(itsSide),
          results(itsResults),
          threads(itsThreads),
          walk(id, material, side) {}

    void write(const FileSink& sink) {
        const std::uint64_t size = descriptorOf(id).size[side];
        // A few pairs of kings at a time.
        for (unsigned from = 0, to = 0; from < walk.pairs(); from = to) {
            to = from + 1;
            while (to < walk.pairs() && walk.first(to + 1) - walk.first(from) <= EntriesInPiece)
                ++to;
            begin(walk.first(from), std::min(size, walk.first(to)));
            walk.visitPairs(threads, from, to, [this](std::uint64_t index, const Squares& squares) {
                if (index - first < entries.size()) {
                    entries[index - first] = results.plainEntry(squares, side);
                }
            });
            finish(sink);
        }
        // The entries with an en passant square.
        for (std::uint64_t from = walk.size(); from < size; from += EntriesInPiece) {
            begin(from, std::min(size, from + EntriesInPiece));
            inParallel(threads, entries.size(), [this](std::uint64_t piece, std::uint64_t end) {
                Position position;
                for (std::uint64_t i = piece; i < end; ++i) {
                    if (legalPosition(id, material, side, first + i, position)) {
                        entries[i] = entryOf<W>(results.passingOutcome(position));
                    }
                }
            });
            finish(sink);
        }
    }

private:
    static constexpr std::uint64_t EntriesInPiece = std::uint64_t{1} << 24;

    void begin(std::uint64_t from, std::uint64_t to) {
        first = from;
        entries.assign(to > from ? to - from : 0, entryOf<W>(NoValue));
    }

    /// Low bytes come first.
    void finish(const FileSink& sink) {
        if constexpr (sizeof(W) == 1) {
            sink(side, entries);
        } else {
            std::vector<std::uint8_t> bytes;
            bytes.reserve(entries.size() * sizeof(W));
            for (const W entry : entries) {
                bytes.push_back(static_cast<std::uint8_t>(entry & 0xFF));
                bytes.push_back(static_cast<std::uint8_t>(entry >> 8));
            }
            sink(side, bytes);
        }
    }

    int id;
    const Material& material;
    unsigned side;
    const Retrograde<W>& results;
    unsigned threads;
    FileWalk walk;
    std::uint64_t first = 0;  ///< index of the first of the entries
    std::vector<W> entries;
};

template <typename W>
void make(int id, TableStore& store, const MakerOptions& options, const FileSink& sink) {
    const Material material = materialOf(descriptorOf(id).signature());
    options.progress("captures and promotions");
    Retrograde<W> retrograde(id, store, options.threads, options.scratch);
    retrograde.solve([&](unsigned distance, std::uint64_t found) {
        options.progress("distance " + std::to_string(distance) + ", " + std::to_string(found) +
                         " positions");
    });
    options.progress("entries");
    for (unsigned side = 0; side < filesOf(id); ++side) {
        FileWriter<W>(id, material, side, retrograde, options.threads).write(sink);
    }
}

template <typename W>
TableBytes makeInMemory(int id, TableStore& store, const MakerOptions& options) {
    TableBytes bytes;
    for (unsigned side = 0; side < filesOf(id); ++side) {
        bytes[side].reserve(descriptorOf(id).size[side] * sizeof(W));
    }
    make<W>(id, store, options, [&](unsigned side, std::span<const std::uint8_t> piece) {
        bytes[side].insert(bytes[side].end(), piece.begin(), piece.end());
    });
    return bytes;
}

}  // namespace

void writeTable(int id, TableStore& store, const MakerOptions& options, const FileSink& sink) {
    isWide(id) ? make<WideWorth>(id, store, options, sink) : make<Worth>(id, store, options, sink);
}

TableBytes makeTable(int id, TableStore& store, const MakerOptions& options) {
    return isWide(id) ? makeInMemory<WideWorth>(id, store, options)
                      : makeInMemory<Worth>(id, store, options);
}

TableBytes makeWideTable(int id, TableStore& store, const MakerOptions& options) {
    return makeInMemory<WideWorth>(id, store, options);
}

}  // namespace brivok::tables
