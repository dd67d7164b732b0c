#include "targets.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "../common/app_error.h"
#include "egtb/descriptors.h"
#include "material.h"

namespace brivok::tables {
namespace {

/// A name for all tables of some numbers of men.
struct Group {
    std::string_view name;
    std::size_t fewest = 0;
    std::size_t most = 0;
};
constexpr std::array Groups = {
    Group{"3men", 3, 3}, Group{"4men", 4, 4}, Group{"5men", 5, 5},
    Group{"all4", 3, 4}, Group{"all5", 3, 5},
};

bool namesTable(std::string_view target, std::string_view signature) {
    for (const Group& group : Groups) {
        if (target == group.name) {
            return signature.size() >= group.fewest && signature.size() <= group.most;
        }
    }
    return target == signature;
}

void addOnce(int id, std::vector<int>& ids) {
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
}

void addWithTablesBelow(int id, std::vector<int>& ids) {
    if (std::find(ids.begin(), ids.end(), id) != ids.end()) return;
    for (const int below : tablesBelow(id)) addWithTablesBelow(below, ids);
    ids.push_back(id);
}

}  // namespace

std::vector<int> tablesNamed(const std::vector<std::string>& targets) {
    std::vector<int> ids;
    for (const std::string& target : targets) {
        bool known = false;
        for (int id = 1; id < TableCount; ++id) {
            const std::string_view signature = descriptorOf(id).signature();
            if (!namesTable(target, signature)) continue;
            if (signature.size() == MaxMen && materialOf(signature).hasPawns()) {
                throw AppError(target + ": tables of six men with pawns cannot be made");
            }
            known = true;
            addOnce(id, ids);
        }
        if (!known) throw AppError(target + ": no such table");
    }
    return ids;
}

std::vector<int> tablesToMake(const std::vector<std::string>& targets) {
    std::vector<int> ids;
    for (const int id : tablesNamed(targets)) addWithTablesBelow(id, ids);
    return ids;
}

}  // namespace brivok::tables
