#include "table_jobs.h"

#include <cstdint>
#include <system_error>

#include "../common/app_error.h"
#include "../common/sha256.h"
#include "file_pieces.h"
#include "making_watch.h"
#include "new_table.h"
#include "table_maker.h"
#include "table_record.h"
#include "table_store.h"
#include "verify.h"

namespace brivok::tables {
namespace {

/// Number of entries to check in a file without a record before trusting it.
constexpr std::uint64_t TrustedSample = 1000;

/// Whether a sample of the table's entries is right.
bool isPlausible(int id, TableStore& store, const JobListener& listener) {
    listener.onStep("checking");
    try {
        const auto finding = contradictionInSample(id, store, TrustedSample);
        if (!finding) return true;
        listener.onOutcome(*finding);
    } catch (const AppError& error) {
        listener.onOutcome(error.what());
    }
    return false;
}

/// Takes what is already there into the records.
bool adopt(const std::filesystem::path& folder, int id, TableStore& store,
           const JobListener& listener) {
    const Standing standing = standingOf(folder, id);
    if (standing == Standing::Misrecorded) std::filesystem::remove(recordPath(folder, id));
    if (standing != Standing::Unrecorded && standing != Standing::Misrecorded) return false;
    if (!isPlausible(id, store, listener)) return false;
    writeRecord(folder, recordOf(id, store, std::nullopt));
    recordPacking(folder, id);
    listener.onOutcome("already there");
    return true;
}

/// The sum of the entries for a side to move, plain or packed, in however many files.
std::string sumOfEntries(const TableStore& store, int id, unsigned side) {
    Sha256 sum;
    forEachPiece(store, id, side, [&](ByteSpan piece) { sum.add(piece); });
    return sum.finish();
}

/// The first difference of the files for a side to move from their record.
std::optional<std::string> differenceOf(const TableStore& store, int id, unsigned side,
                                        const FileRecord& record) {
    const std::filesystem::path file = store.find(id, side);
    std::error_code failure;
    if (!isSplit(id) && !isPackedName(file) &&
        std::filesystem::file_size(file, failure) != record.bytes()) {
        return file.string() + ": does not have the recorded size";
    }
    const bool isRight = isPackedName(file) && record.packed
                             ? sha256OfFile(file) == record.packed->sha256
                             : sumOfEntries(store, id, side) == record.sha256;
    if (isRight) return std::nullopt;
    return file.string() + ": does not have the recorded SHA-256 sum";
}

}  // namespace

Standing standingOf(const std::filesystem::path& folder, int id) {
    if (!TableStore(folder).has(id)) return Standing::Missing;
    try {
        return readRecord(folder, id) ? Standing::Recorded : Standing::Unrecorded;
    } catch (const AppError&) {
        return Standing::Misrecorded;
    }
}

std::optional<std::string> differenceFromRecord(const std::filesystem::path& folder, int id) {
    const TableStore store(folder);
    try {
        const auto record = readRecord(folder, id);
        if (!record) return std::nullopt;
        for (unsigned side = 0; side < filesOf(id); ++side) {
            if (const auto difference = differenceOf(store, id, side, record->files[side])) {
                return difference;
            }
        }
        return std::nullopt;
    } catch (const AppError& error) {
        return error.what();
    }
}

void makeAndRecord(const std::filesystem::path& folder, const Job& job,
                   const std::vector<int>& trusted, const JobListener& listener) {
    const auto openStore = [&] {
        TableStore store(folder);
        for (const int id : trusted) store.trust(id);
        return store;
    };
    if (TableStore store = openStore(); adopt(folder, job.id, store, listener)) return;
    TableStore store = openStore();
    const MakingWatch watch;
    NewTable table(job.id, folder);
    writeTable(job.id, store,
               {.threads = job.threads,
                .scratch = job.usesScratch ? folder : std::filesystem::path(),
                .progress = listener.onStep},
               [&](unsigned side, ByteSpan bytes) { table.write(side, bytes); });
    writeRecord(folder, table.finish(watch.finish(job.threads)));
    listener.onOutcome("made");
}

void packAndRecord(const std::filesystem::path& folder, const Job& job,
                   const JobListener& listener) {
    const TableStore store(folder);
    store.pack(job.id, job.threads, [&](unsigned percent) {
        listener.onStep("packing, " + std::to_string(percent) + "%");
    });
    recordPacking(folder, job.id);
    store.removePlain(job.id);
}

}  // namespace brivok::tables
