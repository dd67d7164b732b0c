#include <string>
#include <vector>

#include "commands.h"
#include "material.h"
#include "table_store.h"
#include "targets.h"
#include "task.h"
#include "verify.h"

namespace brivok::tables {
namespace {

/// The tables of which the folder has a file.
std::vector<int> tablesIn(const TableStore& store) {
    std::vector<int> ids;
    for (int id = 1; id < TableCount && descriptorOf(id).signature().size() <= MaxMen; ++id) {
        if (store.hasAny(id)) ids.push_back(id);
    }
    return ids;
}

}  // namespace

bool verifyTables(const VerifyOptions& options) {
    TableStore store(options.folder);
    const std::vector<int> ids =
        options.tables.empty() ? tablesIn(store) : tablesNamed(options.tables);
    if (ids.empty()) fail(options.folder, "no tables found");
    for (const int id : ids) {
        Task task(std::string(descriptorOf(id).signature()));
        task.show("verifying");
        std::vector<int> used = tablesBelow(id);
        used.push_back(id);
        store.keepOnly(used);
        const auto finding = options.sample != 0 ? contradictionInSample(id, store, options.sample)
                                                 : contradiction(id, store, options.threads);
        task.report(finding.value_or("correct"));
        if (finding) return false;
    }
    return true;
}

}  // namespace brivok::tables
