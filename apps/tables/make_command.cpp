#include <cstdint>
#include <string>

#include "commands.h"
#include "making_watch.h"
#include "material.h"
#include "table_maker.h"
#include "table_record.h"
#include "table_store.h"
#include "targets.h"
#include "task.h"
#include "verify.h"

namespace brivok::tables {
namespace {

/// Number of entries to check in an existing file before trusting it.
constexpr std::uint64_t TrustedSample = 1000;

/// Whether the table exists and a sample of its entries is right.
bool isFinished(int id, TableStore& store, Task& task) {
    if (!store.has(id)) return false;
    try {
        task.show("checking");
        const auto finding = contradictionInSample(id, store, TrustedSample);
        if (!finding) return true;
        task.report(*finding);
    } catch (const AppError& error) {
        task.report(error.what());
    }
    return false;
}

}  // namespace

void makeTables(const MakeOptions& options) {
    std::filesystem::create_directories(options.folder);
    TableStore store(options.folder);
    for (const int id : tablesToMake(options.targets)) {
        Task task(std::string(descriptorOf(id).signature()));
        store.keepOnly(tablesBelow(id));
        if (isFinished(id, store, task)) {
            task.report("already there");
        } else {
            const MakingWatch watch;
            store.put(id, makeTable(id, store, options.threads,
                                    [&](const std::string& step) { task.show(step); }));
            const Making making = watch.finish(options.threads);
            store.save(id);
            writeRecord(options.folder, recordOf(id, store, making));
            task.report("made");
        }
        if (options.compress) {
            task.show("packing");
            store.pack(id, options.threads);
            recordPacking(options.folder, id);
        }
    }
}

}  // namespace brivok::tables
