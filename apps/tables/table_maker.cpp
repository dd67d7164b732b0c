#include "table_maker.h"

#include <algorithm>

#include "file_walk.h"
#include "parallel.h"
#include "retrograde.h"
#include "table_entry.h"

namespace brivok::tables {
namespace {

void addWithTablesBelow(int id, std::vector<int>& ids) {
    if (std::find(ids.begin(), ids.end(), id) != ids.end()) return;
    for (const int below : tablesBelow(id)) addWithTablesBelow(below, ids);
    ids.push_back(id);
}

/// Whether a target on the command line includes the table.
bool namesTable(std::string_view target, std::string_view signature) {
    if (target == "3men") return signature.size() == 3;
    if (target == "4men") return signature.size() == 4;
    if (target == "all4") return signature.size() == 3 || signature.size() == 4;
    return target == signature;
}

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

std::vector<int> tablesToMake(const std::vector<std::string>& targets) {
    std::vector<int> ids;
    for (const std::string& target : targets) {
        bool known = false;
        for (int id = 1; id < TableCount; ++id) {
            const std::string_view signature = descriptorOf(id).signature();
            if (!namesTable(target, signature)) continue;
            if (signature.size() > MaxMen) {
                throw AppError(target + ": tables of six men cannot be made");
            }
            known = true;
            addWithTablesBelow(id, ids);
        }
        if (!known) throw AppError(target + ": no such table");
    }
    return ids;
}

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
