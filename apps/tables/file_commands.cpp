#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "../common/sha256.h"
#include "commands.h"
#include "pack.h"
#include "table_info.h"
#include "table_record.h"
#include "table_store.h"
#include "task.h"

namespace brivok::tables {
namespace {

PackProgress percentage(Task& task) {
    return [&task](std::uint64_t done, std::uint64_t total) {
        task.show(std::to_string(done * 100 / total) + " %");
    };
}

}  // namespace

void packFiles(const PackFilesOptions& options) {
    for (const std::filesystem::path file : options.files) {
        const std::filesystem::path packed = packedName(file);
        if (isPackedName(file)) fail(file, "already packed");
        Task task(packed.string());
        const bool recorded = recordBeside(file) && requireRecorded(file, sha256OfFile(file));
        const PackResult result = packFile(
            file, packed,
            {.threads = options.threads, .best = options.best, .progress = percentage(task)});
        if (recorded)
            recordPacking(file.parent_path(), parseTableFileName(file.filename().string()).id);
        task.report(std::to_string(result.packedSize) + " of " + std::to_string(result.plainSize) +
                    " bytes");
    }
}

void unpackFiles(const Files& files) {
    for (const std::string& file : files) {
        const std::filesystem::path plain = plainName(file);
        Task task(plain.string());
        const auto record = recordBeside(file);
        const std::uint64_t size = unpackFile(
            file, plain, {.sha256 = record ? record->sha256 : "", .progress = percentage(task)});
        task.report(std::to_string(size) + " bytes");
    }
}

void describeFiles(const Files& files) {
    for (const std::string& file : files) std::printf("%s", tableInfo(file).c_str());
}

}  // namespace brivok::tables
