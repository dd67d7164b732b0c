#include "files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "app_error.h"
#include "disk.h"

namespace brivok {

namespace {

constexpr std::string_view PartMark = ".part-";

/// Bytes to write between two looks at whether the user gives up.
constexpr std::size_t PieceSize = 1 << 22;

/// Removes a file of makeFileBeside() unless a program may still be writing it. Files that go away
/// meanwhile are as good.
void removeIfAbandoned(const std::filesystem::path& path, bool isOfThisMachine) {
    constexpr auto Patience = std::chrono::hours(24);
    std::error_code gone;
    if (!isOfThisMachine) {
        const auto written = std::filesystem::last_write_time(path, gone);
        if (gone || std::filesystem::file_time_type::clock::now() - written < Patience) return;
    }
    const FileHandle file(std::fopen(path.string().c_str(), "r+b"));
    if (!file || lockFile(file.get()) != FileLock::Taken) return;
    // Before the lock, it may have been finished, and the name given to another file.
    if (isAt(path, file.get())) std::filesystem::remove(path, gone);
}

}  // namespace

FileHandle openForReading(const std::filesystem::path& name) {
    std::error_code unknown;
    if (std::filesystem::is_directory(name, unknown)) fail(name, "is a folder");
    FileHandle file(std::fopen(name.string().c_str(), "rb"));
    if (!file) failWithErrno(name);
    return file;
}

FreshFile makeFileBeside(const std::filesystem::path& target) {
    for (int number = 0;; ++number) {
        std::filesystem::path path = target;
        path += std::string(PartMark) + machineName() + "-" + std::to_string(number);
        FileHandle file(std::fopen(path.string().c_str(), "w+bx"));
        if (!file) {
            if (errno != EEXIST) failWithErrno(target);
            continue;
        }
        // In the moment before, it may have been taken for abandoned.
        if (lockFile(file.get()) == FileLock::Held || !hasName(file.get())) continue;
        return {std::move(file), std::move(path)};
    }
}

void removeAbandonedFiles(const std::filesystem::path& folder,
                          const std::function<bool(const std::string& name)>& isOurs) {
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failure)) {
        const std::string name = entry.path().filename().string();
        const std::size_t mark = name.rfind(PartMark);
        if (mark == std::string::npos || !isOurs(name.substr(0, mark))) continue;
        const std::string machine =
            name.substr(mark + PartMark.size(), name.rfind('-') - mark - PartMark.size());
        removeIfAbandoned(entry.path(), machine == machineName());
    }
}

NewFile::NewFile(std::filesystem::path itsName)
    : name(std::move(itsName)), fresh(makeFileBeside(name)) {}

NewFile::~NewFile() {
    if (fresh.path.empty()) return;
    // While it is still locked, the name is this file's.
    std::error_code unknown;
    std::filesystem::remove(fresh.path, unknown);
}

void NewFile::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        interrupt.check();
        const auto piece = bytes.first(std::min(bytes.size(), PieceSize));
        if (std::fwrite(piece.data(), 1, piece.size(), fresh.file.get()) != piece.size()) {
            failWithErrno(name);
        }
        bytes = bytes.subspan(piece.size());
    }
}

void NewFile::rewind() {
    if (std::fseek(fresh.file.get(), 0, SEEK_SET) != 0) failWithErrno(name);
}

void NewFile::finish() {
    if (!flushToDisk(fresh.file.get())) failWithErrno(name);
    interrupt.check();
    std::error_code failure;
    std::filesystem::rename(fresh.path, name, failure);
    if (failure) fail(name, failure.message());
    fresh.path.clear();
    fresh.file.reset();
    if (!flushFolderToDisk(name.parent_path())) failWithErrno(name);
}

}  // namespace brivok
