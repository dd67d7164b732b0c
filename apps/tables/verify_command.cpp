#include <string>
#include <vector>

#include "commands.h"
#include "material.h"
#include "table_store.h"
#include "task.h"
#include "verify.h"

namespace brivok::tables {

bool verifyTables(const VerifyOptions& options) {
    TableStore store(options.folder);
    bool foundTables = false;
    for (int id = 1; id < TableCount && descriptorOf(id).signature().size() <= MaxMen; ++id) {
        if (!store.hasAny(id)) continue;
        foundTables = true;
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
    if (!foundTables) fail(options.folder, "no tables found");
    return true;
}

}  // namespace brivok::tables
