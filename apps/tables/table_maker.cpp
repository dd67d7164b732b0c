#include "table_maker.h"

#include "file_walk.h"
#include "parallel.h"
#include "retrograde.h"
#include "table_entry.h"

namespace brivok::tables {
namespace {

/// Sets the entries of a file for one side to move.
void fill(int id, const Material& material, unsigned side, const Retrograde& retrograde,
          unsigned threads, std::vector<std::uint8_t>& bytes) {
    const FileWalk walk(id, material, side);
    walk.visitAll(threads, [&](std::uint64_t index, const Squares& squares) {
        if (index < bytes.size()) bytes[index] = retrograde.plainByte(squares, side);
    });
    if (bytes.size() <= walk.size()) return;
    // The entries with an en passant square.
    inParallel(threads, bytes.size() - walk.size(), [&](std::uint64_t begin, std::uint64_t end) {
        Position position;
        for (std::uint64_t index = walk.size() + begin; index < walk.size() + end; ++index) {
            if (legalPosition(id, material, side, index, position)) {
                bytes[index] = byteOf(retrograde.passingOutcome(position));
            }
        }
    });
}

}  // namespace

TableBytes makeTable(int id, TableStore& store, unsigned threads,
                     const std::function<void(const std::string&)>& progress) {
    const Material material = materialOf(descriptorOf(id).signature());
    progress("captures and promotions");
    Retrograde retrograde(material, store, threads);
    retrograde.solve([&](unsigned distance, std::uint64_t found) {
        progress("distance " + std::to_string(distance) + ", " + std::to_string(found) +
                 " positions");
    });
    progress("entries");
    TableBytes bytes;
    for (unsigned side = 0; side < filesOf(id); ++side) {
        bytes[side].assign(descriptorOf(id).size[side], BrokenByte);
        fill(id, material, side, retrograde, threads, bytes[side]);
    }
    return bytes;
}

}  // namespace brivok::tables
