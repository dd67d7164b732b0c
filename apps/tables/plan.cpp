#include "plan.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>

#include "egtb/descriptors.h"
#include "material.h"
#include "table_costs.h"
#include "targets.h"

namespace brivok::tables {
namespace {

PlannedTable plannedTable(int id, bool compress) {
    const TableCosts costs = costsOf(id);
    PlannedTable table{.id = id,
                       .after = tablesBelow(id),
                       .seconds = costs.seconds,
                       .memory = costs.memory,
                       .disk = costs.plain};
    for (const int below : table.after) table.seconds += costsOf(below).checkSeconds;
    if (compress) {
        table.seconds += costs.packSeconds;
        table.memory = std::max(table.memory, PackingMemory);
        table.disk = costs.packed;
    }
    return table;
}

/// By table: the seconds from the start of its job to the end of the plan, were there machines
/// enough.
std::array<double, TableCount> secondsToTheEnd(const std::vector<PlannedTable>& tables) {
    std::array<double, TableCount> rest{};
    for (std::size_t i = tables.size(); i-- > 0;) {
        double& own = rest[static_cast<std::size_t>(tables[i].id)];
        own += tables[i].seconds;
        for (const int below : tables[i].after) {
            double& before = rest[static_cast<std::size_t>(below)];
            before = std::max(before, own);
        }
    }
    return rest;
}

}  // namespace

std::vector<PlannedTable> tablesToPlan(const std::vector<std::string>& targets, bool compress) {
    std::vector<PlannedTable> tables;
    for (const int id : tablesToMake(targets)) tables.push_back(plannedTable(id, compress));
    const auto rest = secondsToTheEnd(tables);
    // A table has more to come than any above it; where both round to the same, it stays before.
    std::stable_sort(
        tables.begin(), tables.end(), [&rest](const PlannedTable& a, const PlannedTable& b) {
            return rest[static_cast<std::size_t>(a.id)] > rest[static_cast<std::size_t>(b.id)];
        });
    return tables;
}

unsigned jobsThatFit(const std::vector<PlannedTable>& tables, std::uint64_t memory) {
    std::vector<std::uint64_t> needs;
    needs.reserve(tables.size());
    for (const PlannedTable& table : tables) needs.push_back(table.memory);
    std::sort(needs.begin(), needs.end(), std::greater<>());
    unsigned count = 0;
    std::uint64_t sum = 0;
    for (const std::uint64_t need : needs) {
        sum += need;
        if (sum > memory) break;
        ++count;
    }
    return std::max(count, 1U);
}

}  // namespace brivok::tables
