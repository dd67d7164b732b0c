#include "files.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "app_error.h"

namespace brivok {

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
        path += ".part" + std::to_string(number);
        FileHandle file(std::fopen(path.string().c_str(), "w+bx"));
        if (file) return {std::move(file), std::move(path)};
        if (errno != EEXIST) failWithErrno(target);
    }
}

NewFile::NewFile(std::filesystem::path itsName)
    : name(std::move(itsName)), fresh(makeFileBeside(name)) {}

NewFile::~NewFile() {
    if (fresh.path.empty()) return;
    fresh.file.reset();
    std::error_code unknown;
    std::filesystem::remove(fresh.path, unknown);
}

void NewFile::write(std::span<const std::uint8_t> bytes) {
    interrupt.check();
    if (std::fwrite(bytes.data(), 1, bytes.size(), fresh.file.get()) != bytes.size()) {
        failWithErrno(name);
    }
}

void NewFile::rewind() {
    if (std::fseek(fresh.file.get(), 0, SEEK_SET) != 0) failWithErrno(name);
}

void NewFile::finish() {
    // Closing flushes the buffer, which can fail.
    if (std::fclose(fresh.file.release()) != 0) failWithErrno(name);
    interrupt.check();
    std::error_code failure;
    std::filesystem::rename(fresh.path, name, failure);
    if (failure) fail(name, failure.message());
    fresh.path.clear();
}

}  // namespace brivok
