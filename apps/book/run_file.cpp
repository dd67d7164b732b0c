#include "run_file.h"

#include <algorithm>
#include <type_traits>

#include "../common/app_error.h"

namespace brivok {

RunFile::RunFile(const std::filesystem::path& output) : fresh(makeFileBeside(output)) {
    std::error_code refused;
    nameless = std::filesystem::remove(fresh.path, refused);
}

RunFile::~RunFile() {
    if (nameless) return;
    fresh.file.reset();
    std::error_code unknown;
    std::filesystem::remove(fresh.path, unknown);
}

void RunFile::append(std::span<const Observation> run) {
    static_assert(std::is_trivially_copyable_v<Observation>);
    const std::uint64_t first = allRuns.empty() ? 0 : allRuns.back().first + allRuns.back().count;
    if (std::fwrite(run.data(), sizeof(Observation), run.size(), fresh.file.get()) != run.size() ||
        std::fflush(fresh.file.get()) != 0) {
        failWithErrno(fresh.path);
    }
    allRuns.push_back({first, run.size()});
}

std::size_t RunFile::read(Run& run, std::span<Observation> room) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(run.count, room.size()));
    if (count == 0) return 0;
    const std::uint64_t offset = run.first * sizeof(Observation);
    if (std::fseek(fresh.file.get(), static_cast<long>(offset), SEEK_SET) != 0 ||
        std::fread(room.data(), sizeof(Observation), count, fresh.file.get()) != count) {
        failWithErrno(fresh.path);
    }
    run.first += count;
    run.count -= count;
    return count;
}

}  // namespace brivok
